// The host and the initiators of its storage ports.
#include "associations/storage/families.h"
#include "associations/storage/walks.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr auto every = everyRecord<&g_scsiEndpointHBACount>;

constexpr Family family = {
    .token = "AssocComputerSystemSCSIProtocolEndpointHBA",
    .className = "Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointHBA",
    .left = hostAs("Antecedent"),
    .right = {"Dependent", scsiProtocolEndpointHBA},
    .forEachPair = oneWithEach<every>,
    .findLeft = findHost,
    .findRight = {.find = every},
    .filters = Filters::ignored,
    .texts = storageTexts,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemSCSIProtocolEndpointHBA, family)

} // namespace merolt::storage
