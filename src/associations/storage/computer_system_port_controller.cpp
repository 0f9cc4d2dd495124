// The host and its storage controllers.
#include "associations/storage/families.h"
#include "associations/storage/walks.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr auto every = everyRecord<&g_portControllerCount>;

constexpr Texts texts =
    deviating(storageTexts, [](Texts& t) { t.getInstance.open = "Entering getInstance_AssocComputerSystemFCPort"; });

constexpr Family family = {
    .token = "AssocComputerSystemPortController",
    .className = "Merolt_FCHBA_ComputerSystemPortController",
    .left = hostAs("GroupComponent"),
    .right = {"PartComponent", portController},
    .forEachPair = oneWithEach<every>,
    .findLeft = findHost,
    .findRight = {.find = every},
    .filters = Filters::ignored,
    .texts = texts,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemPortController, family)

} // namespace merolt::storage
