// Reads the text of a query into a class and a condition.
#pragma once

#include "cimhost/indications/query_condition.h"

#include <memory>
#include <string>
#include <string_view>

namespace cimhost {

struct ParsedQuery {
    std::string className;
    std::unique_ptr<const Query::Node> where; // null: selects everything
};

/// Throws QueryError, which says at which character what was expected.
ParsedQuery parseQuery(std::string_view text);

} // namespace cimhost
