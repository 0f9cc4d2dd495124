// The host and the Ethernet side's installation service, as the storage side makes that service: its CreationClassName
// is the storage class. getInstance tests the service through the class of Ethernet ports and so delivers the
// association whatever the service is.
#include "associations/ethernet/families.h"
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"
#include "associations/service_texts.h"

namespace merolt::ethernet {

using namespace association;

namespace {

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    speakOfHostAndService(t);
    nic::logAddKeyOfNamesAsDebug(t);
    t.getInstance.open = "{F}: getInstance_Nic_AssocComputerSystemSoftwareInstallationService was called\n";
});

constexpr Family family = {
    .token = "Assoc_ComputerSystem_SoftwareInstallationService",
    .className = "Merolt_NIC_ComputerSystemSoftwareInstallationService",
    .left = {"Antecedent", computerSystem},
    .right = {"Dependent", nic::storageMadeService, nullptr, getInstance_EthernetPort},
    .forEachPair = nic::bothEndsOf<theObject>,
    .findLeft = {.keys = {{{"SystemName", KeyTest::isString}, {"SystemCreationClassName"}, {"Name"}}},
                 .find = onlyIf<namesServiceOfHost, theObject>},
    .findRight = {.keys = {{{"Name", KeyTest::isString}}}, .find = onlyIf<namesHost, theObject>},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemSoftwareInstallationService, family)

} // namespace merolt::ethernet
