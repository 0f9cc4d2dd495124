// Properties that show what another system has.
#pragma once

#include "cimhost/model/class_declaration.h"

namespace cimhost {

/// Whether answers leave the property out where it has no value, as they may (DSP0200), and do not show it as NULL: it
/// has a mapping to another system (MappingStrings, DSP0004), which may not have it.
inline bool isLeftOutWithoutValue(const PropertyDeclaration& property) noexcept {
    return findQualifier(property.qualifiers, "MappingStrings") != nullptr;
}

} // namespace cimhost
