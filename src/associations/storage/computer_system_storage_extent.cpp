// The host and the logical units that it sees. They are read anew for each request; places that a walk of the library's
// tree left empty are no units.
#include "associations/storage/families.h"
#include "associations/storage/walks.h"

namespace merolt::storage {

using namespace association;

namespace {

void everyUnit(const Source&, const ObjectVisitor& visit) {
    matchingRecords(g_storageExtentCount, visit, [](int index) { return g_storageExtentList[index].valid != 0; });
}

constexpr Family family = {
    .token = "AssocComputerSystemStorageExtent",
    .className = "Merolt_FCHBA_ComputerSystemStorageExtent",
    .left = hostAs("GroupComponent"),
    .right = {"PartComponent", storageExtent},
    .forEachPair = oneWithEach<everyUnit>,
    .findLeft = findHost,
    .findRight = {.find = everyUnit},
    .filters = Filters::ignored,
    .texts = storageTexts,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemStorageExtent, family)

void clearLists_AssocComputerSystemStorageExtent() { clearStorageExtentList(); }

void buildLists_AssocComputerSystemStorageExtent() { buildStorageExtentList(); }

} // namespace merolt::storage
