#include "cimhost/service/cim_failure.h"

namespace cimhost {

namespace {

constexpr std::string_view names[] = {
    "",
    "CIM_ERR_FAILED",
    "CIM_ERR_ACCESS_DENIED",
    "CIM_ERR_INVALID_NAMESPACE",
    "CIM_ERR_INVALID_PARAMETER",
    "CIM_ERR_INVALID_CLASS",
    "CIM_ERR_NOT_FOUND",
    "CIM_ERR_NOT_SUPPORTED",
    "CIM_ERR_CLASS_HAS_CHILDREN",
    "CIM_ERR_CLASS_HAS_INSTANCES",
    "CIM_ERR_INVALID_SUPERCLASS",
    "CIM_ERR_ALREADY_EXISTS",
    "CIM_ERR_NO_SUCH_PROPERTY",
    "CIM_ERR_TYPE_MISMATCH",
    "CIM_ERR_QUERY_LANGUAGE_NOT_SUPPORTED",
    "CIM_ERR_INVALID_QUERY",
    "CIM_ERR_METHOD_NOT_AVAILABLE",
    "CIM_ERR_METHOD_NOT_FOUND",
    "",
    "",
    "CIM_ERR_NAMESPACE_NOT_EMPTY",
    "CIM_ERR_INVALID_ENUMERATION_CONTEXT",
    "CIM_ERR_INVALID_OPERATION_TIMEOUT",
    "CIM_ERR_PULL_HAS_BEEN_ABANDONED",
    "CIM_ERR_PULL_CANNOT_BE_ABANDONED",
    "CIM_ERR_FILTERED_ENUMERATION_NOT_SUPPORTED",
    "CIM_ERR_CONTINUATION_ON_ERROR_NOT_SUPPORTED",
    "CIM_ERR_SERVER_LIMITS_EXCEEDED",
    "CIM_ERR_SERVER_IS_SHUTTING_DOWN",
};

} // namespace

CMPIrc knownStatus(CMPIrc code) noexcept {
    const auto index = static_cast<std::size_t>(code);
    return index >= std::size(names) || (index > 0 && names[index].empty()) ? CMPI_RC_ERR_FAILED : code;
}

std::string_view statusName(CMPIrc code) noexcept {
    return code == CMPI_RC_OK ? names[CMPI_RC_ERR_FAILED] : names[static_cast<std::size_t>(knownStatus(code))];
}

} // namespace cimhost
