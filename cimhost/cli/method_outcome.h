// What a method's return value means.
#pragma once

#include "cimhost/model/class_declaration.h"
#include "cimhost/provider/provider_calls.h"

#include <string>

namespace cimhost::cli {

/// The value, and in parentheses what the method's declaration calls it.
std::string withMeaning(const MethodDeclaration& method, const CMPIData& returned);

/// Why the method failed, by what it returned; empty if it did not.
std::string failureOf(const MethodDeclaration& method, const Outcome& outcome);

} // namespace cimhost::cli
