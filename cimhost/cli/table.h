// Rows and columns in plain text for a terminal.
#pragma once

#include "cimhost/cli/terminal.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::cli {

using Row = std::vector<std::string>;

/// The rows under their headers, no line longer than the layout's width: the widest columns are cut, with an ellipsis.
/// Columns that do not fit at all are left out, the last ones first. Without a width nothing is cut.
std::string renderTable(const Row& headers, const std::vector<Row>& rows, const Layout& layout);

/// Characters of a UTF-8 text.
std::size_t length(std::string_view text);

} // namespace cimhost::cli
