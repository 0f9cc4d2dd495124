#include "classes/server/namespace.h"

#include "classes/instance.h"
#include "classes/server/object_manager.h"
#include "classes/system_name.h"
#include "configuration/configuration.h"

namespace merolt::server {

const char* g_namespaceNames[namespaceCount] = {"", ""};

namespace {

constexpr const char* cimClass = "Merolt_FCHBA_Namespace";
constexpr const char* objectManagerClass = "Merolt_FCHBA_ObjectManager";
const char* keys[] = {
    "CreationClassName", "Name", "SystemCreationClassName", "SystemName", "ObjectManagerCreationClassName",
    "ObjectManagerName", nullptr};

const ListClass descriptor = {
    .name = "Namespace",
    .key = "Name",
    .count = [] { return namespaceCount; },
    .keyText = [](int index) { return g_namespaceNames[index]; },
    .makePath = makePath_Namespace,
    .makeInstance = makeInstance_Namespace,
};

} // namespace

void buildNamespaceList() {
    g_namespaceNames[0] = "root/merolt_cmpi";
    g_namespaceNames[1] = gInteropNamespace;
}

CmpiObjectPath makePath_Namespace(const char* className, const char* nameSpace, int index) {
    CmpiObjectPath path(nameSpace, className);
    path.setKey("CreationClassName", CmpiData(cimClass));
    path.setKey("Name", CmpiData(g_namespaceNames[index]));
    path.setKey("SystemCreationClassName", CmpiData(computerSystemClass));
    path.setKey("SystemName", CmpiData(gSystemName));
    path.setKey("ObjectManagerCreationClassName", CmpiData(objectManagerClass));
    path.setKey("ObjectManagerName", CmpiData(getObjectManagerName()));
    return path;
}

CmpiInstance makeInstance_Namespace(const char* className, const char* nameSpace, const char** properties, int index) {
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    instance.setProperty("CreationClassName", CmpiData(cimClass));
    instance.setProperty("Name", CmpiData(g_namespaceNames[index]));
    instance.setProperty("SystemCreationClassName", CmpiData(computerSystemClass));
    instance.setProperty("SystemName", CmpiData(gSystemName));
    instance.setProperty("ObjectManagerCreationClassName", CmpiData(objectManagerClass));
    instance.setProperty("ObjectManagerName", CmpiData(getObjectManagerName()));
    instance.setProperty("ClassType", CmpiData(CMPIUint16{2}));
    instance.setProperty("ClassInfo", CmpiData(CMPIUint16{1}));
    instance.setProperty("DescriptionOfClassInfo", CmpiData(gCIMSchemaVersion));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(Namespace, descriptor)

} // namespace merolt::server
