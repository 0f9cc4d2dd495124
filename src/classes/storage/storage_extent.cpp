#include "classes/storage/storage_extent.h"

#include "classes/instance.h"
#include "classes/record_list.h"
#include "classes/storage/target_walk.h"
#include "log/log.h"
#include "text/text.h"

namespace merolt::storage {

std::int32_t g_storageExtentCount = 0;
StorageExtentEntry* g_storageExtentList = nullptr;

namespace {

RecordList<StorageExtentEntry> records(g_storageExtentCount, g_storageExtentList);

constexpr const char* cimClass = "Merolt_FCHBA_StorageExtent";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "DeviceID", nullptr};

constexpr CMPIUint16 accessReadWrite = 3;

const ListClass descriptor = {
    .name = "StorageExtent",
    .key = "DeviceID",
    .count = [] { return int{g_storageExtentCount}; },
    .keyText = [](int index) { return g_storageExtentList[index].deviceID.text(); },
    .makePath = makePath_StorageExtent,
    .makeInstance = makeInstance_StorageExtent,
    .valid = [](int index) { return g_storageExtentList[index].valid != 0; },
    .enumerationSkipsInvalid = true,
};

/// Two digits a byte: all 16 bytes if the unit says so, else the first 8.
FixedText<33> identifierText(const TAVIK_LunEntry& lun) {
    FixedText<33> text;
    text.append(formatWorldWideName(lun.identifier).view());
    if (lun.identifierLength == sizeof(lun.identifier)) text.append(formatWorldWideName(lun.identifier + 8).view());
    return text;
}

template <std::size_t N>
FixedText<128> lunText(const char (&field)[N]) {
    FixedText<128> text;
    text.assignField(field, N);
    return text;
}

} // namespace

void createStorageExtent(TAVIK_DeviceRecord* device, TAVIK_TargetEntry* target, TAVIK_LunEntry* lun, int index) {
    DEBUG_LOG("Entering createStorageExtent, index = %d", index);
    StorageExtentEntry& extent = g_storageExtentList[index];
    extent.deviceID.join({formatWorldWideName(device->portProperty.portName).view(), "_",
                          formatWorldWideName(target->portName).view(), "_", identifierText(*lun).view(), "_",
                          formatNumber(lun->number).view()});
    extent.device = device;
    extent.target = target;
    extent.lun = lun;
    extent.valid = 1;
    DEBUG_LOG("Exiting  createStorageExtent\n");
}

void buildStorageExtentList() {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    RecordSum units(ChainKind::logicalUnits);
    forEachTarget(adapters, [&](TAVIK_DeviceRecord&, TAVIK_TargetEntry& target) { units.add(target.lunCount); });
    forEachLun(adapters, [&](TAVIK_DeviceRecord&, TAVIK_TargetEntry&, TAVIK_LunEntry&) { units.addEntry(); });
    records.make(units.capacity());
    int index = 0;
    forEachLun(adapters, [&](TAVIK_DeviceRecord& device, TAVIK_TargetEntry& target, TAVIK_LunEntry& lun) {
        if (index < g_storageExtentCount) createStorageExtent(&device, &target, &lun, index++);
    });
}

void clearStorageExtentList() { records.clear(); }

CmpiObjectPath makePath_StorageExtent(const char* className, const char* nameSpace, int index) {
    return systemScopedPath(className, nameSpace, cimClass, "DeviceID", g_storageExtentList[index].deviceID.text());
}

CmpiInstance makeInstance_StorageExtent(const char* className, const char* nameSpace, const char** properties,
                                        int index) {
    const StorageExtentEntry& extent = g_storageExtentList[index];
    const TAVIK_LunEntry& lun = *extent.lun;
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    FixedText<16> number;
    number.format("%u", lun.number);
    setSystemScope(instance, cimClass);
    instance.setProperty("DeviceID", CmpiData(extent.deviceID.text()));
    instance.setProperty("ElementName", CmpiData(" "));
    instance.setProperty("Name", CmpiData(lunText(lun.osName).text()));
    instance.setProperty("Access", CmpiData(accessReadWrite));
    instance.setProperty("BlockSize", CmpiData(CMPIUint64{lun.blockSize}));
    instance.setProperty("LunID", CmpiData(CMPIUint16{lun.number}));
    instance.setProperty("VendorID", CmpiData(lunText(lun.vendorId).text()));
    instance.setProperty("ProductID", CmpiData(lunText(lun.productId).text()));
    instance.setProperty("Revision", CmpiData(lunText(lun.productRevision).text()));
    instance.setProperty("RaidType", CmpiData("N/A"));
    instance.setProperty("NumberOfPartitions", CmpiData("N/A"));
    instance.setProperty("OperationalStatus", CmpiData(uint16Array({2})));
    instance.setProperty("OtherIdentifyingInfo", CmpiData(stringArray({number.text()})));
    instance.setProperty("IdentifyingDescriptions", CmpiData(stringArray({"Lun ID"})));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(StorageExtent, descriptor)

} // namespace merolt::storage
