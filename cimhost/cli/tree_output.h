// A tree of objects for people, line by line, and for tools, as JSON.
#pragma once

#include "cimhost/cli/object_tree.h"
#include "cimhost/cli/presentation.h"
#include "cimhost/cli/terminal.h"

#include <string>

namespace cimhost::cli {

/// One line an object, indented below its parent with lines that lead there; what stands apart comes last, under a
/// heading, each with its path. Neighbours that read the same and have nothing below them share a line, which tells
/// their number.
std::string textOf(const ObjectTree& tree, const Presentation& presentation = {}, const Layout& layout = {});

/// {"tree": [...], "apart": [...]}, each object as in the other answers and with "children".
std::string jsonOf(const ObjectTree& tree);

} // namespace cimhost::cli
