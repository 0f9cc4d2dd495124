#include "cimhost/cimxml/protocol_error.h"

namespace cimhost::cimxml {

namespace {

struct Row {
    ErrorKind kind;
    std::string_view header;
    unsigned status;
};

constexpr Row rows[] = {
    {ErrorKind::requestNotWellFormed, "request-not-well-formed", 400},
    {ErrorKind::requestNotValid, "request-not-valid", 400},
    {ErrorKind::requestNotLooselyValid, "request-not-loosely-valid", 400},
    {ErrorKind::unsupportedProtocolVersion, "unsupported-protocol-version", 501},
    {ErrorKind::unsupportedCimVersion, "unsupported-cim-version", 501},
    {ErrorKind::unsupportedDtdVersion, "unsupported-dtd-version", 501},
    {ErrorKind::unsupportedOperation, "unsupported-operation", 501},
    {ErrorKind::multipleRequestsUnsupported, "multiple-requests-unsupported", 501},
    {ErrorKind::headerMismatch, "header-mismatch", 400},
};

const Row& rowOf(ErrorKind kind) { return rows[static_cast<std::size_t>(kind)]; }

} // namespace

std::string_view headerValue(ErrorKind kind) { return rowOf(kind).header; }

unsigned httpStatus(ErrorKind kind) { return rowOf(kind).status; }

} // namespace cimhost::cimxml
