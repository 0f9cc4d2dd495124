#include <gtest/gtest.h>

#include "scratch_tree.h"
#include "tavik/host/text_forms.h"

namespace tavik::host::test {
namespace {

TEST(RecordedQueries, GiveBackWhatWasRecorded) {
    const auto original = makeRecordedQueries(SysTree(ScratchTree::recorded("two-port-card")));
    ScratchTree scratch;
    ASSERT_EQ(recordQueries(*original, {"ens1f0", "ens1f1", "lo"}, scratch.root().string()), "");
    const auto copy = scratch.queries();
    for (const auto* interface : {"ens1f0", "ens1f1", "lo"}) {
        EXPECT_EQ(copy->driverInfo(interface), original->driverInfo(interface));
        EXPECT_EQ(copy->permanentAddress(interface), original->permanentAddress(interface));
        EXPECT_EQ(copy->moduleMemory(interface), original->moduleMemory(interface));
    }
    EXPECT_EQ(copy->addresses(), original->addresses());
    EXPECT_EQ(copy->addresses()->size(), 7U);
    EXPECT_EQ(copy->moduleMemory("ens1f0")->content.size(), 512U);
}

TEST(RecordedQueries, GiveBackTheNeighboursThatWereRecorded) {
    const auto original = makeRecordedQueries(SysTree(ScratchTree::recorded("dual-100g")));
    ScratchTree scratch;
    ASSERT_EQ(recordQueries(*original, {"enp94s0f0np0", "enp94s0f1np1"}, scratch.root().string()), "");
    const auto copy = scratch.queries();
    const std::vector<Neighbour> expected = {
        {"switch17.dc1.example", "Ethernet1/7", "to web3, port 1", "00:1c:73:00:00:01"}};
    const auto neighbours = copy->neighbours("enp94s0f0np0");
    ASSERT_TRUE(neighbours);
    EXPECT_EQ(*neighbours, expected);
    EXPECT_FALSE(copy->neighbours("enp94s0f1np1"));
}

TEST(RecordedQueries, FolderThatCannotBeWrittenIsNamed) {
    const auto original = makeRecordedQueries(SysTree(ScratchTree::recorded("two-port-card")));
    ScratchTree scratch;
    scratch.file("kernel", "a file where a folder should be");
    const auto error = recordQueries(*original, {"ens1f0"}, scratch.root().string());
    EXPECT_NE(error.find("cannot write " + scratch.root().string() + "/kernel/net/ens1f0/driver"), std::string::npos)
        << error;
}

TEST(InterfaceNames, AreNoPaths) {
    for (const auto* name : {"eth0", "eth0.100", "a", "fifteen_letters"})
        EXPECT_TRUE(isInterfaceName(name)) << name;
    for (const auto* name : {"", ".", "..", "../x", "a/b", "sixteen__letters"})
        EXPECT_FALSE(isInterfaceName(name)) << name;
}

} // namespace
} // namespace tavik::host::test
