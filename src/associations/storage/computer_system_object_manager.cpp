// The host and its CIM server. Of the server's keys only the class of its system is tested, not the system's name.
#include "associations/storage/families.h"
#include "associations/storage/walks.h"
#include "classes/instance.h"

namespace merolt::storage {

using namespace association;

namespace {

void hostOfServer(const Source& source, const ObjectVisitor& visit) {
    if (source.equals(0, computerSystemClass)) visit({});
}

constexpr Family family = {
    .token = "AssocComputerSystemObjectManager",
    .className = "Merolt_FCHBA_ComputerSystemObjectManager",
    .left = hostAs("Antecedent"),
    .right = {"Dependent", objectManager},
    .forEachPair = oneWithEach<theObject>,
    .findLeft = {.keys = {{{"SystemCreationClassName"}}}, .find = hostOfServer},
    .findRight = {.find = theObject},
    .filters = Filters::ignored,
    .texts = storageTexts,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemObjectManager, family)

} // namespace merolt::storage
