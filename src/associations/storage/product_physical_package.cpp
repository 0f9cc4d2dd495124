// A card as a product and as a thing, joined by its serial number. Towards the product the package's Tag is compared
// and not its serial number: where the Tag is a UUID, a package finds no product.
#include "associations/storage/families.h"
#include "associations/storage/key_match.h"

namespace merolt::storage {

using namespace association;
using physical::g_physicalPackageCount;
using physical::g_physicalPackageList;
using physical::g_productCount;
using physical::g_productList;

namespace {

constexpr KeyedList products = {&g_productCount,
                                [](int index) { return g_productList[index].identifyingNumber.text(); }};
constexpr KeyedList packages = {&g_physicalPackageCount,
                                [](int index) { return g_physicalPackageList[index].serialNumber.text(); }};

constexpr Family family = {
    .token = "AssocProductPhysicalPackage",
    .className = "Merolt_Adapter_ProductPhysicalPackage",
    .left = {"GroupComponent", product},
    .right = {"PartComponent", physicalPackage},
    .forEachPair = equalPairs<products, packages>,
    .findLeft = {.keys = {{{"Tag"}}}, .find = equalTo<Cut::whole, products>},
    .findRight = {.keys = {{{"IdentifyingNumber"}}}, .find = equalTo<Cut::whole, packages>},
    .filters = Filters::ignored,
    .texts = storageTexts,
};

} // namespace

DEFINE_ASSOCIATION(AssocProductPhysicalPackage, family)

} // namespace merolt::storage
