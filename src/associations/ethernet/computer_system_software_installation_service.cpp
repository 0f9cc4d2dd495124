// The host and the Ethernet side's installation service, as the storage side makes that service: its CreationClassName
// is the storage class. getInstance tests the service through the class of Ethernet ports and so delivers the
// association whatever the service is.
#include "associations/ethernet/families.h"
#include "associations/ethernet/texts.h"
#include "associations/ethernet/walks.h"
#include "associations/service_texts.h"
#include "classes/instance.h"
#include "software/installer.h"

namespace merolt::ethernet {

using namespace association;

namespace {

void hostOfService(const Source& source, const ObjectVisitor& visit) {
    if (nic::namesHostAndClass(source) && source.equals(2, software::installerName)) visit({});
}

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    speakOfHostAndService(t);
    nic::logAddKeyOfNamesAsDebug(t);
    t.getInstance.open = "{F}: getInstance_Nic_AssocComputerSystemSoftwareInstallationService was called\n";
});

constexpr Family family = {
    .token = "Assoc_ComputerSystem_SoftwareInstallationService",
    .className = "Merolt_NIC_ComputerSystemSoftwareInstallationService",
    .left = {"Antecedent", nic::computerSystem},
    .right = {"Dependent", nic::storageMadeService, nullptr, getInstance_EthernetPort},
    .forEachPair = nic::bothEndsOf<nic::theObject>,
    .findLeft = {.keys = {{{"SystemName", KeyTest::isString}, {"SystemCreationClassName"}, {"Name"}}},
                 .find = hostOfService},
    .findRight = {.keys = {{{"Name", KeyTest::isString}}}, .find = nic::onlyIf<nic::namesHost, nic::theObject>},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemSoftwareInstallationService, family)

} // namespace merolt::ethernet
