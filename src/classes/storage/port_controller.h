// Merolt_FCHBA_PortController: a card's Fibre Channel controller. All storage functions with one serial number share
// one instance; flash updates of the storage side start from it.
#pragma once

#include "classes/list_class.h"
#include "inventory/tavik.h"
#include "text/fixed_text.h"

#include <cstdint>

namespace merolt::storage {

struct PortControllerEntry {
    std::uint8_t valid;         ///< 1 after createPortController finished
    std::uint8_t hasENodeMAC;   ///< 1 for a converged function
    FixedText<128> deviceID;    ///< key: the card's serial text
    std::uint8_t eNodeMAC[6];   ///< of the first function seen
    TAVIK_DeviceRecord* device; ///< the first function seen
};

extern std::int32_t g_portControllerCount;
extern PortControllerEntry* g_portControllerList;

void buildPortControllerList();
void clearPortControllerList();
/// Adds a record unless the card has one. @param index only for the log.
void createPortController(TAVIK_DeviceRecord* device, int index);

/// The first record with that DeviceID, whatever the letter case and the valid flag. @return false if there is none.
bool findPortControllerByDeviceID(const char* deviceID, std::uint32_t* index);

CmpiObjectPath makePath_PortController(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_PortController(const char* className, const char* nameSpace, const char** properties,
                                         int index);
DECLARE_REQUEST_FUNCTIONS(PortController)

} // namespace merolt::storage
