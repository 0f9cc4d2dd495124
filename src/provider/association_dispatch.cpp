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
#include "provider/association_families.h"
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
    for (int row = 0; row < m_assocLookupTableSize; ++row) {
        const AssocLookupRow& candidate = m_assocLookupTable[row];
        if (!request.source.classPathIsA(candidate.sourceClass)) continue;
        if (!request.associationClass || equalsIgnoringCase(candidate.associationClass, request.associationClass))
            return true;
    }
    return false;
}

void callFamily(const Request& request, const char* associationClass, const AssociationBuffer& buffer) {
    const AssociationFamily* family = findAssociationFamily(associationClass);
    if (!family) return;
    if (family->clearLists) family->clearLists();
    if (family->buildLists) family->buildLists();
    const char* className = buffer.text();
    switch (request.operation) {
    case association::FUNC_ASSOC:
        family->associators(request.context, request.result, request.source, className, request.resultClass,
                            request.role, request.resultRole, request.properties);
        break;
    case association::FUNC_ASSOCNAME:
        family->associatorNames(request.context, request.result, request.source, className, request.resultClass,
                                request.role, request.resultRole);
        break;
    case association::FUNC_REF:
        family->references(request.context, request.result, request.source, className, request.role,
                           request.properties);
        break;
    case association::FUNC_REFNAME:
        family->referenceNames(request.context, request.result, request.source, className, request.role);
        break;
    }
}

/// Whether a row's source class is that of the request. @param bySubclass an object of a subclass will do.
bool isSource(const Request& request, const char* className, const char* sourceClass, unsigned traits) {
    return traits & bySubclass ? request.source.classPathIsA(sourceClass) : equalsIgnoringCase(className, sourceClass);
}

/// The tests of the first source class of a chain that matches, one after another.
/// @param chain scsiSource for the second chain, else 0.
void runStorageChain(const Request& request, const char* className, const AssociationBuffer& buffer, unsigned chain) {
    const char* owner = nullptr;
    for (const StorageTest& test : storageTests) {
        if ((test.traits & scsiSource) != chain) continue;
        if (!owner && isSource(request, className, test.sourceClass, test.traits)) owner = test.sourceClass;
        if (!owner || !equalsIgnoringCase(owner, test.sourceClass)) continue;
        if ((test.traits & needsTargets) && !gTargetDiscoveryEnabled) continue;
        const bool isReferenceNames = request.operation == association::FUNC_REFNAME;
        const char* baseClass =
            isReferenceNames && test.referenceNamesBaseClass ? test.referenceNamesBaseClass : test.baseClass;
        if (equalsIgnoringCase(buffer.text(), test.associationClass) || equalsIgnoringCase(buffer.text(), baseClass))
            callFamily(request, test.associationClass, buffer);
    }
}

void runEthernetAssociators(const Request& request, const AssociationBuffer& buffer) {
    for (const char* associationClass : ethernetChainOfAssociators) {
        if (!equalsIgnoringCase(buffer.text(), associationClass)) continue;
        callFamily(request, associationClass, buffer);
        return;
    }
}

void runEthernetReferences(const Request& request, const char* className, const AssociationBuffer& buffer) {
    for (const EthernetPair& pair : ethernetPairsOfReferences) {
        if (!equalsIgnoringCase(buffer.text(), pair.associationClass)) continue;
        if (!isSource(request, className, pair.sourceClass, pair.traits)) continue;
        callFamily(request, pair.associationClass, buffer);
        return;
    }
}

/// Everything that one association class leads to.
void runPass(const Request& request, const char* className, const AssociationBuffer& buffer) {
    if (request.operation == association::FUNC_REFNAME)
        DEBUG_LOG("sConstCopStr = %s, calcResultClass = %s", className, buffer.text());
    if (!request.wantsReferences()) DEBUG_LOG("Merolt_CNA_Provider::%s() assocClass=%s", request.name(), buffer.text());
    runStorageChain(request, className, buffer, 0);
    if (gTargetDiscoveryEnabled) runStorageChain(request, className, buffer, scsiSource);
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
    for (int row = 0; row < m_assocLookupTableSize; ++row) {
        const AssocLookupRow& candidate = m_assocLookupTable[row];
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
    DEBUG_LOG("m_assocLookupTableSize = %d\n", m_assocLookupTableSize);
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
