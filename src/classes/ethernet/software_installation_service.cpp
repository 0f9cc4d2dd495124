#include "classes/ethernet/software_installation_service.h"

#include "classes/instance.h"
#include "classes/system_name.h"
#include "flash/installer.h"
#include "log/log.h"

namespace merolt::ethernet {

namespace {

constexpr const char* cimClass = "Merolt_NIC_SoftwareInstallationService";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "Name", nullptr};

// The errors of its key reads name another class.
const SecondKey systemName = {"SystemName", gSystemName,
                              "Merolt_NIC_SoftwareIdentity: Error getting SystemName key in getInstance\n"};

const EthernetClass descriptor = {
    .key = "Name",
    .forEachElement = forOne,
    .keyText = [](const Element&) { return flash::installerName; },
    .makePath = pathOf<makePath_SoftwareInstallationService>,
    .makeInstance = instanceOf<makeInstance_SoftwareInstallationService>,
    .texts = {.token = "Merolt_NIC_SoftwareInstallationService",
              .key = "Merolt_NIC_SoftwareIdentity: Error getting {K} key in {O}\n",
              .keyType = "Merolt_NIC_SoftwareIdentity: Error invalid key data type({n})"},
    .secondKey = &systemName,
};

} // namespace

CmpiObjectPath makePath_SoftwareInstallationService(const char* className, const char* nameSpace) {
    DEBUG_LOG("Merolt_NIC_SoftwareInstallationService makePath was called\n");
    return systemScopedPath(className, nameSpace, cimClass, "Name", flash::installerName);
}

CmpiInstance makeInstance_SoftwareInstallationService(const char* className, const char* nameSpace,
                                                      const char** properties) {
    DEBUG_LOG("Merolt_NIC_SoftwareInstallationService makeInstance was called\n");
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    instance.setProperty("Name", CmpiData(flash::installerName));
    setSystemScope(instance, cimClass);
    instance.setProperty("Caption", CmpiData("Update flash"));
    instance.setProperty("Description", CmpiData("Updating CNA flash(boot code, firmwares..."));
    instance.setProperty("ElementName", CmpiData("Updating Merolt CNA flash Image"));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(SoftwareInstallationService, descriptor)

} // namespace merolt::ethernet
