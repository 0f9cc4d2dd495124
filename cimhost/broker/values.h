// How values enter objects and leave them.
#pragma once

#include "cimhost/broker/objects.h"
#include "cimhost/model/cim_type.h"

namespace cimhost {

/// Texts have one type inside: string for chars and charsptr, arrays likewise.
constexpr CMPIType inwardType(CMPIType type) noexcept {
    const CMPIType element = elementOf(type);
    if (element != CMPI_chars && element != CMPI_charsptr) return type;
    return isArrayType(type) ? CMPI_stringA : CMPI_string;
}

/// Bytes of a number, boolean or character; 0 for other types.
std::size_t scalarSize(CMPIType type) noexcept;

/// True for the scalar types whose values are objects: string, datetime, reference, instance.
constexpr bool isObjectType(CMPIType type) noexcept {
    return type == CMPI_string || type == CMPI_dateTime || type == CMPI_ref || type == CMPI_instance;
}

/// Reads a value as a table function is given it and copies it into the arena. data gets the inward type; the bare
/// array flag becomes the type of the array. A null pointer, or one in the value, makes a null of that type. 60 for a
/// broken object, 61 for a type that no property or argument has, or an array whose elements are of another type than
/// said.
CMPIrc takeValue(Arena& arena, const CMPIValue* value, CMPIType type, CMPIData& data);

/// The same value in another arena; what cannot change is shared if it lies there already.
CMPIData copyData(Arena& arena, const CMPIData& data);

/// The value for a caller of a getter, in the calling thread's arena.
CMPIData handOut(const CMPIData& data);

} // namespace cimhost
