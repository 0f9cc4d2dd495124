// The host and the targets that it sees. The targets are read anew for each request.
#include "associations/storage/families.h"
#include "associations/storage/walks.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr auto every = everyRecord<&g_scsiEndpointTargetCount>;

constexpr Family family = {
    .token = "AssocComputerSystemSCSIProtocolEndpointTarget",
    .className = "Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointTarget",
    .left = hostAs("Antecedent"),
    .right = {"Dependent", scsiProtocolEndpointTarget},
    .forEachPair = oneWithEach<every>,
    .findLeft = findHost,
    .findRight = {.find = every},
    .filters = Filters::ignored,
    .texts = storageTexts,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemSCSIProtocolEndpointTarget, family)

void clearLists_AssocComputerSystemSCSIProtocolEndpointTarget() { clearSCSIProtocolEndpointTargetList(); }

void buildLists_AssocComputerSystemSCSIProtocolEndpointTarget() { buildSCSIProtocolEndpointTargetList(); }

} // namespace merolt::storage
