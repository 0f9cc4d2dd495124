// The Ethernet side's installation service and what it can do, both as the storage side makes them.
#include "associations/ethernet/families.h"
#include "associations/ethernet/walks.h"
#include "associations/service_texts.h"

namespace merolt::ethernet {

using namespace association;

namespace {

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    speakOfServiceAndCapabilities(t);
    t.findRight.nameSpace = "{F}: Error getting Namespace in findMatchedRole2\n";
});

constexpr Family family = {
    .token = "Assoc_SoftwareInstallationService_Capabilities",
    .className = "Merolt_NIC_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities",
    .left = {"ManagedElement", nic::storageMadeService},
    .right = {"Capabilities", nic::storageMadeCapabilities},
    .forEachPair = nic::bothEndsOf<theObject>,
    .findLeft = // referenceNames gives the service's path the capabilities' key.
    {.keys = {{{"InstanceID", KeyTest::isString}}},
     .find = onlyIf<namesInstaller, theObject>,
     .referenceNamePath = nic::storageMadeCapabilities.makePath},
    .findRight = {.keys = {{{"Name", KeyTest::isString}}}, .find = onlyIf<namesInstaller, theObject>},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
};

} // namespace

DEFINE_ASSOCIATION(AssocSoftwareInstallationServiceCapabilities, family)

} // namespace merolt::ethernet
