// The host and the storage side's installation service. In the Ethernet dialect: names other than the host's own class
// find nothing, and filters apply.
#include "associations/service_texts.h"
#include "associations/storage/families.h"
#include "associations/storage/walks.h"
#include "classes/instance.h"
#include "classes/system_name.h"
#include "software/installer.h"

namespace merolt::storage {

using namespace association;

namespace {

void hostOfService(const Source& source, const ObjectVisitor& visit) {
    if (source.equals(0, gSystemName) && source.equals(1, computerSystemClass) &&
        source.equals(2, software::installerName))
        visit({});
}

void serviceOfHost(const Source& source, const ObjectVisitor& visit) {
    if (source.equals(0, gSystemName)) visit({});
}

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
                 .find = hostOfService},
    .findRight = {.keys = {{{"Name", KeyTest::isString}}}, .find = serviceOfHost},
    .filters = Filters::applied,
    .texts = texts,
};

} // namespace

DEFINE_ASSOCIATION(AssocComputerSystemSoftwareInstallationService, family)

} // namespace merolt::storage
