#include "cimhost/indications/query_condition.h"

#include "cimhost/broker/visit_value.h"
#include "cimhost/model/cim_type.h"
#include "cimhost/model/date_time.h"

#include <compare>
#include <concepts>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

namespace cimhost {

namespace {

// How the value of a property is compared.
enum class ValueKind { text, boolean, number, dateTime, none };

ValueKind kindOf(CMPIType type) {
    if (type == CMPI_string || type == CMPI_char16) return ValueKind::text;
    if (type == CMPI_boolean) return ValueKind::boolean;
    if (type == CMPI_dateTime) return ValueKind::dateTime;
    if (isIntegerType(type) || type == CMPI_real32 || type == CMPI_real64) return ValueKind::number;
    return ValueKind::none;
}

bool fits(ValueKind kind, const Literal& literal) {
    switch (kind) {
    case ValueKind::text:
        return std::holds_alternative<std::string>(literal);
    case ValueKind::boolean:
        return std::holds_alternative<bool>(literal);
    case ValueKind::dateTime:
        return std::holds_alternative<std::string>(literal) && parseDateTime(std::get<std::string>(literal));
    case ValueKind::number:
        return !std::holds_alternative<std::string>(literal) && !std::holds_alternative<bool>(literal);
    case ValueKind::none:
        return false;
    }
    return false;
}

std::partial_ordering compareNumbers(const Literal& left, const Literal& right) {
    return std::visit(
        [](const auto& first, const auto& second) -> std::partial_ordering {
            using First = std::decay_t<decltype(first)>;
            using Second = std::decay_t<decltype(second)>;
            constexpr bool areNumbers = std::is_arithmetic_v<First> && std::is_arithmetic_v<Second>;
            if constexpr (!areNumbers || std::is_same_v<First, bool> || std::is_same_v<Second, bool>) {
                return std::partial_ordering::unordered;
            } else if constexpr (std::is_same_v<First, double> || std::is_same_v<Second, double>) {
                return static_cast<double>(first) <=> static_cast<double>(second);
            } else {
                if (std::cmp_less(first, second)) return std::partial_ordering::less;
                return std::cmp_equal(first, second) ? std::partial_ordering::equivalent
                                                     : std::partial_ordering::greater;
            }
        },
        left, right);
}

std::optional<Literal> numberOf(const CMPIData& data) {
    using Number = std::optional<Literal>;
    return visitValue(data, Overloaded{
                                [](const std::unsigned_integral auto& number) { return Number(std::uint64_t{number}); },
                                [](const std::signed_integral auto& number) { return Number(std::int64_t{number}); },
                                [](const std::floating_point auto& number) { return Number(double{number}); },
                                [](const auto&) { return Number(); },
                            });
}

std::partial_ordering compare(const CMPIData& data, const Literal& literal) {
    const ValueKind kind = kindOf(data.type);
    if (!fits(kind, literal)) return std::partial_ordering::unordered;
    if (kind == ValueKind::boolean) return int{data.value.boolean != 0} <=> int{std::get<bool>(literal)};
    if (kind == ValueKind::number) return compareNumbers(*numberOf(data), literal);
    std::string text;
    appendValueText(text, data);
    if (kind == ValueKind::text) return std::string_view(text) <=> std::string_view(std::get<std::string>(literal));
    const auto time = parseDateTime(text);
    const auto wanted = parseDateTime(std::get<std::string>(literal));
    if (!time || !wanted || time->isInterval != wanted->isInterval) return std::partial_ordering::unordered;
    return time->microseconds <=> wanted->microseconds;
}

std::optional<bool> judge(Comparison comparison, std::partial_ordering order) {
    if (order == std::partial_ordering::unordered) return std::nullopt;
    switch (comparison) {
    case Comparison::equal:
        return std::is_eq(order);
    case Comparison::unequal:
        return std::is_neq(order);
    case Comparison::less:
        return std::is_lt(order);
    case Comparison::lessOrEqual:
        return std::is_lteq(order);
    case Comparison::greater:
        return std::is_gt(order);
    case Comparison::greaterOrEqual:
        return std::is_gteq(order);
    case Comparison::isNull:
    case Comparison::isNotNull:
        break;
    }
    return std::nullopt;
}

} // namespace

void checkCondition(const Query::Node& node, const ClassDeclaration& declaration) {
    for (const auto& part : node.parts)
        checkCondition(*part, declaration);
    if (node.kind != Query::Node::Kind::comparison) return;
    const PropertyDeclaration* property = declaration.property(node.property);
    if (!property) throw QueryError("class " + declaration.name() + " has no property " + node.property);
    if (node.comparison == Comparison::isNull || node.comparison == Comparison::isNotNull) return;
    if (fits(kindOf(property->type), node.literal)) return;
    throw QueryError("property " + property->name + " is " + std::string(typeName(elementOf(property->type))) +
                     (property->isArray() ? "[]" : "") + ", which is not compared with such a value");
}

std::optional<bool> holds(const Query::Node& node, const InstanceObject& indication) {
    using Kind = Query::Node::Kind;
    if (node.kind == Kind::comparison) {
        const CMPIData* data = indication.value(node.property);
        const bool isNull = !data || (data->state & CMPI_nullValue) != 0;
        if (node.comparison == Comparison::isNull) return isNull;
        if (node.comparison == Comparison::isNotNull) return !isNull;
        if (isNull) return std::nullopt;
        return judge(node.comparison, compare(*data, node.literal));
    }
    if (node.kind == Kind::no) {
        const std::optional<bool> part = holds(*node.parts.front(), indication);
        return part ? std::optional(!*part) : std::nullopt;
    }
    const bool decisive = node.kind == Kind::any;
    std::optional<bool> result = !decisive;
    for (const auto& part : node.parts) {
        const std::optional<bool> value = holds(*part, indication);
        if (value == decisive) return decisive;
        if (!value) result = std::nullopt;
    }
    return result;
}

} // namespace cimhost
