// Values as people read them: a number with its meaning, a speed in bits per second with its unit.
#pragma once

#include "cimhost/broker/objects.h"
#include "cimhost/cli/presentation.h"
#include "cimhost/model/class_declaration.h"

#include <span>
#include <string>
#include <string_view>

namespace cimhost::cli {

/// As CIM-XML writes it, arrays with commas, an embedded instance as "CLASS {PROPERTY: VALUE, ...}"; empty for null.
/// Printable.
std::string plainText(const CMPIData& data);

/// What the declaration calls a number (DSP0004, qualifiers ValueMap and Values); empty if nothing.
std::string meaningOf(std::span<const Qualifier> qualifiers, std::string_view value);

/// What a table shows of it, by the qualifiers of its declaration, which may be null: "OK" for a number that is named
/// so, "16 Gbit/s" for bits in a second, of a reference only its class and last key.
std::string shortText(const PropertyDeclaration* property, const CMPIData& data);
/// The same of a property that the instance has, in the unit that was chosen for its class; empty where it has none.
std::string shortText(const InstanceObject& instance, std::string_view property, const Presentation& presentation);

/// What a list shows of it: the value, and its meaning in parentheses where there is one.
std::string fullText(const PropertyDeclaration* property, const CMPIData& data);
/// As above.
std::string fullText(const InstanceObject& instance, std::string_view property, const Presentation& presentation);

} // namespace cimhost::cli
