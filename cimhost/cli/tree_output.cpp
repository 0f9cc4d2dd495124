#include "cimhost/cli/tree_output.h"

#include "cimhost/cli/instance_json.h"
#include "cimhost/cli/labels.h"
#include "cimhost/model/printable.h"

#include <algorithm>
#include <utility>

namespace cimhost::cli {

namespace {

struct View {
    const Presentation& presentation;
    const Layout& layout;
};

/// What stands behind the label of an object.
using Addition = std::string (*)(const InstanceObject& instance);

std::string nothing(const InstanceObject&) { return {}; }

/// Class and keys, as `cimhost get` takes them.
std::string ownPath(const InstanceObject& instance) {
    Arena arena;
    std::string text = ": ";
    instance.path(arena)->appendText(text);
    return printable(text);
}

/// A line of the tree, and how many objects it stands for.
struct Branch {
    std::string label;
    std::string addition;
    const TreeNode* node;
    std::size_t count;
};

/// Objects without any below them that read the same share a line: software is published once for each port of a card.
std::vector<Branch> branchesOf(const std::vector<TreeNode>& nodes, const View& view, Addition additionTo) {
    std::vector<Branch> branches;
    for (const TreeNode& node : nodes) {
        std::string label = labelOf(*node.object, view.presentation);
        std::string addition = additionTo(*node.object);
        const auto isSame = [&](const Branch& branch) {
            return branch.node->children.empty() && node.children.empty() && branch.label == label &&
                   branch.addition == addition;
        };
        const auto same = std::find_if(branches.begin(), branches.end(), isSame);
        if (same != branches.end()) {
            ++same->count;
        } else {
            branches.push_back({std::move(label), std::move(addition), &node, 1});
        }
    }
    return branches;
}

bool isAlarming(const std::string& label, const Presentation& presentation) {
    return std::any_of(presentation.alarming.begin(), presentation.alarming.end(),
                       [&](const std::string& value) { return label.ends_with(", " + value); });
}

std::string shown(const Branch& branch, const View& view) {
    std::string text = branch.label;
    if (isAlarming(text, view.presentation)) text = coloured(view.layout, Colour::red, text);
    text += branch.addition;
    if (branch.count > 1) text += " (" + std::to_string(branch.count) + " objects)";
    return text;
}

void appendBranches(std::string& out, const std::vector<TreeNode>& nodes, const std::string& indent, const View& view) {
    const std::vector<Branch> branches = branchesOf(nodes, view, nothing);
    for (const Branch& branch : branches) {
        const bool isLast = &branch == &branches.back();
        out.append(indent).append(isLast ? "└─ " : "├─ ").append(shown(branch, view)).append("\n");
        appendBranches(out, branch.node->children, indent + (isLast ? "   " : "│  "), view);
    }
}

void appendTree(std::string& out, const std::vector<TreeNode>& nodes, const View& view, Addition additionTo) {
    for (const Branch& branch : branchesOf(nodes, view, additionTo)) {
        out.append(shown(branch, view)).append("\n");
        appendBranches(out, branch.node->children, "", view);
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

std::string textOf(const ObjectTree& tree, const Presentation& presentation, const Layout& layout) {
    if (tree.roots.empty() && tree.apart.empty()) return "no instances\n";
    const View view{presentation, layout};
    std::string text;
    appendTree(text, tree.roots, view, nothing);
    if (tree.apart.empty()) return text;
    text.append(text.empty() ? "" : "\n").append("Not connected with the host:\n\n");
    appendTree(text, tree.apart, view, ownPath);
    return text;
}

std::string jsonOf(const ObjectTree& tree) {
    Json document;
    document["tree"] = jsonOf(tree.roots);
    document["apart"] = jsonOf(tree.apart);
    return dump(document);
}

} // namespace cimhost::cli
