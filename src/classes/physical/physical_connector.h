// Merolt_Adapter_PhysicalConnector: each transceiver module that answers, on the storage or the Ethernet side.
#pragma once

#include "classes/list_class.h"
#include "inventory/cna_list.h"
#include "inventory/tavik.h"
#include "inventory/transceiver.h"

#include <cstdint>
#include <optional>

namespace merolt::physical {

constexpr std::size_t sfpPageSize = 256;
constexpr std::size_t sfpDataSize = 2 * sfpPageSize;

struct PhysicalConnectorEntry {
    std::uint8_t valid; ///< 1 after a create form finished
    FixedText<129> tag; ///< key: serial numbers of module and adapter, port number
    SFPField sfp;
    std::uint8_t rawData[sfpDataSize]; ///< pages A0 and A2 as read; zero for the module of an Ethernet port
    std::uint16_t status;              ///< 1: a module that can be read
};

extern std::int32_t g_physicalConnectorCount;
extern PhysicalConnectorEntry* g_physicalConnectorList;

void buildPhysicalConnectorList();
void clearPhysicalConnectorList();
/// @return true when a record was added at the index.
bool createPhysicalConnector(TAVIK_AdapterEntry* adapter, TAVIK_PhyPortEntry* phyPort, TAVIK_DeviceRecord* device,
                             int index);
bool createNicPhysicalConnector(TAVIK_AdapterEntry* adapter, TAVIK_PhyPortEntry* phyPort, CNACard* card, CNAPort* port,
                                int index);
/// Takes texts, pages and status of a module. @param size bytes of the buffer; pages are taken only from exactly 512.
void parseSFPData(TAVIK_DeviceRecord* device, const std::uint8_t* buffer, std::uint32_t size,
                  PhysicalConnectorEntry& module);

/// @param serialNumber, adapterSerial at least 256 bytes each.
/// @return false, with all outputs left alone, for too few parts.
bool parsePhysicalConnectorTag(const char* tag, char* serialNumber, char* adapterSerial, std::uint32_t* portNumber);
/// Writes "%s_%s_%d". @param out 129 bytes.
void formatPhysicalConnectorTag(char* out, const char* serialNumber, const char* adapterSerial, int portNumber);

/// The tag of the module in an Ethernet port. @param tag 129 bytes, empty if the tree has no such port.
/// @return false then.
bool calcTag_Nic_PhysicalConnector(CNACard* card, CNAPort* port, char* tag);

CmpiObjectPath makePath_PhysicalConnector(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_PhysicalConnector(const char* className, const char* nameSpace, const char** properties,
                                            int index);
/// Of the module in an Ethernet port; nothing if it has no record.
std::optional<CmpiObjectPath> makePath_Nic_PhysicalConnector(const char* className, const char* nameSpace,
                                                             CNACard* card, CNAPort* port);
std::optional<CmpiInstance> makeInstance_Nic_PhysicalConnector(const char* className, const char* nameSpace,
                                                               const char** properties, CNACard* card, CNAPort* port);
DECLARE_REQUEST_FUNCTIONS(PhysicalConnector)

} // namespace merolt::physical
