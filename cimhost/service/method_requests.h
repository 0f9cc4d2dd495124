// Methods: arguments held against their declaration, the call, and its answer in CIM-XML.
#pragma once

#include "cimhost/service/call.h"

#include <string_view>
#include <vector>

namespace cimhost {

struct NamedValue {
    std::string_view name;
    const cimxml::Value* value;
};

/// The arguments in their declared types, as a provider gets them; what is left out stays out. A client may write a
/// reference as a text, and one value where an array stands; the type that it names beside a value is not looked at,
/// since some clients call everything a string. Throws CimFailure with CIM_ERR_INVALID_PARAMETER for an argument that
/// the method does not take, that is given twice or that does not fit.
const ArgsObject& makeArguments(RequestScope& scope, std::string_view nameSpace, const MethodDeclaration& method,
                                const std::vector<NamedValue>& values, ArrayArguments form);

/// Answers a METHODCALL: the return value, then what the method gave out.
void invokeMethod(const Call& call);

} // namespace cimhost
