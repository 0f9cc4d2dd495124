// The storage side's installation service and what it can do.
#include "associations/modules.h"
#include "associations/service_texts.h"
#include "associations/storage/walks.h"

namespace merolt::storage {

using namespace association;

namespace {

// Requests and searches speak as the Ethernet side's do, enumerations and getInstance as the storage side's; the last
// line of getInstance is another family's.
constexpr Texts texts = deviating(ethernetTexts, [](Texts& t) {
    t.names.open = "Entering enumInstanceNames_AssocSoftwareInstallationServiceSoftwareInstallationServiceCapabilities";
    t.names.nameSpace = "enumInstanceNames_AssocSoftwareInstallationServiceSoftwareInstallationServiceCapabilities: "
                        "Error getting namespace, status.rc={n}!";
    t.names.close =
        debugText("Exiting  enumInstanceNames_AssocSoftwareInstallationServiceSoftwareInstallationServiceCapabilities");
    t.instances.open = "Entering enumInstances_AssocSoftwareInstallationServiceSoftwareInstallationServiceCapabilities";
    t.instances.nameSpace = "enumInstances_AssocSoftwareInstallationServiceSoftwareInstallationServiceCapabilities: "
                            "Error getting namespace, status.rc={n}!";
    t.instances.close =
        debugText("Exiting  enumInstances_AssocSoftwareInstallationServiceSoftwareInstallationServiceCapabilities");
    t.getInstance.open = "Entering getInstance_AssocSoftwareInstallationServiceSoftwareInstallationServiceCapabilities";
    t.getInstance.className = "getInstance_AssocSoftwareInstallationServiceSoftwareInstallationServiceCapabilities: "
                              "Error getting classname, status.rc={n}!";
    t.getInstance.close = debugText("Exiting  getInstance_AssocSoftwareIdentitySoftwareInstallationService");
    speakOfServiceAndCapabilities(t);
});

} // namespace

constexpr Family softwareInstallationServiceCapabilities = {
    .token = "Assoc_SoftwareInstallationService_Capabilities",
    .className = "Merolt_FCHBA_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities",
    .baseClass = "CIM_ElementCapabilities",
    .left = {"ManagedElement", installationService},
    .right = {"Capabilities", installationServiceCapabilities},
    .matching = {.forEachPair = oneWithEach<theObject>,
                 // referenceNames gives the service's path the capabilities' key.
                 .findLeft = {.keys = {{{"InstanceID", KeyTest::isString}}},
                              .find = onlyIf<namesInstaller, theObject>,
                              .referenceNamePath = installationServiceCapabilities.makePath},
                 .findRight = {.keys = {{{"Name", KeyTest::isString}}}, .find = onlyIf<namesInstaller, theObject>}},
    .filters = Filters::applied,
    .texts = texts,
    .places = {.row = 39, .left = {28, 48}, .right = {59, 52}},
};

} // namespace merolt::storage
