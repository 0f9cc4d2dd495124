// The host and the storage side's installation service. In the Ethernet dialect: names other than the host's own class
// find nothing, and filters apply.
#include "associations/service_texts.h"
#include "associations/storage/families.h"
#include "associations/storage/walks.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    speakOfHostAndService(t);
    t.getInstance.open = "{F}: getInstance_AssocComputerSystemSoftwareInstallationService was called\n";
});

constexpr Family family = {
    .token = "Assoc_ComputerSystem_SoftwareInstallationService",
    .className = "Merolt_FCHBA_ComputerSystemSoftwareInstallationService",
    .left = {"Antecedent", computerSystem},
    .right = {"Dependent", installationService},
    .forEachPair = oneWithEach<theObject>,
    .findLeft = {.keys = {{{"SystemName", KeyTest::isString}, {"SystemCreationClassName"}, {"Name"}}},
                 .find = onlyIf<namesServiceOfHost, theObject>},
    .findRight = {.keys = {{{"Name", KeyTest::isString}}}, .find = onlyIf<namesHost, theObject>},
    .filters = Filters::applied,
    .texts = texts,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemSoftwareInstallationService, family)

} // namespace merolt::storage
