// Methods: waits for the first build, takes both locks and hands the call to the installation service of the class.
#include "classes/ethernet/installation_methods.h"
#include "classes/request.h"
#include "log/log.h"
#include "platform/platform.h"
#include "provider/locks.h"
#include "provider/merolt_cna_provider.h"
#include "software/install_from_uri.h"

#include <mutex>

using namespace merolt;

namespace {

using RequestGuard = std::unique_lock<platform::Mutex>;
using InvokeMethod = CmpiStatus (*)(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,
                                    const char* methodName, const CmpiArgs& in, CmpiArgs& out);

struct MethodRow {
    const char* className; ///< tested with classPathIsA
    InvokeMethod invokeMethod;
};

constexpr MethodRow methodRows[] = {
    {"Merolt_FCHBA_SoftwareInstallationService", software::invokeMethod_SoftwareInstallationService},
    {"Merolt_NIC_SoftwareInstallationService", ethernet::invokeMethod_SoftwareInstallationService},
};

/// The first build holds the lock from before the provider was handed out.
void waitForLock() { const RequestGuard provider(*provider_lock); }

void waitForFirstBuild(const std::atomic<std::uint8_t>& initialized) {
    for (int test = 0; test < 5; ++test) {
        if (initialized) continue;
        DEBUG_LOG("invokeMethod is waiting for the provider to initialize...");
        if (platform::services().waitsForEvents()) {
            waitForLock();
        } else {
            platform::sleepSeconds(2);
        }
    }
}

void runMethod(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop, const char* methodName,
               const CmpiArgs& in, CmpiArgs& out) {
    for (const MethodRow& row : methodRows) {
        if (!cop.classPathIsA(row.className)) continue;
        try {
            row.invokeMethod(context, result, cop, methodName, in, out);
        } catch (const CMPIStatus& status) {
            // A plain record must not reach the server's C code as an exception; the client sees the same either way.
            throw CmpiStatus(status);
        }
        return;
    }
}

} // namespace

CmpiStatus Merolt_CNA_Provider::invokeMethod(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,
                                             const char* methodName, const CmpiArgs& in, CmpiArgs& out) {
    waitForFirstBuild(initialized);
    RequestGuard provider(*provider_lock);
    RequestGuard update(*adapter_update_lock);
    const char* className = nullptr;
    const CMPIStatus status = readClassName(cop, className);
    if (status.rc != CMPI_RC_OK) {
        ERROR_LOG("Merolt_CNA_Provider: invokeMethod error getting ClassName\n");
        result.returnDone();
        return status;
    }
    DEBUG_LOG("Entering Merolt_CNA_Provider invokeMethod: classname = %s, MethodName=%s", className,
              methodName ? methodName : "");
    // A name that is missing is that of no method.
    runMethod(context, result, cop, methodName ? methodName : "", in, out);
    result.returnDone();
    update.unlock();
    provider.unlock();
    DEBUG_LOG("Exiting  Merolt_CNA_Provider invokeMethod\n");
    return CmpiStatus(CMPI_RC_OK);
}
