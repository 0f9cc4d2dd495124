#include "cimhost/model/mof_values.h"

#include <charconv>
#include <cmath>

#include "cimhost/model/date_time.h"
#include "cimhost/model/utf8.h"

namespace cimhost {
namespace {

using mof::Literal;

std::string integerText(IntegerValue value) {
    return (value.isNegative && value.magnitude != 0 ? "-" : "") + std::to_string(value.magnitude);
}

bool isCharacter16(std::string_view text) noexcept {
    const auto code = singleCharacter(text);
    return code && *code <= 0xffff;
}

// The text of a constant in the given type; nothing if it is none of that type.
std::optional<std::string> textInType(const Literal& literal, CMPIType type) {
    using Kind = Literal::Kind;
    const auto textIf = [&](bool fits) { return fits ? std::optional(literal.text) : std::nullopt; };
    if (literal.kind == Kind::integer) {
        const bool isReal = type == CMPI_real32 || type == CMPI_real64;
        const bool fits = isReal || (isIntegerType(type) && fitsInteger(type, literal.number));
        return fits ? std::optional(integerText(literal.number)) : std::nullopt;
    }
    switch (type) {
    case CMPI_boolean:
        return textIf(literal.kind == Kind::boolean);
    case CMPI_real32:
        return textIf(literal.kind == Kind::real && parseReal<float>(literal.text));
    case CMPI_real64:
        return textIf(literal.kind == Kind::real && parseReal<double>(literal.text));
    case CMPI_char16:
        return textIf(literal.kind == Kind::character && isCharacter16(literal.text));
    case CMPI_string:
        return textIf(literal.kind == Kind::text);
    case CMPI_dateTime:
        return textIf(literal.kind == Kind::text && parseDateTime(literal.text));
    default:
        return std::nullopt;
    }
}

} // namespace

std::string inQuotes(std::string_view name) { return "\"" + std::string(name) + "\""; }

std::string typeText(CMPIType type) { return std::string(typeName(type)) + (isArrayType(type) ? "[]" : ""); }

DeclaredValue valueInType(const mof::Value& value, CMPIType type, const std::string& owner) {
    DeclaredValue declared;
    declared.type = type;
    const bool isNull = !value.isArray && value.elements.front().kind == Literal::Kind::null;
    if (isNull) return declared;
    if (value.isArray != isArrayType(type)) {
        throw MofError(value.position, owner + " is " + typeText(type) + ", but its value is " +
                                           (value.isArray ? "an array" : "a single value"));
    }
    declared.isNull = false;
    for (const Literal& literal : value.elements) {
        if (literal.kind == Literal::Kind::null) {
            declared.texts.emplace_back(std::nullopt);
            continue;
        }
        declared.texts.push_back(textInType(literal, elementOf(type)));
        if (!declared.texts.back()) {
            throw MofError(literal.position, "the value of " + owner + " is no " + std::string(typeName(type)));
        }
    }
    return declared;
}

} // namespace cimhost
