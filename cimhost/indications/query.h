// The query of an indication filter: SELECT * FROM Class [WHERE comparisons joined by AND, OR and NOT].
#pragma once

#include "cimhost/broker/objects.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace cimhost {

/// The text is no query that this server can answer; what() says why and where.
class QueryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// WQL, CIM:CQL and DMTF:CQL, without regard to case: what a filter may ask is the same in all.
bool isQueryLanguage(std::string_view name) noexcept;

class Query {
public:
    /// Reads the text; property names are not yet held against a class. Takes `=`, `<>`, `!=`, `<`, `<=`, `>`, `>=`, IS
    /// NULL, IS NOT NULL, parentheses, texts in ' or ", whole and real numbers, TRUE and FALSE. Throws QueryError.
    static Query parse(std::string_view text);
    ~Query();
    Query(Query&&) noexcept;
    Query& operator=(Query&&) noexcept;

    [[nodiscard]] const std::string& className() const noexcept { return from; }

    /// Throws QueryError if the WHERE names a property that the class lacks, or compares one with a value of another
    /// kind.
    void checkAgainst(const ClassDeclaration& declaration) const;

    /// Whether the WHERE holds. A comparison with a property that has no value does not hold, nor does its opposite.
    [[nodiscard]] bool selects(const InstanceObject& indication) const;

    struct Node;

private:
    Query(std::string className, std::unique_ptr<const Node> condition);

    std::string from;
    std::unique_ptr<const Node> where; // null: everything
};

} // namespace cimhost
