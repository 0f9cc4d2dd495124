#include "software/software_installation_service_capabilities.h"

#include "classes/instance.h"
#include "classes/server/single_object.h"
#include "flash/installer.h"

#include "CmpiBooleanData.h"

namespace merolt::software {

namespace {

const char* keys[] = {"InstanceID", nullptr};

const ListClass descriptor = [] {
    ListClass cls = server::singleObject<makePath_SoftwareInstallationServiceCapabilities,
                                         makeInstance_SoftwareInstallationServiceCapabilities>(
        "SoftwareInstallationServiceCapabilities", [](int) { return flash::installerName; });
    cls.key = "InstanceID";
    cls.enumInstancesErrorsSayNames = true;
    return cls;
}();

} // namespace

CmpiObjectPath makePath_SoftwareInstallationServiceCapabilities(const char* className, const char* nameSpace) {
    CmpiObjectPath path(nameSpace, className);
    path.setKey("InstanceID", CmpiData(flash::installerName));
    return path;
}

CmpiInstance makeInstance_SoftwareInstallationServiceCapabilities(const char* className, const char* nameSpace,
                                                                  const char** properties) {
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    instance.setProperty("InstanceID", CmpiData(flash::installerName));
    instance.setProperty("Caption", CmpiData("CNA Flash Image Update Capabilities"));
    instance.setProperty("CanAddToCollection", CmpiFalse);
    instance.setProperty("SupportedAsynchronousActions", CmpiData(uint16Array({2})));
    instance.setProperty("SupportedSynchronousActions", CmpiData(uint16Array({4, 5})));
    instance.setProperty("SupportedInstallOptions", CmpiData(uint16Array({5})));
    instance.setProperty("ElementName", CmpiData("Merolt CNA Flash Image Update"));
    instance.setProperty("Description", CmpiData("Flash image includes boot code, ASIC and MPI Firmware"));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(SoftwareInstallationServiceCapabilities, descriptor)

} // namespace merolt::software
