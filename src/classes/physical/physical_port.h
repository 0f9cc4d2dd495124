// Merolt_Adapter_PhysicalPort: each jack of a card, with or without a module in it, whatever functions run over it.
#pragma once

#include "classes/list_class.h"
#include "inventory/cna_list.h"
#include "inventory/tavik.h"
#include "text/fixed_text.h"

#include <cstdint>
#include <optional>

namespace merolt::physical {

struct PhysicalPortEntry {
    std::uint8_t valid;          ///< 1 after createPhysicalPort finished
    FixedText<128> tag;          ///< key: the adapter's serial number and the port number
    FixedText<128> serialNumber; ///< the adapter's
    std::uint16_t portNumber;
};

extern std::int32_t g_physicalPortCount;
extern PhysicalPortEntry* g_physicalPortList;

void buildPhysicalPortList();
void clearPhysicalPortList();
/// @return true when a record was added at the index; false for a tag that is already there.
bool createPhysicalPort(TAVIK_AdapterEntry* adapter, TAVIK_PhyPortEntry* phyPort, int index);

/// @param adapterSerial at least 256 bytes. @return false, with both outputs left alone, for too few parts.
bool parsePhysicalPortTag(const char* tag, char* adapterSerial, std::uint32_t* portNumber);
/// Writes "%s_%d". @param out 128 bytes.
void formatPhysicalPortTag(char* out, const char* adapterSerial, int portNumber);

/// The tag of the jack behind an Ethernet port. @param tag 128 bytes, empty if the tree has no such port.
/// @return false then.
bool calcTag_Nic_PhysicalPort(CNACard* card, CNAPort* port, char* tag);

CmpiObjectPath makePath_PhysicalPort(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_PhysicalPort(const char* className, const char* nameSpace, const char** properties,
                                       int index);
/// Of the jack behind an Ethernet port; nothing if it has no record.
std::optional<CmpiObjectPath> makePath_Nic_PhysicalPort(const char* className, const char* nameSpace, CNACard* card,
                                                        CNAPort* port);
std::optional<CmpiInstance> makeInstance_Nic_PhysicalPort(const char* className, const char* nameSpace,
                                                          const char** properties, CNACard* card, CNAPort* port);
DECLARE_REQUEST_FUNCTIONS(PhysicalPort)

} // namespace merolt::physical
