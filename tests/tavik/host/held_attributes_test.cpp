// What is read again and again: one answer about all interfaces, and files that stay open.
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "scratch_tree.h"
#include "tavik/host/held_attributes.h"
#include "tavik/host/host_facts.h"
#include "tavik/host/host_source.h"
#include "tavik/host/interface_links.h"
#include "tavik/host/network_device.h"

namespace tavik::host::test {
namespace {

TEST(HeldAttributes, TellWhatTheFileHoldsNow) {
    ScratchTree scratch;
    scratch.file("sys/operstate", "up\n");
    HeldAttributes held(scratch.tree());
    EXPECT_EQ(*held.text("sys/operstate"), "up");
    scratch.file("sys/operstate", "down\n");
    EXPECT_EQ(*held.text("sys/operstate"), "down");
}

TEST(HeldAttributes, FollowAFileThatIsReplacedOrGoes) {
    ScratchTree scratch;
    scratch.file("sys/operstate", "up\n");
    HeldAttributes held(scratch.tree());
    EXPECT_EQ(*held.text("sys/operstate"), "up");
    scratch.file("sys/new", "down\n");
    std::filesystem::rename(scratch.root() / "sys/new", scratch.root() / "sys/operstate");
    EXPECT_EQ(*held.text("sys/operstate"), "down");
    scratch.remove("sys/operstate");
    EXPECT_EQ(held.text("sys/operstate").absence().reason, "No such file or directory");
    scratch.file("sys/operstate", "up\n");
    EXPECT_EQ(*held.text("sys/operstate"), "up");
}

TEST(HeldAttributes, StayBelowTheirRoot) {
    ScratchTree outside;
    outside.file("secret", "SECRET\n");
    ScratchTree scratch;
    scratch.link("sys/operstate", (outside.root() / "secret").string());
    HeldAttributes held(scratch.tree());
    EXPECT_EQ(held.text("sys/operstate").absence().reason, "leads out of the root");
}

const std::vector<InterfaceLink> twoLinks = {{1, "lo", 772, 0x10049, "00:00:00:00:00:00", 0, 0, "", 0, true},
                                             {4, "eth0", 1, 0x1003, "02:00:00:00:00:04", 9, 3, "p0", 2, false}};

TEST(InterfaceLinks, AreALineEach) {
    const std::string lines =
        "1 lo 772 65609 00:00:00:00:00:00 0 0 0 1 -\n4 eth0 1 4099 02:00:00:00:00:04 9 3 2 0 p0\n";
    EXPECT_EQ(formatInterfaceLinks(twoLinks), lines);
    const auto parsed = parseInterfaceLinks(lines);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(*parsed, twoLinks);
}

TEST(InterfaceLinks, CutOrBadLinesAreRefused) {
    const auto lines = formatInterfaceLinks(twoLinks);
    for (std::size_t size = 1; size < lines.size(); ++size)
        EXPECT_EQ(parseInterfaceLinks(lines.substr(0, size)).present(), lines[size - 1] == '\n') << size;
    for (const auto* bad : {"\n", "1 lo\n", "1 lo 772 65609 - 0 0 0 2 -\n", "x lo 772 65609 - 0 0 0 1 -\n",
                            "1 lo 772 65609 - 0 0 0 1 - more\n", "1 lo 65536 65609 - 0 0 0 1 -\n"})
        EXPECT_FALSE(parseInterfaceLinks(bad)) << bad;
}

TEST(InterfaceLinks, StateIsThatOfSys) {
    InterfaceLink link;
    link.flags = 1; // IFF_UP
    for (const auto& [operational, carrier, state] :
         std::initializer_list<std::tuple<std::uint8_t, bool, std::uint32_t>>{{6, true, LinkUp},
                                                                              {2, true, LinkDown},
                                                                              {3, false, LinkDown},
                                                                              {4, true, LinkTesting},
                                                                              {5, true, linkUnknown},
                                                                              {0, true, LinkUp},
                                                                              {0, false, LinkDown},
                                                                              {200, true, LinkUp}}) {
        link.operationalState = operational;
        link.carrier = carrier;
        EXPECT_EQ(linkStateOf(link), state) << +operational;
    }
    link.flags = 0;
    link.operationalState = 0;
    EXPECT_EQ(linkStateOf(link), linkUnknown);
}

/** A source over a scratch tree whose kernel answers about all interfaces. */
class RepeatedLook : public testing::Test {
protected:
    RepeatedLook() {
        scratch_.interface("eth0", "4", "02:00:00:00:00:04");
        tell();
        source_ = makeHostSource(scratch_.tree(), scratch_.queries());
        source_->load();
    }
    void tell() {
        scratch_.file("kernel/links", formatInterfaceLinks(links_));
        scratch_.file("kernel/addresses", addresses_);
    }

    std::vector<InterfaceLink> links_ = {{4, "eth0", 1, 0x1003, "02:00:00:00:00:04", 0, 0, "", 6, true}};
    std::string addresses_ = "4 192.0.2.4/24 0 128\n";
    ScratchTree scratch_;
    std::unique_ptr<Source> source_;
};

TEST_F(RepeatedLook, TellsAnInterfaceThatComes) {
    EXPECT_FALSE(source_->changed());
    scratch_.interface("eth1", "5", "02:00:00:00:00:05");
    links_.push_back({5, "eth1", 1, 0x1003, "02:00:00:00:00:05", 0, 0, "", 6, true});
    tell();
    EXPECT_TRUE(source_->changed());
    source_->resetChanged();
    EXPECT_FALSE(source_->changed());
}

TEST_F(RepeatedLook, TellsAnotherAddress) {
    addresses_ = "4 192.0.2.5/24 0 128\n";
    tell();
    EXPECT_TRUE(source_->changed());
}

TEST_F(RepeatedLook, LinkThatGoesDownIsNoChange) {
    links_.front().operationalState = 2;
    links_.front().flags = 0x1002;
    tell();
    scratch_.file("sys/class/net/eth0/operstate", "down\n");
    EXPECT_FALSE(source_->changed());
    EXPECT_EQ(source_->link("eth0").value.state, LinkDown);
}

TEST_F(RepeatedLook, InterfaceThatGoesAnswersNoMore) {
    EXPECT_TRUE(source_->link("eth0").ok());
    scratch_.remove("sys/class/net/eth0");
    EXPECT_EQ(source_->link("eth0").status, statusNoSuchDevice);
}

TEST_F(RepeatedLook, WithoutTheAnswerAboutAllEachInterfaceIsRead) {
    scratch_.remove("kernel/links");
    EXPECT_FALSE(source_->changed());
    scratch_.file("sys/class/net/eth0/address", "02:00:00:00:00:44\n");
    EXPECT_TRUE(source_->changed());
}

} // namespace
} // namespace tavik::host::test
