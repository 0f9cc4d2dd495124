// Ethernet controllers and the service that updates their flash. By contract referenceNames names the ends by other
// keys than references does, keys that the class has not: servers write them in a form that clients refuse.
#include "associations/ethernet/families.h"
#include "associations/ethernet/walks.h"
#include "associations/service_texts.h"

namespace merolt::ethernet {

using namespace association;

namespace {

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    speakOfControllerAndService(t);
    t.instances.open = "{F}: enumInstances_Nic_AssocPortControllerSoftwareInstallationService was called\n";
});

constexpr Family family = {
    .token = "Assoc_PortController_SoftwareInstallationService",
    .className = "Merolt_NIC_PortControllerSoftwareInstallationService",
    .left = {"AffectedElement", nic::portController},
    .right = {"AffectingElement", nic::installationService},
    .forEachPair = nic::bothEndsOf<nic::eachCard>,
    .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = onlyIf<namesInstaller, nic::eachCard>},
    .findRight = {.keys = {{{"DeviceID", KeyTest::isString}}},
                  .find = nic::firstOf<nic::eachCardWith<nic::portControllerIDOf>>},
    .filters = Filters::applied,
    .texts = texts,
    .referenceNameKeys = {.contract = controllerAndServiceNameKeys, .corrected = nullptr},
    .isPopulated = nic::hasCards,
};

} // namespace

DEFINE_ASSOCIATION(AssocPortControllerSoftwareInstallationService, family)

} // namespace merolt::ethernet
