// The CIM data types: their names in MOF and CIM-XML, and what fits into them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "cmpidt.h"

namespace cimhost {

/// "uint16" for the type and for its array; "reference" for references; "" for what CIM has no type for.
std::string_view typeName(CMPIType type) noexcept;

/// The scalar type of that name, without regard to case; CMPI_null if there is none ("reference" included: in MOF it is
/// not a type's name).
CMPIType typeFromName(std::string_view name) noexcept;

constexpr CMPIType elementOf(CMPIType type) noexcept { return static_cast<CMPIType>(type & ~CMPI_ARRAY); }
constexpr CMPIType arrayOf(CMPIType type) noexcept { return static_cast<CMPIType>(type | CMPI_ARRAY); }
constexpr bool isArrayType(CMPIType type) noexcept { return (type & CMPI_ARRAY) != 0; }

bool isSignedInteger(CMPIType type) noexcept;
bool isUnsignedInteger(CMPIType type) noexcept;
inline bool isIntegerType(CMPIType type) noexcept { return isSignedInteger(type) || isUnsignedInteger(type); }

/// An integer as it was read, before it has a type.
struct IntegerValue {
    bool isNegative = false;
    std::uint64_t magnitude = 0;
};

/// True if the integer lies in the type's range.
bool fitsInteger(CMPIType type, IntegerValue value) noexcept;

/// Optional sign, then decimal, 0x hexadecimal, 0 octal or binary with a final b, as MOF and CIM-XML write integers.
/// Nothing if the text is none, or beyond 64 bits.
std::optional<IntegerValue> parseInteger(std::string_view text) noexcept;

/// A finite real as MOF and CIM-XML write it, for float and double. Nothing if the text is none, or beyond the type's
/// range.
template <typename Real>
std::optional<Real> parseReal(std::string_view text) noexcept;

} // namespace cimhost
