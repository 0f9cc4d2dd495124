// The error with which an operation ends.
#pragma once

#include "cimhost/model/cim_error.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace cimhost {

// Statuses of DSP0200 1.4 that are newer than the tables of CMPI.
constexpr auto invalidEnumerationContext = static_cast<CMPIrc>(21);
constexpr auto invalidOperationTimeout = static_cast<CMPIrc>(22);
constexpr auto filteredEnumerationNotSupported = static_cast<CMPIrc>(25);
constexpr auto continuationOnErrorNotSupported = static_cast<CMPIrc>(26);
constexpr auto serverLimitsExceeded = static_cast<CMPIrc>(27);

/// Thrown by operations. The client gets it as ERROR.
class CimFailure : public std::runtime_error {
public:
    CimFailure(CMPIrc code, const std::string& description)
        : std::runtime_error(description), reason{code, description} {}
    explicit CimFailure(CimError cause) : std::runtime_error(cause.description), reason(std::move(cause)) {}

    [[nodiscard]] const CimError& error() const noexcept { return reason; }

private:
    CimError reason;
};

/// The code itself if it is CMPI_RC_OK or a status of DSP0200; CMPI_RC_ERR_FAILED otherwise.
CMPIrc knownStatus(CMPIrc code) noexcept;

/// "CIM_ERR_NOT_FOUND" for 6; "CIM_ERR_FAILED" for a code that is no error of DSP0200.
std::string_view statusName(CMPIrc code) noexcept;

} // namespace cimhost
