// Calls of methods: checks the arguments against their declaration, makes the call, and writes its answer in CIM-XML.
#pragma once

#include "cimhost/service/call.h"

#include <string_view>
#include <vector>

namespace cimhost {

struct NamedValue {
    std::string_view name;
    const cimxml::Value* value;
};

/// The arguments in their declared types, as a provider gets them. An argument that the client leaves out is left out
/// here, too. A client may write a reference as the text of a path, and a single value for an array. The type that it
/// gives beside a value is ignored, since some clients call everything a string. Throws CimFailure with
/// CIM_ERR_INVALID_PARAMETER for an argument that the method does not take, that is given twice or that does not fit.
const ArgsObject& makeArguments(RequestScope& scope, std::string_view nameSpace, const MethodDeclaration& method,
                                const std::vector<NamedValue>& values, ArrayArguments form);

/// Answers a METHODCALL: appends the return value, then the output arguments. Throws CimFailure.
void invokeMethod(const Call& call);

} // namespace cimhost
