#include "classes/server/computer_system.h"

#include "classes/instance.h"
#include "classes/server/single_object.h"
#include "classes/system_name.h"
#include "inventory/tavik.h"

namespace merolt::server {

namespace {

const char* keys[] = {"CreationClassName", "Name", nullptr};

const ListClass descriptor = singleObject<makePath_ComputerSystem, makeInstance_ComputerSystem>(
    "ComputerSystem", [](int) -> const char* { return gSystemName; });

const char* nameFormat() {
    switch (gSystemNameFormat) {
    case 2:
        return "DNSName";
    case 4:
    case 6:
        return "IP";
    default:
        return "";
    }
}

// Asked anew for each instance; a library that cannot tell leaves the property out.
void setOSName(CmpiInstance& instance) {
    char name[512] = "";
    std::uint32_t size = sizeof(name);
    if (TAVIK_GetOSName(name, &size) != 0) return;
    name[sizeof(name) - 1] = '\0';
    instance.setProperty("OSName", CmpiData(name));
}

} // namespace

CmpiObjectPath makePath_ComputerSystem(const char* className, const char* nameSpace) {
    CmpiObjectPath path(nameSpace, className);
    path.setKey("CreationClassName", CmpiData(computerSystemClass));
    path.setKey("Name", CmpiData(gSystemName));
    return path;
}

CmpiInstance makeInstance_ComputerSystem(const char* className, const char* nameSpace, const char** properties) {
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    instance.setProperty("CreationClassName", CmpiData(computerSystemClass));
    instance.setProperty("Name", CmpiData(gSystemName));
    instance.setProperty("NameFormat", CmpiData(nameFormat()));
    instance.setProperty("Description", CmpiData("Computer system hosting the Merolt HBA provider"));
    instance.setProperty("ElementName", CmpiData(gSystemName));
    instance.setProperty("Dedicated", CmpiData(uint16Array({0})));
    instance.setProperty("OperationalStatus", CmpiData(uint16Array({2})));
    instance.setProperty("StatusDescriptions", CmpiData(stringArray({"OK"})));
    setOSName(instance);
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(ComputerSystem, descriptor)

} // namespace merolt::server
