// Storage controllers and the service that updates their flash. By contract referenceNames names the ends by other keys
// than references does, keys that the class has not: servers write them in a form that clients refuse.
#include "associations/service_texts.h"
#include "associations/storage/families.h"
#include "associations/storage/walks.h"

namespace merolt::storage {

using namespace association;

namespace {

constexpr auto every = everyRecord<&g_portControllerCount>;

void pairs(Enumeration, const PairVisitor& visit) {
    every({}, [&](const Object& controller) { return visit({controller, {}}); });
}

void serviceOfController(const Source& source, const ObjectVisitor& visit) {
    for (int index = 0; index < g_portControllerCount; ++index) {
        if (!source.equals(0, g_portControllerList[index].deviceID.text())) continue;
        visit({});
        return;
    }
}

constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    speakOfControllerAndService(t);
    t.instances.open = "{F}: enumInstances_AssocPortControllerSoftwareInstallationService was called\n";
});

constexpr Family family = {
    .token = "Assoc_PortController_SoftwareInstallationService",
    .className = "Merolt_FCHBA_PortControllerSoftwareInstallationService",
    .left = {"AffectedElement", portController},
    .right = {"AffectingElement", installationService},
    .forEachPair = pairs,
    .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = onlyIf<namesInstaller, every>},
    .findRight = {.keys = {{{"DeviceID", KeyTest::isString}}}, .find = serviceOfController},
    .filters = Filters::applied,
    .texts = texts,
    .referenceNameKeys = {.contract = controllerAndServiceNameKeys, .corrected = nullptr},
};

} // namespace

DEFINE_ASSOCIATION(AssocPortControllerSoftwareInstallationService, family)

} // namespace merolt::storage
