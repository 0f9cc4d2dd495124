// Calls to the server itself, always with the server's own broker: servers keep more behind it than its public words.

#include "CmpiArgs.h"
#include "CmpiBroker.h"
#include "checks.h"

const char* CmpiContext::invocationFlags = CMPIInvocationFlags;

CmpiData CmpiContext::getEntry(const char* name) const {
    CMPIStatus status = noErrorYet;
    CMPIData data = getEnc()->ft->getEntry(getEnc(), name, &status);
    throwOnError(status);
    return CmpiData(data);
}

CmpiContext CmpiBroker::prepareAttachThread(const CmpiContext& context) {
    const auto prepare = getEnc()->bft->prepareAttachThread;
    return CmpiContext(prepare ? prepare(getEnc(), context.getEnc()) : nullptr);
}

void CmpiBroker::attachThread(const CmpiContext& context) {
    throwOnError(offered(getEnc()->bft->attachThread)(getEnc(), context.getEnc()));
}

void CmpiBroker::detachThread(const CmpiContext& context) {
    throwOnError(offered(getEnc()->bft->detachThread)(getEnc(), context.getEnc()));
}

void CmpiBroker::deliverIndication(const CmpiContext& context, const char* nameSpace, const CmpiInstance& indication) {
    throwOnError(offered(getEnc()->bft->deliverIndication)(getEnc(), context.getEnc(), nameSpace, indication.getEnc()));
}

CmpiEnumeration CmpiBroker::enumInstanceNames(const CmpiContext& context, const CmpiObjectPath& path) {
    CMPIStatus status = noErrorYet;
    CMPIEnumeration* paths = getEnc()->bft->enumerateInstanceNames(getEnc(), context.getEnc(), path.getEnc(), &status);
    throwOnError(status);
    return CmpiEnumeration(paths);
}

CmpiInstance CmpiBroker::getInstance(const CmpiContext& context, const CmpiObjectPath& path, const char** properties) {
    CMPIStatus status = noErrorYet;
    CMPIInstance* instance = getEnc()->bft->getInstance(getEnc(), context.getEnc(), path.getEnc(), properties, &status);
    throwOnError(status);
    return CmpiInstance(instance);
}

CmpiObjectPath CmpiBroker::createInstance(const CmpiContext& context, const CmpiObjectPath& path,
                                          const CmpiInstance& instance) {
    CMPIStatus status = noErrorYet;
    CMPIObjectPath* created =
        getEnc()->bft->createInstance(getEnc(), context.getEnc(), path.getEnc(), instance.getEnc(), &status);
    throwOnError(status);
    return CmpiObjectPath(created);
}

void CmpiBroker::setInstance(const CmpiContext& context, const CmpiObjectPath& path, const CmpiInstance& instance,
                             const char** properties) {
    throwOnError(
        getEnc()->bft->modifyInstance(getEnc(), context.getEnc(), path.getEnc(), instance.getEnc(), properties));
}

void CmpiBroker::deleteInstance(const CmpiContext& context, const CmpiObjectPath& path) {
    throwOnError(getEnc()->bft->deleteInstance(getEnc(), context.getEnc(), path.getEnc()));
}

CmpiEnumeration CmpiBroker::enumInstances(const CmpiContext& context, const CmpiObjectPath& path,
                                          const char** properties) {
    CMPIStatus status = noErrorYet;
    CMPIEnumeration* instances =
        getEnc()->bft->enumerateInstances(getEnc(), context.getEnc(), path.getEnc(), properties, &status);
    throwOnError(status);
    return CmpiEnumeration(instances);
}

namespace {

// Providers get these from the server through its tables or not at all; an answer here would be one that the same
// provider never gets elsewhere.
[[noreturn]] void refuse() { throw CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED); }

} // namespace

CmpiEnumeration CmpiBroker::execQuery(const CmpiContext&, const CmpiObjectPath&, const char*, const char*) { refuse(); }

CmpiEnumeration CmpiBroker::associators(const CmpiContext&, const CmpiObjectPath&, const char*, const char*,
                                        const char*, const char*, const char**) {
    refuse();
}

CmpiEnumeration CmpiBroker::associatorNames(const CmpiContext&, const CmpiObjectPath&, const char*, const char*,
                                            const char*, const char*) {
    refuse();
}

CmpiEnumeration CmpiBroker::references(const CmpiContext&, const CmpiObjectPath&, const char*, const char*,
                                       const char**) {
    refuse();
}

CmpiEnumeration CmpiBroker::referenceNames(const CmpiContext&, const CmpiObjectPath&, const char*, const char*) {
    refuse();
}

CmpiData CmpiBroker::invokeMethod(const CmpiContext&, const CmpiObjectPath&, const char*, const CmpiArgs&, CmpiArgs&) {
    refuse();
}

void CmpiBroker::setProperty(const CmpiContext&, const CmpiObjectPath&, const char*, const CmpiData&) { refuse(); }

CmpiData CmpiBroker::getProperty(const CmpiContext&, const CmpiObjectPath&, const char*) { refuse(); }
