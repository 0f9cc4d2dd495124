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

#include <array>
#include <cstddef>
#include <cstring>
#include <new>
#include <vector>

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

/// What of a device's record a port's texts are made of.
class TextSource {
public:
    TextSource() = default;
    explicit TextSource(const TAVIK_DeviceRecord& device) {
        std::uint8_t* end = bytes.data();
        const auto take = [&](const auto& field) {
            std::memcpy(end, &field, sizeof(field));
            end += sizeof(field);
        };
        take(device.pciDeviceId);
        take(device.nodeName);
        take(device.portProperty.portName);
        take(device.modelName);
        take(device.serialNumber);
        take(device.optionRomBiosVersion);
        take(device.optionRomFlags);
        take(device.firmwareVersion);
        take(device.efiVersion);
        take(device.fcodeVersion);
    }
    bool operator==(const TextSource& other) const { return bytes == other.bytes; }

private:
    using Device = TAVIK_DeviceRecord;
    static constexpr std::size_t size = sizeof(Device::pciDeviceId) + sizeof(Device::nodeName) +
                                        sizeof(TAVIK_PortPropertyBlock::portName) + sizeof(Device::modelName) +
                                        sizeof(Device::serialNumber) + sizeof(Device::optionRomBiosVersion) +
                                        sizeof(Device::optionRomFlags) + sizeof(Device::firmwareVersion) +
                                        sizeof(Device::efiVersion) + sizeof(Device::fcodeVersion);
    std::array<std::uint8_t, size> bytes{};
};

/// What the texts of a port's record were made of. The list is built before single requests, several times for some:
/// where a record was made of the same before, its texts are those that it has.
class TextOrigin {
public:
    TextOrigin() = default;
    /// @param vpd what fetchAdapterVpd returned.
    TextOrigin(const TAVIK_DeviceRecord* device, int vpd)
        : source(*device), vpdStatus(vpd), vpdReading(vpd == 0 ? lastVpdReading() : 0) {}

    bool isSameAs(const TextOrigin& other) const {
        const bool isKnown = vpdStatus != 0 || vpdReading != 0;
        return isKnown && vpdStatus == other.vpdStatus && vpdReading == other.vpdReading && source == other.source;
    }

private:
    TextSource source;
    int vpdStatus = 0;
    std::uint64_t vpdReading = 0; ///< 0 for none
};

class TextOrigins final : KeptMemory {
public:
    /// Notes the origin of the record at the index. @return whether it is the one noted before.
    bool wereSame(int index, const TextOrigin& origin) {
        const auto place = static_cast<std::size_t>(index);
        if (place < noted.size()) {
            const bool isSame = noted[place].isSameAs(origin);
            if (!isSame) noted[place] = origin;
            return isSame;
        }
        try {
            noted.resize(place);
            noted.push_back(origin);
        } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch)
            // Its texts are then made anew each time.
        }
        return false;
    }

private:
    void release() override { noted = {}; }

    std::vector<TextOrigin> noted;
};

TextOrigins textOrigins;

/// Everything that is text, but the speed's.
void setTexts(TAVIK_DeviceRecord* device, int vpdStatus, FCPortEntry& port) {
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
    port.model.assignField(device->modelName, sizeof(device->modelName));
}

/// Whether the record still holds what it was given for the device, and in the same way. The log tells how texts are
/// made, so they are made while it is on.
bool hasTexts(const FCPortEntry& port, const TAVIK_DeviceRecord* device, int index, int vpdStatus) {
    const bool wereSame = textOrigins.wereSame(index, {device, vpdStatus});
    return wereSame && port.valid == 1 && port.device == device && !gDebugLog;
}

} // namespace

void createFCPort(TAVIK_DeviceRecord* device, int index) {
    DEBUG_LOG("Entering createFCPort, index = %d", index);
    clearVpdStores();
    const int vpdStatus = fetchAdapterVpd(device);
    FCPortEntry& port = g_fcPortList[index];
    if (hasTexts(port, device, index, vpdStatus)) {
        port.speedDescription.clear();
    } else {
        records.makeEmpty(port);
        setTexts(device, vpdStatus, port);
    }

    setPortProperty(device, port);
    port.maxSpeed = maximumSpeed(device);
    port.deviceNumber = device->deviceNumber;
    port.deviceStatus = device->statusFlags;
    setENodeMAC(device, port);
    port.device = device;
    port.valid = 1;
    DEBUG_LOG("Exiting  createFCPort\n");
}

void buildFCPortList() {
    buildPerStorageFunction(
        records, [] { records.appendAsItWas(); }, createFCPort);
}

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
