#include "classes/storage/port_controller.h"

#include "classes/facts.h"
#include "classes/instance.h"
#include "classes/record_list.h"
#include "classes/storage/serial_text.h"
#include "classes/storage/vital_product_data.h"
#include "inventory/chip.h"
#include "log/log.h"
#include "text/text.h"

namespace merolt::storage {

std::int32_t g_portControllerCount = 0;
PortControllerEntry* g_portControllerList = nullptr;

namespace {

RecordList<PortControllerEntry> records(g_portControllerCount, g_portControllerList);

constexpr const char* cimClass = "Merolt_FCHBA_PortController";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "DeviceID", nullptr};

const ListClass descriptor = {
    .name = "PortController",
    .key = "DeviceID",
    .count = [] { return int{g_portControllerCount}; },
    .keyText = [](int index) { return g_portControllerList[index].deviceID.text(); },
    .makePath = makePath_PortController,
    .makeInstance = makeInstance_PortController,
    .valid = [](int index) { return g_portControllerList[index].valid != 0; },
};

/// The record of that serial text, in the same letter case; -1 if there is none.
int findCard(const SerialText& serial) {
    for (int index = 0; index < g_portControllerCount; ++index) {
        if (g_portControllerList[index].deviceID.equals(serial.view())) return index;
    }
    return -1;
}

} // namespace

void createPortController(TAVIK_DeviceRecord* device, int index) {
    DEBUG_LOG("Entering createPortController, index = %d", index);
    g_serialNumber.clear();
    const int vpdStatus = fetchAdapterVpd(device);
    DEBUG_LOG("%s", vpdStatus != 0
                        ? "Merolt_FC_PortController: createPortController: Unable to retrieve VPD data!"
                        : "Merolt_FC_PortController: createPortController: VPD data retrieved successfully.");
    const SerialText serial = serialText(device, vpdStatus);
    if (const int known = findCard(serial); known >= 0) {
        DEBUG_LOG("Exiting  createPortController: Current device has the same the serial number as a device in the "
                  "list at index=%d. Skip!\n",
                  known);
        return;
    }
    PortControllerEntry& controller = g_portControllerList[g_portControllerCount++];
    controller.deviceID.assign(serial.view());
    controller.hasENodeMAC = isConvergedFunction(device) ? 1 : 0;
    if (controller.hasENodeMAC) GetDeviceMacAddress(device, controller.eNodeMAC);
    controller.device = device;
    controller.valid = 1;
    DEBUG_LOG("Exiting  createPortController\n");
}

void buildPortControllerList() { buildRoomPerStorageFunction(records, createPortController); }

void clearPortControllerList() { records.clear(); }

bool findPortControllerByDeviceID(const char* deviceID, std::uint32_t* index) {
    for (int place = 0; place < g_portControllerCount; ++place) {
        if (!equalsIgnoringCase(deviceID, g_portControllerList[place].deviceID.text())) continue;
        *index = static_cast<std::uint32_t>(place);
        return true;
    }
    return false;
}

CmpiObjectPath makePath_PortController(const char* className, const char* nameSpace, int index) {
    return systemScopedPath(className, nameSpace, cimClass, "DeviceID", g_portControllerList[index].deviceID.text());
}

CmpiInstance makeInstance_PortController(const char* className, const char* nameSpace, const char** properties,
                                         int index) {
    const PortControllerEntry& controller = g_portControllerList[index];
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    MacText eNodeMac;
    if (controller.hasENodeMAC) formatMACAddress(controller.eNodeMAC, eNodeMac.data());
    setSystemScope(instance, cimClass);
    instance.setProperty("DeviceID", CmpiData(controller.deviceID.text()));
    instance.setProperty("OperationalStatus", CmpiData(uint16Array({1})));
    instance.setProperty(
        "StatusDescriptions",
        CmpiData(stringArray({"Review operational status values for corresponding Merolt_FCHBA_FCPort instances"})));
    instance.setProperty("ProtocolSupported", CmpiData(CMPIUint16{10}));
    instance.setProperty("ElementName", CmpiData(controller.deviceID.text()));
    instance.setProperty("ControllerType", CmpiData(CMPIUint16{4}));
    instance.setProperty("ENodeMACAddress", CmpiData(controller.hasENodeMAC ? eNodeMac.text() : "Not Available"));
    setStorageFacts(instance, FactOfStorageController, controller.device, properties);
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(PortController, descriptor)

} // namespace merolt::storage
