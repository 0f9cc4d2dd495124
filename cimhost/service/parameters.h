// Reads the parameters of an operation from a request, and checks them: each may be missing, null, of a wrong kind, or
// good. Everything here throws CimFailure with CIM_ERR_INVALID_PARAMETER for a parameter of a wrong kind.
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

/// Throws CimFailure with CIM_ERR_INVALID_PARAMETER, the name and the reason.
[[noreturn]] void refuseParameter(std::string_view name, std::string_view reason);

/// Null if the parameter is missing or null.
const cimxml::Argument* givenParameter(const cimxml::Request& request, std::string_view name);

/// A boolean; `standard` if the parameter is missing or null.
bool booleanParameter(const cimxml::Request& request, std::string_view name, bool standard);

/// The name of a class; nothing if the parameter is missing or null.
std::optional<std::string> optionalClassName(const cimxml::Request& request, std::string_view name);
/// The name of a class. Throws if the parameter is missing or null, too.
std::string requiredClassName(const cimxml::Request& request, std::string_view name);

/// The name of a reference property; empty if the parameter is missing or null.
std::string roleParameter(const cimxml::Request& request, std::string_view name);

/// A text; nothing if the parameter is missing or null.
std::optional<std::string> textParameter(const cimxml::Request& request, std::string_view name);
/// A uint32; nothing if the parameter is missing or null.
std::optional<std::uint32_t> numberParameter(const cimxml::Request& request, std::string_view name);

/// The names in the parameter PropertyList, at most 1024; nothing, which means all properties, if it is missing or
/// null.
PropertyList propertyList(const cimxml::Request& request);

/// A parameter that must be there, as the alternative of cimxml::Argument that it must be.
/// @param kind what that is, for the text of the error: "instance name"
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

/// The flags of those boolean parameters that are true. One that is missing or null has its standard value.
CMPIFlags readFlags(const cimxml::Request& request, std::initializer_list<FlagParameter> parameters);

/// Throws if the request has a parameter of another name.
/// @param names separated by blanks
void refuseUnknownParameters(const cimxml::Request& request, std::string_view names);

} // namespace cimhost
