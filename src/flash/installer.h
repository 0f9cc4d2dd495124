// What the installation services of both sides share.
#pragma once

#include "CmpiArgs.h"
#include "CmpiData.h"
#include "CmpiResult.h"
#include "CmpiStatus.h"

#include <cstdint>
#include <new>

namespace merolt::flash {

/// Name of both services and InstanceID of their capabilities.
constexpr const char* installerName = "CNA_SW_INSTALLER";

/// What their methods return to the client.
constexpr std::uint32_t installDone = 0;
constexpr std::uint32_t installUnknownMethod = 1;
constexpr std::uint32_t installFailed = 2;

/// An argument without a value; servers say so in two ways.
inline bool isNull(const CmpiData& argument) { return argument.isNullValue() || argument.isNotFound(); }

/// Runs the guarded part of a method: whatever fails in it fails the method and nothing else. Memory that cannot be had
/// is a failure like any other, and must not reach the server's C code.
/// @param install gives what the method returns.
/// @param logFailure takes the status.
template <class Install, class LogFailure>
std::uint32_t runGuarded(const Install& install, const LogFailure& logFailure) {
    try {
        return install();
    } catch (const CmpiStatus& failure) {
        logFailure(failure);
    } catch (const std::bad_alloc&) {
        logFailure(CmpiStatus(CMPI_RC_ERR_FAILED));
    }
    return installFailed;
}

/// Ends a method with what it returns.
inline CmpiStatus returnOutcome(CmpiResult& result, std::uint32_t outcome) {
    result.returnData(CmpiData(CMPIUint32{outcome}));
    result.returnDone();
    return CmpiStatus(CMPI_RC_OK);
}

} // namespace merolt::flash
