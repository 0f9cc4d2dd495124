// Refusals of a message as a whole: what DSP0200 calls a CIMError, told in an HTTP header beside the status.
#pragma once

#include <string>
#include <string_view>

namespace cimhost::cimxml {

enum class ErrorKind {
    requestNotWellFormed,
    requestNotValid,
    requestNotLooselyValid,
    unsupportedProtocolVersion,
    unsupportedCimVersion,
    unsupportedDtdVersion,
    unsupportedOperation,
    multipleRequestsUnsupported,
    headerMismatch,
};

struct ProtocolError {
    ErrorKind kind;
    std::string message; // for people: what is wrong and where in the message
};

/// Value of the CIMError header, e.g. "request-not-valid".
std::string_view headerValue(ErrorKind kind);

unsigned httpStatus(ErrorKind kind);

} // namespace cimhost::cimxml
