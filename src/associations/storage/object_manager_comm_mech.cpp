// The CIM server and the mechanism through which clients speak to it. Both directions test SystemName alone; the
// server's own path carries a name that was looked up separately, and where the two differ it finds nothing.
#include "associations/storage/families.h"
#include "associations/storage/walks.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr Search ofThisHost = {.keys = {{{"SystemName"}}}, .find = onlyIf<namesHost, theObject>};

constexpr Family family = {
    .token = "AssocObjectManagerCommMech",
    .className = "Merolt_FCHBA_ObjectManagerCommMech",
    .left = {"Antecedent", objectManager},
    .right = {"Dependent", commMech},
    .forEachPair = oneWithEach<theObject>,
    .findLeft = ofThisHost,
    .findRight = ofThisHost,
    .filters = Filters::ignored,
    .texts = storageTexts,
};

} // namespace

DEFINE_ASSOCIATION(AssocObjectManagerCommMech, family)

} // namespace merolt::storage
