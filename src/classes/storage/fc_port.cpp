#include "classes/storage/fc_port.h"

#include "classes/facts.h"
#include "classes/instance.h"
#include "classes/record_list.h"
#include "classes/storage/option_rom.h"
#include "classes/storage/serial_text.h"
#include "classes/storage/vital_product_data.h"
#include "configuration/answers.h"
#include "inventory/chip.h"
#include "log/log.h"

#include <cstring>

namespace merolt::storage {

std::int32_t g_fcPortCount = 0;
FCPortEntry* g_fcPortList = nullptr;

namespace {

RecordList<FCPortEntry> records(g_fcPortCount, g_fcPortList);

constexpr const char* cimClass = "Merolt_FCHBA_FCPort";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "DeviceID", nullptr};

constexpr std::uint32_t portDownBits = 1U << 0 | 1U << 12;
constexpr CMPIUint16 linkTechnologyFibreChannel = 4;

constexpr std::uint64_t speed1Gigabit = 1062500000;
constexpr std::uint64_t speed2Gigabit = 2125000000;
constexpr std::uint64_t speed4Gigabit = 4250000000;
constexpr std::uint64_t speed8Gigabit = 8500000000;
constexpr std::uint64_t speed10Gigabit = 10625000000;
constexpr std::uint64_t speed16Gigabit = 17000000000;

const ListClass descriptor = {
    .name = "FCPort",
    .key = "DeviceID",
    .count = [] { return int{g_fcPortCount}; },
    .keyText = [](int index) { return g_fcPortList[index].deviceID.text(); },
    .makePath = makePath_FCPort,
    .makeInstance = makeInstance_FCPort,
    .valid = [](int index) { return g_fcPortList[index].valid != 0; },
};

/// The text of a store with a semicolon in front; nothing for an empty one.
void appendElement(TextWriter& list, const VpdStore& store) {
    if (store.empty()) return;
    list.append(";");
    list.append(store.view());
}

/// The first three items stand even when the card has none.
void setVpdData(const TAVIK_DeviceRecord* device, FixedText<2048>& vpdData) {
    TextWriter list(vpdData);
    list.append(g_productIdentifier.view());
    for (const VpdStore* store : {&g_partNumber, &g_serialNumber}) {
        list.append(";");
        list.append(store->view());
    }
    for (const VpdStore* store : {&g_fcCode, &g_fruNumberVersion, &g_miscInformation, &g_manufacturingId,
                                  &g_efiDriverVersion, &g_firmwareVersion, &g_biosVersion, &g_fcodeVersion})
        appendElement(list, *store);
    if (isConvergedFunction(device)) appendElement(list, g_flashImageVersion);
}

void setOptionRomVersions(TAVIK_DeviceRecord* device, FixedText<512>& versions) {
    clearOptionRomVersions();
    versions.clear();
    if (getChipIndex(device) <= 5) return;
    getOptionRomVersions(device);
    DEBUG_LOG("Merolt_FC_FCPort: createFCPort: Option ROM versions retrieved.");
    versions.join({g_optionRomBiosVersion.view(), ";", g_optionRomEfiVersion.view(), ";",
                   g_optionRomFCodeVersion.view(), ";", g_optionRomFirmwareVersion.view()});
}

/// Keeps the status word of the device: an operational port clears the bits of a port that is down, loop down sets
/// them, every other state leaves them.
void setPortState(TAVIK_DeviceRecord* device, FCPortEntry& port) {
    switch (device->portProperty.portState) {
    case 1:
        DEBUG_LOG("Port state ok...");
        port.operationalStatus = 2;
        device->statusFlags &= ~portDownBits;
        break;
    case 3:
        DEBUG_LOG("Port state - Loopdown...");
        port.operationalStatus = 6;
        device->statusFlags |= portDownBits;
        break;
    case 2:
        DEBUG_LOG("Port state - Suspended...");
        port.operationalStatus = 1;
        break;
    default:
        DEBUG_LOG("Port state - other ...");
        port.operationalStatus = 1;
        break;
    }
}

/// Port type code of the device to the class's value map; the code is the index.
std::uint16_t portType(std::uint8_t code) {
    constexpr std::uint16_t types[] = {0, 10, 11, 12, 13, 15, 16, 1, 14, 17};
    return code < std::size(types) ? types[code] : std::uint16_t{0};
}

constexpr std::uint32_t mostGigabits = 1024; ///< a code beyond that tells no speed

/// Bits per second of a speed code that setSpeed does not know: gigabits per second, as those that it knows.
constexpr TwoForms<std::uint64_t (*)(std::uint32_t code)> otherSpeed = {
    .contract = [](std::uint32_t) { return std::uint64_t{0}; },
    .corrected = [](std::uint32_t code) { return code <= mostGigabits ? code * speed1Gigabit : 0; },
};

void setSpeed(const TAVIK_DeviceRecord* device, FCPortEntry& port) {
    port.speedDescription.assign("See Speed");
    switch (device->portProperty.speedCode) {
    case 1:
        port.speed = speed1Gigabit;
        break;
    case 2:
        port.speed = speed2Gigabit;
        break;
    case 3:
        port.speed = 0;
        port.speedDescription.assign("Auto Negotiate");
        break;
    case 4:
        port.speed = speed4Gigabit;
        break;
    case 8:
        port.speed = speed8Gigabit;
        break;
    case 10:
        port.speed = speed10Gigabit;
        break;
    case 16:
        port.speed = isConvergedFunction(device) ? speed10Gigabit : speed16Gigabit;
        break;
    default:
        port.speed = otherSpeed.chosen()(device->portProperty.speedCode);
        break;
    }
}

std::uint64_t maximumSpeed(const TAVIK_DeviceRecord* device) {
    const int chip = getChipIndex(device);
    if (chip == 24 || chip == 25) return speed16Gigabit;
    if (isConvergedFunction(device)) return speed10Gigabit;
    if (device->pciDeviceId == 0xA114) return speed8Gigabit;
    return getChipSpeedClass(device) > 0 ? speed4Gigabit : speed2Gigabit;
}

/// Refreshes the device's property block and takes state, type and speed from it.
void setPortProperty(TAVIK_DeviceRecord* device, FCPortEntry& port) {
    device->statusFlags = 0;
    if (TAVIK_GetHbaDevicePortProperty(device->handle, 0, &device->portProperty) != 0) {
        DEBUG_LOG("Merolt_FC_FCPort: Failed to get DevicePortProperty, setting PortStatus & PortType to Unknown...");
        port.operationalStatus = 0;
        port.portType = 0;
        port.speed = 0;
        return;
    }
    setPortState(device, port);
    port.portType = portType(device->portProperty.portType);
    setSpeed(device, port);
}

void setENodeMAC(const TAVIK_DeviceRecord* device, FCPortEntry& port) {
    port.hasENodeMAC = isConvergedFunction(device) ? 1 : 0;
    if (port.hasENodeMAC) GetDeviceMacAddress(device, port.eNodeMAC);
}

} // namespace

void createFCPort(TAVIK_DeviceRecord* device, int index) {
    DEBUG_LOG("Entering createFCPort, index = %d", index);
    FCPortEntry& port = g_fcPortList[index];
    clearVpdStores();
    port.vpdData.clear();
    const int vpdStatus = fetchAdapterVpd(device);
    if (vpdStatus == 0) {
        DEBUG_LOG("Merolt_FC_FCPort: createFCPort: VPD data retrieved successfully.");
        setVpdData(device, port.vpdData);
    } else {
        DEBUG_LOG("Merolt_FC_FCPort: createFCPort: Unable to retrieve VPD data!");
    }
    setOptionRomVersions(device, port.optionROMVersions);

    // The names are those of before the property block is refreshed, and so the key is stable.
    const SerialText serial = serialText(device, vpdStatus);
    const WorldWideNameText nodeName = formatWorldWideName(device->nodeName);
    const WorldWideNameText portName = formatWorldWideName(device->portProperty.portName);
    port.permanentAddress.assign(portName.view());
    port.deviceID.join({serial.view(), "_", nodeName.view(), "_", portName.view()});
    port.serialNumber.assign(serial.view());

    setPortProperty(device, port);
    port.maxSpeed = maximumSpeed(device);
    port.deviceNumber = device->deviceNumber;
    port.deviceStatus = device->statusFlags;
    port.model.assignField(device->modelName, sizeof(device->modelName));
    setENodeMAC(device, port);
    port.device = device;
    port.valid = 1;
    DEBUG_LOG("Exiting  createFCPort\n");
}

void buildFCPortList() { buildPerStorageFunction(records, createFCPort); }

void clearFCPortList() { records.clear(); }

CmpiObjectPath makePath_FCPort(const char* className, const char* nameSpace, int index) {
    return systemScopedPath(className, nameSpace, cimClass, "DeviceID", g_fcPortList[index].deviceID.text());
}

CmpiInstance makeInstance_FCPort(const char* className, const char* nameSpace, const char** properties, int index) {
    const FCPortEntry& port = g_fcPortList[index];
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    MacText eNodeMac;
    if (port.hasENodeMAC) formatMACAddress(port.eNodeMAC, eNodeMac.data());
    setSystemScope(instance, cimClass);
    instance.setProperty("DeviceID", CmpiData(port.deviceID.text()));
    instance.setProperty("OperationalStatus", CmpiData(uint16Array({port.operationalStatus})));
    instance.setProperty("ActiveFC4Types", CmpiData(uint16Array({0})));
    instance.setProperty("PortType", CmpiData(CMPIUint16{port.portType}));
    instance.setProperty("Speed", CmpiData(CMPIUint64{port.speed}));
    instance.setProperty("MaxSpeed", CmpiData(CMPIUint64{port.maxSpeed}));
    instance.setProperty("PermanentAddress", CmpiData(port.permanentAddress.text()));
    instance.setProperty("LinkTechnology", CmpiData(linkTechnologyFibreChannel));
    instance.setProperty("ElementName", CmpiData(port.deviceID.text()));
    instance.setProperty("UsageRestriction", CmpiData(CMPIUint16{0}));
    instance.setProperty("SupportedMaximumTransmissionUnit", CmpiData(CMPIUint64{0}));
    instance.setProperty("VPDData", CmpiData(port.vpdData.text()));
    instance.setProperty("OptionROMVersions", CmpiData(port.optionROMVersions.text()));
    instance.setProperty("SpeedDescription", CmpiData(port.speedDescription.text()));
    instance.setProperty("DeviceNumber", CmpiData(CMPIUint16{port.deviceNumber}));
    instance.setProperty("DeviceStatus", CmpiData(static_cast<CMPISint32>(port.deviceStatus)));
    instance.setProperty("Model", CmpiData(port.model.text()));
    instance.setProperty("ENodeMACAddress", CmpiData(port.hasENodeMAC ? eNodeMac.text() : "Not Available"));
    setStorageFacts(instance, FactOfFCPort, port.device, properties);
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(FCPort, descriptor)

} // namespace merolt::storage
