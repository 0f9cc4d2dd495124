// The query of an indication filter: SELECT * FROM Class [WHERE comparisons joined by AND, OR and NOT].
#pragma once

#include "cimhost/broker/objects.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace cimhost {

/// Thrown for a text that is no query for this server; what() says why and where.
class QueryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// True for WQL, CIM:CQL and DMTF:CQL, in any case. The queries of filters are the same in all of them.
bool isQueryLanguage(std::string_view name) noexcept;

class Query {
public:
    /// Reads the text, of at most 8 KiB; property names are not checked yet. Comparisons are `=`, `<>`, `!=`, `<`,
    /// `<=`,
    /// `>`, `>=`, IS NULL and IS NOT NULL, with texts in ' or ", whole and real numbers, TRUE and FALSE. Parentheses
    /// may be nested 32 deep. Throws QueryError.
    static Query parse(std::string_view text);
    ~Query();
    Query(Query&&) noexcept;
    Query& operator=(Query&&) noexcept;

    [[nodiscard]] const std::string& className() const noexcept { return from; }

    /// Throws QueryError if the WHERE names a property that the class lacks, or compares one with a value of another
    /// kind.
    void checkAgainst(const ClassDeclaration& declaration) const;

    /// Whether the WHERE is true for the indication. A comparison with a property that has no value is not true, and
    /// neither is its opposite.
    [[nodiscard]] bool selects(const InstanceObject& indication) const;

    struct Node;

private:
    Query(std::string className, std::unique_ptr<const Node> condition);

    std::string from;
    std::unique_ptr<const Node> where; // null: everything
};

} // namespace cimhost
