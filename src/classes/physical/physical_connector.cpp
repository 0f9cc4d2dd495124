#include "classes/physical/physical_connector.h"

#include "classes/instance.h"
#include "classes/physical/mezzanine.h"
#include "classes/physical/nic_lookup.h"
#include "classes/physical/tag_parts.h"
#include "classes/record_index.h"
#include "classes/record_list.h"
#include "log/log.h"
#include "text/text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace merolt::physical {

std::int32_t g_physicalConnectorCount = 0;
PhysicalConnectorEntry* g_physicalConnectorList = nullptr;

namespace {

RecordList<PhysicalConnectorEntry> records(g_physicalConnectorCount, g_physicalConnectorList);

constexpr const char* cimClass = "Merolt_Adapter_PhysicalConnector";
const char* keys[] = {"CreationClassName", "Tag", nullptr};

constexpr std::size_t tagSize = 129;
constexpr std::uint16_t transceiverReadable = 1;
constexpr std::uint16_t transceiverKindSfp = 6;

const ListClass descriptor = {
    .name = "PhysicalConnector",
    .key = "Tag",
    .count = [] { return int{g_physicalConnectorCount}; },
    .keyText = [](int index) { return g_physicalConnectorList[index].tag.text(); },
    .makePath = makePath_PhysicalConnector,
    .makeInstance = makeInstance_PhysicalConnector,
    .valid = [](int index) { return g_physicalConnectorList[index].valid != 0; },
    .enumerationSkipsInvalid = true,
};

RecordsByText tags;

/// The record of that tag in the same letter case; -1 if there is none.
int findTag(const char* tag) {
    return tags.find(tag, g_physicalConnectorList, g_physicalConnectorCount, &PhysicalConnectorEntry::tag);
}

/// Adds the module at the index unless its tag is already there.
bool addConnector(const TAVIK_AdapterEntry* adapter, const TAVIK_PhyPortEntry* phyPort,
                  const PhysicalConnectorEntry& module, int index) {
    char tag[tagSize];
    formatPhysicalConnectorTag(tag, module.sfp.SerialNumber.text(), adapterSerialOf(adapter).text(),
                               phyPort->portNumber);
    if (const int known = findTag(tag); known >= 0) {
        DEBUG_LOG("Exiting  createPhysicalConnector: Current device has the same the serial number as a device in the "
                  "list at index=%d. Skip!\n",
                  known);
        return false;
    }
    ++g_physicalConnectorCount;
    PhysicalConnectorEntry& connector = g_physicalConnectorList[index];
    connector = module;
    connector.tag.assign(tag);
    tags.add(connector.tag.view(), index);
    connector.valid = 1;
    return true;
}

struct CoreBlockFree {
    void operator()(std::uint8_t* block) const { CoreFree(block); }
};
using CoreBlock = std::unique_ptr<std::uint8_t, CoreBlockFree>;

/// The first port of the adapter's card that has a module and the entry's MAC value goes into the list.
bool addNicConnector(TAVIK_AdapterEntry* adapter, TAVIK_PhyPortEntry* phyPort, const TAVIK_NicFunction& function,
                     int index) {
    const AdapterSerial adapterSerial = adapterSerialOf(adapter);
    for (CNACard* card = g_CNAList; card; card = card->next) {
        if (!adapterSerial.equals(card->properties.serialNumber)) continue;
        for (CNAPort* port = card->ports; port; port = port->next) {
            if (port->transceiverPresent == 1 && hasSameMacValue(function, *port))
                return createNicPhysicalConnector(adapter, phyPort, card, port, index);
        }
    }
    return false;
}

bool addFunction(TAVIK_AdapterEntry* adapter, TAVIK_PhyPortEntry* phyPort, TAVIK_ProtocolEntry& entry, int index) {
    if (entry.type == TAVIK_ProtocolNic) return addNicConnector(adapter, phyPort, entry.nic, index);
    if (!isStorageFunction(entry)) return false;
    TAVIK_DeviceRecord* device = &entry.storage.device;
    return device->transceiverReadable == transceiverReadable &&
           createPhysicalConnector(adapter, phyPort, device, index);
}

CmpiArray byteArray(const std::uint8_t* bytes, CMPICount size) {
    CmpiArray array(size, CMPI_uint8);
    for (CMPICount index = 0; index < size; ++index)
        array[index] = CmpiData(CMPIUint8{bytes[index]});
    return array;
}

/// The record of the module in an Ethernet port; -1 if there is none.
int findRecord(CNAPort* port) {
    const std::optional<NicPlace> place = findNicPlace(port);
    if (!place) return -1;
    char tag[tagSize];
    formatPhysicalConnectorTag(tag, port->sfp.SerialNumber.text(), place->adapterSerial.text(),
                               place->phyPort->portNumber);
    return findTag(tag);
}

} // namespace

void parseSFPData(TAVIK_DeviceRecord* device, const std::uint8_t* buffer, std::uint32_t size,
                  PhysicalConnectorEntry& module) {
    Parse_Transceiver_Data(buffer, size, module.sfp);
    if (size == sfpDataSize) std::memcpy(module.rawData, buffer, sfpDataSize);
    module.status = device->portProperty.transceiverKind == transceiverKindSfp ? 1 : 0;
    if (isMezzanineAdapter(device) == 1) module.status = 1;
    logTransceiverTexts(module.sfp);
}

bool parsePhysicalConnectorTag(const char* tag, char* serialNumber, char* adapterSerial, std::uint32_t* portNumber) {
    std::array<FixedText<256>, 3> pieces;
    if (cutTag(tag, pieces) < pieces.size()) return false;
    std::snprintf(serialNumber, 256, "%s", pieces[0].text());
    std::snprintf(adapterSerial, 256, "%s", pieces[1].text());
    *portNumber = static_cast<std::uint32_t>(std::atoi(pieces[2].text()));
    return true;
}

void formatPhysicalConnectorTag(char* out, const char* serialNumber, const char* adapterSerial, int portNumber) {
    std::snprintf(out, tagSize, "%s_%s_%d", serialNumber, adapterSerial, portNumber);
}

bool calcTag_Nic_PhysicalConnector(CNACard*, CNAPort* port, char* tag) {
    DEBUG_LOG("Merolt_NIC_PhysicalConnector makeInstance_PhysicalConnector was called\n");
    tag[0] = '\0';
    const std::optional<NicPlace> place = findNicPlace(port);
    if (!place) return false;
    formatPhysicalConnectorTag(tag, port->sfp.SerialNumber.text(), place->adapterSerial.text(),
                               place->phyPort->portNumber);
    return true;
}

bool createPhysicalConnector(TAVIK_AdapterEntry* adapter, TAVIK_PhyPortEntry* phyPort, TAVIK_DeviceRecord* device,
                             int index) {
    DEBUG_LOG("Entering createPhysicalConnector, index = %d", index);
    const CoreBlock buffer(static_cast<std::uint8_t*>(CoreAlloc(sfpDataSize)));
    if (!buffer) {
        ERROR_LOG("createPhysicalConnector: Unable to allocate memory for the DMI buffer\n");
        return false;
    }
    if (TAVIK_GetSFPData(device, buffer.get()) != 0) {
        DEBUG_LOG("No Transceiver on DeviceNumber %u\n", device->deviceNumber);
        return false;
    }
    PhysicalConnectorEntry module{};
    parseSFPData(device, buffer.get(), sfpDataSize, module);
    if (module.sfp.SerialNumber.empty()) {
        DEBUG_LOG("Empty SerialNumber for the Transceiver on DeviceNumber %u\n", device->deviceNumber);
        return false;
    }
    if (!addConnector(adapter, phyPort, module, index)) return false;
    DEBUG_LOG("Exiting  createPhysicalConnector\n");
    return true;
}

bool createNicPhysicalConnector(TAVIK_AdapterEntry* adapter, TAVIK_PhyPortEntry* phyPort, CNACard*, CNAPort* port,
                                int index) {
    PhysicalConnectorEntry module{};
    module.sfp = port->sfp;
    module.status = 1;
    return addConnector(adapter, phyPort, module, index);
}

void buildPhysicalConnectorList() {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    std::int32_t functions = 0;
    forEachProtocolEntry(adapters, [&](TAVIK_AdapterEntry&, TAVIK_PhyPortEntry&, TAVIK_ProtocolEntry& entry) {
        if (isKnownFunction(entry)) ++functions;
    });
    tags.startAnew(functions);
    records.makeRoom(functions);
    int index = 0;
    forEachProtocolEntry(adapters,
                         [&](TAVIK_AdapterEntry& adapter, TAVIK_PhyPortEntry& phyPort, TAVIK_ProtocolEntry& entry) {
                             if (index < functions && addFunction(&adapter, &phyPort, entry, index)) ++index;
                         });
    records.keepValid();
}

void clearPhysicalConnectorList() { records.clear(); }

CmpiObjectPath makePath_PhysicalConnector(const char* className, const char* nameSpace, int index) {
    CmpiObjectPath path(nameSpace, className);
    path.setKey("CreationClassName", CmpiData(cimClass));
    path.setKey("Tag", CmpiData(g_physicalConnectorList[index].tag.text()));
    return path;
}

CmpiInstance makeInstance_PhysicalConnector(const char* className, const char* nameSpace, const char** properties,
                                            int index) {
    const PhysicalConnectorEntry& connector = g_physicalConnectorList[index];
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    instance.setProperty("CreationClassName", CmpiData(cimClass));
    instance.setProperty("Tag", CmpiData(connector.tag.text()));
    instance.setProperty("Name", CmpiData(cimClass));
    instance.setProperty("ElementName", CmpiData("Physical Port Connector"));
    instance.setProperty("ConnectorLayout", CmpiData(CMPIUint16{1}));
    instance.setProperty("ConnectorDescription", CmpiData("SFP"));
    instance.setProperty("Manufacturer", CmpiData(connector.sfp.Manufacturer.text()));
    instance.setProperty("SerialNumber", CmpiData(connector.sfp.SerialNumber.text()));
    instance.setProperty("PartNumber", CmpiData(connector.sfp.PartNumber.text()));
    instance.setProperty("SFPDataA0", CmpiData(byteArray(connector.rawData, sfpPageSize)));
    instance.setProperty("SFPDataA2", CmpiData(byteArray(connector.rawData + sfpPageSize, sfpPageSize)));
    instance.setProperty("SFPStatus", CmpiData(CMPIUint16{connector.status}));
    return instance;
}

std::optional<CmpiObjectPath> makePath_Nic_PhysicalConnector(const char* className, const char* nameSpace, CNACard*,
                                                             CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_PhysicalConnector makePath_PhysicalConnector was called\n");
    const int index = findRecord(port);
    if (index < 0) return std::nullopt;
    return makePath_PhysicalConnector(className, nameSpace, index);
}

std::optional<CmpiInstance> makeInstance_Nic_PhysicalConnector(const char* className, const char* nameSpace,
                                                               const char** properties, CNACard*, CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_PhysicalConnector makeInstance_PhysicalConnector was called\n");
    const int index = findRecord(port);
    if (index < 0) return std::nullopt;
    return makeInstance_PhysicalConnector(className, nameSpace, properties, index);
}

DEFINE_REQUEST_FUNCTIONS(PhysicalConnector, descriptor)

} // namespace merolt::physical
