// What the installation services of both sides share.
#pragma once

#include "CmpiArgs.h"
#include "CmpiData.h"
#include "CmpiResult.h"
#include "CmpiStatus.h"

#include <cstdint>

namespace merolt::software {

/// Name of both services and InstanceID of their capabilities.
constexpr const char* installerName = "CNA_SW_INSTALLER";

/// What their methods return to the client.
constexpr std::uint32_t installDone = 0;
constexpr std::uint32_t installUnknownMethod = 1;
constexpr std::uint32_t installFailed = 2;

/// An argument without a value; servers say so in two ways.
inline bool isNull(const CmpiData& argument) { return argument.isNullValue() || argument.isNotFound(); }

/// The message of a status for the log.
inline const char* messageOf(const CmpiStatus& status) {
    const char* message = status.msg();
    return message ? message : "(null)";
}

/// Ends a method with what it returns.
inline CmpiStatus returnOutcome(CmpiResult& result, std::uint32_t outcome) {
    result.returnData(CmpiData(CMPIUint32{outcome}));
    result.returnDone();
    return CmpiStatus(CMPI_RC_OK);
}

} // namespace merolt::software
