// cimhost user: the file that it makes, and how it asks for passwords.
#include "program.h"
#include "temporary_file.h"

#include "cimhost/http/credentials.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <pty.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <vector>

namespace cimhost {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testing_support::cimhost;
using testing_support::Ended;
using testing_support::run;
using testing_support::TemporaryFile;

constexpr std::string_view annaSecret = "Basic YW5uYTpzZWNyZXQ=";

Ended addUser(const std::filesystem::path& file, const std::string& name, const std::string& input) {
    return run(
        {"/bin/sh", "-c", "printf '%s' \"$1\" | \"$0\" user add \"$2\" \"$3\"", PROGRAM, input, file.string(), name});
}

class UserProgram : public testing::Test {
protected:
    UserProgram() { std::filesystem::remove(file.path); }

    std::string content() const {
        std::ifstream stream(file.path);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    unsigned mode() const {
        struct stat status {};
        return ::stat(file.path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }

    std::string list() const { return cimhost({"user", "list", file.path.string()}).output; }

    const TemporaryFile file;
};

TEST_F(UserProgram, MakesAFileThatAServerTakes) {
    const Ended added = addUser(file.path, "anna", "secret\nmore\n");
    EXPECT_EQ(added.status, 0) << added.errors;
    EXPECT_EQ(added.output, file.path.string() + ": anna is a user now\n");
    EXPECT_EQ(added.errors, "");
    EXPECT_EQ(mode(), 0600U);
    EXPECT_THAT(content(), Not(HasSubstr("secret")));
    http::Credentials credentials = http::Credentials::load(file.path);
    EXPECT_EQ(credentials.verify(annaSecret), "anna");
}

TEST_F(UserProgram, AddsChangesAndRemovesWithoutTouchingTheOthers) {
    const std::string others = "# our users\n\nbert:$5$abcdefgh$gruCpC7VkOTspMQTTSAR8mtlO9Upms.fwqE5y16JVM.\n";
    std::ofstream(file.path) << others;
    std::filesystem::permissions(file.path, std::filesystem::perms(0644));
    EXPECT_EQ(addUser(file.path, "anna", "first").status, 0);
    EXPECT_EQ(mode(), 0600U);
    EXPECT_THAT(content(), StartsWith(others + "anna:$"));
    const std::string before = content();
    EXPECT_EQ(addUser(file.path, "anna", "secret").output, file.path.string() + ": anna has a new password\n");
    EXPECT_NE(content(), before);
    EXPECT_EQ(list(), "bert\nanna\n");
    EXPECT_EQ(http::Credentials::load(file.path).verify(annaSecret), "anna");
    EXPECT_EQ(cimhost({"user", "remove", file.path.string(), "anna"}).status, 0);
    EXPECT_EQ(content(), others);
    EXPECT_EQ(list(), "bert\n");
}

TEST_F(UserProgram, TwentyUsersAddedAtTheSameTimeAreAllThere) {
    const Ended ended = run({"/bin/sh", "-c",
                             "for i in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20; do "
                             "echo secret | \"$0\" user add \"$1\" u$i >/dev/null || echo lost & done; wait",
                             PROGRAM, file.path.string()});
    EXPECT_EQ(ended.output + ended.errors, "");
    EXPECT_EQ(testing_support::lineCount(list()), 20U) << list();
}

TEST_F(UserProgram, ReportsErrors) {
    const auto expectError = [](const Ended& ended, const std::string& message) {
        EXPECT_EQ(ended.status, 2);
        EXPECT_THAT(ended.errors, HasSubstr(message));
        EXPECT_EQ(testing_support::lineCount(ended.errors), 1U) << ended.errors;
    };
    expectError(addUser(file.path, "an:na", "secret"), "no colon");
    expectError(addUser(file.path, "#anna", "secret"), "begin with #");
    expectError(addUser(file.path, "an\nna", "secret"), "control character");
    expectError(addUser(file.path, "anna", ""), "no password");
    expectError(addUser(file.path, "anna", "\nsecret"), "the password is empty");
    expectError(addUser(file.path, "anna", std::string(600, 'x')), "512 bytes");
    EXPECT_FALSE(std::filesystem::exists(file.path));
    expectError(cimhost({"user", "list", file.path.string()}), file.path.string() + ": No such file");
    expectError(cimhost({"user", "remove", file.path.string(), "anna"}), file.path.string() + ": No such file");
    EXPECT_FALSE(std::filesystem::exists(file.path));
    expectError(addUser("/nonexistent/users", "anna", "secret"), "/nonexistent/users: No such file");
    addUser(file.path, "anna", "secret");
    expectError(cimhost({"user", "remove", file.path.string(), "bert"}), "there is no user bert");
    EXPECT_EQ(list(), "anna\n");
}

// A person at a terminal of its own.
class Typist {
public:
    explicit Typist(const std::filesystem::path& file) {
        id = ::forkpty(&terminal, nullptr, nullptr, nullptr);
        if (id != 0) return;
        testing_support::takeSignalsByDefault();
        ::execl(PROGRAM, PROGRAM, "user", "add", file.c_str(), "anna", nullptr);
        ::_exit(127);
    }
    ~Typist() {
        ::close(terminal);
        if (id > 0) ::waitpid(id, nullptr, 0);
    }
    Typist(const Typist&) = delete;
    Typist& operator=(const Typist&) = delete;

    /// Reads until the program has written that, or has ended.
    void waitFor(const std::string& text) {
        std::array<char, 256> bytes{};
        const std::size_t begin = seen.size();
        while (seen.find(text, begin) == std::string::npos) {
            const ssize_t got = ::read(terminal, bytes.data(), bytes.size());
            if (got <= 0) return;
            seen.append(bytes.data(), static_cast<std::size_t>(got));
        }
    }

    void type(const std::string& text) {
        EXPECT_EQ(::write(terminal, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    bool isEchoing() const {
        termios settings{};
        return ::tcgetattr(terminal, &settings) == 0 && (settings.c_lflag & ECHO) != 0;
    }

    /// -1 if a signal ended it.
    int status() {
        waitFor("\xff");
        int ended = 0;
        ::waitpid(id, &ended, 0);
        id = -1;
        return WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
    }

    std::string seen;

private:
    int terminal = -1;
    pid_t id = -1;
};

TEST_F(UserProgram, AsksTwiceAtATerminalAndShowsNoPassword) {
    Typist anna(file.path);
    anna.waitFor("password for anna: ");
    anna.type("secret\n");
    anna.waitFor("once more: ");
    anna.type("secret\n");
    EXPECT_EQ(anna.status(), 0) << anna.seen;
    EXPECT_THAT(anna.seen, Not(HasSubstr("secret")));
    EXPECT_EQ(http::Credentials::load(file.path).verify(annaSecret), "anna");
}

TEST_F(UserProgram, PasswordsThatDifferAreRefused) {
    Typist anna(file.path);
    anna.waitFor("password for anna: ");
    anna.type("secret\n");
    anna.waitFor("once more: ");
    anna.type("secrte\n");
    EXPECT_EQ(anna.status(), 2);
    EXPECT_THAT(anna.seen, HasSubstr("the two passwords differ"));
    EXPECT_FALSE(std::filesystem::exists(file.path));
}

TEST_F(UserProgram, ControlCEndsTheQuestionAndLeavesTheTerminalAsItWas) {
    Typist anna(file.path);
    anna.waitFor("password for anna: ");
    EXPECT_FALSE(anna.isEchoing());
    anna.type("\x03");
    EXPECT_EQ(anna.status(), -1) << anna.seen;
    EXPECT_TRUE(anna.isEchoing());
    EXPECT_FALSE(std::filesystem::exists(file.path));
}

} // namespace
} // namespace cimhost
