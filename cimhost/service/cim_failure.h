// How an operation ends without a result.
#pragma once

#include "cimhost/model/cim_error.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace cimhost {

/// Thrown by the operations; becomes the ERROR that a client gets.
class CimFailure : public std::runtime_error {
public:
    CimFailure(CMPIrc code, const std::string& description)
        : std::runtime_error(description), reason{code, description} {}
    explicit CimFailure(CimError cause) : std::runtime_error(cause.description), reason(std::move(cause)) {}

    [[nodiscard]] const CimError& error() const noexcept { return reason; }

private:
    CimError reason;
};

/// "CIM_ERR_NOT_FOUND" for 6; "CIM_ERR_FAILED" for what is no status of CIM.
std::string_view statusName(CMPIrc code) noexcept;

} // namespace cimhost
