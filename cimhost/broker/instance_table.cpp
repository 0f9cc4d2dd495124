// The CMPIInstance table.

#include "cimhost/broker/table_support.h"
#include "cimhost/broker/values.h"

namespace cimhost {
namespace {

// A property of the class that was never set reads as a null of its type, as on production servers.
CMPIData declaredData(const InstanceObject& instance, std::size_t position) {
    if (const CMPIData* data = instance.valueAt(position)) return handOut(*data);
    return ObjectMaker::null(instance.declaration()->properties()[position].type);
}

CMPIData getProperty(const CMPIInstance* object, const char* name, CMPIStatus* status) noexcept {
    const InstanceObject* instance = InstanceObject::from(object);
    if (!instance) {
        setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
        return absentData();
    }
    setStatus(status, CMPI_RC_OK);
    if (const ClassDeclaration* declared = instance->declaration()) {
        const std::size_t position = declared->findProperty(textOf(name));
        if (position != ClassDeclaration::notFound && instance->isWanted(position)) {
            return declaredData(*instance, position);
        }
    } else if (const CMPIData* data = instance->value(textOf(name))) {
        return handOut(*data);
    }
    setStatus(status, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    return absentData();
}

CMPICount countProperties(const InstanceObject& instance) noexcept {
    const ClassDeclaration* declared = instance.declaration();
    if (!declared) return static_cast<CMPICount>(instance.freeProperties().size());
    CMPICount count = 0;
    for (std::size_t position = 0; position < declared->properties().size(); ++position) {
        count += instance.isWanted(position) ? 1 : 0;
    }
    return count;
}

// The slot of the n-th property that the filter keeps, or notFound.
std::size_t wantedPosition(const InstanceObject& instance, CMPICount rank) noexcept {
    for (std::size_t position = 0; position < instance.declaration()->properties().size(); ++position) {
        if (instance.isWanted(position) && rank-- == 0) return position;
    }
    return ClassDeclaration::notFound;
}

CMPIData getPropertyAt(const CMPIInstance* object, CMPICount rank, CMPIString** name, CMPIStatus* status) noexcept {
    const InstanceObject* instance = InstanceObject::from(object);
    if (!instance) {
        setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
        return absentData();
    }
    if (!instance->declaration()) return namedDataAt(instance->freeProperties(), rank, name, status);
    const std::size_t position = wantedPosition(*instance, rank);
    if (position == ClassDeclaration::notFound) {
        setStatus(status, CMPI_RC_ERR_NO_SUCH_PROPERTY);
        return absentData();
    }
    setStatus(status, CMPI_RC_OK);
    if (name) *name = StringObject::make(workArena(), instance->declaration()->properties()[position].name);
    return declaredData(*instance, position);
}

CMPICount getPropertyCount(const CMPIInstance* object, CMPIStatus* status) noexcept {
    const InstanceObject* instance = InstanceObject::from(object);
    setStatus(status, instance ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return instance ? countProperties(*instance) : 0;
}

CMPIStatus setProperty(const CMPIInstance* object, const char* name, const CMPIValue* value, CMPIType type) noexcept {
    InstanceObject* instance = InstanceObject::from(const_cast<CMPIInstance*>(object));
    if (!instance) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    if (!name) return statusOf(CMPI_RC_ERR_INVALID_PARAMETER);
    return statusOf(instance->setProperty(name, value, type));
}

// The origin follows from the class, so the origin that the provider gives is ignored.
CMPIStatus setPropertyWithOrigin(const CMPIInstance* object, const char* name, const CMPIValue* value, CMPIType type,
                                 const char* /*origin*/) noexcept {
    return setProperty(object, name, value, type);
}

CMPIObjectPath* getObjectPath(const CMPIInstance* object, CMPIStatus* status) noexcept {
    const InstanceObject* instance = InstanceObject::from(object);
    setStatus(status, instance ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return instance ? instance->path(workArena()) : nullptr;
}

CMPIStatus setPropertyFilter(CMPIInstance* object, const char** properties, const char** keys) noexcept {
    InstanceObject* instance = InstanceObject::from(object);
    if (!instance) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    instance->setPropertyFilter(properties, keys);
    return statusOf(CMPI_RC_OK);
}

CMPIStatus setObjectPath(CMPIInstance* object, const CMPIObjectPath* source) noexcept {
    InstanceObject* instance = InstanceObject::from(object);
    const ObjectPathObject* path = ObjectPathObject::from(source);
    if (!instance || !path) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    return statusOf(instance->setPath(*path));
}

} // namespace

const CMPIInstanceFT tables::instance = {
    CMPICurrentVersion,
    releaseFromTable<InstanceObject, CMPIInstance>,
    cloneFromTable<InstanceObject, CMPIInstance>,
    getProperty,
    getPropertyAt,
    getPropertyCount,
    setProperty,
    getObjectPath,
    setPropertyFilter,
    setObjectPath,
    setPropertyWithOrigin,
};

} // namespace cimhost
