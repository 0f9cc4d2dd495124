#include "classes/server/object_manager.h"

#include "classes/instance.h"
#include "classes/server/single_object.h"
#include "classes/system_name.h"
#include "configuration/configuration.h"
#include "text/fixed_text.h"

#include "CmpiBooleanData.h"

namespace merolt::server {

namespace {

constexpr const char* cimClass = "Merolt_FCHBA_ObjectManager";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "Name", nullptr};

char g_objectManagerSystemName[256];
FixedText<256> g_objectManagerName;

const ListClass descriptor = singleObject<makePath_ObjectManager, makeInstance_ObjectManager>(
    "ObjectManager", [](int) { return g_objectManagerName.text(); });

constexpr const char* flagsWidthPrecisionLength = "-+ #0123456789$.*'IhlLqjzt";

// The configured text serves as a format: "%%" shows one percent sign. There are no arguments, so any other
// conversion shows nothing.
FixedText<128> cimomNameVersion() {
    FixedText<128> shown;
    for (const char* next = gCIMOMNameVersion; *next; ++next) {
        if (*next != '%') {
            shown.append({next, 1});
            continue;
        }
        ++next;
        next += std::strspn(next, flagsWidthPrecisionLength);
        if (*next == '\0') break;
        if (*next == '%') shown.append("%");
    }
    return shown;
}

} // namespace

void buildObjectManagerList() {
    std::uint32_t format = 0;
    getSystemName(g_objectManagerSystemName, &format);
    g_objectManagerName.format("pegasus:%s", g_objectManagerSystemName);
}

const char* getObjectManagerName() { return g_objectManagerName.text(); }

CmpiObjectPath makePath_ObjectManager(const char* className, const char* nameSpace) {
    CmpiObjectPath path(nameSpace, className);
    path.setKey("SystemCreationClassName", CmpiData(computerSystemClass));
    path.setKey("SystemName", CmpiData(g_objectManagerSystemName));
    path.setKey("CreationClassName", CmpiData(cimClass));
    path.setKey("Name", CmpiData(getObjectManagerName()));
    return path;
}

CmpiInstance makeInstance_ObjectManager(const char* className, const char* nameSpace, const char** properties) {
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    const FixedText<128> nameVersion = cimomNameVersion();
    instance.setProperty("SystemCreationClassName", CmpiData(computerSystemClass));
    instance.setProperty("SystemName", CmpiData(g_objectManagerSystemName));
    instance.setProperty("CreationClassName", CmpiData(cimClass));
    instance.setProperty("Name", CmpiData(getObjectManagerName()));
    instance.setProperty("ElementName", CmpiData(nameVersion.text()));
    instance.setProperty("Description", CmpiData(nameVersion.text()));
    instance.setProperty("OperationalStatus", CmpiData(uint16Array({2})));
    instance.setProperty("StatusDescriptions", CmpiData(stringArray({"OK"})));
    instance.setProperty("Started", CmpiTrue);
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(ObjectManager, descriptor)

} // namespace merolt::server
