// The lock between those who change a fleet: what holds it, what cannot, and what is said of either.
#include "tavik/fleet/writer_lock.h"

#include <csignal>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tavik/fleet/whole_file.h"

namespace tavik::fleet {

namespace {

using namespace std::chrono_literals;

constexpr uid_t somebodyElse = 65534;

class WriterLocks : public ::testing::Test {
protected:
    WriterLocks() : folder_(std::filesystem::path(::testing::TempDir()) / ("writers_" + std::to_string(getpid()))) {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
        std::ofstream(file_) << "old";
    }
    ~WriterLocks() override { std::filesystem::remove_all(folder_); }

    struct stat statusOfLock() const {
        struct stat status {};
        EXPECT_EQ(lstat(lockFile_.c_str(), &status), 0);
        return status;
    }

    /** What keeps a writer away who does not wait. */
    std::string refusal() const { return WriterLock(file_, 0ms).reason(); }

    std::string text() const {
        std::ifstream stream(file_);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    const std::filesystem::path folder_;
    const std::filesystem::path file_ = folder_ / "fleet.json";
    const std::filesystem::path lockFile_ = folder_ / "fleet.json.lock";
    const std::filesystem::path unfinished_ = folder_ / "fleet.json.unfinished";
};

TEST_F(WriterLocks, TheLockFileIsItsOwnersAloneAndStays) {
    const mode_t before = umask(0);
    EXPECT_TRUE(WriterLock(file_).isHeld());
    umask(before);
    EXPECT_EQ(statusOfLock().st_mode & 07777, 0600U);
    EXPECT_TRUE(WriterLock(file_).isHeld());
}

TEST_F(WriterLocks, AProcessThatLocksTheFolderOrTheFileDelaysNobody) {
    const int folder = open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const int file = open(file_.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(folder, LOCK_EX), 0);
    ASSERT_EQ(flock(file, LOCK_EX), 0);
    EXPECT_EQ(refusal(), "");
    close(folder);
    close(file);
}

TEST_F(WriterLocks, ASecondWriterFailsWhileAnotherIsAtWork) {
    const WriterLock first(file_);
    const WriterLock second(file_, 30ms);
    EXPECT_FALSE(second.isHeld());
    EXPECT_TRUE(second.isBusy());
    EXPECT_EQ(second.reason(),
              file_.string() + ": somebody else is changing it, and has held fleet.json.lock for 30 ms");
}

TEST_F(WriterLocks, AWriterThatIsKilledHoldsNothing) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t writer = fork();
    if (writer == 0) {
        const WriterLock held(file_);
        if (write(ready[1], "x", 1) == 1) pause();
        _exit(0);
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_NE(refusal(), "");
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
    EXPECT_EQ(refusal(), "");
    close(ready[0]);
    close(ready[1]);
}

TEST_F(WriterLocks, ALockFileThatWasRemovedUnderItsHolderCountsForNobodyElse) {
    const WriterLock first(file_);
    std::filesystem::remove(lockFile_);
    const WriterLock second(file_, 0ms);
    EXPECT_TRUE(second.isHeld()) << second.reason();
    EXPECT_NE(refusal(), "");
}

TEST_F(WriterLocks, ALockFileThatOthersCouldOpenIsClosedToThem) {
    std::ofstream(lockFile_) << "";
    chmod(lockFile_.c_str(), 0666);
    EXPECT_EQ(refusal(), "");
    EXPECT_EQ(statusOfLock().st_mode & 07777, 0600U);
}

TEST_F(WriterLocks, ALinkIsNotFollowed) {
    std::ofstream(folder_ / "victim") << "";
    chmod((folder_ / "victim").c_str(), 0644);
    std::filesystem::create_symlink("victim", lockFile_);
    EXPECT_EQ(refusal(), lockFile_.string() + ": it is a symbolic link; remove it");
    std::filesystem::remove(lockFile_);
    std::filesystem::create_hard_link(folder_ / "victim", lockFile_);
    EXPECT_EQ(refusal(), lockFile_.string() + ": it has other names, so it is no lock file; remove it");
    EXPECT_EQ(statusOfLock().st_mode & 07777, 0644U);
}

TEST_F(WriterLocks, AFifoOrAFolderIsNamedAndDelaysNobody) {
    ASSERT_EQ(mkfifo(lockFile_.c_str(), 0600), 0);
    EXPECT_EQ(refusal(), lockFile_.string() + ": it is no regular file; remove it");
    std::filesystem::remove(lockFile_);
    std::filesystem::create_directory(lockFile_);
    EXPECT_EQ(refusal(), lockFile_.string() + ": Is a directory");
}

TEST_F(WriterLocks, AFileOrAFolderThatIsNotThereIsNamed) {
    std::filesystem::remove(file_);
    EXPECT_EQ(refusal(), file_.string() + ": No such file or directory");
}

/** Needs the rights to give files away, and to give up one's own. */
class WriterLocksOfTwoUsers : public WriterLocks {
protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "only root can act for two users";
    }

    /** The refusal that another user gets. */
    std::string refusalOfSomebodyElse() const {
        EXPECT_EQ(seteuid(somebodyElse), 0);
        const auto reason = refusal();
        EXPECT_EQ(seteuid(0), 0);
        return reason;
    }
};

TEST_F(WriterLocksOfTwoUsers, ALockFileOfSomebodyElseIsRefused) {
    std::ofstream(lockFile_) << "";
    ASSERT_EQ(chown(lockFile_.c_str(), somebodyElse, somebodyElse), 0);
    EXPECT_EQ(refusal(), lockFile_.string() + ": it belongs to user 65534, who could hold it for ever; remove it");
}

TEST_F(WriterLocksOfTwoUsers, AnAdministratorLeavesTheLockToTheFilesOwner) {
    ASSERT_EQ(chown(file_.c_str(), somebodyElse, somebodyElse), 0);
    EXPECT_EQ(refusal(), "");
    EXPECT_EQ(statusOfLock().st_uid, somebodyElse);
    EXPECT_EQ(refusalOfSomebodyElse(), "");
}

TEST_F(WriterLocksOfTwoUsers, AFolderThatMayNotBeWrittenIsReported) {
    EXPECT_EQ(refusalOfSomebodyElse(), lockFile_.string() + ": Permission denied");
}

class WholeFiles : public WriterLocks {};

TEST_F(WholeFiles, AnUnfinishedFileIsRemoved) {
    std::ofstream(unfinished_) << "par";
    removeUnfinished(file_);
    EXPECT_FALSE(std::filesystem::exists(unfinished_));
}

TEST_F(WholeFiles, AnUnfinishedFileOfAWriterAtWorkStays) {
    std::ofstream(unfinished_) << "par";
    const WriterLock atWork(file_);
    removeUnfinished(file_);
    EXPECT_TRUE(std::filesystem::exists(unfinished_));
}

TEST_F(WholeFiles, FifosAndLinksInTheirPlaceAreReplaced) {
    ASSERT_EQ(mkfifo(unfinished_.c_str(), 0666), 0);
    EXPECT_EQ(replaceWholeFile(file_, "new").value_or(""), "");
    std::ofstream(folder_ / "victim") << "victim";
    std::filesystem::create_hard_link(folder_ / "victim", unfinished_);
    EXPECT_EQ(replaceWholeFile(file_, "newer").value_or(""), "");
    EXPECT_EQ(text(), "newer");
    EXPECT_EQ(std::filesystem::file_size(folder_ / "victim"), 6U);
}

} // namespace

} // namespace tavik::fleet
