// The CIM server and the mechanism through which clients speak to it. Both directions test SystemName alone; the
// server's own path carries a name that was looked up separately, and where the two differ it finds nothing.
#include "associations/storage/families.h"
#include "associations/storage/walks.h"
#include "classes/system_name.h"

namespace merolt::storage {

using namespace association;

namespace {

void theOtherOfThisHost(const Source& source, const ObjectVisitor& visit) {
    if (source.equals(0, gSystemName)) visit({});
}

constexpr Search ofThisHost = {.keys = {{{"SystemName"}}}, .find = theOtherOfThisHost};

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
