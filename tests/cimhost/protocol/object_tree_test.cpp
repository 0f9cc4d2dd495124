// How the tree of objects grows: who stands below whom, and that nobody is left out.
#include "fake_provider.h"

#include "cimhost/cli/local_source.h"
#include "cimhost/cli/object_tree.h"
#include "cimhost/cli/tree_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace cimhost::cli {
namespace {

using testing_support::FakeHost;

const std::string box = "T_Box";
const std::string fibre = "T_FibrePort";
const std::string ether = "T_EtherPort";

class ObjectTreeTest : public testing::Test {
protected:
    ObjectTreeTest() {
        host.registration.add(*host.repository.find("root/ns", "T_Box"), ProviderKind::instance);
        host.registration.add(*host.repository.find("root/ns", "T_Link"), ProviderKind::association);
        host.provider.objects = {{"T_Box", "1"}, {"T_FibrePort", "a"}, {"T_FibrePort", "b"}, {"T_EtherPort", "e"}};
        host.provider.links.clear();
    }

    std::string grown(const std::vector<Placement>& placements) {
        RequestScope scope(*host.broker);
        return textOf(growTree(source, scope, "root/ns", {box, placements}));
    }

    void link(const std::string& association, const testing_support::FakeObject& left,
              const testing_support::FakeObject& right) {
        host.provider.links.push_back({association, left, right});
    }

    FakeHost host;
    LocalSource source{*host.operations, *host.broker};
};

TEST_F(ObjectTreeTest, AChildStandsBelowTheParentThatItsAssociationNames) {
    link("T_Link", {"T_Box", "1"}, {"T_FibrePort", "a"});
    link("T_Link", {"T_Box", "1"}, {"T_FibrePort", "b"});
    link("T_FibreLink", {"T_FibrePort", "a"}, {"T_EtherPort", "e"});
    EXPECT_EQ(grown({{fibre, box, {"T_Link"}}, {ether, fibre, {"T_FibreLink"}}}), "T_Box 1\n"
                                                                                  "├─ T_FibrePort a\n"
                                                                                  "│  └─ T_EtherPort e\n"
                                                                                  "└─ T_FibrePort b\n");
}

TEST_F(ObjectTreeTest, ObjectsWithoutAParentStandApartWithTheirChildren) {
    link("T_FibreLink", {"T_FibrePort", "b"}, {"T_EtherPort", "e"});
    EXPECT_EQ(grown({{fibre, box, {"T_Link"}}, {ether, fibre, {"T_FibreLink"}}}),
              "T_Box 1\n"
              "\n"
              "Not connected with the host:\n"
              "\n"
              "T_FibrePort a: root/ns:T_FibrePort.System=\"s\",Id=\"a\"\n"
              "T_FibrePort b: root/ns:T_FibrePort.System=\"s\",Id=\"b\"\n"
              "└─ T_EtherPort e\n");
}

TEST_F(ObjectTreeTest, TheFirstPlacementThatFindsAParentCounts) {
    link("T_Link", {"T_Box", "1"}, {"T_FibrePort", "a"});
    link("T_Link", {"T_Box", "1"}, {"T_FibrePort", "b"});
    link("T_Link", {"T_Box", "1"}, {"T_EtherPort", "e"});
    EXPECT_EQ(grown({{ether, fibre, {"T_FibreLink"}}, {ether, box, {"T_Link"}}, {fibre, box, {"T_Link"}}}),
              "T_Box 1\n"
              "├─ T_EtherPort e\n"
              "├─ T_FibrePort a\n"
              "└─ T_FibrePort b\n");
}

TEST_F(ObjectTreeTest, AParentMayBeTwoAssociationsAway) {
    link("T_Link", {"T_Box", "1"}, {"T_FibrePort", "a"});
    link("T_Link", {"T_Box", "1"}, {"T_FibrePort", "b"});
    link("T_FibreLink", {"T_FibrePort", "a"}, {"T_EtherPort", "e"});
    EXPECT_EQ(
        grown({{ether, box, {"T_FibreLink", "T_Link"}}, {fibre, ether, {"T_FibreLink"}}, {fibre, box, {"T_Link"}}}),
        "T_Box 1\n"
        "├─ T_EtherPort e\n"
        "│  └─ T_FibrePort a\n"
        "└─ T_FibrePort b\n");
}

TEST_F(ObjectTreeTest, WithoutAnAssociationTheKeyNamesTheParent) {
    host.provider.objects = {{"T_Box", "1"},           {"T_FibrePort", "1_2"},    {"T_FibrePort", "12_2"},
                             {"T_EtherPort", "1_2_3"}, {"T_EtherPort", "1_23_4"}, {"T_EtherPort", "_"}};
    EXPECT_EQ(grown({{fibre, box, {}, "Id", "Id"}, {ether, fibre, {}, "Id", "Id"}}),
              "T_Box 1\n"
              "└─ T_FibrePort 1_2\n"
              "   └─ T_EtherPort 1_2_3\n"
              "\n"
              "Not connected with the host:\n"
              "\n"
              "T_FibrePort 12_2: root/ns:T_FibrePort.System=\"s\",Id=\"12_2\"\n"
              "T_EtherPort 1_23_4: root/ns:T_EtherPort.System=\"s\",Id=\"1_23_4\"\n"
              "T_EtherPort _: root/ns:T_EtherPort.System=\"s\",Id=\"_\"\n");
}

TEST_F(ObjectTreeTest, ObjectsThatAreEachOthersParentsAreShown) {
    link("T_FibreLink", {"T_FibrePort", "a"}, {"T_EtherPort", "e"});
    const std::string text = grown({{fibre, ether, {"T_FibreLink"}}, {ether, fibre, {"T_FibreLink"}}});
    EXPECT_THAT(text,
                testing::HasSubstr("T_FibrePort a: root/ns:T_FibrePort.System=\"s\",Id=\"a\"\n└─ T_EtherPort e\n"));
}

TEST_F(ObjectTreeTest, ObjectsThatShareAPathAreAllThere) {
    host.provider.objects = {{"T_Box", "1", 10}, {"T_Box", "1", 20}, {"T_FibrePort", "a"}};
    link("T_Link", {"T_Box", "1"}, {"T_FibrePort", "a"});
    RequestScope scope(*host.broker);
    const std::vector<Placement> placements = {{fibre, box, {"T_Link"}}};
    const ObjectTree tree = growTree(source, scope, "root/ns", {box, placements});
    ASSERT_EQ(tree.roots.size(), 2U);
    EXPECT_EQ(tree.roots[0].children.size() + tree.roots[1].children.size(), 1U);
}

TEST_F(ObjectTreeTest, ObjectsThatShareAPathTakeTheParentsThatNameThemInTurn) {
    host.provider.objects = {{"T_Box", "1"},       {"T_Box", "2"},       {"T_FibrePort", "a"},
                             {"T_FibrePort", "a"}, {"T_FibrePort", "a"}, {"T_EtherPort", "e"}};
    link("T_Link", {"T_Box", "1"}, {"T_FibrePort", "a"});
    link("T_Link", {"T_Box", "2"}, {"T_FibrePort", "a"});
    EXPECT_EQ(grown({{fibre, box, {"T_Link"}}, {ether, fibre, {"T_FibreLink"}}}),
              "T_Box 1\n"
              "└─ T_FibrePort a\n"
              "T_Box 2\n"
              "└─ T_FibrePort a (2 objects)\n"
              "\n"
              "Not connected with the host:\n"
              "\n"
              "T_EtherPort e: root/ns:T_EtherPort.System=\"s\",Id=\"e\"\n");
}

TEST_F(ObjectTreeTest, WithoutAPlanEachObjectStandsByItself) {
    RequestScope scope(*host.broker);
    EXPECT_EQ(textOf(growTree(source, scope, "root/ns", {})), "T_FibrePort a\n"
                                                              "T_FibrePort b\n"
                                                              "T_EtherPort e\n"
                                                              "T_Box 1\n");
}

TEST_F(ObjectTreeTest, AFailureOfTheProviderIsTheFailureOfTheTree) {
    host.provider.failure = CimError{CMPI_RC_ERR_FAILED, "no tree today"};
    EXPECT_THROW(grown({{fibre, box, {"T_Link"}}}), CimFailure);
}

TEST_F(ObjectTreeTest, JsonHasNestedObjects) {
    link("T_Link", {"T_Box", "1"}, {"T_FibrePort", "a"});
    RequestScope scope(*host.broker);
    const std::vector<Placement> placements = {{fibre, box, {"T_Link"}}};
    const std::string json = jsonOf(growTree(source, scope, "root/ns", {box, placements}));
    EXPECT_THAT(json, testing::StartsWith("{\n  \"tree\": [\n    {\n      \"class\": \"T_Box\""));
    EXPECT_THAT(json, testing::HasSubstr("\"children\": [\n        {\n          \"class\": \"T_FibrePort\""));
    EXPECT_THAT(json, testing::HasSubstr("\"apart\": [\n    {\n      \"class\": \"T_FibrePort\""));
}

} // namespace
} // namespace cimhost::cli
