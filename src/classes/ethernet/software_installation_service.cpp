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
    .makePath = [](const char* className, const char* nameSpace,
                   const Element&) { return makePath_SoftwareInstallationService(className, nameSpace); },
    .makeInstance =
        [](const char* className, const char* nameSpace, const char** properties, const Element&) {
            return makeInstance_SoftwareInstallationService(className, nameSpace, properties);
        },
    .texts =
        {
            "Merolt_NIC_SoftwareInstallationService enumInstanceNames was called\n",
            "Merolt_NIC_SoftwareInstallationService: Error getting namespace in enumInstanceNames\n",
            "Merolt_NIC_SoftwareInstallationService: Error getting ClassName in enumInstanceNames\n",
            "Merolt_NIC_SoftwareInstallationService enumInstances was called\n",
            "Merolt_NIC_SoftwareInstallationService: Error getting namespace in enumInstances\n",
            "Merolt_NIC_SoftwareInstallationService: Error getting ClassName in enumInstances\n",
            "Merolt_NIC_SoftwareInstallationService getInstance was called\n",
            "Merolt_NIC_SoftwareInstallationService: Error getting namespace in getInstance\n",
            "Merolt_NIC_SoftwareInstallationService: Error getting ClassName in getInstance\n",
            "Merolt_NIC_SoftwareIdentity: Error getting Name key in getInstance\n",
            "Merolt_NIC_SoftwareIdentity: Error invalid key data type(%d)",
        },
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
