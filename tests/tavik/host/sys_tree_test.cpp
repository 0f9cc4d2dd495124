#include <ostream>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "scratch_tree.h"

namespace tavik::host::test {
namespace {

TEST(SysTree, TextComesWithoutItsLineEnd) {
    ScratchTree scratch;
    scratch.file("sys/vendor", "  ACME    \n");
    EXPECT_EQ(*scratch.tree().text("sys/vendor"), "ACME");
}

TEST(SysTree, MissingFileTellsWhy) {
    ScratchTree scratch;
    EXPECT_EQ(scratch.tree().text("sys/none").absence().reason, "No such file or directory");
}

TEST(SysTree, TextOfAPageIsTakenAndALongerOneIsNot) {
    ScratchTree scratch;
    scratch.file("page", std::string(4096, 'x'));
    scratch.file("more", std::string(4097, 'x'));
    EXPECT_EQ(scratch.tree().text("page")->size(), 4096U);
    EXPECT_EQ(scratch.tree().text("more").absence().reason, "longer than 4096 bytes");
}

TEST(SysTree, LinkOutOfTheRootIsNotFollowed) {
    ScratchTree outside;
    outside.file("secret", "secret");
    ScratchTree scratch;
    scratch.link("absolute", (outside.root() / "secret").string());
    scratch.link("relative", "../" + outside.root().filename().string() + "/secret");
    scratch.link("folder", outside.root().string());
    for (const auto* path : {"absolute", "relative", "folder/secret",
                             "../"
                             "secret"})
        EXPECT_FALSE(scratch.tree().text(path)) << path;
    EXPECT_TRUE(scratch.tree().names("folder").empty());
    EXPECT_FALSE(scratch.tree().linkName("folder/secret"));
}

TEST(SysTree, RootThatIsALinkIsStillARoot) {
    ScratchTree scratch;
    scratch.file("real/sys/mtu", "9000\n");
    scratch.link("root", "real");
    EXPECT_EQ(*SysTree(scratch.root() / "root").number("sys/mtu", 65535), 9000U);
}

TEST(SysTree, PipeInAForeignTreeDoesNotBlock) {
    ScratchTree scratch;
    ASSERT_EQ(::mkfifo((scratch.root() / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(scratch.tree().text("pipe").absence().reason, "not a file");
}

TEST(SysTree, BytesStopAtTheLimit) {
    ScratchTree scratch;
    scratch.file("vpd", std::string(1000, 'v'));
    EXPECT_EQ(scratch.tree().bytes("vpd", 10)->size(), 10U);
    EXPECT_EQ(scratch.tree().bytes("vpd", 5000)->size(), 1000U);
}

TEST(SysTree, NamesAreSorted) {
    ScratchTree scratch;
    for (const auto* name : {"eth1", "lo", "eth0"})
        scratch.file(std::string("net/") + name, "");
    EXPECT_EQ(scratch.tree().names("net"), (std::vector<std::string>{"eth0", "eth1", "lo"}));
    EXPECT_TRUE(scratch.tree().names("none").empty());
}

TEST(SysTree, DanglingLinkExistsAndHasAName) {
    ScratchTree scratch;
    scratch.link("driver", "../../bus/pci/drivers/i40e");
    EXPECT_TRUE(scratch.tree().exists("driver"));
    EXPECT_EQ(*scratch.tree().linkName("driver"), "i40e");
    EXPECT_FALSE(scratch.tree().resolve("driver"));
}

struct NumberCase {
    const char* text;
    std::uint64_t largest;
    const char* expected; ///< the number, or the reason against it
};

void PrintTo(const NumberCase& row, std::ostream* out) { *out << '"' << row.text << "\" up to " << row.largest; }

class Numbers : public testing::TestWithParam<NumberCase> {};

TEST_P(Numbers, AreReadWhole) {
    const auto& [text, largest, expected] = GetParam();
    const auto number = parseNumber(text, largest);
    EXPECT_EQ(number ? std::to_string(*number) : number.absence().reason, expected);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Numbers,
    testing::Values(NumberCase{"1500", 65535, "1500"}, NumberCase{"0x1af4", 0xFFFF, "6900"},
                    NumberCase{"65535", 65535, "65535"}, NumberCase{"65536", 65535, "number too large: 65536"},
                    NumberCase{"18446744073709551615", ~0ULL, "18446744073709551615"},
                    NumberCase{"18446744073709551616", ~0ULL, "number too large: 18446744073709551616"},
                    NumberCase{"-1", 65535, "not a number: \"-1\""}, NumberCase{"+1", 65535, "not a number: \"+1\""},
                    NumberCase{"12 ", 65535, "not a number: \"12 \""}, NumberCase{"0x", 65535, "not a number: \"0x\""},
                    NumberCase{"", 65535, "not a number: \"\""}));

} // namespace
} // namespace tavik::host::test
