// Arguments of methods and their results, in CIM-XML.
#pragma once

#include "cimhost/cimxml/encoder.h"

#include <string_view>

namespace cimhost::cimxml {

/// Appends a PARAMVALUE, or with that element's name and without one of its own a RETURNVALUE; empty for null.
void appendArgument(Encoder& encoder, std::string_view element, std::string_view name, const CMPIData& data);

} // namespace cimhost::cimxml
