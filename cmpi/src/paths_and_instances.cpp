// Paths, instances, arguments, and where an operation puts them.

#include "CmpiArgs.h"
#include "CmpiInstance.h"
#include "CmpiObjectPath.h"
#include "CmpiProviderBase.h"
#include "CmpiResult.h"
#include "checks.h"

namespace {

using PathTextGetter = CMPIString* (*)(const CMPIObjectPath*, CMPIStatus*);

CMPIString* textOf(const CMPIObjectPath* path, PathTextGetter getter) {
    CMPIStatus status = noErrorYet;
    CMPIString* text = getter(path, &status);
    throwOnError(status);
    return text;
}

// Where the server puts an item's name, if that is wanted: it makes a string only when asked for one.
CMPIString** namePlace(CMPIString*& string, const CmpiString* wanted) { return wanted ? &string : nullptr; }

const char* charsOf(const CMPIString* string) {
    CMPIStatus status = noErrorYet;
    return string ? string->ft->getCharPtr(string, &status) : nullptr;
}

} // namespace

CmpiObjectPath::CmpiObjectPath(const char* nameSpace, const char* className) {
    CMPIBroker* broker = CmpiProviderBase::requireBroker();
    CMPIStatus status = noErrorYet;
    enc = broker->eft->newObjectPath(broker, nameSpace, className, &status);
    throwOnError(status);
    if (!enc) throw CmpiStatus(CMPI_RC_ERR_FAILED);
}

CmpiObjectPath::CmpiObjectPath(const CmpiString& nameSpace, const char* className)
    : CmpiObjectPath(nameSpace.charPtr(), className) {}

CmpiBoolean CmpiObjectPath::classPathIsA(const char* className) const {
    CMPIBroker* broker = CmpiProviderBase::requireBroker();
    CMPIStatus status = noErrorYet;
    CmpiBoolean answer = broker->eft->classPathIsA(broker, getEnc(), className, &status);
    throwOnError(status);
    return answer;
}

CmpiString CmpiObjectPath::getHostname() const { return CmpiString(textOf(getEnc(), getEnc()->ft->getHostname)); }

void CmpiObjectPath::setHostname(const char* hostname) { throwOnError(getEnc()->ft->setHostname(getEnc(), hostname)); }

void CmpiObjectPath::setHostname(const CmpiString hostname) { setHostname(hostname.charPtr()); }

CmpiString CmpiObjectPath::getNameSpace() const { return CmpiString(textOf(getEnc(), getEnc()->ft->getNameSpace)); }

void CmpiObjectPath::setNameSpace(const char* nameSpace) {
    throwOnError(getEnc()->ft->setNameSpace(getEnc(), nameSpace));
}

void CmpiObjectPath::setNameSpace(const CmpiString nameSpace) { setNameSpace(nameSpace.charPtr()); }

CmpiString CmpiObjectPath::getClassName() const { return CmpiString(textOf(getEnc(), getEnc()->ft->getClassName)); }

void CmpiObjectPath::setClassName(const char* className) {
    throwOnError(getEnc()->ft->setClassName(getEnc(), className));
}

void CmpiObjectPath::setClassName(const CmpiString className) { setClassName(className.charPtr()); }

unsigned int CmpiObjectPath::getKeyCount() const {
    CMPIStatus status = noErrorYet;
    CMPICount count = getEnc()->ft->getKeyCount(getEnc(), &status);
    throwOnError(status);
    return count;
}

CmpiData CmpiObjectPath::getKey(const char* name) const {
    CMPIStatus status = noErrorYet;
    CMPIData data = getEnc()->ft->getKey(getEnc(), name, &status);
    throwOnError(status);
    return CmpiData(data);
}

CmpiData CmpiObjectPath::getKey(const int pos, CmpiString* name) const {
    CMPIStatus status = noErrorYet;
    CMPIString* keyName = nullptr;
    CMPIData data = getEnc()->ft->getKeyAt(getEnc(), static_cast<CMPICount>(pos), namePlace(keyName, name), &status);
    throwOnError(status);
    if (name) *name = CmpiString(keyName);
    return CmpiData(data);
}

void CmpiObjectPath::setKey(const char* name, const CmpiData data) {
    throwOnError(getEnc()->ft->addKey(getEnc(), name, valueArgument(data._data), data._data.type));
}

CmpiInstance::CmpiInstance(const CmpiObjectPath& path) {
    CMPIBroker* broker = CmpiProviderBase::requireBroker();
    CMPIStatus status = noErrorYet;
    enc = broker->eft->newInstance(broker, path.getEnc(), &status);
    throwOnError(status);
    if (!enc) throw CmpiStatus(CMPI_RC_ERR_FAILED);
}

CmpiBoolean CmpiInstance::instanceIsA(const char* className) const { return getObjectPath().classPathIsA(className); }

unsigned int CmpiInstance::getPropertyCount() const {
    CMPIStatus status = noErrorYet;
    CMPICount count = getEnc()->ft->getPropertyCount(getEnc(), &status);
    throwOnError(status);
    return count;
}

CmpiData CmpiInstance::getProperty(const char* name) const {
    CMPIStatus status = noErrorYet;
    CMPIData data = getEnc()->ft->getProperty(getEnc(), name, &status);
    throwOnErrorUnlessAbsent(status, CMPI_RC_ERR_NO_SUCH_PROPERTY, name);
    return CmpiData(data);
}

CmpiData CmpiInstance::getProperty(const int pos, CmpiString* name) const {
    CMPIStatus status = noErrorYet;
    CMPIString* propertyName = nullptr;
    CMPIData data =
        getEnc()->ft->getPropertyAt(getEnc(), static_cast<CMPICount>(pos), namePlace(propertyName, name), &status);
    throwOnErrorUnlessAbsent(status, CMPI_RC_ERR_NOT_FOUND, charsOf(propertyName));
    if (name) *name = CmpiString(propertyName);
    return CmpiData(data);
}

void CmpiInstance::setProperty(const char* name, const CmpiData data) {
    throwOnError(getEnc()->ft->setProperty(getEnc(), name, valueArgument(data._data), data._data.type));
}

void CmpiInstance::setPropertyFilter(const char** properties, const char** keys) {
    const char* noKeys[] = {nullptr};
    throwOnError(getEnc()->ft->setPropertyFilter(getEnc(), properties, keys ? keys : noKeys));
}

CmpiObjectPath CmpiInstance::getObjectPath() const {
    CMPIStatus status = noErrorYet;
    CMPIObjectPath* path = getEnc()->ft->getObjectPath(getEnc(), &status);
    throwOnError(status);
    return CmpiObjectPath(path);
}

CmpiArgs::CmpiArgs() { enc = makeArgs(CmpiProviderBase::requireBroker()); }

void* CmpiArgs::makeArgs(CMPIBroker* broker) {
    CMPIStatus status = noErrorYet;
    CMPIArgs* args = broker->eft->newArgs(broker, &status);
    throwOnError(status);
    return args;
}

unsigned int CmpiArgs::getArgCount() const {
    CMPIStatus status = noErrorYet;
    CMPICount count = given(getEnc())->ft->getArgCount(getEnc(), &status);
    throwOnError(status);
    return count;
}

CmpiData CmpiArgs::getArg(const char* name) const {
    CMPIStatus status = noErrorYet;
    CMPIData data = given(getEnc())->ft->getArg(getEnc(), name, &status);
    throwOnErrorUnlessAbsent(status, CMPI_RC_ERR_NOT_FOUND, name);
    return CmpiData(data);
}

CmpiData CmpiArgs::getArg(const int pos, CmpiString* name) const {
    CMPIStatus status = noErrorYet;
    CMPIString* argName = nullptr;
    CMPIData data =
        given(getEnc())->ft->getArgAt(getEnc(), static_cast<CMPICount>(pos), namePlace(argName, name), &status);
    throwOnErrorUnlessAbsent(status, CMPI_RC_ERR_NOT_FOUND, charsOf(argName));
    if (name) *name = CmpiString(argName);
    return CmpiData(data);
}

void CmpiArgs::setArg(const char* name, const CmpiData& data) {
    throwOnError(given(getEnc())->ft->addArg(getEnc(), name, valueArgument(data._data), data._data.type));
}

void CmpiResult::returnData(const CmpiData& data) {
    throwOnError(given(getEnc())->ft->returnData(getEnc(), valueArgument(data._data), data._data.type));
}

void CmpiResult::returnData(const CmpiInstance& instance) {
    throwOnError(given(getEnc())->ft->returnInstance(getEnc(), instance.getEnc()));
}

void CmpiResult::returnData(const CmpiObjectPath& path) {
    throwOnError(given(getEnc())->ft->returnObjectPath(getEnc(), path.getEnc()));
}

void CmpiResult::returnDone() { throwOnError(given(getEnc())->ft->returnDone(getEnc())); }
