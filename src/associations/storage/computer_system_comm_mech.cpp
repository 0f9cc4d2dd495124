// The host and the mechanism through which clients speak to its CIM server. The only storage family whose searches test
// the namespace and whose requests log.
#include "associations/storage/families.h"
#include "associations/storage/walks.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr Texts texts = deviating(storageTexts, [](Texts& t) {
    t.findLeft.nameSpace = "{F}-findMatchedRole1InstancesOrReferences: Error getting namespace, status.rc={n}!";
    t.findRight.nameSpace = "{F}-findMatchedRole2InstancesOrReferences: Error getting namespace, status.rc={n}!";
    for (Text& open : t.requests.open)
        open = debugText("Entering {O}_{F}");
    t.requests.className = "{O}_{F}: Error getting classname, status.rc={n}!";
    t.requests.foreignClass = "{O}_{F}: Error unsupported class, classname={n}!";
});

constexpr Family family = {
    .token = "AssocComputerSystemCommMech",
    .className = "Merolt_FCHBA_ComputerSystemCommMech",
    .left = hostAs("Antecedent"),
    .right = {"Dependent", commMech},
    .forEachPair = oneWithEach<theObject>,
    .findLeft = findHost,
    .findRight = {.find = theObject},
    .filters = Filters::ignored,
    .texts = texts,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemCommMech, family)

} // namespace merolt::storage
