#include "tavik/host/network_device.h"

#include <linux/if_addr.h>
#include <linux/rtnetlink.h>

#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <string_view>

#include "scratch_tree.h"
#include "tavik/host/text_forms.h"

namespace tavik::host::test {
namespace {

InterfaceAddress address(const std::string& text, std::uint8_t prefix, std::uint8_t scope = RT_SCOPE_UNIVERSE,
                         std::uint32_t flags = IFA_F_PERMANENT, std::uint32_t index = 2) {
    return {index, *parseIPAddress(text), prefix, scope, flags};
}

IPConfiguration select(std::vector<InterfaceAddress> all) {
    return *selectAddresses(Attribute(std::move(all)), std::uint32_t{2});
}

TEST(Addresses, MaskIsMadeOfThePrefixLength) {
    EXPECT_EQ(formatIPAddress(select({address("192.0.2.1", 22)}).ipv4Mask), "255.255.252.0");
    EXPECT_EQ(formatIPAddress(select({address("192.0.2.1", 32)}).ipv4Mask), "255.255.255.255");
    EXPECT_EQ(formatIPAddress(select({address("192.0.2.1", 0)}).ipv4Mask), "0.0.0.0");
}

TEST(Addresses, PrimaryAddressComesBeforeSecondaryAndLinkLocal) {
    const auto chosen = select({address("169.254.1.1", 16, RT_SCOPE_LINK), address("192.0.2.9", 24, 0, IFA_F_SECONDARY),
                                address("192.0.2.1", 24)});
    EXPECT_EQ(formatIPAddress(chosen.ipv4), "192.0.2.1");
}

TEST(Addresses, FirstIPv6AddressIsALastingGlobalOne) {
    const auto chosen =
        select({address("fe80::1", 64, RT_SCOPE_LINK), address("2001:db8::aaaa", 64, 0, IFA_F_TEMPORARY),
                address("2001:db8::1", 64), address("2001:db8::dead", 64, 0, IFA_F_DEPRECATED)});
    ASSERT_EQ(chosen.firstList.size(), 4U);
    EXPECT_EQ(formatIPAddress(chosen.firstList[0]), "2001:db8::1");
    EXPECT_EQ(formatIPAddress(chosen.firstList[3]), "fe80::1");
}

TEST(Addresses, OthersAddressesAreNotTaken) {
    const auto chosen = select({address("192.0.2.1", 24, 0, 0, 3)});
    EXPECT_EQ(chosen, IPConfiguration{});
}

TEST(Addresses, WithoutAnIndexOrAnAnswerThereIsNoConfiguration) {
    EXPECT_FALSE(selectAddresses(Attribute(std::vector<InterfaceAddress>{}), Absence{"gone"}));
    EXPECT_FALSE(selectAddresses(Absence{"refused"}, std::uint32_t{2}));
}

/// What a file holds, without the end of its line.
std::string shown(const char* text) {
    if (!text) return "no file";
    const std::string_view line = text;
    return std::string(line.substr(0, line.find('\n')));
}

struct LinkCase {
    const char* operationalState; ///< null: no such file, here and below
    const char* carrier;
    std::uint32_t state;
};

void PrintTo(const LinkCase& row, std::ostream* out) {
    *out << "operstate " << shown(row.operationalState) << ", carrier " << shown(row.carrier);
}

class LinkStates : public testing::TestWithParam<LinkCase> {};

TEST_P(LinkStates, FollowTheKernel) {
    const auto& [operationalState, carrier, state] = GetParam();
    ScratchTree scratch;
    scratch.file("sys/class/net/eth0/type", "1\n");
    if (operationalState) scratch.file("sys/class/net/eth0/operstate", operationalState);
    if (carrier) scratch.file("sys/class/net/eth0/carrier", carrier);
    const auto tree = scratch.tree();
    const auto queries = scratch.queries();
    EXPECT_EQ(NetworkDeviceReader(tree, *queries).link("eth0").state, state);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, LinkStates,
    testing::Values(LinkCase{"up\n", "1\n", LinkUp}, LinkCase{"down\n", "0\n", LinkDown},
                    LinkCase{"down\n", nullptr, LinkDown}, LinkCase{"lowerlayerdown\n", "0\n", LinkDown},
                    LinkCase{"notpresent\n", nullptr, LinkDown}, LinkCase{"testing\n", "1\n", LinkTesting},
                    LinkCase{"dormant\n", "1\n", linkUnknown}, LinkCase{"unknown\n", "1\n", LinkUp},
                    LinkCase{"unknown\n", "0\n", LinkDown}, LinkCase{"unknown\n", nullptr, linkUnknown},
                    LinkCase{nullptr, "1\n", LinkUp}, LinkCase{nullptr, nullptr, linkUnknown},
                    LinkCase{"new word\n", "1\n", linkUnknown}));

struct SpeedCase {
    const char* text;
    std::uint32_t speed; ///< 0: absent
};

void PrintTo(const SpeedCase& row, std::ostream* out) { *out << "speed '" << shown(row.text) << '\''; }

class Speeds : public testing::TestWithParam<SpeedCase> {};

TEST_P(Speeds, AreMegabitsOrAbsent) {
    ScratchTree scratch;
    scratch.file("sys/class/net/eth0/speed", GetParam().text);
    const auto tree = scratch.tree();
    const auto queries = scratch.queries();
    const auto speed = NetworkDeviceReader(tree, *queries).link("eth0").speed;
    EXPECT_EQ(speed.present(), GetParam().speed != 0);
    EXPECT_EQ(speed.valueOr(0), GetParam().speed);
}

INSTANTIATE_TEST_SUITE_P(Texts, Speeds,
                         testing::Values(SpeedCase{"10000\n", 10000}, SpeedCase{"800000\n", 800000},
                                         SpeedCase{"-1\n", 0}, SpeedCase{"0\n", 0}, SpeedCase{"4294967295\n", 0},
                                         SpeedCase{"fast\n", 0}, SpeedCase{"", 0}));

/// A port of a bond. Both ports of one have the current address of the first.
void bondPort(ScratchTree& scratch, const std::string& name, const std::string& index, const std::string& kept) {
    scratch.interface(name, index, "02:00:00:00:00:01");
    if (!kept.empty()) scratch.file("sys/class/net/" + name + "/bonding_slave/perm_hwaddr", kept + "\n");
}

std::string addressOf(const ScratchTree& scratch, const std::string& name) {
    const auto tree = scratch.tree();
    const auto queries = scratch.queries();
    const auto address = NetworkDeviceReader(tree, *queries).read(name, Absence{"not asked"}).address();
    return address ? formatMac(*address) : "none";
}

TEST(PortOfABond, HasTheAddressThatTheBondKeepsWhereTheDriverKeepsNone) {
    ScratchTree scratch;
    bondPort(scratch, "eth0", "2", "02:00:00:00:00:01");
    bondPort(scratch, "eth1", "3", "02:00:00:00:00:02");
    EXPECT_EQ(addressOf(scratch, "eth0"), "02:00:00:00:00:01");
    EXPECT_EQ(addressOf(scratch, "eth1"), "02:00:00:00:00:02");
}

TEST(PortOfABond, HasTheAddressThatItsDriverKeepsBeforeThatOfTheBond) {
    ScratchTree scratch;
    bondPort(scratch, "eth1", "3", "02:00:00:00:00:02");
    scratch.file("kernel/net/eth1/permanent_address", "02:00:00:00:00:07\n");
    EXPECT_EQ(addressOf(scratch, "eth1"), "02:00:00:00:00:07");
}

TEST(PortOfABond, HasTheAddressOfTheBondWhereNobodyKeepsItsOwn) {
    ScratchTree scratch;
    for (const auto* kept : {"", "02:00:00", "nonsense"}) {
        scratch.remove("sys/class/net/eth1");
        bondPort(scratch, "eth1", "3", kept);
        EXPECT_EQ(addressOf(scratch, "eth1"), "02:00:00:00:00:01") << kept;
    }
}

TEST(InterfaceSelection, OfAnInterfaceThatRedirectsOnlyItsOwnAddressCounts) {
    ScratchTree scratch;
    scratch.interface("dummy0", "5", "02:00:00:00:00:05");
    scratch.file("sys/class/net/dummy0/flags", "0x83\n");
    const auto tree = scratch.tree();
    const auto queries = scratch.queries();
    const NetworkDeviceReader reader(tree, *queries);
    EXPECT_TRUE(reader.select().shown.empty());
    scratch.file("kernel/addresses", "5 fe80::5/64 253 128\n");
    EXPECT_TRUE(reader.select().shown.empty());
    scratch.file("kernel/addresses", "5 192.0.2.5/32 0 128\n");
    EXPECT_EQ(reader.select().shown, std::vector<std::string>{"dummy0"});
}

} // namespace
} // namespace tavik::host::test
