// What a flash update changes in a fleet file, and that the file is whole at every moment.
#include "tavik/fleet/flash_writer.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <set>
#include <sstream>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tavik/fleet/fleet_file.h"
#include "tavik/fleet/json_reader.h"
#include "tavik/fleet/whole_file.h"
#include "tavik/fleet/writer_lock.h"

namespace tavik::fleet {

namespace {

FlashImage imageFor(const std::string& model) {
    FlashImage image;
    image.cardModel = model;
    image.version = {2, 2, 3};
    image.releaseDate = {2013, 4, 30};
    image.optionRom = {"3.40", {{8, 1, 0}}, {{6, 2}}, {{4, 2, 0}}};
    return image;
}

bool first(const Card&) { return true; }

Json flashed(const std::string& text, const CardTest& isWanted = first) {
    const auto written = flashedFleet(text, isWanted, imageFor("M"));
    if (const auto* fault = std::get_if<FlashFault>(&written)) return fault->reason;
    return Json::parse(std::get<std::string>(written));
}

TEST(FlashedFleet, TellsTheNewVersionsInEveryFunctionOfTheCard) {
    const auto written = flashed(R"({"cards": [
        {"modelName": "M", "ports": [
            {"storage": {"multiBootVersion": "V:1.0.0,D:01012000,A:Y,T:M", "vpd": {"readOnly": {"SN": "S", "RM": "1", "V9": "010000"}}},
             "ethernet": {"mtuBytes": 9000}},
            {"functions": [{"ethernet": {"flashVersion": "old"}}, {"storage": {"optionRom": {"efi": "1.1"}}}]}]},
        {"modelName": "M", "ports": [{"storage": {}}]}]})");
    EXPECT_EQ(written, Json::parse(R"({"cards": [
        {"modelName": "M", "ports": [
            {"storage": {"multiBootVersion": "V:2.02.03,D:04302013,A:Y,T:M", "vpd": {"readOnly": {"SN": "S", "RM": "02.02.03", "V9": "020203"}},
                         "optionRom": {"biosVersion": "3.40", "firmware": "8.1.0", "efi": "6.2", "fcode": "4.2.0"}},
             "ethernet": {"mtuBytes": 9000, "defaultSoftwareVersion": "02.02.03", "flashVersion": "02.02.03"}},
            {"functions": [{"ethernet": {"flashVersion": "02.02.03", "defaultSoftwareVersion": "02.02.03"}},
                           {"storage": {"optionRom": {"biosVersion": "3.40", "firmware": "8.1.0", "efi": "6.2", "fcode": "4.2.0"}}}]}]},
        {"modelName": "M", "ports": [{"storage": {}}]}]})"))
        << written.dump(2);
}

TEST(FlashedFleet, ChangesTheCardsDefaultsAndWhatFunctionsSayThemselves) {
    const auto written = flashed(R"({"cards": [{"modelName": "M", "storageDefaults": {"multiBootVersion": null},
        "ethernetDefaults": {"flashVersion": "old"},
        "ports": [{"storage": {}, "ethernet": {"flashVersion": "older"}}]}]})");
    const auto& card = written["cards"][0];
    EXPECT_EQ(card["storageDefaults"]["optionRom"]["efi"], "6.2");
    EXPECT_TRUE(card["storageDefaults"]["multiBootVersion"].is_null()) << "an adapter without one gets none";
    EXPECT_EQ(card["ethernetDefaults"]["defaultSoftwareVersion"], "02.02.03");
    EXPECT_EQ(card["ports"][0]["storage"], Json::object());
    EXPECT_EQ(card["ports"][0]["ethernet"], Json::parse(R"({"flashVersion": "02.02.03"})"));
}

TEST(FlashedFleet, RefusesAnImageForAnotherModelACopyAndACardThatIsNotThere) {
    const std::string copies =
        R"({"cards": [{"count": 2, "serialNumber": "S{n}", "modelName": "M"}, {"modelName": "X"}]})";
    const auto isFirst = [](const Card& card) { return card.serialNumber == "S0001"; };
    const auto isModelX = [](const Card& card) { return card.modelName == "X"; };
    const auto statusOf = [&](const CardTest& test, const std::string& text) {
        return std::get<FlashFault>(flashedFleet(text, test, imageFor("M"))).status;
    };
    EXPECT_EQ(statusOf(isFirst, copies), statusNotSupported);
    EXPECT_EQ(statusOf(isModelX, copies), statusForeignImage);
    EXPECT_EQ(statusOf([](const Card&) { return false; }, copies), statusNoSuchDevice);
    EXPECT_EQ(statusOf(first, R"({"cards": null})"), statusNoSuchDevice);
    EXPECT_EQ(statusOf(first, R"({"cards": 5})"), statusSourceFailed);
}

class FlashedFleetOnDisk : public ::testing::Test {
protected:
    FlashedFleetOnDisk() : folder_(::testing::TempDir() + "flash_writer_" + std::to_string(getpid())) {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
        file_ = folder_ / "fleet.json";
        reset();
    }
    ~FlashedFleetOnDisk() override { std::filesystem::remove_all(folder_); }

    void reset() { std::ofstream(file_) << before; }

    std::string text() const {
        std::ostringstream text;
        text << std::ifstream(file_).rdbuf();
        return text.str();
    }

    bool isUnfinished() const { return std::filesystem::exists(file_.string() + ".unfinished"); }

    /** Starts the update in a process of its own, which stands before its first system call. */
    pid_t startWriter() {
        const pid_t writer = fork();
        if (writer == 0) {
            ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            raise(SIGSTOP);
            try {
                flashFleetFile(file_, first, imageFor("M"));
            } catch (const std::exception&) {
                _exit(1);
            }
            _exit(0);
        }
        int status = 0;
        waitpid(writer, &status, 0);
        EXPECT_TRUE(WIFSTOPPED(status));
        return writer;
    }

    /** Lets the writer go on to the next beginning or end of a system call. @return false if it has ended. */
    static bool goOn(pid_t writer) {
        EXPECT_EQ(ptrace(PTRACE_SYSCALL, writer, nullptr, nullptr), 0);
        int status = 0;
        waitpid(writer, &status, 0);
        EXPECT_FALSE(WIFSIGNALED(status)) << "it crashed by signal " << WTERMSIG(status);
        return WIFSTOPPED(status);
    }

    /** The writer ends at the so-many-th beginning or end of a system call. @return false if it came to its own end. */
    bool dieAtCall(int number) {
        const pid_t writer = startWriter();
        for (int stop = 0; stop < number; ++stop)
            if (!goOn(writer)) return false;
        kill(writer);
        return true;
    }

    static void kill(pid_t writer) {
        ::kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
    }

#ifdef __x86_64__ // each kind of processor has registers of its own
    /** The writer's so-many-th system call does nothing and fails. @return false if it came to its end before. */
    bool failAtCall(int number) {
        const pid_t writer = startWriter();
        for (int stop = 1; stop < 2 * number; ++stop)
            if (!goOn(writer)) return false;
        user_regs_struct registers{};
        ptrace(PTRACE_GETREGS, writer, nullptr, &registers);
        if (registers.orig_rax == SYS_exit_group) return finish(writer);
        registers.orig_rax = static_cast<unsigned long long>(-1);
        ptrace(PTRACE_SETREGS, writer, nullptr, &registers);
        if (!goOn(writer)) return false;
        ptrace(PTRACE_GETREGS, writer, nullptr, &registers);
        registers.rax = static_cast<unsigned long long>(-EIO);
        ptrace(PTRACE_SETREGS, writer, nullptr, &registers);
        finish(writer);
        return true;
    }

    /** @return false. */
    static bool finish(pid_t writer) {
        for (int stop = 1; goOn(writer); ++stop) {
            if (stop < 20000) continue;
            ADD_FAILURE() << "the writer does not end";
            kill(writer);
            break;
        }
        return false;
    }
#endif

    const std::string before = R"({"cards": [{"modelName": "M", "ports": [{"ethernet": {"flashVersion": "old"}}]}]})";
    std::filesystem::path folder_;
    std::filesystem::path file_;
};

TEST_F(FlashedFleetOnDisk, IsTheOldOneOrTheNewOneWhereverTheWriterIsKilled) {
    const std::string after = std::get<std::string>(flashedFleet(before, first, imageFor("M")));
    int oldOnes = 0, newOnes = 0, unfinishedOnes = 0;
    for (int stop = 1; dieAtCall(stop); ++stop) {
        const auto found = text();
        EXPECT_TRUE(found == before || found == after) << "after stop " << stop << ": " << found;
        (found == before ? oldOnes : newOnes)++;
        unfinishedOnes += isUnfinished() ? 1 : 0;
        removeUnfinished(file_);
        EXPECT_FALSE(isUnfinished()) << "after stop " << stop;
        reset();
        ASSERT_LT(stop, 2000) << "the writer does not end";
    }
    EXPECT_EQ(text(), after);
    EXPECT_GT(oldOnes, 20);
    EXPECT_GT(newOnes, 2);
    EXPECT_GT(unfinishedOnes, 2);
}

// ThreadSanitizer makes system calls of its own. If one of them fails, it may wait for itself for ever.
#if defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
TEST_F(FlashedFleetOnDisk, IsTheOldOneOrTheNewOneWhateverSystemCallFails) {
    const std::string after = std::get<std::string>(flashedFleet(before, first, imageFor("M")));
    int oldOnes = 0, newOnes = 0;
    for (int call = 1; failAtCall(call); ++call) {
        const auto found = text();
        EXPECT_TRUE(found == before || found == after) << "call " << call << " failed: " << found;
        (found == before ? oldOnes : newOnes)++;
        EXPECT_FALSE(isUnfinished()) << "call " << call << " failed";
        reset();
        ASSERT_LT(call, 1000) << "the writer does not end";
    }
    EXPECT_EQ(text(), after);
    EXPECT_GT(oldOnes, 10);
    EXPECT_GT(newOnes, 2);
}
#endif

TEST_F(FlashedFleetOnDisk, LeavesNoOtherFileAndTakesOverOneThatAKilledWriterLeft) {
    std::ofstream(file_.string() + ".unfinished") << std::string(100000, 'x');
    ASSERT_TRUE(std::holds_alternative<std::string>(flashFleetFile(file_, first, imageFor("M"))));
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_))
        names.insert(entry.path().filename());
    EXPECT_EQ(names, (std::set<std::string>{"fleet.json", "fleet.json.lock"}));
    EXPECT_TRUE(std::holds_alternative<Fleet>(readFleetFile(file_)));
}

TEST_F(FlashedFleetOnDisk, KeepsItsRightsAndTheLinkThatLeadsToIt) {
    chmod(file_.c_str(), 0640);
    const auto link = folder_ / "link.json";
    std::filesystem::create_symlink("fleet.json", link);
    ASSERT_TRUE(std::holds_alternative<std::string>(flashFleetFile(link, first, imageFor("M"))));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    struct stat status {};
    stat(file_.c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
    EXPECT_NE(text(), before);
}

TEST_F(FlashedFleetOnDisk, IsLeftAsItWasWhenItCannotBeWritten) {
    std::filesystem::create_directory(file_.string() + ".unfinished");
    const auto fault = std::get<FlashFault>(flashFleetFile(file_, first, imageFor("M")));
    EXPECT_EQ(fault.status, statusWriteFailed);
    EXPECT_EQ(text(), before);
    EXPECT_EQ(std::get<FlashFault>(flashFleetFile(folder_ / "none.json", first, imageFor("M"))).status,
              statusSourceFailed);
}

TEST_F(FlashedFleetOnDisk, HasOneWriterAtATime) {
    auto lock = std::make_optional<WriterLock>(file_);
    ASSERT_TRUE(lock->isHeld());
    auto writer = std::async(std::launch::async, [this] { flashFleetFile(file_, first, imageFor("M")); });
    EXPECT_EQ(writer.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout)
        << "the writer came to its end beside another one";
    EXPECT_EQ(text(), before);

    std::ofstream(file_)
        << R"({"cards": [{"modelName": "M", "version": "by the first", "ports": [{"ethernet": {}}]}]})";
    lock.reset();
    writer.get();
    auto card = Json::parse(text())["cards"][0];
    EXPECT_EQ(card["version"], "by the first") << "who waits reads the file afterwards";
    EXPECT_EQ(card["ports"][0]["ethernet"]["flashVersion"], "02.02.03");
}

} // namespace

} // namespace tavik::fleet
