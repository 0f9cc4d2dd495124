// A card and its jacks.
#include "associations/storage/contained_parts.h"
#include "associations/storage/families.h"
#include "associations/storage/object_manager_texts.h"
#include "associations/storage_classes.h"

namespace merolt::storage {

using namespace association;
using physical::g_physicalPortCount;
using physical::g_physicalPortList;

namespace {

CardToken cardOf(const char* tag) {
    CardToken card;
    std::uint32_t portNumber = 0;
    physical::parsePhysicalPortTag(tag, card.data(), &portNumber);
    return card;
}

constexpr PartList jacks = {
    .logName = "PHYSICALPORT",
    .count = &g_physicalPortCount,
    .tag = [](int index) { return g_physicalPortList[index].tag.text(); },
    .cardOf = cardOf,
};

constexpr Family family = {
    .token = "AssocPhysicalPackagePhysicalPort",
    .className = "Merolt_Adapter_PhysicalPackagePhysicalPort",
    .left = {"GroupComponent", physicalPackage},
    .right = {"PartComponent", physicalPort},
    .forEachPair = containedPairs<jacks>,
    .findLeft = cardOfPart<jacks>,
    .findRight = partsOfCard<jacks>,
    .filters = Filters::ignored,
    .texts = getInstanceAsObjectManagerNamespace,
};

} // namespace

DEFINE_ASSOCIATION(AssocPhysicalPackagePhysicalPort, family)

} // namespace merolt::storage
