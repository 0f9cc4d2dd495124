// The host and the SCSI controllers of its storage ports.
#include "associations/storage/families.h"
#include "associations/storage/walks.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr auto every = everyRecord<&g_scsiProtocolControllerCount>;

constexpr Family family = {
    .token = "AssocComputerSystemSCSIProtocolController",
    .className = "Merolt_FCHBA_ComputerSystemSCSIProtocolController",
    .left = hostAs("GroupComponent"),
    .right = {"PartComponent", scsiProtocolController},
    .forEachPair = oneWithEach<every>,
    .findLeft = findHost,
    .findRight = {.find = every},
    .filters = Filters::ignored,
    .texts = storageTexts,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemSCSIProtocolController, family)

} // namespace merolt::storage
