// A tree of objects for people, line by line, and for tools, as JSON.
#pragma once

#include "cimhost/cli/object_tree.h"
#include "cimhost/cli/presentation.h"
#include "cimhost/cli/terminal.h"

#include <string>

namespace cimhost::cli {

/// One line an object, indented below its parent with lines that lead there; objects without a parent come last, under
/// a heading, each with its path. Neighbours with the same text and without children share a line, which has their
/// number.
std::string textOf(const ObjectTree& tree, const Presentation& presentation = {}, const Layout& layout = {});

/// {"tree": [...], "apart": [...]}, each object as in the other answers and with "children".
std::string jsonOf(const ObjectTree& tree);

} // namespace cimhost::cli
