// The WHERE of a filter's query as a tree. The parser makes it, and indications are compared with it.
#pragma once

#include "cimhost/indications/query.h"

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace cimhost {

enum class Comparison { equal, unequal, less, lessOrEqual, greater, greaterOrEqual, isNull, isNotNull };

/// What a property is compared with.
using Literal = std::variant<std::string, bool, std::int64_t, std::uint64_t, double>;

struct Query::Node {
    enum class Kind { all, any, no, comparison };
    Kind kind = Kind::comparison;
    std::vector<std::unique_ptr<const Node>> parts;
    std::string property;
    Comparison comparison = Comparison::equal;
    Literal literal;
};

/// Throws QueryError if the condition names a property that the class lacks, or compares one with a value of another
/// kind.
void checkCondition(const Query::Node& condition, const ClassDeclaration& declaration);

/// Whether the condition is true for the indication. Nothing if that depends on a property that has no value.
std::optional<bool> holds(const Query::Node& condition, const InstanceObject& indication);

} // namespace cimhost
