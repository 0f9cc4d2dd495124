// The parameters of an operation, read from a request and judged: each is missing, null, of the wrong kind or good.
#pragma once

#include "cimhost/broker/broker.h"
#include "cimhost/cimxml/request.h"
#include "cimhost/service/cim_failure.h"

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace cimhost {

/// Throws CimFailure with CIM_ERR_INVALID_PARAMETER, as everything here does.
[[noreturn]] void refuseParameter(std::string_view name, std::string_view reason);

/// Null for a parameter that is absent or null.
const cimxml::Argument* givenParameter(const cimxml::Request& request, std::string_view name);

bool booleanParameter(const cimxml::Request& request, std::string_view name, bool standard);

/// Nothing where the parameter is absent or null.
std::optional<std::string> optionalClassName(const cimxml::Request& request, std::string_view name);
std::string requiredClassName(const cimxml::Request& request, std::string_view name);

/// The name of a reference property, empty where the parameter is absent or null.
std::string roleParameter(const cimxml::Request& request, std::string_view name);

/// A text; nothing where the parameter is absent or null.
std::optional<std::string> textParameter(const cimxml::Request& request, std::string_view name);
/// A uint32; nothing where the parameter is absent or null.
std::optional<std::uint32_t> numberParameter(const cimxml::Request& request, std::string_view name);

PropertyList propertyList(const cimxml::Request& request);

/// A parameter that has to be there, as the alternative of cimxml::Argument that it has to be.
template <typename Kind>
const Kind& requiredArgument(const cimxml::Request& request, std::string_view name, std::string_view kind) {
    const cimxml::Argument* argument = givenParameter(request, name);
    if (!argument) refuseParameter(name, "missing");
    const Kind* value = std::get_if<Kind>(argument);
    if (!value) refuseParameter(name, "no " + std::string(kind));
    return *value;
}

struct FlagParameter {
    std::string_view name;
    CMPIFlags flag;
    bool standard;
};

CMPIFlags readFlags(const cimxml::Request& request, std::initializer_list<FlagParameter> parameters);

/// Refuses a parameter that is none of these names, which stand parted by blanks.
void refuseUnknownParameters(const cimxml::Request& request, std::string_view names);

} // namespace cimhost
