#include "paths.h"
#include "tables.h"

namespace foreign_server {

namespace {

CMPIStatus releaseInstance(CMPIInstance* instance) {
    return answer(release(instance, Kind::instance, "CMPIInstance.release"));
}

CMPIInstance* cloneInstance(const CMPIInstance* instance, CMPIStatus* status) {
    const auto* object = use<InstanceObject>(instance, "CMPIInstance.clone");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!object) return nullptr;
    auto* copy = makeClone<InstanceObject>();
    copy->data = object->data;
    return copy->shown();
}

CMPIData getProperty(const CMPIInstance* instance, const char* name, CMPIStatus* status) {
    constexpr const char* function = "CMPIInstance.getProperty";
    const auto* object = use<InstanceObject>(instance, function);
    if (!object || !isGiven(name, function, "the name")) {
        fail(status, object ? CMPI_RC_ERR_INVALID_PARAMETER : CMPI_RC_ERR_INVALID_HANDLE);
        return absent();
    }
    const NamedValue* property = find(object->data.properties, name);
    fail(status, property ? CMPI_RC_OK : CMPI_RC_ERR_NOT_FOUND);
    return property ? handOut(property->value, function) : absent();
}

CMPIData getPropertyAt(const CMPIInstance* instance, CMPICount position, CMPIString** name, CMPIStatus* status) {
    constexpr const char* function = "CMPIInstance.getPropertyAt";
    const auto* object = use<InstanceObject>(instance, function);
    if (object) return valueAt(object->data.properties, position, name, status, CMPI_RC_ERR_NOT_FOUND, function);
    fail(status, CMPI_RC_ERR_INVALID_HANDLE);
    return absent();
}

CMPICount getPropertyCount(const CMPIInstance* instance, CMPIStatus* status) {
    const auto* object = use<InstanceObject>(instance, "CMPIInstance.getPropertyCount");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return object ? static_cast<CMPICount>(object->data.properties.size()) : 0;
}

CMPIStatus setProperty(const CMPIInstance* instance, const char* name, const CMPIValue* value, CMPIType type) {
    constexpr const char* function = "CMPIInstance.setProperty";
    auto* object = use<InstanceObject>(instance, function);
    if (!object) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    if (!isGiven(name, function, "the name")) return answer(CMPI_RC_ERR_INVALID_PARAMETER);
    Value taken;
    const CMPIrc code = take(value, type, taken, function);
    if (code == CMPI_RC_OK) set(object->data.properties, name, std::move(taken));
    return answer(code);
}

CMPIObjectPath* getObjectPath(const CMPIInstance* instance, CMPIStatus* status) {
    constexpr const char* function = "CMPIInstance.getObjectPath";
    const auto* object = use<InstanceObject>(instance, function);
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!object) return nullptr;
    auto* path = make<PathObject>(function);
    path->data = object->data.path;
    for (NamedValue& key : path->data.keys) {
        if (const NamedValue* property = find(object->data.properties, key.name)) key.value = property->value;
    }
    return path->shown();
}

std::vector<std::string> namesOf(const char** names) {
    std::vector<std::string> list;
    for (; names && *names; ++names)
        list.emplace_back(*names);
    return list;
}

/// The instance stays as it is: the server filters when it reads it.
CMPIStatus setPropertyFilter(CMPIInstance* instance, const char** properties, const char** keys) {
    constexpr const char* function = "CMPIInstance.setPropertyFilter";
    auto* object = use<InstanceObject>(instance, function);
    if (!object) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    object->data.wanted.reset();
    if (properties) object->data.wanted = namesOf(properties);
    object->data.keys = namesOf(keys);
    return answer(CMPI_RC_OK);
}

CMPIStatus setObjectPath(CMPIInstance* instance, const CMPIObjectPath* path) {
    constexpr const char* function = "CMPIInstance.setObjectPath";
    auto* object = use<InstanceObject>(instance, function);
    const auto* from = use<PathObject>(path, function);
    if (!object || !from) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    object->data.path = contentOf(*from);
    return answer(CMPI_RC_OK);
}

} // namespace

void* instanceTable() {
    static void* table = [] {
        CMPIInstanceFT whole{};
        whole.ftVersion = 1;
        whole.release = releaseInstance;
        whole.clone = cloneInstance;
        whole.getProperty = getProperty;
        whole.getPropertyAt = getPropertyAt;
        whole.getPropertyCount = getPropertyCount;
        whole.setProperty = setProperty;
        whole.getObjectPath = getObjectPath;
        whole.setPropertyFilter = setPropertyFilter;
        whole.setObjectPath = setObjectPath;
        return tableOfSize(whole, offsetof(CMPIInstanceFT, setPropertyWithOrigin));
    }();
    return table;
}

} // namespace foreign_server
