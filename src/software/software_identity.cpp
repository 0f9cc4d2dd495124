#include "software/software_identity.h"

#include "classes/instance.h"
#include "classes/physical/serial_form.h"
#include "classes/record_index.h"
#include "classes/record_list.h"
#include "classes/storage/serial_text.h"
#include "classes/storage/vital_product_data.h"
#include "classes/system_name.h"
#include "inventory/chip.h"
#include "inventory/library_text.h"
#include "log/log.h"
#include "provider_version.h"
#include "text/text.h"

#include "CmpiDateTime.h"

#include <cstdio>
#include <cstring>
#include <ctime>

namespace merolt::software {

using namespace storage;

std::int32_t g_softwareIdentityCount = 0;
SoftwareIdentityEntry* g_softwareIdentityList = nullptr;

namespace {

RecordList<SoftwareIdentityEntry> records(g_softwareIdentityCount, g_softwareIdentityList);
RecordsByText identities; ///< by InstanceID

const char* keys[] = {"InstanceID", nullptr};

constexpr int entriesPerFunction = 6;
constexpr int firstChipWithFlashImage = 15;
constexpr std::uint8_t firmwareValid = 0x01;
constexpr const char* unknown = "Unknown";

const ListClass descriptor = {
    .name = "SoftwareIdentity",
    .key = "InstanceID",
    .count = [] { return int{g_softwareIdentityCount}; },
    .keyText = [](int index) { return g_softwareIdentityList[index].instanceID.text(); },
    .makePath = makePath_SoftwareIdentity,
    .makeInstance = makeInstance_SoftwareIdentity,
    .valid = [](int index) { return g_softwareIdentityList[index].valid != 0; },
    .enumerationSkipsInvalid = true,
};

// What a kind of software shows. The formats take the maker's word and the serial number.
struct SoftwareKind {
    std::uint16_t classification;
    const char* suffix;
    const char* nameOfCNA;
    const char* nameOfFC;
    const char* description;
    bool hasReleaseDate;
};

constexpr const char* driverDescription =
    "The driver acts as a translator between the Merolt FC HBA and the Operating System. The driver accepts generic "
    "commands from the OS and translates them into specialized commands for the Merolt FC HBA.";

#define FIRMWARE_DESCRIPTION(kind)                                                                                     \
    kind " Firmware. The FC HBA firmware (RISC Code) programs the KRT device to provide Fibre Channel functionality "  \
         "(i.e. FC protocol support). The firmware also abstracts most of the protocol-specific Fibre Channel "        \
         "functions from the OS drivers."

constexpr const char* biosDescription =
    "The BIOS (boot code) for Merolt FC HBAs is required if the computer system is booting from a storage device (boot "
    "device) attached to the Merolt FC HBA. The BIOS (which resides on the HBA's flash memory) has the primary "
    "function "
    "of communicating with the external boot device before the OS is up and running. It also performs other functions "
    "like managing the setup for the HBA and initializing and testing the HBA's KRT.";

// clang-format off
constexpr SoftwareKind kinds[] = {
    {32775, "_CIMProvider",    "%s CNA %s CIM Provider",            "%s CNA %s CIM Provider",                       "The CNA CIM Provider version.",      false},
    {2,     "_Driver",         "%s CNA Adapter %s Driver",          "%s Fibre Channel Adapter %s Driver",           driverDescription,                    false},
    {32768, "_DriverFirmware", "%s CNA Adapter %s Driver Firmware", "%s Fibre Channel Adapter %s Driver Firmware",  FIRMWARE_DESCRIPTION("Driver"),       false},
    {10,    "_FlashFirmware",  "%s CNA Adapter %s Flash Firmware",  "%s Fibre Channel Adapter %s Flash Firmware",   FIRMWARE_DESCRIPTION("Flash"),        true},
    {32770, "_BIOS",           "%s CNA Adapter %s BIOS",            "%s Fibre Channel Adapter %s BIOS",             biosDescription,                      true},
    {13,    "_FlashImage",     "%s CNA Adapter %s Flash Image",     "%s Fibre Channel Adapter %s Flash Image",      "The Flash Image for Merolt CNAs.",   true},
};
// clang-format on
#undef FIRMWARE_DESCRIPTION

enum Kind { cimProvider, driver, driverFirmware, flashFirmware, bios, flashImage };

/// What the entries of one function have in common.
struct Function {
    const char* host = "";
    SerialText serialNumber;
    WorldWideNameText portName;
    /// Template of an entry: flags, model and the multi-boot image's numbers.
    SoftwareIdentityEntry common{};
};

/// Reads the version of the multi-boot image. Numbers behind a mismatch in its text stay -1.
void readMultiBootVersion(TAVIK_DeviceRecord* device, SoftwareIdentityEntry& common) {
    common.majorVersion = common.minorVersion = common.subminorVersion = -1;
    common.releaseDay = common.releaseMonth = common.releaseYear = -1;
    char* text = nullptr;
    std::uint32_t length = 0;
    if (TAVIK_GetMBIVersionString(device, &text, &length) != 0 || !text) return;
    DEBUG_LOG("Getting I2C TAVIK_GetMBIVersionString is successful\n");
    FixedText<512> version;
    version.assign(libraryText(text, length));
    DEBUG_LOG("I2C TAVIK_GetMBIVersionString Buffer = %s\n", version.text());
    std::sscanf(version.text(), "V:%d.%02d.%02d,D:%02d%02d%4d,A:Y,T:M", &common.majorVersion, &common.minorVersion,
                &common.subminorVersion, &common.releaseMonth, &common.releaseDay, &common.releaseYear);
    DEBUG_LOG("MBI Version = %d.%d.%d\n", common.majorVersion, common.minorVersion, common.subminorVersion);
    DEBUG_LOG("MBI Version Release Date = %d/%d/%d\n", common.releaseMonth, common.releaseDay, common.releaseYear);
    TAVIK_FreeMem(text);
    common.dateValid = 1;
}

template <std::size_t N>
FixedText<128> trimmedField(const char (&field)[N]) {
    FixedText<128> text;
    text.assignField(field, N);
    trimString(text.data());
    return text;
}

FixedText<128> flashFirmwareVersion(const TAVIK_DeviceRecord* device) {
    FixedText<128> version;
    version.assign("N/A");
    if (getChipIndex(device) > 7 && (device->optionRomFlags & firmwareValid)) {
        const std::uint8_t* numbers = device->firmwareVersion;
        version.join({formatNumber(numbers[0]).view(), ".", formatNumber(numbers[1], 2).view(), ".",
                      formatNumber(numbers[2], 2).view()});
    }
    return version;
}

/// The next free entry; null at the end of the array, which has room for six a function.
SoftwareIdentityEntry* entryAt(int index) {
    return index < g_softwareIdentityCount ? &g_softwareIdentityList[index] : nullptr;
}

void addEntry(const Function& function, Kind kind, const char* host, const FixedText<128>& version, int* index) {
    SoftwareIdentityEntry* entry = entryAt(*index);
    if (!entry) return;
    *entry = function.common;
    entry->instanceID.join(
        {host, "_", function.serialNumber.view(), "_", function.portName.view(), "_", kinds[kind].suffix});
    identities.add(entry->instanceID.view(), *index);
    entry->serialNumber.assign(function.serialNumber.view());
    entry->version = version;
    entry->classification = kinds[kind].classification;
    entry->valid = 1;
    ++*index;
}

FixedText<128> providerVersionText() {
    FixedText<128> text;
    text.assign(providerVersion);
    return text;
}

bool hasInstanceID(const FixedText<128>& instanceID) {
    return identities.find(instanceID.view(), g_softwareIdentityList, g_softwareIdentityCount,
                           &SoftwareIdentityEntry::instanceID) >= 0;
}

/// Nothing if neither the VPD nor the multi-boot image tells a version.
FixedText<128> flashImageVersion(const SoftwareIdentityEntry& common) {
    DEBUG_LOG("createSoftwareIdentity: g_flashImageVersion=%s", g_flashImageVersion.text());
    FixedText<128> version;
    if (common.dateValid) {
        version.format("%d.%d.%d", common.majorVersion, common.minorVersion, common.subminorVersion);
    } else {
        version.assign(vpdValue(g_flashImageVersion));
    }
    return version;
}

/// The image of the whole card; the second function of a card adds none.
void addFlashImage(const Function& function, int* index) {
    FixedText<128> instanceID;
    instanceID.join({function.host, "_", function.serialNumber.view(), "_", kinds[flashImage].suffix});
    SoftwareIdentityEntry* entry = entryAt(*index);
    if (hasInstanceID(instanceID) || !entry) return;
    *entry = function.common;
    entry->instanceID = instanceID;
    identities.add(entry->instanceID.view(), *index);
    entry->classification = kinds[flashImage].classification;
    entry->valid = 1;
    ++*index;
    FixedText<128> version;
    if (g_flashImageVersion.empty() && !function.common.dateValid) {
        DEBUG_LOG("ERROR: Cannot get flash image version from VPD!");
    } else {
        version = flashImageVersion(function.common);
        if (version.empty()) {
            DEBUG_LOG("createSoftwareIdentity: flashimageversion is NULL");
        } else {
            DEBUG_LOG("createSoftwareIdentity: flashimageversion=%s", version.text());
        }
    }
    if (version.empty()) {
        entry->version.assign(unknown);
        entry->identityInfo.assign(unknown);
        return;
    }
    entry->version = version;
    entry->serialNumber.assign(function.serialNumber.view());
}

const SoftwareKind* kindOf(const SoftwareIdentityEntry& entry) {
    for (const SoftwareKind& kind : kinds) {
        if (kind.classification == entry.classification) return &kind;
    }
    return nullptr;
}

/// Null for a date that the server does not make, whatever its reason: it has no dates, or none beyond the year 9999.
CMPIDateTime* makeReleaseDate(const SoftwareIdentityEntry& entry) try {
    const CMPIUint64 microseconds = makeReleaseDateTime(entry.releaseDay, entry.releaseMonth, entry.releaseYear);
    if (microseconds == 0) return nullptr;
    // A server's date stays when the wrapper goes, whose own copy would be another date.
    return CmpiDateTime(microseconds, CMPIBoolean{0}).getEnc();
} catch (const CmpiStatus&) {
    return nullptr;
}

void setReleaseDate(CmpiInstance& instance, const SoftwareIdentityEntry& entry) {
    const CMPIDateTime* date = makeReleaseDate(entry);
    if (date) instance.setProperty("ReleaseDate", CmpiData(CmpiDateTime(date)));
}

void setKindProperties(CmpiInstance& instance, const SoftwareIdentityEntry& entry, bool isOem) {
    const SoftwareKind* kind = kindOf(entry);
    if (!kind) return;
    FixedText<320> name;
    name.format(entry.isCNA ? kind->nameOfCNA : kind->nameOfFC, isOem ? "IBM" : "Merolt",
                physical::getDisplaySerialNumber(entry.serialNumber.text()));
    instance.setProperty("Name", CmpiData(name.text()));
    instance.setProperty("Description", CmpiData(kind->description));
    if (kind->hasReleaseDate && entry.dateValid) setReleaseDate(instance, entry);
}

} // namespace

CMPIUint64 makeReleaseDateTime(int day, int month, int year) {
    const std::time_t now = std::time(nullptr);
    std::tm today{};
    localtime_r(&now, &today);
    std::tm date{};
    date.tm_mday = day;
    date.tm_mon = month;
    date.tm_year = year - 1900;
    date.tm_isdst = today.tm_isdst;
    const std::time_t seconds = std::mktime(&date);
    return seconds > 0 ? static_cast<CMPIUint64>(seconds) * 1000000 : 0;
}

namespace {

void createIdentities(TAVIK_DeviceRecord* device, int* index, SystemNameOfBuild& host) {
    DEBUG_LOG("Entering createSoftwareIdentity, current_index= %d", *index);
    Function function;
    function.host = host.text();
    readMultiBootVersion(device, function.common);
    g_serialNumber.clear();
    const int vpdStatus = fetchAdapterVpd(device);
    DEBUG_LOG("%s", vpdStatus == 0
                        ? "Merolt_FC_SoftwareIdentity: createSoftwareIdentity: VPD data retrieved successfully."
                        : "Merolt_FC_SoftwareIdentity: createSoftwareIdentity: Unable to retrieve VPD data!");
    function.serialNumber = serialText(device, vpdStatus);
    function.portName = formatWorldWideName(device->portProperty.portName);
    function.common.isCNA = isConvergedFunction(device) ? 1 : 0;
    function.common.identityInfo.assignField(device->modelName, sizeof(device->modelName));

    addEntry(function, cimProvider, gSystemName, providerVersionText(), index);
    addEntry(function, driver, function.host, trimmedField(device->driverVersion), index);
    addEntry(function, driverFirmware, function.host, trimmedField(device->driverFirmwareVersion), index);
    addEntry(function, flashFirmware, function.host, flashFirmwareVersion(device), index);
    addEntry(function, bios, function.host, trimmedField(device->optionRomBiosVersion), index);
    if (getChipIndex(device) >= firstChipWithFlashImage) addFlashImage(function, index);
    DEBUG_LOG("Exiting  createSoftwareIdentity, current_index= %d", *index);
}

} // namespace

void createSoftwareIdentity(TAVIK_DeviceRecord* device, int* index) {
    SystemNameOfBuild host;
    createIdentities(device, index, host);
}

void buildSoftwareIdentityList() {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    const std::int32_t entries = countStorageFunctions(adapters) * entriesPerFunction;
    identities.startAnew(entries);
    records.make(entries);
    int index = 0;
    SystemNameOfBuild host;
    forEachStorageFunction(adapters, [&](TAVIK_DeviceRecord* device) { createIdentities(device, &index, host); });
    records.keepValid();
}

void clearSoftwareIdentityList() { records.clear(); }

CmpiObjectPath makePath_SoftwareIdentity(const char* className, const char* nameSpace, int index) {
    CmpiObjectPath path(nameSpace, className);
    path.setKey("InstanceID", CmpiData(g_softwareIdentityList[index].instanceID.text()));
    return path;
}

CmpiInstance makeInstance_SoftwareIdentity(const char* className, const char* nameSpace, const char** properties,
                                           int index) {
    SoftwareIdentityEntry& entry = g_softwareIdentityList[index];
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    const bool isOem = physical::isIBMSerialNumber(entry.serialNumber.data());
    instance.setProperty("InstanceID", CmpiData(entry.instanceID.text()));
    instance.setProperty("Manufacturer", CmpiData(isOem ? physical::oemManufacturer : physical::meroltManufacturer));
    instance.setProperty("VersionString", CmpiData(entry.version.text()));
    instance.setProperty("Classifications", CmpiData(uint16Array({entry.classification})));
    instance.setProperty("IdentityInfoType", CmpiData(stringArray({"SoftwareID", "SoftwareStatus"})));
    instance.setProperty("IdentityInfoValue", CmpiData(stringArray({entry.identityInfo.text(), "2"})));
    setKindProperties(instance, entry, isOem);
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(SoftwareIdentity, descriptor)

} // namespace merolt::software
