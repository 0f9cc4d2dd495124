// Constants of a MOF text become values of the type that is declared for them.
#pragma once

#include <string>

#include "cimhost/model/class_declaration.h"
#include "cimhost/model/mof_parser.h"

namespace cimhost {

/// The name between double quotes, for messages.
std::string inQuotes(std::string_view name);

/// "uint16" or "uint16[]", for messages.
std::string typeText(CMPIType type);

/// The value in that type; NULL fits every type. Throws MofError where the value stands if it does not fit; owner is
/// what has the value: 'property "X" of class "Y"'.
DeclaredValue valueInType(const mof::Value& value, CMPIType type, const std::string& owner);

} // namespace cimhost
