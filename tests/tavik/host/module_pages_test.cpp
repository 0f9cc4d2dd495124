// Half pages as the kernel's newer call gives them, and what of a module is read by them.
#include "tavik/host/module_pages.h"

#include <bit>
#include <cstring>
#include <map>
#include <tuple>

#include <linux/netlink.h>

#include <gtest/gtest.h>

#include "tavik/host/ethtool_netlink.h"
#include "tests/optics/memories.h"

namespace tavik::host {
namespace {

using optics::tests::put;

/** A module that has some half pages and counts the others as errors of its bus. */
class Module {
public:
    void half(HalfPage half, const Bytes& memory, std::size_t at) {
        const auto begin = memory.begin() + static_cast<std::ptrdiff_t>(at);
        halves_[key(half)] = Bytes(begin, begin + halfPageSize);
    }
    void drop(HalfPage half) { halves_.erase(key(half)); }
    HalfPageReader reader() {
        return [this](const HalfPage& half) -> Attribute<Bytes> {
            asked.push_back(half);
            const auto found = halves_.find(key(half));
            if (found == halves_.end()) return Absence{"Input/output error"};
            return found->second;
        };
    }

    std::vector<HalfPage> asked;

private:
    using Key = std::tuple<int, int, int>;
    static Key key(const HalfPage& half) { return {half.address, half.page, half.offset}; }
    std::map<Key, Bytes> halves_;
};

Module qsfp28() {
    const auto memory = optics::tests::qsfp28Memory();
    Module module;
    module.half({}, memory, 0);
    module.half({firstAddress, 0, 128}, memory, 128);
    module.half({firstAddress, 3, 128}, memory, 512);
    return module;
}

Module qsfpDd() {
    const auto memory = optics::tests::qsfpDdMemory();
    Module module;
    module.half({}, memory, 0);
    std::size_t at = 128;
    for (const std::uint8_t page : {std::uint8_t{0x00}, std::uint8_t{0x01}, std::uint8_t{0x02}, std::uint8_t{0x11}}) {
        module.half({firstAddress, page, 128}, memory, at);
        at += 128;
    }
    return module;
}

TEST(ModulePages, OfAQsfpAreItsLowerHalfItsIdentityAndItsLimits) {
    auto module = qsfp28();
    const auto memory = readSeveralLanes(module.reader());
    ASSERT_TRUE(memory);
    EXPECT_EQ(memory->kind, ModuleMemory::Sff8636);
    EXPECT_EQ(memory->content, optics::tests::qsfp28Memory());
    EXPECT_EQ(module.asked, (std::vector<HalfPage>{{}, {firstAddress, 0, 128}, {firstAddress, 3, 128}}));
}

TEST(ModulePages, OfAQsfpWithFlatMemoryAreNotAskedFor) {
    auto module = qsfp28();
    auto lower = optics::tests::qsfp28Memory();
    lower[2] = 0x04;
    module.half({}, lower, 0);
    EXPECT_EQ(readSeveralLanes(module.reader())->content.size(), 256U);
    EXPECT_EQ(module.asked.size(), 2U);
}

TEST(ModulePages, OfAQsfpThatCannotBeReadAreLeftOut) {
    auto module = qsfp28();
    module.drop({firstAddress, 3, 128});
    EXPECT_EQ(readSeveralLanes(module.reader())->content.size(), 256U);
    module.drop({firstAddress, 0, 128});
    EXPECT_EQ(readSeveralLanes(module.reader())->content.size(), 128U);
}

TEST(ModulePages, OfACmisModuleReachItsLanes) {
    auto module = qsfpDd();
    const auto memory = readSeveralLanes(module.reader());
    ASSERT_TRUE(memory);
    EXPECT_EQ(memory->kind, ModuleMemory::Cmis);
    EXPECT_EQ(memory->content, optics::tests::qsfpDdMemory());
}

TEST(ModulePages, OfACmisModuleEndAtTheFirstThatCannotBeRead) {
    auto module = qsfpDd();
    module.drop({firstAddress, 2, 128});
    EXPECT_EQ(readSeveralLanes(module.reader())->content.size(), 384U);
}

TEST(ModulePages, OfAModuleThatDoesNotAnswerAreAbsentWithTheReason) {
    Module module;
    EXPECT_EQ(readSeveralLanes(module.reader()).absence().reason, "Input/output error");
    EXPECT_EQ(readSfp(module.reader()).absence().reason, "Input/output error");
    const auto some = [](const HalfPage&) -> Attribute<Bytes> { return Bytes(7); };
    EXPECT_EQ(readSeveralLanes(some).absence().reason, "the module delivers 7 of 128 bytes");
}

TEST(ModulePages, OfAnSfpAreBothItsAddresses) {
    const auto identity = optics::tests::sfpIdentity(), diagnostics = optics::tests::sfpDiagnostics();
    Module module;
    module.half({}, identity, 0);
    module.half({firstAddress, 0, 128}, identity, 128);
    module.half({secondAddress, 0, 0}, diagnostics, 0);
    module.half({secondAddress, 0, 128}, diagnostics, 128);
    EXPECT_FALSE(readSeveralLanes(module.reader()));
    const auto memory = readSfp(module.reader());
    ASSERT_TRUE(memory);
    auto expected = identity;
    expected.insert(expected.end(), diagnostics.begin(), diagnostics.end());
    EXPECT_EQ(*memory, (ModuleMemory{ModuleMemory::Sff8472, expected}));
    module.drop({secondAddress, 0, 0});
    EXPECT_EQ(readSfp(module.reader())->content, identity);
}

/** Header, command, and attributes as linux/ethtool_netlink.h numbers them; little endian as this machine is. */
TEST(ModuleRequest, HasDeviceOffsetLengthPageBankAndAddress) {
    const Bytes expected{
        76, 0, 0, 0,    0x2A, 0, 1, 0, 7,   0,   0,   0,   0, 0, 0, 0, // length, family, request, sequence 7
        31, 1, 0, 0,                                                   // ETHTOOL_MSG_MODULE_EEPROM_GET
        16, 0, 1, 0x80, 9,    0, 2, 0, 'e', 't', 'h', '2', 0, 0, 0, 0, // header: device name
        8,  0, 2, 0,    128,  0, 0, 0,                                 // offset
        8,  0, 3, 0,    128,  0, 0, 0,                                 // length
        5,  0, 4, 0,    3,    0, 0, 0,                                 // page
        5,  0, 5, 0,    0,    0, 0, 0,                                 // bank
        5,  0, 6, 0,    0x50, 0, 0, 0};                                // two-wire address
    if constexpr (std::endian::native == std::endian::little) {
        EXPECT_EQ(moduleRequest(0x2A, 7, "eth2", {firstAddress, 3, 128}), expected);
    } else {
        GTEST_SKIP() << "written for little endian machines";
    }
}

struct Answer {
    alignas(nlmsghdr) std::uint8_t bytes[64]{};
    std::uint32_t length = 0;

    /** Netlink and generic headers, and behind them one attribute that says it is that long. */
    Answer(std::uint16_t type, std::uint16_t toldSize, std::initializer_list<int> content) {
        std::size_t at = sizeof(nlmsghdr) + 4;
        std::memcpy(bytes + at, &toldSize, 2);
        std::memcpy(bytes + at + 2, &type, 2);
        at += 4;
        for (const int byte : content)
            bytes[at++] = static_cast<std::uint8_t>(byte);
        length = static_cast<std::uint32_t>(at);
        std::memcpy(bytes, &length, sizeof length);
    }
    const nlmsghdr* message() const { return reinterpret_cast<const nlmsghdr*>(bytes); }
};

TEST(ModuleAnswer, HasTheModulesBytes) {
    EXPECT_EQ(*moduleData(Answer(7, 7, {0x11, 0x08, 0x00}).message()), (Bytes{0x11, 0x08, 0x00}));
}

TEST(ModuleAnswer, WithoutBytesOrCutIsAbsent) {
    EXPECT_FALSE(moduleData(Answer(6, 7, {0x11, 0x08, 0x00}).message())) << "another attribute";
    EXPECT_FALSE(moduleData(Answer(7, 60, {0x11, 0x08, 0x00}).message())) << "longer than the message";
    EXPECT_FALSE(moduleData(Answer(7, 3, {0x11, 0x08, 0x00}).message())) << "shorter than its own header";
}

/** Of the running kernel. The loopback interface has no cage in any. */
TEST(ModulePages, OfAnInterfaceWithoutACageAreAbsent) {
    EthtoolNetlink netlink;
    EXPECT_FALSE(netlink.halfPage("lo", {}));
    EXPECT_FALSE(netlink.halfPage("../lo", {}));
    EXPECT_FALSE(makeLinuxQueries()->moduleMemory("lo"));
}

} // namespace
} // namespace tavik::host
