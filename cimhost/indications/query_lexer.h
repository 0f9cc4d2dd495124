// Reads the words of a query one after the other.
#pragma once

#include "cimhost/indications/query_condition.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace cimhost {

enum class QueryTokenKind { word, text, number, sign, end };

struct QueryToken {
    QueryTokenKind kind = QueryTokenKind::end;
    std::string text;
    std::size_t position = 0; // of its first character in the text; the first one is 1
};

struct ComparisonName {
    std::string_view text;
    Comparison comparison;
    Comparison mirrored; // the same with the two sides exchanged
};

/// The comparison that a sign stands for; null for any other sign.
const ComparisonName* findComparison(std::string_view text);

class QueryLexer {
public:
    /// The text outlives this.
    explicit QueryLexer(std::string_view text) : whole(text) {}

    /// The next word; at the end of the text, one of kind `end`. Throws QueryError for a quote that is not closed.
    QueryToken next();

private:
    QueryToken quoted(QueryToken& token, char quote);
    QueryToken number(QueryToken& token);
    QueryToken word(QueryToken& token);
    QueryToken sign(QueryToken& token);

    std::string_view whole;
    std::size_t place = 0;
};

} // namespace cimhost
