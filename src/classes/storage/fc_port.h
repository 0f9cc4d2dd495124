// Merolt_FCHBA_FCPort: the port of each storage function, Fibre Channel or FCoE, as the host sees it. The list is
// rebuilt for every request on the class, so an answer shows the current port state.
#pragma once

#include "classes/list_class.h"
#include "inventory/tavik.h"
#include "text/text.h"

#include <cstdint>

namespace merolt::storage {

struct FCPortEntry {
    /// Every number zero, every text empty. A constructor of its own, as the compiler would first clear all of the
    /// record otherwise, most of which is room behind texts.
    FCPortEntry() {}

    std::uint8_t valid = 0;       ///< 1 after createFCPort finished
    std::uint8_t hasENodeMAC = 0; ///< 1 for a converged function
    FixedText<128> deviceID;      ///< key: serial text, node name, port name
    FixedText<128> serialNumber;
    FixedText<128> permanentAddress; ///< port world wide name
    FixedText<2048> vpdData;
    FixedText<512> optionROMVersions;
    FixedText<128> model;
    FixedText<64> speedDescription;
    std::uint8_t eNodeMAC[6] = {};
    std::uint16_t portType = 0;
    std::uint16_t operationalStatus = 0;
    std::uint64_t speed = 0;    ///< bits per second
    std::uint64_t maxSpeed = 0; ///< bits per second
    std::uint16_t deviceNumber = 0;
    std::uint32_t deviceStatus = 0;
    TAVIK_DeviceRecord* device = nullptr;
};

extern std::int32_t g_fcPortCount;
extern FCPortEntry* g_fcPortList;

void buildFCPortList();
void clearFCPortList();
inline constexpr ClassList listOfFCPorts = {buildFCPortList, clearFCPortList};
void createFCPort(TAVIK_DeviceRecord* device, int index);

CmpiObjectPath makePath_FCPort(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_FCPort(const char* className, const char* nameSpace, const char** properties, int index);
DECLARE_REQUEST_FUNCTIONS(FCPort)

} // namespace merolt::storage
