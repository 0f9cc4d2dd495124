// The CMPIObjectPath table.

#include "cimhost/broker/table_support.h"
#include "cimhost/broker/values.h"

namespace cimhost {
namespace {

using Setter = void (ObjectPathObject::*)(std::string_view);
using Getter = std::string_view (ObjectPathObject::*)() const noexcept;

template <Setter setter>
CMPIStatus setText(CMPIObjectPath* object, const char* text) noexcept {
    ObjectPathObject* path = ObjectPathObject::from(object);
    if (!path) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    (path->*setter)(textOf(text));
    return statusOf(CMPI_RC_OK);
}

template <Getter getter>
CMPIString* getText(const CMPIObjectPath* object, CMPIStatus* status) noexcept {
    const ObjectPathObject* path = ObjectPathObject::from(object);
    setStatus(status, path ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return path ? StringObject::make(workArena(), (path->*getter)()) : nullptr;
}

CMPIStatus addKey(CMPIObjectPath* object, const char* name, const CMPIValue* value, CMPIType type) noexcept {
    ObjectPathObject* path = ObjectPathObject::from(object);
    if (!path) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    if (!name) return statusOf(CMPI_RC_ERR_INVALID_PARAMETER);
    return statusOf(path->addKey(name, value, type));
}

// Integers go out as sint64 whatever the class says, as production servers do.
CMPIData keyData(const CMPIData& stored) {
    CMPIData data = handOut(stored);
    if (data.type == CMPI_uint64) data.type = CMPI_keyInteger;
    data.state = CMPI_keyValue;
    return data;
}

CMPIData getKey(const CMPIObjectPath* object, const char* name, CMPIStatus* status) noexcept {
    const ObjectPathObject* path = ObjectPathObject::from(object);
    const NamedData* key = path ? path->key(textOf(name)) : nullptr;
    if (!key) {
        setStatus(status, path ? CMPI_RC_ERR_NOT_FOUND : CMPI_RC_ERR_INVALID_HANDLE);
        return absentData();
    }
    setStatus(status, CMPI_RC_OK);
    return keyData(key->data);
}

CMPIData getKeyAt(const CMPIObjectPath* object, CMPICount position, CMPIString** name, CMPIStatus* status) noexcept {
    const ObjectPathObject* path = ObjectPathObject::from(object);
    if (!path || position >= path->keys().size()) {
        setStatus(status, path ? CMPI_RC_ERR_NO_SUCH_PROPERTY : CMPI_RC_ERR_INVALID_HANDLE);
        return absentData();
    }
    const NamedData& key = path->keys()[position];
    if (name) *name = StringObject::make(workArena(), key.name);
    setStatus(status, CMPI_RC_OK);
    return keyData(key.data);
}

CMPICount getKeyCount(const CMPIObjectPath* object, CMPIStatus* status) noexcept {
    const ObjectPathObject* path = ObjectPathObject::from(object);
    setStatus(status, path ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return path ? static_cast<CMPICount>(path->keys().size()) : 0;
}

CMPIStatus setNameSpaceFromObjectPath(CMPIObjectPath* object, const CMPIObjectPath* source) noexcept {
    ObjectPathObject* path = ObjectPathObject::from(object);
    const ObjectPathObject* from = ObjectPathObject::from(source);
    if (!path || !from) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    path->setNameSpace(from->nameSpace());
    return statusOf(CMPI_RC_OK);
}

CMPIStatus setHostAndNameSpaceFromObjectPath(CMPIObjectPath* object, const CMPIObjectPath* source) noexcept {
    const CMPIStatus status = setNameSpaceFromObjectPath(object, source);
    if (status.rc == CMPI_RC_OK) ObjectPathObject::from(object)->setHost(ObjectPathObject::from(source)->host());
    return status;
}

CMPIString* toString(const CMPIObjectPath* object, CMPIStatus* status) noexcept {
    const ObjectPathObject* path = ObjectPathObject::from(object);
    setStatus(status, path ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!path) return nullptr;
    std::string text;
    path->appendText(text);
    return StringObject::make(workArena(), text);
}

} // namespace

// Production servers lack the getters of qualifiers. They are missing here, too, so that a provider that needs them
// finds out.
const CMPIObjectPathFT tables::objectPath = {
    CMPICurrentVersion,
    releaseFromTable<ObjectPathObject, CMPIObjectPath>,
    cloneFromTable<ObjectPathObject, CMPIObjectPath>,
    setText<&ObjectPathObject::setNameSpace>,
    getText<&ObjectPathObject::nameSpace>,
    setText<&ObjectPathObject::setHost>,
    getText<&ObjectPathObject::host>,
    setText<&ObjectPathObject::setClassName>,
    getText<&ObjectPathObject::className>,
    addKey,
    getKey,
    getKeyAt,
    getKeyCount,
    setNameSpaceFromObjectPath,
    setHostAndNameSpaceFromObjectPath,
    nullptr, // getClassQualifier
    nullptr, // getPropertyQualifier
    nullptr, // getMethodQualifier
    nullptr, // getParameterQualifier
    toString,
};

} // namespace cimhost
