// A query's text as a class and a condition.
#pragma once

#include "cimhost/indications/query_condition.h"

#include <memory>
#include <string>
#include <string_view>

namespace cimhost {

struct ParsedQuery {
    std::string className;
    std::unique_ptr<const Query::Node> where; // null: everything
};

/// Throws QueryError.
ParsedQuery parseQuery(std::string_view text);

} // namespace cimhost
