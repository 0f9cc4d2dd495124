// Merolt_Adapter_Product: each adapter as the management library names it, whatever its functions and its VPD say.
#pragma once

#include "classes/list_class.h"
#include "text/fixed_text.h"

#include <cstdint>

namespace merolt::physical {

struct ProductEntry {
    std::uint8_t valid;               ///< 1 after the record was filled
    FixedText<128> identifyingNumber; ///< key: the adapter's serial number
    FixedText<128> name;              ///< key: model name
    FixedText<128> version;           ///< key
    std::uint32_t adapterType;
};

extern std::int32_t g_productCount;
extern ProductEntry* g_productList;

void buildProductList();
void clearProductList();

CmpiObjectPath makePath_Product(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_Product(const char* className, const char* nameSpace, const char** properties, int index);
DECLARE_REQUEST_FUNCTIONS(Product)

} // namespace merolt::physical
