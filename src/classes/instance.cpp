#include "classes/instance.h"

#include "classes/system_name.h"
#include "classes/wrapper_access.h"

namespace merolt {

CmpiInstance newInstance(const char* className, const char* nameSpace, const char** properties, const char** keys) {
    CmpiObjectPath path(nameSpace, className);
    CmpiInstance instance(path);
    if (properties) instance.setPropertyFilter(properties, keys);
    return instance;
}

CmpiObjectPath systemScopedPath(const char* className, const char* nameSpace, const char* creationClassName,
                                const char* key, const char* value) {
    CmpiObjectPath path(nameSpace, className);
    path.setKey("SystemCreationClassName", CmpiData(computerSystemClass));
    path.setKey("SystemName", CmpiData(gSystemName));
    path.setKey("CreationClassName", CmpiData(creationClassName));
    path.setKey(key, CmpiData(value));
    return path;
}

void setSystemScope(CmpiInstance& instance, const char* creationClassName) {
    instance.setProperty("SystemCreationClassName", CmpiData(computerSystemClass));
    instance.setProperty("SystemName", CmpiData(gSystemName));
    instance.setProperty("CreationClassName", CmpiData(creationClassName));
}

CmpiArray uint16Array(std::initializer_list<CMPIUint16> values) {
    CmpiArray array(static_cast<CMPICount>(values.size()), CMPI_uint16);
    CMPICount index = 0;
    for (const CMPIUint16 value : values)
        array[index++] = CmpiData(value);
    return array;
}

CmpiArray stringArray(std::initializer_list<const char*> values) {
    CmpiArray array(static_cast<CMPICount>(values.size()), CMPI_string);
    CMPICount index = 0;
    for (const char* value : values)
        array[index++] = newString(value);
    return array;
}

} // namespace merolt
