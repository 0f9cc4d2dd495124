#include "classes/ethernet/software_installation_service_capabilities.h"

#include "classes/instance.h"
#include "flash/installer.h"
#include "log/log.h"

namespace merolt::ethernet {

namespace {

const char* keys[] = {"InstanceID", nullptr};

const EthernetClass descriptor = {
    .key = "InstanceID",
    .forEachElement = forOne,
    .keyText = [](const Element&) { return flash::installerName; },
    .makePath = pathOf<makePath_SoftwareInstallationServiceCapabilities>,
    .makeInstance = instanceOf<makeInstance_SoftwareInstallationServiceCapabilities>,
    .texts = {.token = "Merolt_NIC_SoftwareInstallationServiceCapabilities",
              .getInstance = {.entry = entryThatNamesClass},
              .key = nullptr},
};

} // namespace

CmpiObjectPath makePath_SoftwareInstallationServiceCapabilities(const char* className, const char* nameSpace) {
    DEBUG_LOG("Merolt_NIC_SoftwareInstallationServiceCapabilities makePath was called\n");
    CmpiObjectPath path(nameSpace, className);
    path.setKey("InstanceID", CmpiData(flash::installerName));
    return path;
}

CmpiInstance makeInstance_SoftwareInstallationServiceCapabilities(const char* className, const char* nameSpace,
                                                                  const char** properties) {
    DEBUG_LOG("Merolt_NIC_SoftwareInstallationServiceCapabilities makeInstance was called\n.");
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    instance.setProperty("InstanceID", CmpiData(flash::installerName));
    instance.setProperty("Caption", CmpiData("Update Capabilities"));
    instance.setProperty("ElementName", CmpiData("Merolt CNA Flash Image Update"));
    instance.setProperty("Description", CmpiData("Flash image includes boot code, ASIC and MPI Firmware"));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(SoftwareInstallationServiceCapabilities, descriptor)

} // namespace merolt::ethernet
