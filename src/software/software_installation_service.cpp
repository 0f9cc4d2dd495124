#include "software/software_installation_service.h"

#include "classes/instance.h"
#include "classes/server/single_object.h"
#include "classes/system_name.h"
#include "flash/installer.h"

namespace merolt::software {

namespace {

constexpr const char* cimClass = "Merolt_FCHBA_SoftwareInstallationService";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "Name", nullptr};

// The no-match line prints the first key in the place of the second one too, and keeps its row of blanks.
const SecondListKey systemName = {
    "SystemName", gSystemName,
    "getInstance_SoftwareInstallationService: Error no matching instance found,                KeyValue=%s, "
    "MatchingElement=%s, KeyValue2=%s, MatchingElement2=%s!"};

const ListClass descriptor = [] {
    ListClass cls =
        server::singleObject<makePath_SoftwareInstallationService, makeInstance_SoftwareInstallationService>(
            "SoftwareInstallationService", [](int) { return flash::installerName; });
    cls.enumInstancesErrorsSayNames = true;
    cls.secondKey = &systemName;
    return cls;
}();

} // namespace

CmpiObjectPath makePath_SoftwareInstallationService(const char* className, const char* nameSpace) {
    return systemScopedPath(className, nameSpace, cimClass, "Name", flash::installerName);
}

CmpiInstance makeInstance_SoftwareInstallationService(const char* className, const char* nameSpace,
                                                      const char** properties) {
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    instance.setProperty("Name", CmpiData(flash::installerName));
    setSystemScope(instance, cimClass);
    instance.setProperty("Caption", CmpiData("CNA Flash Image Update Service"));
    instance.setProperty("Description", CmpiData("Updating CNA flash(boot code, firmwares...)"));
    instance.setProperty("ElementName", CmpiData("Updating Merolt CNA flash Image"));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(SoftwareInstallationService, descriptor)

} // namespace merolt::software
