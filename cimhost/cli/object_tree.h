// The objects of a namespace as one tree: each below its natural parent, which is found by following associations as
// any client can.
#pragma once

#include "cimhost/cli/object_source.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::cli {

/// How objects of one class find their parent. The first placement that finds one counts.
struct Placement {
    std::string child;  ///< class
    std::string parent; ///< class
    /// The associations from the child to the parent, one after the other; the second may be empty. Both are empty
    /// where the model has none: then the child's key begins with the parent's and an underscore.
    std::array<std::string, 2> road;
    std::string childKey = {};
    std::string parentKey = {};
};

struct TreeNode {
    const InstanceObject* object;
    std::vector<TreeNode> children; ///< in the order of the placements, then of enumeration
};

struct ObjectTree {
    std::vector<TreeNode> roots;
    std::vector<TreeNode> apart; ///< objects without a parent, with their children
};

struct TreePlan {
    std::string rootClass; ///< empty: every object without a parent is a root
    std::vector<Placement> placements;
};

/// Every instance of every class that the provider serves in the namespace, each once. Each association is followed
/// from the child, and if that finds nothing from the parent, since some answer from one side only. The instances live
/// in the scope. Throws CimFailure, but not for an association that cannot be followed from a class
/// (CIM_ERR_NOT_SUPPORTED), nor for a class that the source lacks, unless it lacks all classes.
ObjectTree growTree(ObjectSource& source, RequestScope& scope, std::string_view nameSpace, const TreePlan& plan);

} // namespace cimhost::cli
