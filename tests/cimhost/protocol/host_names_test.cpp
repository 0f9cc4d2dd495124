#include "cimhost/http/host_names.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>

namespace cimhost::http {
namespace {

std::string hostIn(std::string_view text) {
    const std::optional<Authority> authority = parseAuthority(text);
    return authority ? authority->host : "none";
}

TEST(AuthorityText, NamesAndAddressesWithAndWithoutPort) {
    EXPECT_EQ(hostIn("localhost"), "localhost");
    EXPECT_EQ(hostIn("LocalHost.:5988"), "localhost");
    EXPECT_EQ(hostIn("127.0.0.1:5988"), "127.0.0.1");
    EXPECT_EQ(hostIn("[::1]:5988"), "::1");
    EXPECT_EQ(hostIn("[0:0:0:0:0:0:0:1]"), "::1");
    EXPECT_EQ(hostIn("[::ffff:192.0.2.1]"), "192.0.2.1");
    EXPECT_EQ(hostIn("a:"), "a");
}

TEST(AuthorityText, OtherTextsAreRefused) {
    for (const char* text :
         {"", ":5988", "a b", "a:x", "a:123456", "[::1", "[a]", "::1", "user@host", "a/b", "h\xc3\xa9"})
        EXPECT_EQ(hostIn(text), "none") << text;
}

bool accepts(const HostNames& names, std::string_view called, const std::string& local) {
    const std::optional<Authority> authority = parseAuthority(called);
    return authority && names.contains(*authority, local);
}

TEST(NamesOfTheServer, TheAddressThatTheClientConnectedTo) {
    const HostNames names({});
    EXPECT_TRUE(accepts(names, "192.0.2.1:5988", "192.0.2.1"));
    EXPECT_TRUE(accepts(names, "192.0.2.1", "::ffff:192.0.2.1"));
    EXPECT_FALSE(accepts(names, "192.0.2.2", "192.0.2.1"));
}

TEST(NamesOfTheServer, LocalhostOnLoopbackAlone) {
    const HostNames names({});
    EXPECT_TRUE(accepts(names, "localhost", "127.0.0.1"));
    EXPECT_TRUE(accepts(names, "localhost", "::1"));
    EXPECT_FALSE(accepts(names, "localhost", "192.0.2.1"));
}

TEST(NamesOfTheServer, TheMachinesOwn) {
    std::array<char, 256> own{};
    ASSERT_EQ(gethostname(own.data(), own.size() - 1), 0);
    EXPECT_TRUE(accepts(HostNames({}), own.data(), "192.0.2.1")) << own.data();
}

TEST(NamesOfTheServer, ThoseThatTheOperatorAdds) {
    const HostNames names({"CIM.example.", "192.0.2.9", "2001:db8:0::1"});
    EXPECT_TRUE(accepts(names, "cim.example", "127.0.0.1"));
    EXPECT_TRUE(accepts(names, "192.0.2.9", "127.0.0.1"));
    EXPECT_TRUE(accepts(names, "[2001:db8::1]", "127.0.0.1"));
    EXPECT_FALSE(accepts(names, "evil.example", "127.0.0.1"));
}

} // namespace
} // namespace cimhost::http
