// The software of the Ethernet side and the service that updates it.
#include "associations/ethernet/families.h"
#include "associations/ethernet/walks.h"

namespace merolt::ethernet {

using namespace association;

namespace {

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    t.instances.open = "{F}: enumInstances_{T} was called\n";
    t.instances.nameSpace = "{F}: Error getting namespace in enumInstanceNames\n";
    t.getInstance.open = "{F}: getInstance_{T} was called\n";
    t.findLeft.nameSpace = "{F}: Error getting Namespace in findMatchedRole1\n";
    t.findRight.nameSpace = "{F}:: Error getting namespace in findMatchedRole2\n";
    t.findRight.key = "{F}:: Error getting InstanceID key in findMatchedRole2\n";
});

constexpr Family family = {
    .token = "Assoc_SoftwareIdentity_SoftwareInstallationService",
    .className = "Merolt_NIC_SoftwareIdentitySoftwareInstallationService",
    .left = {"AffectedElement", nic::softwareIdentity},
    .right = {"AffectingElement", nic::installationService},
    .forEachPair = nic::bothEndsOf<nic::eachIdentity>,
    .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = onlyIf<namesInstaller, nic::eachIdentity>},
    .findRight = {.keys = {{{"InstanceID", KeyTest::isString}}}, .find = nic::firstOf<nic::eachCardOfIdentity>},
    .filters = Filters::applied,
    .texts = texts,
    .isPopulated = nic::hasCards,
    .secondRowChanges = Side::left,
};

} // namespace

DEFINE_ASSOCIATION(AssocSoftwareIdentitySoftwareInstallationService, family)

} // namespace merolt::ethernet
