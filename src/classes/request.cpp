#include "classes/request.h"

#include "cmpift.h"

namespace merolt {

namespace {

/// The text of a string that the server made. @param status receives the status of the read.
const char* textOf(const CMPIString* string, CMPIStatus& status) {
    if (!string) return "";
    const char* text = string->ft->getCharPtr(string, &status);
    return text ? text : "";
}

} // namespace

CMPIStatus readClassName(const CmpiObjectPath& path, const char*& text) {
    text = "";
    if (path.isNull()) return {CMPI_RC_ERR_INVALID_PARAMETER, nullptr};
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    const CMPIObjectPath* object = path.getEnc();
    const CMPIString* name = object->ft->getClassName(object, &status);
    text = status.rc == CMPI_RC_OK ? textOf(name, status) : "";
    return status;
}

CMPIStatus readNameSpace(const CmpiObjectPath& path, const char*& text) {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    const CMPIObjectPath* object = path.getEnc();
    const CMPIString* name = object->ft->getNameSpace(object, &status);
    text = status.rc == CMPI_RC_OK ? textOf(name, status) : "";
    return status;
}

RequestKey readKey(const CmpiObjectPath& path, const char* name) {
    RequestKey key{{CMPI_RC_OK, nullptr}, CMPI_null, ""};
    const CMPIObjectPath* object = path.getEnc();
    const CMPIData data = object->ft->getKey(object, name, &key.status);
    if (key.status.rc != CMPI_RC_OK) return key;
    key.type = data.type;
    CMPIStatus textStatus = {CMPI_RC_OK, nullptr};
    if (data.type == CMPI_string && !(data.state & CMPI_nullValue)) key.text = textOf(data.value.string, textStatus);
    return key;
}

} // namespace merolt
