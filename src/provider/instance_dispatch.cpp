// Instance requests: one road for the three that families answer, and the refusals of the three that change things.
#include "classes/wrapper_access.h"
#include "configuration/configuration.h"
#include "log/log.h"
#include "provider/instance_table.h"
#include "provider/locks.h"
#include "provider/merolt_cna_provider.h"

#include <cxxabi.h>
#include <mutex>

using namespace merolt;

namespace {

using Guard = std::lock_guard<platform::Mutex>;
using RequestGuard = std::unique_lock<platform::Mutex>;

/// What distinguishes an operation on the road.
struct InstanceOperation {
    const char* name;
    const InstanceRows& rows;
    /// An operation that swallows unknown exceptions ends as a success with what was delivered so far.
    bool reportsUnknownException;
};

CmpiStatus unknownException(const InstanceOperation& operation, RequestGuard& guard, CmpiResult& result) {
    result.returnDone();
    guard.unlock();
    const std::string text = std::string("Merolt_CNA_Provider ") + operation.name + " detected an unknown exception";
    ERROR_LOG("%s", text.c_str());
    return CmpiStatus(CMPI_RC_ERR_FAILED, text.c_str());
}

CmpiStatus done(const InstanceOperation& operation, RequestGuard& guard, CmpiResult& result) {
    result.returnDone();
    guard.unlock();
    DEBUG_LOG("Exiting  Merolt_CNA_Provider %s\n", operation.name);
    return CmpiStatus(CMPI_RC_OK);
}

/// Calls back with the rows that match the request's class.
template <class Call>
void walk(const InstanceRows& rows, const CmpiObjectPath& cop, Call&& call) {
    bool matched[chainCount] = {};
    for (const InstanceRow& row : rows) {
        const bool needsTargets = row.chain == storageExtentChain || row.chain == scsiEndpointChain;
        if (matched[row.chain] || (needsTargets && !gTargetDiscoveryEnabled)) continue;
        if (!cop.classPathIsA(row.className)) continue;
        matched[row.chain] = true;
        call(row);
    }
}

template <class Call>
CmpiStatus dispatch(const InstanceOperation& operation, CmpiResult& result, const CmpiObjectPath& cop, Call&& call) {
    RequestGuard guard(*provider_lock);
    const char* className = nullptr;
    const CMPIStatus status = readClassName(cop, className);
    if (status.rc != CMPI_RC_OK) {
        ERROR_LOG("Merolt_CNA_Provider %s: Error getting classname, status.rc=%d!", operation.name, status.rc);
        result.returnDone();
        return status;
    }
    DEBUG_LOG("Entering Merolt_CNA_Provider %s: classname = %s", operation.name, className);
    try {
        walk(operation.rows, cop, call);
    } catch (const CmpiStatus& failure) {
        ERROR_LOG("Merolt_CNA_Provider %s caught exception status: %d %s", operation.name, failure.rc(),
                  loggedMessage(failure));
        result.returnDone();
        return failure;
    } catch (const abi::__forced_unwind&) {
        throw; // the server ends its thread
    } catch (...) {
        if (operation.reportsUnknownException) return unknownException(operation, guard, result);
    }
    return done(operation, guard, result);
}

} // namespace

CmpiStatus Merolt_CNA_Provider::enumInstanceNames(const CmpiContext& context, CmpiResult& result,
                                                  const CmpiObjectPath& cop) {
    return dispatch({"enumInstanceNames", enumerationRows(), true}, result, cop,
                    [&](const InstanceRow& row) { row.enumInstanceNames(context, result, cop); });
}

CmpiStatus Merolt_CNA_Provider::enumInstances(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,
                                              const char** properties) {
    return dispatch({"enumInstances", enumerationRows(), false}, result, cop,
                    [&](const InstanceRow& row) { row.enumInstances(context, result, cop, properties); });
}

CmpiStatus Merolt_CNA_Provider::getInstance(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,
                                            const char** properties) {
    return dispatch({"getInstance", getInstanceRows(), true}, result, cop,
                    [&](const InstanceRow& row) { row.getInstance(context, result, cop, properties); });
}

CmpiStatus Merolt_CNA_Provider::createInstance(const CmpiContext&, CmpiResult&, const CmpiObjectPath&,
                                               const CmpiInstance&) {
    DEBUG_LOG("Merolt_CNA_Provider createInstance was called but NOT SUPPORTED");
    return CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED, "Merolt_CNA_Provider cannot create");
}

CmpiStatus Merolt_CNA_Provider::setInstance(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const CmpiInstance&,
                                            const char**) {
    DEBUG_LOG("Merolt_CNA_Provider setInstance was called but NOT SUPPORTED");
    // Nothing to do under the locks: taking them lets a first build or a method end before the refusal.
    {
        const Guard provider(*provider_lock);
        const Guard update(*adapter_update_lock);
    }
    return CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED, "Merolt_CNA_Provider cannot set");
}

CmpiStatus Merolt_CNA_Provider::deleteInstance(const CmpiContext&, CmpiResult&, const CmpiObjectPath&) {
    DEBUG_LOG("Merolt_CNA_Provider deleteInstance was called but NOT SUPPORTED");
    return CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED, "Merolt_CNA_Provider cannot delete");
}
