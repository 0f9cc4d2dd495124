#include "cimhost/model/cim_type.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "cimhost/model/names.h"

namespace cimhost {
namespace {

struct NamedType {
    std::string_view name;
    CMPIType type;
};

constexpr std::array<NamedType, 14> namedTypes = {{
    {"boolean", CMPI_boolean},
    {"char16", CMPI_char16},
    {"string", CMPI_string},
    {"datetime", CMPI_dateTime},
    {"uint8", CMPI_uint8},
    {"uint16", CMPI_uint16},
    {"uint32", CMPI_uint32},
    {"uint64", CMPI_uint64},
    {"sint8", CMPI_sint8},
    {"sint16", CMPI_sint16},
    {"sint32", CMPI_sint32},
    {"sint64", CMPI_sint64},
    {"real32", CMPI_real32},
    {"real64", CMPI_real64},
}};

// Bits of an integer type: the codes count up from 8 bits in steps of 0x10.
int integerBits(CMPIType type) noexcept { return 8 << ((type >> 4) & 3); }

} // namespace

std::string_view typeName(CMPIType type) noexcept {
    const CMPIType element = elementOf(type);
    if (element == CMPI_ref) return "reference";
    for (const NamedType& row : namedTypes) {
        if (row.type == element) return row.name;
    }
    return {};
}

CMPIType typeFromName(std::string_view name) noexcept {
    for (const NamedType& row : namedTypes) {
        if (equalNames(row.name, name)) return row.type;
    }
    return CMPI_null;
}

bool isSignedInteger(CMPIType type) noexcept {
    return type == CMPI_sint8 || type == CMPI_sint16 || type == CMPI_sint32 || type == CMPI_sint64;
}

bool isUnsignedInteger(CMPIType type) noexcept {
    return type == CMPI_uint8 || type == CMPI_uint16 || type == CMPI_uint32 || type == CMPI_uint64;
}

bool fitsInteger(CMPIType type, IntegerValue value) noexcept {
    const bool isSigned = isSignedInteger(type);
    const int bits = integerBits(type) - (isSigned ? 1 : 0);
    const std::uint64_t largest = bits == 64 ? std::numeric_limits<std::uint64_t>::max() : (1ULL << bits) - 1;
    if (!value.isNegative) return value.magnitude <= largest;
    return value.magnitude <= (isSigned ? largest + 1 : 0);
}

std::optional<IntegerValue> parseInteger(std::string_view text) noexcept {
    IntegerValue value;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        value.isNegative = text.front() == '-';
        text.remove_prefix(1);
    }
    int base = 10;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        base = 16;
        text.remove_prefix(2);
    } else if (text.size() > 1 && (text.back() == 'b' || text.back() == 'B')) {
        base = 2;
        text.remove_suffix(1);
    } else if (text.size() > 1 && text[0] == '0') {
        base = 8;
    }
    const char* end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, value.magnitude, base);
    if (failure != std::errc() || stop != end) return std::nullopt;
    return value;
}

template <typename Real>
std::optional<Real> parseReal(std::string_view text) noexcept {
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') return std::nullopt;
    }
    Real number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, number);
    if (failure != std::errc() || stop != end || !std::isfinite(number)) return std::nullopt;
    return number;
}

template std::optional<float> parseReal(std::string_view text) noexcept;
template std::optional<double> parseReal(std::string_view text) noexcept;

} // namespace cimhost
