#include "tavik/os_name.h"

#include <cstdio>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace tavik {

namespace {

class OsName : public ::testing::Test {
protected:
    OsName() : file_(::testing::TempDir() + "tavik_os_release_" + std::to_string(getpid())) {}
    ~OsName() override { std::remove(file_.c_str()); }

    std::string nameFrom(const std::string& text) {
        std::ofstream(file_) << text;
        return osName({"/nonexistent/os-release", file_});
    }

    std::string kernelName() {
        utsname kernel{};
        uname(&kernel);
        return std::string(kernel.sysname) + " " + kernel.release;
    }

    std::string file_;
};

TEST_F(OsName, IsThePrettyNameWithoutItsQuotes) {
    EXPECT_EQ(nameFrom("NAME=\"Debian\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"),
              "Debian GNU/Linux 12 (bookworm)");
    EXPECT_EQ(nameFrom("PRETTY_NAME='Single quoted'\n"), "Single quoted");
    EXPECT_EQ(nameFrom("PRETTY_NAME=Plain"), "Plain");
}

TEST_F(OsName, ResolvesEscapesInDoubleQuotesOnly) {
    EXPECT_EQ(nameFrom(R"(PRETTY_NAME="a \"b\" \$c")"), "a \"b\" $c");
    EXPECT_EQ(nameFrom(R"(PRETTY_NAME='a \b')"), R"(a \b)");
}

TEST_F(OsName, IsTheKernelWhereNothingElseIsKnown) {
    EXPECT_EQ(nameFrom("NAME=Debian\n"), kernelName());
    EXPECT_EQ(nameFrom("PRETTY_NAME=\"\"\n"), kernelName());
    EXPECT_EQ(osName({}), kernelName());
}

} // namespace

} // namespace tavik
