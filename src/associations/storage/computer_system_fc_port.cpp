// The host and its storage ports.
#include "associations/storage/families.h"
#include "associations/storage/walks.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr auto every = everyRecord<&g_fcPortCount>;

constexpr Family family = {
    .token = "AssocComputerSystemFCPort",
    .className = "Merolt_FCHBA_ComputerSystemFCPort",
    .left = hostAs("GroupComponent"),
    .right = {"PartComponent", fcPort},
    .forEachPair = oneWithEach<every>,
    .findLeft = findHost,
    .findRight = {.find = every},
    .filters = Filters::ignored,
    .texts = storageTexts,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemFCPort, family)

} // namespace merolt::storage
