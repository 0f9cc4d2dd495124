// A card and the transceiver modules in it.
#include "associations/storage/contained_parts.h"
#include "associations/storage/families.h"
#include "associations/storage/object_manager_texts.h"
#include "associations/storage_classes.h"

namespace merolt::storage {

using namespace association;
using physical::g_physicalConnectorCount;
using physical::g_physicalConnectorList;

namespace {

CardToken cardOf(const char* tag) {
    char moduleSerial[256] = {};
    CardToken card;
    std::uint32_t portNumber = 0;
    physical::parsePhysicalConnectorTag(tag, moduleSerial, card.data(), &portNumber);
    return card;
}

constexpr PartList connectors = {
    .logName = "PHYSICALCONNECTOR",
    .count = &g_physicalConnectorCount,
    .tag = [](int index) { return g_physicalConnectorList[index].tag.text(); },
    .cardOf = cardOf,
};

constexpr Family family = {
    .token = "AssocPhysicalPackagePhysicalConnector",
    .className = "Merolt_Adapter_PhysicalPackagePhysicalConnector",
    .left = {"GroupComponent", physicalPackage},
    .right = {"PartComponent", physicalConnector},
    .forEachPair = containedPairs<connectors>,
    .findLeft = cardOfPart<connectors>,
    .findRight = partsOfCard<connectors>,
    .filters = Filters::ignored,
    .texts = getInstanceAsObjectManagerNamespace,
};

} // namespace

DEFINE_ASSOCIATION(AssocPhysicalPackagePhysicalConnector, family)

} // namespace merolt::storage
