#include "cimhost/cli/tree_output.h"

#include "cimhost/cli/instance_json.h"
#include "cimhost/cli/labels.h"

namespace cimhost::cli {

namespace {

void appendBranches(std::string& out, const std::vector<TreeNode>& nodes, const std::string& indent) {
    for (const TreeNode& node : nodes) {
        const bool isLast = &node == &nodes.back();
        out.append(indent).append(isLast ? "└─ " : "├─ ").append(labelOf(*node.object)).append("\n");
        appendBranches(out, node.children, indent + (isLast ? "   " : "│  "));
    }
}

void appendTree(std::string& out, const std::vector<TreeNode>& nodes) {
    for (const TreeNode& node : nodes) {
        out.append(labelOf(*node.object)).append("\n");
        appendBranches(out, node.children, "");
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

std::string textOf(const ObjectTree& tree) {
    std::string text;
    appendTree(text, tree.roots);
    if (tree.apart.empty()) return text;
    text.append(text.empty() ? "" : "\n").append("Not connected with the host:\n\n");
    appendTree(text, tree.apart);
    return text;
}

std::string jsonOf(const ObjectTree& tree) {
    Json document;
    document["tree"] = jsonOf(tree.roots);
    document["apart"] = jsonOf(tree.apart);
    return dump(document);
}

} // namespace cimhost::cli
