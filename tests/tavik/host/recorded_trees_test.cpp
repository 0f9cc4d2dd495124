// Whole dumps of recorded hosts. After a wanted change, read and renew an expectation with
//     tavik_host_dump --root trees/NAME > trees/NAME.expected
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "scratch_tree.h"
#include "tavik/host/dump.h"

namespace tavik::host::test {
namespace {

class RecordedTree : public testing::TestWithParam<const char*> {};

std::string expectedDump(const std::string& name) {
    std::ifstream file(ScratchTree::recorded(name + ".expected"));
    std::stringstream content;
    content << file.rdbuf();
    return content.str();
}

HostFacts readAll(const SysTree& tree) {
    const auto queries = makeRecordedQueries(tree);
    auto facts = readHostFacts(tree, *queries);
    addPortFacts(facts, tree, *queries);
    return facts;
}

TEST_P(RecordedTree, ReadsAsExpected) {
    const SysTree tree(ScratchTree::recorded(GetParam()));
    const auto expected = expectedDump(GetParam());
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(dumpFacts(readAll(tree)), expected);
}

TEST_P(RecordedTree, HasEveryLabelOfTheTextInItsJson) {
    const SysTree tree(ScratchTree::recorded(GetParam()));
    const std::string json = dumpFactsAsJson(readAll(tree));
    std::istringstream lines(expectedDump(GetParam()));
    for (std::string line; std::getline(lines, line);) {
        const auto begin = line.find_first_not_of(' ');
        const auto label = line.substr(begin, line.find(": ", begin) - begin);
        EXPECT_NE(json.find('"' + label + "\":"), std::string::npos) << label;
        const auto reason = line.find(": - (");
        if (reason == std::string::npos || line.find("(empty)") != std::string::npos) continue;
        std::string text;
        for (const char character : line.substr(reason + 5, line.size() - reason - 6))
            text += character == '"' ? std::string("\\\"") : std::string(1, character);
        EXPECT_NE(json.find("\"absent\": \"" + text + '"'), std::string::npos) << line;
    }
}

INSTANTIATE_TEST_SUITE_P(Hosts, RecordedTree,
                         testing::Values("bond-one-down", "broken-attributes", "converged-card", "dual-100g",
                                         "fibre-channel", "four-hundred-gigabit", "guest-functions",
                                         "light-without-login", "several-lanes", "silent-driver", "software-interfaces",
                                         "two-fabrics", "two-port-card", "virtual-functions", "virtual-machine"),
                         [](const auto& tree) {
                             std::string name = tree.param;
                             for (auto& character : name)
                                 if (character == '-') character = '_';
                             return name;
                         });

TEST(RecordedTreeThatIsMissing, ReadsAsAHostWithoutAdapters) {
    EXPECT_EQ(dumpFacts(readAll(SysTree("/no/such/folder"))), "");
}

} // namespace
} // namespace tavik::host::test
