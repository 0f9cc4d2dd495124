#include "classes/physical/physical_port.h"

#include "classes/instance.h"
#include "classes/physical/nic_lookup.h"
#include "classes/physical/serial_form.h"
#include "classes/physical/tag_parts.h"
#include "classes/record_index.h"
#include "classes/record_list.h"
#include "log/log.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace merolt::physical {

std::int32_t g_physicalPortCount = 0;
PhysicalPortEntry* g_physicalPortList = nullptr;

namespace {

RecordList<PhysicalPortEntry> records(g_physicalPortCount, g_physicalPortList);

constexpr const char* cimClass = "Merolt_Adapter_PhysicalPort";
const char* keys[] = {"CreationClassName", "Tag", nullptr};

constexpr std::size_t tagSize = 128;

const ListClass descriptor = {
    .name = "PhysicalPort",
    .key = "Tag",
    .count = [] { return int{g_physicalPortCount}; },
    .keyText = [](int index) { return g_physicalPortList[index].tag.text(); },
    .makePath = makePath_PhysicalPort,
    .makeInstance = makeInstance_PhysicalPort,
    .valid = [](int index) { return g_physicalPortList[index].valid != 0; },
    .enumerationSkipsInvalid = true,
};

RecordsByText tags;

/// The record of that tag in the same letter case; -1 if there is none.
int findTag(const char* tag) {
    return tags.find(tag, g_physicalPortList, g_physicalPortCount, &PhysicalPortEntry::tag);
}

/// The record of the jack behind an Ethernet port; -1 if there is none.
int findRecord(CNAPort* port) {
    const std::optional<NicPlace> place = findNicPlace(port);
    if (!place) return -1;
    char tag[tagSize];
    formatPhysicalPortTag(tag, place->adapterSerial.text(), place->phyPort->portNumber);
    return findTag(tag);
}

} // namespace

bool parsePhysicalPortTag(const char* tag, char* adapterSerial, std::uint32_t* portNumber) {
    std::array<FixedText<256>, 2> pieces;
    if (cutTag(tag, pieces) < pieces.size()) return false;
    std::snprintf(adapterSerial, 256, "%s", pieces[0].text());
    *portNumber = static_cast<std::uint32_t>(std::atoi(pieces[1].text()));
    return true;
}

void formatPhysicalPortTag(char* out, const char* adapterSerial, int portNumber) {
    std::snprintf(out, tagSize, "%s_%d", adapterSerial, portNumber);
}

bool calcTag_Nic_PhysicalPort(CNACard*, CNAPort* port, char* tag) {
    DEBUG_LOG("Merolt_NIC_PhysicalPort makeInstance_PhysicalPort was called\n");
    tag[0] = '\0';
    const std::optional<NicPlace> place = findNicPlace(port);
    if (!place) return false;
    formatPhysicalPortTag(tag, place->adapterSerial.text(), place->phyPort->portNumber);
    return true;
}

bool createPhysicalPort(TAVIK_AdapterEntry* adapter, TAVIK_PhyPortEntry* phyPort, int index) {
    DEBUG_LOG("Entering createPhysicalPort, index = %d", index);
    const AdapterSerial adapterSerial = adapterSerialOf(adapter);
    char tag[tagSize];
    formatPhysicalPortTag(tag, adapterSerial.text(), phyPort->portNumber);
    if (const int known = findTag(tag); known >= 0) {
        DEBUG_LOG("Exiting  createPhysicalPort: Current device has the same the serial number as a device in the list "
                  "at index=%d. Skip!\n",
                  known);
        return false;
    }
    ++g_physicalPortCount;
    PhysicalPortEntry& port = g_physicalPortList[index];
    port.tag.assign(tag);
    tags.add(port.tag.view(), index);
    port.serialNumber.assign(adapterSerial.view());
    port.portNumber = phyPort->portNumber;
    port.valid = 1;
    DEBUG_LOG("Exiting  createPhysicalPort\n");
    return true;
}

void buildPhysicalPortList() {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    const std::int32_t ports = countPhyPorts(adapters);
    tags.startAnew(ports);
    const std::int32_t capacity = records.makeRoom(ports);
    int index = 0;
    forEachPhyPort(adapters, [&](TAVIK_AdapterEntry& adapter, TAVIK_PhyPortEntry& port) {
        if (index < capacity && createPhysicalPort(&adapter, &port, index)) ++index;
    });
    records.keepValid();
}

void clearPhysicalPortList() { records.clear(); }

CmpiObjectPath makePath_PhysicalPort(const char* className, const char* nameSpace, int index) {
    CmpiObjectPath path(nameSpace, className);
    path.setKey("CreationClassName", CmpiData(cimClass));
    path.setKey("Tag", CmpiData(g_physicalPortList[index].tag.text()));
    return path;
}

CmpiInstance makeInstance_PhysicalPort(const char* className, const char* nameSpace, const char** properties,
                                       int index) {
    PhysicalPortEntry& port = g_physicalPortList[index];
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    const bool isOem = isIBMSerialNumber(port.serialNumber.data());
    instance.setProperty("CreationClassName", CmpiData(cimClass));
    instance.setProperty("Tag", CmpiData(port.tag.text()));
    instance.setProperty("Name", CmpiData(cimClass));
    instance.setProperty("ElementName", CmpiData("Physical Port"));
    instance.setProperty("ConnectorLayout", CmpiData(CMPIUint16{1}));
    instance.setProperty("ConnectorDescription", CmpiData("Physical Port"));
    instance.setProperty("Manufacturer", CmpiData(isOem ? oemManufacturer : meroltManufacturer));
    instance.setProperty("SerialNumber", CmpiData(port.serialNumber.text()));
    instance.setProperty("PortNumber", CmpiData(CMPIUint16{port.portNumber}));
    return instance;
}

std::optional<CmpiObjectPath> makePath_Nic_PhysicalPort(const char* className, const char* nameSpace, CNACard*,
                                                        CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_PhysicalPort makePath_PhysicalPort was called\n");
    const int index = findRecord(port);
    if (index < 0) return std::nullopt;
    return makePath_PhysicalPort(className, nameSpace, index);
}

std::optional<CmpiInstance> makeInstance_Nic_PhysicalPort(const char* className, const char* nameSpace,
                                                          const char** properties, CNACard*, CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_PhysicalPort makeInstance_PhysicalPort was called\n");
    const int index = findRecord(port);
    if (index < 0) return std::nullopt;
    return makeInstance_PhysicalPort(className, nameSpace, properties, index);
}

DEFINE_REQUEST_FUNCTIONS(PhysicalPort, descriptor)

} // namespace merolt::physical
