// Association requests: one road for the four, which finds the families of a source object.
//
// A request that names no association class is tried with each that the source's class has, by name, in the order of
// the look-up table. The two associator operations ask that table first, and so answer only for the names in it; the
// two reference operations do not, and so take base classes as well.
#include "associations/association.h"
#include "associations/paths.h"
#include "classes/wrapper_access.h"
#include "configuration/configuration.h"
#include "log/log.h"
#include "provider/association_tables.h"
#include "provider/locks.h"
#include "provider/merolt_cna_provider.h"
#include "text/fixed_text.h"
#include "text/text.h"

#include "CmpiString.h"

#include <cxxabi.h>
#include <mutex>
#include <string>

using namespace merolt;
using association::Family;
using association::ftype;

namespace {

using RequestGuard = std::unique_lock<platform::Mutex>;
using AssociationBuffer = FixedText<256>;

constexpr const char* operationNames[] = {"associators", "associatorNames", "references", "referenceNames"};

/// A request on its road.
struct Request {
    ftype operation;
    const CmpiContext& context;
    CmpiResult& result;
    const CmpiObjectPath& source;
    const char* associationClass; ///< null if the client named none
    const char* resultClass;
    const char* role;
    const char* resultRole;
    const char** properties;

    const char* name() const { return operationNames[operation]; }
    bool wantsReferences() const {
        return operation == association::FUNC_REF || operation == association::FUNC_REFNAME;
    }
};

const char* namedOrNull(const char* className) { return className && *className ? className : nullptr; }

void logEntering(const Request& request, const char* className) {
    const char* parameter = request.wantsReferences() ? "resultClass" : "assocClass";
    if (request.associationClass) {
        DEBUG_LOG("Entering Merolt_CNA_Provider %s: classname = %s, %s = %s\n", request.name(), className, parameter,
                  request.associationClass);
    } else {
        DEBUG_LOG("Entering Merolt_CNA_Provider %s: classname = %s, %s = NULL", request.name(), className, parameter);
    }
}

/// Whether the look-up table has the request's association for the source's class or one above it.
bool hasAssociations(const Request& request) {
    for (const AssocLookupRow& candidate : assocLookupTable()) {
        if (!request.source.classPathIsA(candidate.sourceClass)) continue;
        if (!request.associationClass || equalsIgnoringCase(candidate.associationClass, request.associationClass))
            return true;
    }
    return false;
}

/// @param buffer the association class as the request or the look-up table has it.
void callFamily(const Request& request, const Family& family, const AssociationBuffer& buffer) {
    family.fresh.read();
    const char* resultClass = request.wantsReferences() ? buffer.text() : request.resultClass;
    answer(family, request.result, request.source,
           {request.operation, resultClass, request.role, request.resultRole, request.properties});
}

/// Whether the request's source is of the class.
bool isSource(const Request& request, const char* className, const AssociationSource& source) {
    return source.takesSubclasses ? request.source.classPathIsA(source.className)
                                  : equalsIgnoringCase(className, source.className);
}

/// Whether the request names the association or what it is derived from.
bool isWanted(const Request& request, const AssociationTest& test, const AssociationBuffer& buffer) {
    if (equalsIgnoringCase(buffer.text(), test.family->className)) return true;
    const bool hasOwnName = request.operation == association::FUNC_REFNAME && test.source.referenceNamesBaseClass;
    const char* baseClass = hasOwnName ? test.source.referenceNamesBaseClass : test.family->baseClass;
    return baseClass && equalsIgnoringCase(buffer.text(), baseClass);
}

/// The tests of the first source class of a chain that matches, one after another.
void runStorageChain(const Request& request, const char* className, const AssociationBuffer& buffer, bool isLastChain) {
    const char* owner = nullptr;
    for (const AssociationTest& test : storageTests()) {
        const AssociationSource& source = test.source;
        if (source.isInLastChain != isLastChain) continue;
        if (!owner && isSource(request, className, source)) owner = source.className;
        if (!owner || !equalsIgnoringCase(owner, source.className)) continue;
        if (test.family->needsTargets && !gTargetDiscoveryEnabled) continue;
        if (isWanted(request, test, buffer)) callFamily(request, *test.family, buffer);
    }
}

/// associators and associatorNames take any source.
void runEthernetAssociators(const Request& request, const AssociationBuffer& buffer) {
    for (const Family* family : association::ethernetFamilies()) {
        if (!equalsIgnoringCase(buffer.text(), family->className)) continue;
        callFamily(request, *family, buffer);
        return;
    }
}

void runEthernetReferences(const Request& request, const char* className, const AssociationBuffer& buffer) {
    for (const AssociationTest& test : ethernetTests()) {
        if (!equalsIgnoringCase(buffer.text(), test.family->className)) continue;
        if (!isSource(request, className, test.source)) continue;
        callFamily(request, *test.family, buffer);
        return;
    }
}

/// Everything that one association class leads to.
void runPass(const Request& request, const char* className, const AssociationBuffer& buffer) {
    if (request.operation == association::FUNC_REFNAME)
        DEBUG_LOG("sConstCopStr = %s, calcResultClass = %s", className, buffer.text());
    if (!request.wantsReferences()) DEBUG_LOG("Merolt_CNA_Provider::%s() assocClass=%s", request.name(), buffer.text());
    runStorageChain(request, className, buffer, false);
    if (gTargetDiscoveryEnabled) runStorageChain(request, className, buffer, true);
    if (request.wantsReferences()) {
        runEthernetReferences(request, className, buffer);
    } else {
        runEthernetAssociators(request, buffer);
    }
    if (request.operation == association::FUNC_ASSOC)
        DEBUG_LOG("Merolt_CNA_Provider::associators() assocClass=%s  DONE", buffer.text());
}

void runPasses(const Request& request) {
    const CmpiString name = request.source.getClassName();
    const char* className = association::textOf(name);
    AssociationBuffer buffer;
    if (request.associationClass) {
        buffer.assign(request.associationClass);
        runPass(request, className, buffer);
        return;
    }
    for (const AssocLookupRow& candidate : assocLookupTable()) {
        if (!equalsIgnoringCase(candidate.sourceClass, className)) continue;
        buffer.assign(candidate.associationClass);
        if (request.operation == association::FUNC_REFNAME) DEBUG_LOG("Copied %s to calcResultClass", buffer.text());
        runPass(request, className, buffer);
    }
}

CmpiStatus withoutAssociations(const Request& request, RequestGuard& guard, const char* className) {
    request.result.returnDone();
    guard.unlock();
    const char* what = request.operation == association::FUNC_ASSOC ? "associators" : "associatorNames";
    DEBUG_LOG("Class %s has no %s\n", className, what);
    return CmpiStatus(CMPI_RC_OK);
}

CmpiStatus unknownException(const Request& request, RequestGuard& guard) {
    request.result.returnDone();
    guard.unlock();
    const std::string text = std::string("Merolt_CNA_Provider ") + request.name() + " detected an unknown exception";
    ERROR_LOG("%s", text.c_str());
    return CmpiStatus(CMPI_RC_ERR_FAILED, text.c_str());
}

CmpiStatus dispatch(const Request& request) {
    if (request.operation == association::FUNC_ASSOC) DEBUG_LOG("Merolt_CNA_Provider::associators entered");
    RequestGuard guard(*provider_lock);
    const char* className = nullptr;
    const CMPIStatus status = readClassName(request.source, className);
    if (status.rc != CMPI_RC_OK) {
        ERROR_LOG("Merolt_CNA_Provider %s: Error getting classname, status.rc=%d!", request.name(), status.rc);
        request.result.returnDone();
        return status;
    }
    logEntering(request, className);
    if (!request.wantsReferences()) {
        if (!hasAssociations(request)) return withoutAssociations(request, guard, className);
        DEBUG_LOG("Class %s has associators\n", className);
    }
    DEBUG_LOG("m_assocLookupTableSize = %d\n", static_cast<int>(assocLookupTable().size()));
    try {
        runPasses(request);
    } catch (const CmpiStatus& failure) {
        ERROR_LOG("Merolt_CNA_Provider %s caught exception status: %d %s", request.name(), failure.rc(),
                  loggedMessage(failure));
        request.result.returnDone();
        return failure;
    } catch (const abi::__forced_unwind&) {
        throw; // the server ends its thread
    } catch (...) {
        return unknownException(request, guard);
    }
    if (request.operation == association::FUNC_ASSOC)
        DEBUG_LOG("Merolt_CNA_Provider::associators() status=%d, %s", CMPI_RC_OK, "");
    request.result.returnDone();
    guard.unlock();
    DEBUG_LOG("Exiting  Merolt_CNA_Provider %s\n", request.name());
    return CmpiStatus(CMPI_RC_OK);
}

} // namespace

CmpiStatus Merolt_CNA_Provider::associators(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                            const char* assocClass, const char* resultClass, const char* role,
                                            const char* resultRole, const char** properties) {
    return dispatch({association::FUNC_ASSOC, context, result, path, namedOrNull(assocClass), resultClass, role,
                     resultRole, properties});
}

CmpiStatus Merolt_CNA_Provider::associatorNames(const CmpiContext& context, CmpiResult& result,
                                                const CmpiObjectPath& path, const char* assocClass,
                                                const char* resultClass, const char* role, const char* resultRole) {
    return dispatch({association::FUNC_ASSOCNAME, context, result, path, namedOrNull(assocClass), resultClass, role,
                     resultRole, nullptr});
}

// Their result class is the class of the association.
CmpiStatus Merolt_CNA_Provider::references(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                           const char* resultClass, const char* role, const char** properties) {
    return dispatch(
        {association::FUNC_REF, context, result, path, namedOrNull(resultClass), nullptr, role, nullptr, properties});
}

CmpiStatus Merolt_CNA_Provider::referenceNames(const CmpiContext& context, CmpiResult& result,
                                               const CmpiObjectPath& path, const char* resultClass, const char* role) {
    return dispatch(
        {association::FUNC_REFNAME, context, result, path, namedOrNull(resultClass), nullptr, role, nullptr, nullptr});
}
