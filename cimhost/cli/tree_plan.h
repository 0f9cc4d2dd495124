// How the tree of a host's adapters grows: which class stands below which, and the associations that lead there.
#pragma once

#include "cimhost/cli/object_tree.h"

namespace cimhost::cli {

const TreePlan& adapterTree();

} // namespace cimhost::cli
