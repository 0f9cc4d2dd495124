// How the program starts and how it can be ended meanwhile, whatever stands in the place of its files.
#include "program.h"
#include "temporary_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <future>
#include <ostream>
#include <sys/stat.h>

namespace cimhost {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using testing_support::cimhost;
using testing_support::Ended;
using testing_support::Process;
using testing_support::TemporaryFile;
using testing_support::urlOf;

constexpr int endedBySignal = -1;

/// The program's exit status; one that has not ended after a long time fails the test and is ended.
int statusOf(Process& program) {
    auto ended = std::async(std::launch::async, [&program] { return program.wait(); });
    if (ended.wait_for(std::chrono::seconds(60)) == std::future_status::timeout) {
        ADD_FAILURE() << "it goes on";
        program.signal(SIGKILL);
    }
    return ended.get();
}

class Folder {
public:
    Folder() : before(std::filesystem::current_path()) {
        std::string name = (std::filesystem::temp_directory_path() / "cimhost_start_XXXXXX").string();
        path = ::mkdtemp(name.data());
        std::filesystem::current_path(path);
    }
    ~Folder() {
        std::filesystem::current_path(before);
        std::filesystem::remove_all(path);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::filesystem::path path;

private:
    const std::filesystem::path before;
};

/// The program runs in a folder of its own, where a file of its log's or its settings' name is theirs.
class Start : public testing::Test {
protected:
    Start() {
        ::unsetenv("MEROLT_CNA_INSTALL_LOCATION");
        ::unsetenv("TAVIK_SOURCE");
    }

    static std::vector<std::string> serve(std::vector<std::string> more = {}) {
        std::vector<std::string> command = {PROGRAM, "--fleet", FLEET, "serve", "--listen", "127.0.0.1:0"};
        command.insert(command.end(), more.begin(), more.end());
        return command;
    }

    const Folder folder;
};

class SignalDuringTheFirstBuild : public Start, public testing::WithParamInterface<int> {};

TEST_P(SignalDuringTheFirstBuild, EndsTheProgramAtOnce) {
    Process server(
        {PROGRAM, "--fleet", FLEET, "--provider", STUCK_PROVIDER, "serve", "--listen", "127.0.0.1:0", "--state", ""});
    ASSERT_EQ(server.readLine(), "building") << server.errors();
    server.signal(GetParam());
    EXPECT_EQ(statusOf(server), endedBySignal);
}

INSTANTIATE_TEST_SUITE_P(Signals, SignalDuringTheFirstBuild, testing::Values(SIGTERM, SIGINT),
                         [](const auto& row) { return row.param == SIGTERM ? "Term" : "Int"; });

TEST_F(Start, SignalsThatTheParentBlockedStillStopIt) {
    sigset_t blocked, before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    Process server(
        {PROGRAM, "--fleet", FLEET, "--provider", STUCK_PROVIDER, "serve", "--listen", "127.0.0.1:0", "--state", ""});
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ASSERT_EQ(server.readLine(), "building") << server.errors();
    server.signal(SIGTERM);
    EXPECT_EQ(statusOf(server), endedBySignal);
}

TEST_F(Start, FifosInPlaceOfLogAndSettingsDoNotBlock) {
    for (const char* name : {"Merolt_CNA_Provider.log", "Merolt_CNA_Provider_prev.log", "meroltcna.properties"})
        ASSERT_EQ(::mkfifo(name, 0600), 0);
    Process server(serve({"--state", ""}));
    EXPECT_NE(urlOf(server), "") << server.errors();
    server.signal(SIGTERM);
    EXPECT_EQ(statusOf(server), 0);
}

TEST_F(Start, AFifoOrADeviceInPlaceOfTheStateFileIsNamed) {
    ASSERT_EQ(::mkfifo("state.json", 0600), 0);
    for (const char* name : {"state.json", "/dev/zero"}) {
        Process server(serve({"--state", name}));
        EXPECT_EQ(statusOf(server), 2);
        EXPECT_THAT(server.errors(), HasSubstr(std::string(name) + ": not a regular file"));
    }
}

TEST_F(Start, AFifoInPlaceOfTheFleetIsNamed) {
    ASSERT_EQ(::mkfifo("fleet.json", 0600), 0);
    Process server({PROGRAM, "--fleet", "fleet.json", "serve", "--listen", "127.0.0.1:0"});
    EXPECT_EQ(statusOf(server), 2);
    EXPECT_THAT(server.errors(), HasSubstr("fleet.json: cannot be read: not a regular file"));
}

struct BadSource {
    const char* name;
    const char* source;
    const char* message;
};

void PrintTo(const BadSource& bad, std::ostream* out) { *out << bad.source; }

class NoSuchSource : public Start, public testing::WithParamInterface<BadSource> {
protected:
    NoSuchSource() { ::setenv("TAVIK_SOURCE", GetParam().source, 1); }
};

TEST_P(NoSuchSource, IsAnErrorForCommandsThatAskTheAdapters) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"enumerate", "CIM_FCPort"}, {"tree"}, {"serve", "--listen", "127.0.0.1:0"}}) {
        const Ended ended = cimhost(arguments);
        EXPECT_EQ(ended.status, 2);
        EXPECT_EQ(ended.output, "");
        EXPECT_THAT(ended.errors, HasSubstr(GetParam().message));
    }
}

TEST_P(NoSuchSource, DoesNotMatterToCommandsThatAskNoAdapters) {
    const TemporaryFile fleet(R"({"cards": [{"ports": [{"ethernet": {}}]}]})");
    EXPECT_EQ(cimhost({"fleet", "set-link", "1", "1", "down", fleet.path.string()}).status, 0);
    std::filesystem::remove(fleet.path.string() + ".lock");
}

INSTANTIATE_TEST_SUITE_P(
    Sources, NoSuchSource,
    testing::Values(
        BadSource{"Misspelt", "flet:foo",
                  "cimhost: TAVIK_SOURCE: source of adapters: expected \"host\", \"fleet:PATH\" or \"recording:PATH\", "
                  "found \"flet:foo\""},
        BadSource{"NoPath", "fleet:", "expected \"host\", \"fleet:PATH\" or \"recording:PATH\", found \"fleet:\""},
        BadSource{"NoSuchFolder", "recording:/nonexistent",
                  "cimhost: /nonexistent: no recorded tree: No such file or directory"},
        BadSource{"NoRecording", "recording:/proc/self/fd",
                  "cimhost: /proc/self/fd: no recorded tree, which would have a folder \"sys\""},
        BadSource{"NoSuchFile", "fleet:/nonexistent", "/nonexistent: cannot be read: No such file or directory"}),
    [](const auto& row) { return row.param.name; });

TEST_F(Start, SetLinkTakesWordsAlone) {
    const std::string text = R"({"cards": [{"ports": [{"ethernet": {"linkState": "up"}}]}]})";
    const TemporaryFile fleet(text);
    for (const char* state : {"1", "0", "2", "UP", ""}) {
        const Ended ended = cimhost({"fleet", "set-link", "1", "1", state, fleet.path.string()});
        EXPECT_EQ(ended.status, 2);
        EXPECT_THAT(ended.errors, HasSubstr("STATE")) << state;
    }
    const Ended side = cimhost({"fleet", "set-link", "1", "1", "down", fleet.path.string(), "--only", "2"});
    EXPECT_EQ(side.status, 2);
    std::ifstream stream(fleet.path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), text);
}

} // namespace
} // namespace cimhost
