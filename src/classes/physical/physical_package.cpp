#include "classes/physical/physical_package.h"

#include "classes/instance.h"
#include "classes/physical/adapter_type.h"
#include "classes/physical/nic_lookup.h"
#include "classes/physical/serial_form.h"
#include "classes/record_index.h"
#include "classes/record_list.h"
#include "classes/storage/serial_text.h"
#include "classes/storage/vital_product_data.h"
#include "log/log.h"
#include "text/text.h"

#include <algorithm>
#include <cstring>

namespace merolt::physical {

using namespace storage;

std::int32_t g_physicalPackageCount = 0;
PhysicalPackageEntry* g_physicalPackageList = nullptr;

namespace {

// It can grow beyond the number of adapters: a card's VPD may name another serial number than its adapter does.
RecordList<PhysicalPackageEntry> records(g_physicalPackageCount, g_physicalPackageList);

constexpr const char* cimClass = "Merolt_Adapter_PhysicalPackage";
const char* keys[] = {"Tag", "CreationClassName", nullptr};

constexpr CMPIUint16 packageTypeModule = 9;

/// Models that mark a card as an OEM's, whatever the form of its serial number.
constexpr const char* oemModels[] = {"ZKM4101", "ZKM4102", "ZKM4103", "ZKM4104"};

const ListClass descriptor = {
    .name = "PhysicalPackage",
    .key = "Tag",
    .count = [] { return int{g_physicalPackageCount}; },
    .keyText = [](int index) { return g_physicalPackageList[index].tag.text(); },
    .makePath = makePath_PhysicalPackage,
    .makeInstance = makeInstance_PhysicalPackage,
    .valid = [](int index) { return g_physicalPackageList[index].valid != 0; },
};

/// Those of the list that is being built; an instance that is made trims the serial number of its record.
RecordsByText cards;

/// The record of that serial number in the same letter case; -1 if there is none.
int findCard(std::string_view serialNumber) {
    return cards.find(serialNumber, g_physicalPackageList, g_physicalPackageCount, &PhysicalPackageEntry::serialNumber);
}

FixedText<128> chooseTag(const SerialText& serial) {
    FixedText<128> tag;
    tag.assign(serial.view());
    if (!g_i2cUUID.empty()) {
        DEBUG_LOG("createPhysicalPackage: I2C uuid=%s", g_i2cUUID.text());
        tag.assign(g_i2cUUID.view());
        return tag;
    }
    if (g_UUID.empty()) return tag;
    DEBUG_LOG("createPhysicalPackage: g_UUID=%s", g_UUID.text());
    const char* uuid = vpdValue(g_UUID);
    if (uuid[0] == '\0') {
        DEBUG_LOG("createPhysicalPackage: uuid is NULL");
        return tag;
    }
    DEBUG_LOG("createPhysicalPackage: uuid=%s", uuid);
    tag.assign(uuid);
    return tag;
}

void setSku(PhysicalPackageEntry& package) {
    package.sku.clear();
    if (g_fruNumberVersion.empty()) return;
    DEBUG_LOG("createPhysicalPackage: g_fruNumberVersion=%s", g_fruNumberVersion.text());
    const char* fruVersion = vpdValue(g_fruNumberVersion);
    if (fruVersion[0] == '\0') {
        DEBUG_LOG("createPhysicalPackage: fruVersion is NULL");
        return;
    }
    DEBUG_LOG("createPhysicalPackage: fruVersion=%s", fruVersion);
    package.sku.assign(fruVersion);
}

CNACard* findCNACard(const AdapterSerial& serialNumber) {
    for (CNACard* card = g_CNAList; card; card = card->next) {
        DEBUG_LOG("Comparing %s to %s.", card->properties.serialNumber, serialNumber.text());
        if (serialNumber.equals(card->properties.serialNumber)) return card;
    }
    return nullptr;
}

/// Items of vital product data behind a count: a keyword of two characters with its terminator, one byte, a value.
constexpr std::size_t itemSize = 213;
constexpr std::size_t itemValueOffset = 4;
constexpr std::uint32_t mostItems = (sizeof(CNAPort::functionData) - sizeof(std::uint32_t)) / itemSize;

/// Replaces the text by the value of the last item with that keyword, if the card's first port has one.
void takeItem(const CNACard* card, const char* keyword, FixedText<128>& text) {
    if (!card->ports) return;
    const std::uint8_t* data = card->ports->functionData;
    std::uint32_t count = 0;
    std::memcpy(&count, data, sizeof(count));
    const std::uint8_t* item = data + sizeof(count);
    for (std::uint32_t index = 0; index < std::min(count, mostItems); ++index, item += itemSize) {
        if (std::strncmp(reinterpret_cast<const char*>(item), keyword, 3) != 0) continue;
        text.assignField(reinterpret_cast<const char*>(item) + itemValueOffset, itemSize - itemValueOffset);
    }
}

bool isOemModel(const FixedText<128>& model) {
    return std::any_of(std::begin(oemModels), std::end(oemModels),
                       [&](const char* name) { return equalsIgnoringCase(name, model.text()); });
}

/// The first record with the card's serial number in any letter case; -1 if there is none.
int findPackage(const CNACard* card) {
    for (int index = 0; index < g_physicalPackageCount; ++index) {
        if (equalsIgnoringCase(g_physicalPackageList[index].serialNumber.text(), card->properties.serialNumber))
            return index;
    }
    return -1;
}

} // namespace

FixedText<128> calcTag_Nic_PhysicalPackage(const CNACard* card) {
    FixedText<128> tag;
    tag.assign(card->properties.serialNumber);
    takeItem(card, "YU", tag);
    return tag;
}

FixedText<128> getCardFruNumber(const CNACard* card) {
    FixedText<128> fruNumber;
    fruNumber.assign(card->properties.defaultFruNumber);
    takeItem(card, "FN", fruNumber);
    return fruNumber;
}

void createPhysicalPackage(TAVIK_AdapterEntry* adapter, TAVIK_DeviceRecord* device, int index) {
    DEBUG_LOG("Entering createPhysicalPackage, index = %d", index);
    g_serialNumber.clear();
    g_fruNumberVersion.clear();
    const int vpdStatus = fetchAdapterVpd(device);
    DEBUG_LOG("%s", vpdStatus != 0
                        ? "Merolt_FC_PhysicalPackage: createPhysicalPackage: Unable to retrieve VPD data!"
                        : "Merolt_FC_PhysicalPackage: createPhysicalPackage: VPD data retrieved successfully.");
    const SerialText serial = serialText(device, vpdStatus);
    if (const int known = findCard(serial.view()); known >= 0) {
        DEBUG_LOG("Exiting  createPhysicalPackage: Current device has the same the serial number as a device in the "
                  "list at index=%d. Skip!\n",
                  known);
        return;
    }
    PhysicalPackageEntry& package = records.append();
    package.tag = chooseTag(serial);
    package.serialNumber.assign(serial.view());
    cards.add(package.serialNumber.view(), g_physicalPackageCount - 1);
    package.model.assignField(device->modelName, sizeof(device->modelName));
    package.adapterType = adapterType(adapter->kind);
    package.isCNA = package.adapterType == adapterTypeConverged ? 1 : 0;
    setSku(package);
    package.valid = 1;
    DEBUG_LOG("Exiting  createPhysicalPackage\n");
}

void createNicPhysicalPackage(TAVIK_AdapterEntry* adapter, CNACard* card, int) {
    PhysicalPackageEntry& package = records.append();
    package.tag = calcTag_Nic_PhysicalPackage(card);
    package.serialNumber.assign(card->properties.serialNumber);
    cards.add(package.serialNumber.view(), g_physicalPackageCount - 1);
    package.model.assign(card->properties.modelName);
    package.sku = getCardFruNumber(card);
    package.isCNA = adapterType(adapter->kind) == adapterTypeConverged ? 1 : 0;
    package.valid = 1;
}

bool addPhysicalPackage(TAVIK_AdapterEntry* adapter, TAVIK_ProtocolEntry* entry, int index) {
    const AdapterSerial serialNumber = adapterSerialOf(adapter);
    if (const int known = findCard(serialNumber.view()); known >= 0) {
        DEBUG_LOG("Exiting  createPhysicalPackage: Current device has the same the serial number as a device in the "
                  "list at index=%d. Skip %s!\n",
                  known, serialNumber.text());
        return false;
    }
    if (isStorageFunction(*entry)) {
        DEBUG_LOG("Calling createPhysicalPackage() for FC/FCoE device.");
        createPhysicalPackage(adapter, &entry->storage.device, index);
        DEBUG_LOG("Done calling createPhysicalPackage() for FC/FCoE device.");
        return true;
    }
    CNACard* card = findCNACard(serialNumber);
    if (!card) return false;
    DEBUG_LOG("Calling createPhysicalPackage() for NIC device.");
    createNicPhysicalPackage(adapter, card, index);
    DEBUG_LOG("Done calling createPhysicalPackage() for NIC device.");
    return true;
}

void buildPhysicalPackageList() {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    const std::int32_t adapterCount = countAdapters(adapters);
    cards.startAnew(adapterCount);
    records.makeRoom(adapterCount);
    int index = 0;
    TreeWalk walk(adapters);
    for (TAVIK_AdapterEntry& adapter : walk.adapters()) {
        DEBUG_LOG("buildPhysicalPackageList(): Processing an adapter entry.");
        for (TAVIK_PhyPortEntry& port : walk.portsOf(adapter)) {
            DEBUG_LOG("buildPhysicalPackageList(): Processing an phyport entry.");
            for (TAVIK_ProtocolEntry& entry : walk.functionsOf(port)) {
                DEBUG_LOG("buildPhysicalPackageList(): Processing an protocol entry.");
                if (isKnownFunction(entry) && addPhysicalPackage(&adapter, &entry, index)) ++index;
            }
        }
    }
}

void clearPhysicalPackageList() { records.clear(); }

CmpiObjectPath makePath_PhysicalPackage(const char* className, const char* nameSpace, int index) {
    CmpiObjectPath path(nameSpace, className);
    path.setKey("Tag", CmpiData(g_physicalPackageList[index].tag.text()));
    path.setKey("CreationClassName", CmpiData(cimClass));
    return path;
}

CmpiInstance makeInstance_PhysicalPackage(const char* className, const char* nameSpace, const char** properties,
                                          int index) {
    PhysicalPackageEntry& package = g_physicalPackageList[index];
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    const bool hasOemSerial = isIBMSerialNumber(package.serialNumber.data());
    const bool isOem = isOemModel(package.model) || hasOemSerial;
    const char* displaySerial = getDisplaySerialNumber(package.serialNumber.text());
    FixedText<320> name;
    name.format(package.isCNA == 1 ? "%s CNA Adapter %s" : "%s Fibre Channel Adapter %s", isOem ? "IBM" : "Merolt",
                displaySerial);
    instance.setProperty("Tag", CmpiData(package.tag.text()));
    instance.setProperty("CreationClassName", CmpiData(cimClass));
    instance.setProperty("Model", CmpiData(package.model.text()));
    instance.setProperty("Manufacturer", CmpiData(isOem ? oemManufacturer : meroltManufacturer));
    instance.setProperty("SerialNumber", CmpiData(displaySerial));
    if (hasOemSerial) instance.setProperty("PartNumber", CmpiData(oemPartNumber(package.serialNumber.view()).text()));
    if (!package.sku.empty()) instance.setProperty("SKU", CmpiData(package.sku.text()));
    instance.setProperty("PackageType", CmpiData(packageTypeModule));
    instance.setProperty("Name", CmpiData(name.text()));
    instance.setProperty("Description", CmpiData(name.text()));
    instance.setProperty("AdapterType", CmpiData(CMPIUint32{package.adapterType}));
    return instance;
}

std::optional<CmpiObjectPath> makePath_Nic_PhysicalPackage(const char* className, const char* nameSpace,
                                                           CNACard* card) {
    DEBUG_LOG("Merolt_NIC_PhysicalPackage makePath_PhysicalPackage was called");
    const int index = findPackage(card);
    if (index < 0) return std::nullopt;
    return makePath_PhysicalPackage(className, nameSpace, index);
}

std::optional<CmpiInstance> makeInstance_Nic_PhysicalPackage(const char* className, const char* nameSpace,
                                                             const char** properties, CNACard* card) {
    DEBUG_LOG("Merolt_NIC_PhysicalPackage makeInstance_PhysicalPackage was called");
    const int index = findPackage(card);
    if (index < 0) return std::nullopt;
    return makeInstance_PhysicalPackage(className, nameSpace, properties, index);
}

DEFINE_REQUEST_FUNCTIONS(PhysicalPackage, descriptor)

} // namespace merolt::physical
