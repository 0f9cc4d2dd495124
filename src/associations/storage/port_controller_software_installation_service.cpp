// Storage controllers and the service that updates their flash. By contract referenceNames names the ends by other keys
// than references does, keys that the class has not: servers write them in a form that clients refuse.
#include "associations/modules.h"
#include "associations/service_texts.h"
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

} // namespace

constexpr Family portControllerSoftwareInstallationService = {
    .token = "Assoc_PortController_SoftwareInstallationService",
    .className = "Merolt_FCHBA_PortControllerSoftwareInstallationService",
    .baseClass = "CIM_ServiceAffectsElement",
    .left = {"AffectedElement", portController},
    .right = {"AffectingElement", installationService},
    .matching = {.forEachPair = pairs,
                 .findLeft = {.keys = {{{"Name", KeyTest::isString}}}, .find = onlyIf<namesInstaller, every>},
                 .findRight = {.keys = {{{"DeviceID", KeyTest::isString}}}, .find = serviceOfController}},
    .filters = Filters::applied,
    .texts = texts,
    .referenceNameKeys = {.contract = controllerAndServiceNameKeys, .corrected = nullptr},
    .places = {.row = 20, .left = {55, 38}, .right = {58, 50}},
};

} // namespace merolt::storage
