// The CIM server and its two namespaces that concern the adapters.
#include "associations/storage/families.h"
#include "associations/storage/walks.h"

namespace merolt::storage {

using namespace association;

namespace {

void bothNamespaces(const Source&, const ObjectVisitor& visit) {
    matchingRecords(server::namespaceCount, visit, [](int) { return true; });
}

void serverOfThatName(const Source& source, const ObjectVisitor& visit) {
    if (source.equals(0, server::getObjectManagerName())) visit({});
}

void namespacesOfThatServer(const Source& source, const ObjectVisitor& visit) {
    if (source.equals(0, server::getObjectManagerName())) bothNamespaces(source, visit);
}

constexpr Family family = {
    .token = "AssocObjectManagerNamespace",
    .className = "Merolt_FCHBA_ObjectManagerNamespace",
    .left = {"Antecedent", objectManager},
    .right = {"Dependent", cimNamespace},
    .forEachPair = oneWithEach<bothNamespaces>,
    .findLeft = {.keys = {{{"ObjectManagerName"}}}, .find = serverOfThatName},
    .findRight = {.keys = {{{"Name"}}}, .find = namespacesOfThatServer},
    .filters = Filters::ignored,
    .texts = storageTexts,
};

} // namespace

DEFINE_ASSOCIATION(AssocObjectManagerNamespace, family)

} // namespace merolt::storage
