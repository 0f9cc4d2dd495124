// How values get into objects and out of them.
#pragma once

#include "cimhost/broker/objects.h"
#include "cimhost/model/cim_type.h"

namespace cimhost {

/// The type that objects hold for a type of CMPI: string for chars and charsptr, the same for arrays of these, and any
/// other type itself.
constexpr CMPIType inwardType(CMPIType type) noexcept {
    const CMPIType element = elementOf(type);
    if (element != CMPI_chars && element != CMPI_charsptr) return type;
    return isArrayType(type) ? CMPI_stringA : CMPI_string;
}

/// The bytes of a number, a boolean or a character; 0 for other types.
std::size_t scalarSize(CMPIType type) noexcept;

/// True for the scalar types whose values are objects: string, datetime, reference, instance.
constexpr bool isObjectType(CMPIType type) noexcept {
    return type == CMPI_string || type == CMPI_dateTime || type == CMPI_ref || type == CMPI_instance;
}

/// Copies a value, as table functions are given it, into the arena. data gets the inward type; if the type is
/// CMPI_ARRAY alone, data gets the type of the array. A null pointer, or one in the value, makes a null of that type.
/// @return 0; 60 for a broken object; 61 for a type that no property or argument has, or for an array whose elements
/// have
///         another type than the one given
CMPIrc takeValue(Arena& arena, const CMPIValue* value, CMPIType type, CMPIData& data);

/// A copy of the value in that arena. What cannot change is shared if it lies there already.
CMPIData copyData(Arena& arena, const CMPIData& data);

/// A copy of the value for the caller of a getter, in the calling thread's arena.
CMPIData handOut(const CMPIData& data);

} // namespace cimhost
