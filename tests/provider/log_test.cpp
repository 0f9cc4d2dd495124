// The diagnostic log as an administrator finds it: where it lies, what a line looks like, when it is moved away.
#include "provider_host.h"
#include "test_support.h"

#include "log/log.h"

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr const char* current = "Merolt_CNA_Provider.log";
constexpr const char* previous = "Merolt_CNA_Provider_prev.log";
constexpr std::size_t rotationSize = 1048576;

struct Writer {
    const char* name;
    void (*write)(const char* format, ...);
};

void PrintTo(const Writer& writer, std::ostream* out) { *out << writer.name; }

constexpr Writer writers[] = {{"debugLog", merolt::debugLog}, {"errorLog", merolt::errorLog}};

/// The two writers do the same; only their callers' flags differ.
class LogTest : public ProviderTest, public testing::WithParamInterface<Writer> {
protected:
    void SetUp() override { merolt::initializeLogging(); }

    void write(const char* message) { GetParam().write("%s", message); }

    void makeLogOfSize(std::size_t size) { writeFile(current, std::string(size - 1, 'x') + '\n'); }

    std::string timeText() {
        const std::time_t now = services.now();
        return std::string(std::ctime(&now), 24);
    }
};

INSTANTIATE_TEST_SUITE_P(Writers, LogTest, testing::ValuesIn(writers),
                         [](const auto& test) { return test.param.name; });

TEST_P(LogTest, ALineIsTimeBlankAndMessage) {
    write("hello");
    EXPECT_EQ(readFile(current), timeText() + " hello\n");
}

TEST_P(LogTest, LinesAreAppended) {
    write("one");
    write("two");
    EXPECT_EQ(readFile(current), timeText() + " one\n" + timeText() + " two\n");
}

TEST_P(LogTest, AMessageThatEndsInANewlineLeavesAnEmptyLine) {
    write("hello\n");
    EXPECT_EQ(readFile(current), timeText() + " hello\n\n");
}

struct PrintableRow {
    std::string value;
    std::string shown;
};

TEST_P(LogTest, ControlCharactersOfAValueAreShownAsText) {
    for (const PrintableRow& row :
         {PrintableRow{"a\nb", "a\\nb"}, PrintableRow{"\n", "\\n"}, PrintableRow{"\r\t", "\\r\\t"},
          PrintableRow{"\x1b[2J", "\\x1B[2J"}, PrintableRow{"\x7f\x01", "\\x7F\\x01"},
          PrintableRow{"\xC2\x9B", "\\xC2\\x9B"}, PrintableRow{"\xC3\xA9", "\xC3\xA9"},
          PrintableRow{"back\\slash", "back\\slash"}, PrintableRow{"\xC2", "\xC2"}}) {
        GetParam().write("key=%s!", row.value.c_str());
        GetParam().write("key=%s", row.value.c_str());
        GetParam().write("%5d%%, key=%-3s\n", 7, row.value.c_str());
        const std::string padded = row.shown + std::string(row.value.size() < 3 ? 3 - row.value.size() : 0, ' ');
        const std::vector<std::string> wanted = {"key=" + row.shown + "!", "key=" + row.shown, "    7%, key=" + padded,
                                                 ""};
        EXPECT_EQ(takeLogLines(), wanted);
    }
}

TEST_P(LogTest, AnEndOfTheFormatStaysAsItIs) {
    GetParam().write("makeInstance was called\n.");
    GetParam().write("%s done\n\n", "a\nb");
    GetParam().write("100%%\n");
    const std::vector<std::string> wanted = {"makeInstance was called", ".", "a\\nb done", "", "", "100%", ""};
    EXPECT_EQ(takeLogLines(), wanted);
}

TEST_P(LogTest, ALongValueOfControlCharactersIsCutAsAnyOther) {
    GetParam().write("%s!\n", std::string(600, '\n').c_str());
    std::string shown;
    while (shown.size() < 511)
        shown += "\\n";
    EXPECT_EQ(takeLogLines(), std::vector<std::string>{shown.substr(0, 511)});
}

TEST_P(LogTest, AMessageOf511CharactersIsWhole) {
    write(std::string(511, 'm').c_str());
    EXPECT_EQ(logLines(), std::vector<std::string>{std::string(511, 'm')});
}

TEST_P(LogTest, ALongerMessageIsCutAt511Characters) {
    write(std::string(5000, 'm').c_str());
    EXPECT_EQ(logLines(), std::vector<std::string>{std::string(511, 'm')});
}

TEST_P(LogTest, WritersLookAtNoFlag) {
    merolt::gDebugLog = false;
    merolt::gErrorLog = false;
    write("hello");
    EXPECT_EQ(logLines(), std::vector<std::string>{"hello"});
}

TEST_P(LogTest, ALogOneByteShortOfTheLimitGrows) {
    makeLogOfSize(rotationSize - 1);
    write("hello");
    EXPECT_EQ(readFile(current).size(), rotationSize - 1 + 24 + 7);
    EXPECT_EQ(readFile(previous), "");
}

TEST_P(LogTest, ALogAtTheLimitIsMovedAwayBeforeTheLine) {
    writeFile(previous, "older\n");
    makeLogOfSize(rotationSize);
    write("hello");
    EXPECT_EQ(logLines(), std::vector<std::string>{"hello"});
    EXPECT_EQ(readFile(previous), std::string(rotationSize - 1, 'x') + '\n');
}

TEST_P(LogTest, AFifoInTheLogsPlaceHoldsNobodyUp) {
    ASSERT_EQ(mkfifo(current, 0600), 0);
    write("nobody reads this");
    EXPECT_TRUE(std::filesystem::is_fifo(current));
}

TEST_P(LogTest, AFifoThatSomebodyReadsGetsNoLineEither) {
    ASSERT_EQ(mkfifo(current, 0600), 0);
    const int reader = open(current, O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    write("hello");
    char byte = 0;
    EXPECT_EQ(read(reader, &byte, 1), 0) << "a reader that stops reading would hold up the provider";
    close(reader);
}

/// Nothing can be renamed to the previous log's name.
class UnmovableLogTest : public LogTest {
protected:
    void SetUp() override {
        LogTest::SetUp();
        std::filesystem::create_directories(std::string(previous) + "/occupied");
        makeLogOfSize(rotationSize);
    }

    std::string newText() { return readFile(current).substr(rotationSize); }
};

INSTANTIATE_TEST_SUITE_P(Writers, UnmovableLogTest, testing::ValuesIn(writers),
                         [](const auto& test) { return test.param.name; });

TEST_P(UnmovableLogTest, AFailedMoveIsReportedOnceBeforeEachLine) {
    const std::string report =
        timeText() + " Merolt_FC_Utils Error renaming log file, result=-1, errno=" + std::to_string(EISDIR) + "\n";
    write("one");
    EXPECT_EQ(newText(), report + timeText() + " one\n");
    write("two");
    EXPECT_EQ(newText(), report + timeText() + " one\n" + report + timeText() + " two\n");
}

TEST_P(UnmovableLogTest, AFailedMoveIsNotReportedWithTheErrorLogOff) {
    merolt::gErrorLog = false;
    write("one");
    EXPECT_EQ(newText(), timeText() + " one\n");
}

/// A log that is gone when it is to be moved.
class VanishingLog : public FakeServices {
public:
    long long fileSize(const char*) override { return rotationSize; }
};

TEST_P(LogTest, ALogThatVanishedIsNoFailedMove) {
    VanishingLog vanishing;
    merolt::platform::replaceServices(&vanishing);
    write("hello");
    merolt::platform::replaceServices(&services);
    EXPECT_EQ(logLines(), std::vector<std::string>{"hello"});
}

TEST_P(LogTest, ALogThatCannotBeOpenedStopsNothing) {
    std::filesystem::create_directories(current);
    write("hello");
    EXPECT_TRUE(std::filesystem::is_directory(current));
}

TEST_P(LogTest, ALinkIsFollowedOnlyWhereNobodyElseCouldHaveMadeIt) {
    const std::filesystem::path folder = std::filesystem::current_path();
    for (const unsigned rights : {0700U, 0755U, 0770U, 0775U, 0777U, 01777U}) {
        writeFile("precious", "precious\n");
        std::filesystem::remove(current);
        std::filesystem::create_symlink("precious", current);
        std::filesystem::permissions(folder, static_cast<std::filesystem::perms>(rights));
        write("hello");
        const bool isOwn = (rights & 0022U) == 0;
        EXPECT_EQ(readFile("precious"), isOwn ? "precious\n" + timeText() + " hello\n" : "precious\n")
            << std::oct << rights;
        EXPECT_TRUE(std::filesystem::is_symlink(current));
    }
    std::filesystem::remove(current);
    write("a file of its own");
    EXPECT_EQ(readFile(current), timeText() + " a file of its own\n") << "a shared folder holds a log that is no link";
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
}

/// How many system calls the child makes between the two signals by which it stops itself; -1 if it cannot be watched.
int callsBetweenStops(pid_t child) {
    int status = 0;
    const auto stops = [&] { return waitpid(child, &status, 0) == child && WIFSTOPPED(status); };
    constexpr int callStop = SIGTRAP | 0x80;
    if (!stops() || ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0)
        return -1;
    int halves = 0;
    for (;;) {
        if (ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) != 0 || !stops()) return -1;
        if (WSTOPSIG(status) != callStop) break;
        ++halves;
    }
    return halves / 2;
}

// With the log on, a refresh of a large host writes thousands of lines.
TEST_P(LogTest, ALineTakesFewSystemCalls) {
    write("the first line makes the file");
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
        raise(SIGSTOP);
        write("hello");
        raise(SIGSTOP);
        _exit(0);
    }
    const int calls = callsBetweenStops(child);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    if (calls < 0) GTEST_SKIP() << "programs cannot be watched here";
    constexpr int ofTheTest = 3; // the end of the first raise() and the beginning of the second
    EXPECT_GE(calls, 4) << "open, write and close at least";
    EXPECT_LE(calls, 5 + ofTheTest) << "the size for the rotation, open, what was opened, write, close";
    EXPECT_EQ(readFile(current), timeText() + " the first line makes the file\n" + timeText() + " hello\n");
}

TEST_P(LogTest, LinesOfManyThreadsStayWhole) {
    constexpr int threadCount = 4;
    constexpr int linesEach = 50;
    const std::string message(200, 'm');
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < threadCount; ++thread) {
            threads.emplace_back([&] {
                for (int line = 0; line < linesEach; ++line)
                    write(message.c_str());
            });
        }
    }
    EXPECT_EQ(occurrences(logLines(), message), std::size_t{threadCount} * linesEach);
}

using LogPlaceTest = ProviderTest;

TEST_F(LogPlaceTest, TheMacrosEvaluateNothingWhileTheirFlagIsOff) {
    merolt::initializeLogging();
    merolt::gDebugLog = false;
    merolt::gErrorLog = false;
    int evaluated = 0;
    DEBUG_LOG("%d", ++evaluated);
    ERROR_LOG("%d", ++evaluated);
    EXPECT_EQ(evaluated, 0);
    EXPECT_FALSE(std::filesystem::exists(current));
    merolt::gDebugLog = true;
    DEBUG_LOG("debug %d", ++evaluated);
    merolt::gErrorLog = true;
    ERROR_LOG("error %d", ++evaluated);
    const std::vector<std::string> wanted = {"debug 1", "error 2"};
    EXPECT_EQ(logLines(), wanted);
}

TEST_F(LogPlaceTest, WithoutInstallLocationItLiesInTheWorkingDirectory) {
    merolt::initializeLogging();
    EXPECT_STREQ(merolt::gLogFileName, current);
    EXPECT_STREQ(merolt::gPrevLogFileName, previous);
    EXPECT_STREQ(merolt::gInstallDirectory, "");
}

TEST_F(LogPlaceTest, AnInstallLocationWithoutSlashGetsOne) {
    services.location = "/opt/x";
    merolt::initializeLogging();
    EXPECT_STREQ(merolt::gLogFileName, "/opt/x/log/Merolt_CNA_Provider.log");
    EXPECT_STREQ(merolt::gPrevLogFileName, "/opt/x/log/Merolt_CNA_Provider_prev.log");
    EXPECT_STREQ(merolt::gInstallDirectory, "/opt/x/");
}

TEST_F(LogPlaceTest, AnInstallLocationWithSlashIsTakenAsItStands) {
    services.location = "/opt/x/";
    merolt::initializeLogging();
    EXPECT_STREQ(merolt::gLogFileName, "/opt/x/log/Merolt_CNA_Provider.log");
    EXPECT_STREQ(merolt::gPrevLogFileName, "/opt/x/log/Merolt_CNA_Provider_prev.log");
    EXPECT_STREQ(merolt::gInstallDirectory, "/opt/x/");
}

TEST_F(LogPlaceTest, TheLogAndTheSettingsLieInTheInstallLocation) {
    std::filesystem::create_directories("installed/log");
    services.location = std::filesystem::current_path() / "installed";
    writeFile("installed/meroltcna.properties", "DebugLog=1\n");
    start();
    EXPECT_EQ(logLines("installed/log/Merolt_CNA_Provider.log").front(), "Merolt_CNA_Provider constructor was called");
    EXPECT_EQ(occurrences(logLines("installed/log/Merolt_CNA_Provider.log"),
                          "PropertiesFileName=" + services.location + "/meroltcna.properties"),
              1U);
    EXPECT_FALSE(std::filesystem::exists(current));
}

TEST_F(LogPlaceTest, WithoutALogFolderLinesAreLostAndNothingFails) {
    std::filesystem::create_directories("installed");
    services.location = std::filesystem::current_path() / "installed";
    writeFile("installed/meroltcna.properties", "DebugLog=1\nErrorLog=1\n");
    start();
    EXPECT_TRUE(enumerateInstances("Merolt_Adapter_ComputerSystem").isOk());
    EXPECT_FALSE(std::filesystem::exists("installed/log"));
    EXPECT_FALSE(std::filesystem::exists(current));
}

TEST_F(LogPlaceTest, WithoutSettingsTheOnlyLineIsThatOfTheConstructor) {
    start();
    EXPECT_TRUE(enumerateInstances("Merolt_Adapter_ComputerSystem").isOk());
    stop();
    EXPECT_EQ(logLines(), std::vector<std::string>{"Merolt_CNA_Provider constructor was called"});
}

TEST_F(LogPlaceTest, ASecondProviderOfOneProcessWritesNoLineWhenTheLogIsOff) {
    start();
    stop();
    start();
    stop();
    EXPECT_EQ(logLines(), std::vector<std::string>{"Merolt_CNA_Provider constructor was called"});
}

/// The install location as the system gives it.
class InstallLocationTest : public testing::Test {
protected:
    std::string locationFor(const std::string& variable) {
        setenv("MEROLT_CNA_INSTALL_LOCATION", variable.c_str(), 1);
        std::string location = merolt::platform::Services().installLocation();
        unsetenv("MEROLT_CNA_INSTALL_LOCATION");
        return location;
    }
};

TEST_F(InstallLocationTest, IsTakenFromTheEnvironment) { EXPECT_EQ(locationFor("/opt/x"), "/opt/x"); }

TEST_F(InstallLocationTest, Of259CharactersIsTaken) {
    EXPECT_EQ(locationFor(std::string(259, 'l')), std::string(259, 'l'));
}

TEST_F(InstallLocationTest, OfMoreCharactersCountsAsNone) { EXPECT_EQ(locationFor(std::string(260, 'l')), ""); }

TEST_F(InstallLocationTest, ThatIsEmptyCountsAsNone) { EXPECT_EQ(locationFor(""), ""); }

} // namespace
