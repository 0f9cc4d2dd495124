#include "associations/paths.h"

#include "text/text.h"

namespace merolt::association {

namespace {

CMPIObjectPath* clone(const CmpiObjectPath& original) {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    const CMPIObjectPath* object = original.getEnc();
    CMPIObjectPath* copy = object->ft->clone(object, &status);
    if (status.rc != CMPI_RC_OK) throw CmpiStatus(status);
    if (!copy) throw CmpiStatus(CMPI_RC_ERR_FAILED, "The server made no copy of an object path");
    return copy;
}

bool isEmpty(const char* text) { return !text || !*text; }

} // namespace

ClonedPath::ClonedPath(const CmpiObjectPath& original) : path(clone(original)) {}

ClonedPath::~ClonedPath() { path.getEnc()->ft->release(path.getEnc()); }

CMPIStatus addReference(CmpiObjectPath& path, const char* role, const CmpiObjectPath& object) {
    CMPIValue value{};
    value.ref = object.getEnc();
    return path.getEnc()->ft->addKey(path.getEnc(), role, &value, CMPI_ref);
}

ReferenceKey readReference(const CmpiObjectPath& path, const char* role) {
    ReferenceKey key{{CMPI_RC_OK, nullptr}, CMPI_null, nullptr};
    const CMPIObjectPath* object = path.getEnc();
    const CMPIData data = object->ft->getKey(object, role, &key.status);
    if (key.status.rc != CMPI_RC_OK) return key;
    key.type = data.type;
    if (data.type == CMPI_ref && !(data.state & CMPI_nullValue)) key.object = data.value.ref;
    return key;
}

const char* textOf(const CmpiString& string) {
    const char* text = string.charPtr();
    return text ? text : "";
}

bool classFilterMatches(const char* filterClass, const char* nameSpace, const char* className) {
    return isEmpty(filterClass) || CmpiObjectPath(nameSpace, className).classPathIsA(filterClass);
}

bool roleFilterMatches(const char* role, const char* actualRole) {
    return isEmpty(role) || equalsIgnoringCase(role, actualRole);
}

} // namespace merolt::association
