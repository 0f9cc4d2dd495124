#include "cimhost/cli/tree_output.h"

#include "cimhost/cli/instance_json.h"
#include "cimhost/cli/labels.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace cimhost::cli {

namespace {

/// A line of the tree, and how many objects it stands for.
struct Branch {
    std::string label;
    const TreeNode* node;
    std::size_t count;
};

/// Objects without any below them that read the same share a line: software is published once for each port of a card.
std::vector<Branch> branchesOf(const std::vector<TreeNode>& nodes) {
    std::vector<Branch> branches;
    for (const TreeNode& node : nodes) {
        std::string label = labelOf(*node.object);
        const auto isSame = [&](const Branch& branch) {
            return branch.node->children.empty() && node.children.empty() && branch.label == label;
        };
        const auto same = std::find_if(branches.begin(), branches.end(), isSame);
        if (same != branches.end()) {
            ++same->count;
        } else {
            branches.push_back({std::move(label), &node, 1});
        }
    }
    return branches;
}

bool endsIn(const std::string& text, std::string_view end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::string shown(const Branch& branch, const Layout& layout) {
    std::string text = branch.label;
    if (endsIn(text, ", Error") || endsIn(text, ", Link Down")) text = coloured(layout, Colour::red, text);
    if (branch.count > 1) text += " (" + std::to_string(branch.count) + " objects)";
    return text;
}

void appendBranches(std::string& out, const std::vector<TreeNode>& nodes, const std::string& indent,
                    const Layout& layout) {
    const std::vector<Branch> branches = branchesOf(nodes);
    for (const Branch& branch : branches) {
        const bool isLast = &branch == &branches.back();
        out.append(indent).append(isLast ? "└─ " : "├─ ").append(shown(branch, layout)).append("\n");
        appendBranches(out, branch.node->children, indent + (isLast ? "   " : "│  "), layout);
    }
}

void appendTree(std::string& out, const std::vector<TreeNode>& nodes, const Layout& layout) {
    for (const Branch& branch : branchesOf(nodes)) {
        out.append(shown(branch, layout)).append("\n");
        appendBranches(out, branch.node->children, "", layout);
    }
}

Json jsonOf(const std::vector<TreeNode>& nodes) {
    Json list = Json::array();
    for (const TreeNode& node : nodes) {
        Json object = instanceJson(*node.object);
        object["children"] = jsonOf(node.children);
        list.push_back(std::move(object));
    }
    return list;
}

} // namespace

std::string textOf(const ObjectTree& tree, const Layout& layout) {
    std::string text;
    appendTree(text, tree.roots, layout);
    if (tree.apart.empty()) return text;
    text.append(text.empty() ? "" : "\n").append("Not connected with the host:\n\n");
    appendTree(text, tree.apart, layout);
    return text;
}

std::string jsonOf(const ObjectTree& tree) {
    Json document;
    document["tree"] = jsonOf(tree.roots);
    document["apart"] = jsonOf(tree.apart);
    return dump(document);
}

} // namespace cimhost::cli
