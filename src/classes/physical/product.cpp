#include "classes/physical/product.h"

#include "classes/instance.h"
#include "classes/physical/adapter_type.h"
#include "classes/physical/serial_form.h"
#include "classes/record_list.h"
#include "log/log.h"

#include <utility>

namespace merolt::physical {

std::int32_t g_productCount = 0;
ProductEntry* g_productList = nullptr;

namespace {

RecordList<ProductEntry> records(g_productCount, g_productList);

// The same maker for every card, also for those that the package class publishes under an OEM's name.
constexpr const char* vendor = meroltManufacturer;
const char* keys[] = {"Name", "IdentifyingNumber", "Vendor", "Version", nullptr};

const ListClass descriptor = {
    .name = "Product",
    .key = "IdentifyingNumber",
    .count = [] { return int{g_productCount}; },
    .keyText = [](int index) { return g_productList[index].identifyingNumber.text(); },
    .makePath = makePath_Product,
    .makeInstance = makeInstance_Product,
    .valid = [](int index) { return g_productList[index].valid != 0; },
};

void addProduct(const TAVIK_AdapterEntry& adapter, int index) {
    DEBUG_LOG("Entering createProduct, index = %d", index);
    ProductEntry& product = g_productList[g_productCount++];
    product.identifyingNumber.assignField(adapter.serialNumber, sizeof(adapter.serialNumber));
    product.name.assignField(adapter.modelName, sizeof(adapter.modelName));
    product.version.assignField(adapter.version, sizeof(adapter.version));
    product.adapterType = adapterType(adapter.kind);
    product.valid = 1;
    DEBUG_LOG("Exiting  createProduct\n");
}

} // namespace

void buildProductList() {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return;
    const std::int32_t capacity = records.makeRoom(countAdapters(adapters));
    forEachAdapter(adapters, [&](const TAVIK_AdapterEntry& adapter) {
        if (g_productCount < capacity) addProduct(adapter, g_productCount);
    });
}

void clearProductList() { records.clear(); }

CmpiObjectPath makePath_Product(const char* className, const char* nameSpace, int index) {
    const ProductEntry& product = g_productList[index];
    CmpiObjectPath path(nameSpace, className);
    path.setKey("Name", CmpiData(product.name.text()));
    path.setKey("IdentifyingNumber", CmpiData(product.identifyingNumber.text()));
    path.setKey("Vendor", CmpiData(vendor));
    path.setKey("Version", CmpiData(product.version.text()));
    return path;
}

CmpiInstance makeInstance_Product(const char* className, const char* nameSpace, const char** properties, int index) {
    const ProductEntry& product = g_productList[index];
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    FixedText<320> elementName;
    elementName.format("%s_%s_%s", vendor, product.version.text(), product.name.text());
    instance.setProperty("Name", CmpiData(product.name.text()));
    instance.setProperty("IdentifyingNumber", CmpiData(product.identifyingNumber.text()));
    instance.setProperty("Vendor", CmpiData(vendor));
    instance.setProperty("Version", CmpiData(product.version.text()));
    instance.setProperty("ElementName", CmpiData(elementName.text()));
    instance.setProperty("AdapterType", CmpiData(CMPIUint32{product.adapterType}));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(Product, descriptor)

} // namespace merolt::physical
