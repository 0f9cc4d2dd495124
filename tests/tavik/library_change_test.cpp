#include <atomic>
#include <functional>
#include <optional>
#include <thread>
#include <tuple>

#include <sys/resource.h>
#include <sys/stat.h>

#include "library_fixture.h"
#include "tavik/status.h"
#include "tests/becomes_true.h"

namespace tavik {

namespace {

using tests::becomesTrue;

/** A card with two ports: storage handles 1 and 2 with device numbers 41 and 42, an Ethernet function eth0. */
std::string fleetWith(const std::string& firstState, const std::string& secondState, const std::string& linkState) {
    return R"({"cards": [{"serialNumber": "MC1", "ports": [
        {"storage": {"deviceNumber": 41, "portName": "21:00:02:00:00:00:01:01", "state": ")" +
           firstState + R"("}, "ethernet": {"linkState": ")" + linkState + R"("}},
        {"storage": {"deviceNumber": 42, "portName": "21:00:02:00:00:00:01:02", "state": ")" +
           secondState + R"("}}]}]})";
}

const std::string healthy = fleetWith("operational", "operational", "up");
const std::string exchanged = R"({"cards": [{"serialNumber": "MC2", "ports": [{"storage": {"deviceNumber": 41}}]}]})";
const std::string bad = R"({"cards": [{"ports": [{"storage": {"speed": 5}}]}]})";
const std::string badMessage =
    "/cards/0/ports/0/storage/speed: expected one of 1, 2, 4, 8, 10, 16 or \"auto\", found 5";

/** What the callback was told. Callbacks are plain functions, so it is one for all tests. */
struct ToldAlarms {
    using Alarm = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, std::string>;

    std::size_t count() {
        const std::lock_guard lock(mutex);
        return alarms.size();
    }

    std::mutex mutex;
    std::vector<Alarm> alarms;
    std::function<void()> inCallback;
    std::thread::id thread;
};

ToldAlarms told;

int takeAlarm(std::uint32_t deviceNumber, std::uint32_t type, std::uint32_t parameter, const char* text) {
    std::function<void()> inCallback;
    {
        const std::lock_guard lock(told.mutex);
        inCallback = told.inCallback;
    }
    if (inCallback) inCallback();
    const std::lock_guard lock(told.mutex);
    told.thread = std::this_thread::get_id();
    told.alarms.emplace_back(deviceNumber, type, parameter, text);
    return 0;
}

class LibraryChange : public test::LibraryTest {
protected:
    LibraryChange() {
        const std::lock_guard lock(told.mutex);
        told.alarms.clear();
        told.inCallback = nullptr;
    }

    void startWithCallback(const std::string& text) {
        start(text);
        ASSERT_EQ(library.RegisterAlarmNotificationCallback(takeAlarm), 0U);
    }

    bool alarmsCome(std::size_t count) {
        return becomesTrue([count] { return told.count() >= count; });
    }
};

TEST_F(LibraryChange, NothingHasChangedAfterTheStart) {
    start(healthy);
    EXPECT_EQ(library.DidConfigChange(), 0U);
}

TEST_F(LibraryChange, ALinkThatGoesDownIsSeenAtOnce) {
    start(healthy);
    EXPECT_EQ(linkState("eth0"), 1U);
    replaceFleet(fleetWith("operational", "operational", "down"));
    EXPECT_TRUE(becomesTrue([this] { return linkState("eth0") == 2; }));
    EXPECT_EQ(+port()->protocols->first->next->nic.port.link.state, 1U) << "the tree stands until the swap";
}

TEST_F(LibraryChange, AFileWrittenInPlaceIsSeen) {
    start(healthy);
    std::ofstream(file_) << fleetWith("operational", "operational", "down");
    EXPECT_TRUE(becomesTrue([this] { return linkState("eth0") == 2; }));
}

TEST_F(LibraryChange, AFileBehindALinkIsSeen) {
    const auto real = folder_ / "elsewhere" / "real.json";
    std::filesystem::create_directories(real.parent_path());
    std::ofstream(real) << healthy;
    std::filesystem::create_symlink(real, file_);
    ASSERT_EQ(library.Initialize(0, 0), 0U);
    std::ofstream(real) << fleetWith("operational", "operational", "down");
    EXPECT_TRUE(becomesTrue([this] { return linkState("eth0") == 2; })) << "nobody tells about the folder of the link";
}

// A refresh would rebuild the lists that a poll compares with, and swallow what it is to tell.
TEST_F(LibraryChange, StatesAloneAreLeftToPollsAndAlarms) {
    startWithCallback(healthy);
    replaceFleet(fleetWith("operational", "loopDown", "down"));
    ASSERT_TRUE(becomesTrue([this] { return linkState("eth0") == 2; }));
    ASSERT_TRUE(alarmsCome(1));
    EXPECT_EQ(library.DidConfigChange(), 0U);
}

TEST_F(LibraryChange, AChangeIsToldUntilItIsReset) {
    start(healthy);
    replaceFleet(exchanged);
    ASSERT_TRUE(changes());
    EXPECT_NE(library.DidConfigChange(), 0U);
    EXPECT_EQ(library.ResetConfigChange(), 0U);
    EXPECT_EQ(library.DidConfigChange(), 0U);
}

// Pollers ask and reset in two calls, with nothing that keeps writers out in between.
TEST_F(LibraryChange, AChangeBetweenTheQuestionAndTheResetIsToldByTheNextQuestion) {
    start(healthy);
    ASSERT_EQ(library.DidConfigChange(), 0U);
    replaceFleet(exchanged);
    ASSERT_EQ(library.UpdateBackupAdapterList(), 0U) << "reads the file if nobody has yet";
    EXPECT_EQ(library.ResetConfigChange(), 0U);
    EXPECT_NE(library.DidConfigChange(), 0U);
    EXPECT_EQ(library.ResetConfigChange(), 0U);
    EXPECT_EQ(library.DidConfigChange(), 0U);
}

TEST_F(LibraryChange, AResetBeforeAnyQuestionTakesUpWhatHasChangedSoFar) {
    start(healthy);
    replaceFleet(exchanged);
    ASSERT_EQ(library.UpdateBackupAdapterList(), 0U);
    EXPECT_EQ(library.ResetConfigChange(), 0U);
    EXPECT_EQ(library.DidConfigChange(), 0U);
}

TEST_F(LibraryChange, AFileThatSaysTheSameInOtherWordsIsNoChange) {
    start(healthy);
    replaceFleet("\n\n" + healthy);
    ASSERT_EQ(library.UpdateBackupAdapterList(), 0U) << "reads the file if nobody has yet";
    EXPECT_EQ(library.DidConfigChange(), 0U);
    replaceFleet(exchanged);
    ASSERT_EQ(library.UpdateBackupAdapterList(), 0U);
    EXPECT_NE(library.DidConfigChange(), 0U);
}

TEST_F(LibraryChange, APortThatGoesDownRaisesAnAlarm) {
    startWithCallback(healthy);
    replaceFleet(fleetWith("operational", "loopDown", "up"));
    ASSERT_TRUE(alarmsCome(1));
    const std::lock_guard lock(told.mutex);
    ASSERT_EQ(told.alarms.size(), 1U);
    EXPECT_EQ(told.alarms[0],
              ToldAlarms::Alarm(42, 0, 0, "port 21:00:02:00:00:00:01:02 went from operational to loop down"));
    EXPECT_NE(told.thread, std::this_thread::get_id());
}

TEST_F(LibraryChange, EveryChangedPortRaisesItsAlarm) {
    startWithCallback(healthy);
    replaceFleet(fleetWith("suspended", "loopDown", "up"));
    ASSERT_TRUE(alarmsCome(2));
    const std::lock_guard lock(told.mutex);
    EXPECT_EQ(std::get<0>(told.alarms[0]), 41U);
    EXPECT_EQ(std::get<0>(told.alarms[1]), 42U);
}

TEST_F(LibraryChange, APortThatCannotBeReadAnyMoreRaisesAnAlarm) {
    startWithCallback(R"({"cards": [{"ports": [{"storage": {"portName": "21:00:02:00:00:00:01:01"}}]}]})");
    replaceFleet(R"({"cards": [{"ports": [{"storage": {"portName": "21:00:02:00:00:00:01:01",
                                                       "failures": {"portProperty": 9}}}]}]})");
    ASSERT_TRUE(alarmsCome(1));
    const std::lock_guard lock(told.mutex);
    EXPECT_EQ(std::get<3>(told.alarms[0]), "port 21:00:02:00:00:00:01:01 went from operational to unreadable");
}

TEST_F(LibraryChange, AChangedLinkRaisesNoAlarm) {
    startWithCallback(healthy);
    replaceFleet(fleetWith("operational", "operational", "down"));
    ASSERT_TRUE(becomesTrue([this] { return linkState("eth0") == 2; }));
    replaceFleet(fleetWith("operational", "loopDown", "down"));
    ASSERT_TRUE(alarmsCome(1));
    const std::lock_guard lock(told.mutex);
    EXPECT_EQ(std::get<0>(told.alarms[0]), 42U);
}

TEST_F(LibraryChange, ACallbackCanCallTheLibraryAndSeesTheNewState) {
    startWithCallback(healthy);
    std::optional<std::uint8_t> seen;
    {
        const std::lock_guard lock(told.mutex);
        told.inCallback = [&] {
            seen = portState(2);
            library.UpdateBackupAdapterList();
            library.SwapBackupToMainAdapterList();
        };
    }
    replaceFleet(fleetWith("operational", "loopDown", "up"));
    ASSERT_TRUE(alarmsCome(1));
    EXPECT_EQ(seen, 3);
    EXPECT_EQ(+port()->next->protocols->first->storage.device.portProperty.portState, 3);
}

TEST_F(LibraryChange, ACallbackThatWaitsHoldsNobodyElse) {
    startWithCallback(healthy);
    std::atomic<bool> entered = false, leave = false;
    {
        const std::lock_guard lock(told.mutex);
        told.inCallback = [&] {
            entered = true;
            becomesTrue([&] { return leave.load(); });
        };
    }
    replaceFleet(fleetWith("operational", "loopDown", "up"));
    ASSERT_TRUE(becomesTrue([&] { return entered.load(); }));
    EXPECT_EQ(portState(2), 3);
    EXPECT_EQ(library.UpdateBackupAdapterList(), 0U);
    EXPECT_EQ(library.SwapBackupToMainAdapterList(), 0U);
    replaceFleet(fleetWith("operational", "loopDown", "down"));
    EXPECT_TRUE(becomesTrue([this] { return linkState("eth0") == 2; }));
    leave = true;
    EXPECT_TRUE(alarmsCome(1));
}

TEST_F(LibraryChange, ARemovedCallbackIsNotCalledAgain) {
    startWithCallback(healthy);
    EXPECT_EQ(library.UnRegisterAlarmNotificationCallback(takeAlarm), 0U);
    EXPECT_EQ(library.UnRegisterAlarmNotificationCallback(takeAlarm), statusInvalidArgument);
    replaceFleet(fleetWith("operational", "loopDown", "down"));
    ASSERT_TRUE(becomesTrue([this] { return linkState("eth0") == 2; }));
    ASSERT_EQ(library.Uninitialize(), 0U);
    EXPECT_EQ(told.count(), 0U);
}

TEST_F(LibraryChange, ACallbackCanRemoveItselfButNotEndTheLibrary) {
    startWithCallback(healthy);
    std::optional<std::uint32_t> ended, removed;
    {
        const std::lock_guard lock(told.mutex);
        told.inCallback = [&] {
            ended = library.Uninitialize();
            removed = library.UnRegisterAlarmNotificationCallback(takeAlarm);
        };
    }
    replaceFleet(fleetWith("suspended", "loopDown", "up"));
    ASSERT_TRUE(alarmsCome(1));
    ASSERT_EQ(library.Uninitialize(), 0U);
    EXPECT_EQ(ended, statusWrongThread);
    EXPECT_EQ(removed, statusOk);
    EXPECT_EQ(told.count(), 1U);
}

TEST_F(LibraryChange, TheSecondTreeLeavesTheMainOneAloneUntilTheSwap) {
    start(healthy);
    const auto* before = library.GetAdapterList();
    replaceFleet(fleetWith("operational", "operational", "down"));
    ASSERT_EQ(library.UpdateBackupAdapterList(), 0U);
    EXPECT_EQ(library.GetAdapterList(), before);
    EXPECT_EQ(+port()->protocols->first->next->nic.port.link.state, 1U);
    ASSERT_EQ(library.SwapBackupToMainAdapterList(), 0U);
    EXPECT_EQ(+port()->protocols->first->next->nic.port.link.state, 2U);
}

TEST_F(LibraryChange, ASwapWithoutASecondTreeLeavesTheMainOne) {
    start(healthy);
    const auto* before = library.GetAdapterList();
    EXPECT_EQ(library.SwapBackupToMainAdapterList(), statusNoBackup);
    EXPECT_EQ(library.GetAdapterList(), before);
}

TEST_F(LibraryChange, AFileThatTurnsBadKeepsTheLastGoodFleetAndIsReportedOnce) {
    start(healthy);
    test::StandardError error(folder_ / "stderr");
    replaceFleet(bad);
    ASSERT_TRUE(becomesTrue([&] { return error.count(badMessage) == 1; }));
    EXPECT_EQ(library.DidConfigChange(), 0U);
    EXPECT_EQ(portState(1), 1);
    EXPECT_EQ(library.UpdateBackupAdapterList(), 0U);
    EXPECT_EQ(library.SwapBackupToMainAdapterList(), 0U);
    EXPECT_STREQ(library.GetAdapterList()->first->serialNumber, "MC1");
    replaceFleet(bad);
    replaceFleet(exchanged);
    ASSERT_TRUE(changes());
    EXPECT_EQ(error.text(), "tavik: " + file_.string() + ": " + badMessage + "\n");
}

TEST_F(LibraryChange, AFileThatTurnsBadAgainIsReportedAgain) {
    start(healthy);
    test::StandardError error(folder_ / "stderr");
    replaceFleet(bad);
    ASSERT_TRUE(becomesTrue([&] { return error.count(badMessage) == 1; }));
    replaceFleet(exchanged);
    ASSERT_TRUE(changes());
    replaceFleet(bad);
    EXPECT_TRUE(becomesTrue([&] { return error.count(badMessage) == 2; }));
}

TEST_F(LibraryChange, AFileThatGoesAwayAndComesBackIsFollowed) {
    start(healthy);
    test::StandardError error(folder_ / "stderr");
    std::filesystem::remove(file_);
    ASSERT_TRUE(becomesTrue([&] { return error.count("cannot be read: No such file or directory") == 1; }));
    EXPECT_EQ(linkState("eth0"), 1U);
    replaceFleet(fleetWith("operational", "operational", "down"));
    EXPECT_TRUE(becomesTrue([this] { return linkState("eth0") == 2; }));
}

/** Nothing can be opened while it lives; what is open stays usable. */
class NoDescriptors {
public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit none = before_;
        none.rlim_cur = STDERR_FILENO + 1;
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit before_{};
};

/** Needs no descriptor of its own. */
bool somethingIsReported() {
    struct stat written {};
    return fstat(STDERR_FILENO, &written) == 0 && written.st_size > 0;
}

TEST_F(LibraryChange, AChangeThatCouldNotBeReadOnceIsReadLater) {
    start(healthy);
    const auto fresh = folder_ / "fresh.json";
    std::ofstream(fresh) << exchanged;
    test::StandardError error(folder_ / "stderr");
    {
        const NoDescriptors none;
        std::filesystem::rename(fresh, file_);
        ASSERT_TRUE(becomesTrue(somethingIsReported));
    }
    EXPECT_TRUE(changes()) << "the file has not changed again";
    EXPECT_EQ(error.text(), "tavik: " + file_.string() + ": cannot be read: Too many open files\n");
}

TEST_F(LibraryChange, AStartOnABadFileHasNoListUntilTheFileIsGood) {
    replaceFleet(bad);
    test::StandardError error(folder_ / "stderr");
    EXPECT_EQ(library.Initialize(0, 0), statusSourceFailed);
    EXPECT_EQ(library.GetAdapterList(), nullptr);
    EXPECT_EQ(library.UpdateBackupAdapterList(), statusSourceFailed);
    EXPECT_EQ(error.count(badMessage), 1);
    replaceFleet(healthy);
    ASSERT_TRUE(changes());
    ASSERT_EQ(library.UpdateBackupAdapterList(), 0U);
    ASSERT_EQ(library.SwapBackupToMainAdapterList(), 0U);
    EXPECT_STREQ(library.GetAdapterList()->first->serialNumber, "MC1");
}

TEST_F(LibraryChange, CardsThatComeAndGoAreInTheNextTree) {
    start(healthy);
    replaceFleet(R"({"cards": [{"serialNumber": "NEW", "ports": [{"storage": {"handle": 9}}]}]})");
    ASSERT_TRUE(changes());
    EXPECT_EQ(portState(9), 1);
    TAVIK_PortPropertyBlock block{};
    EXPECT_EQ(library.GetHbaDevicePortProperty(1, 0, &block), statusNoSuchDevice);
    library.UpdateBackupAdapterList();
    library.SwapBackupToMainAdapterList();
    EXPECT_STREQ(library.GetAdapterList()->first->serialNumber, "NEW");
    EXPECT_EQ(+library.GetAdapterList()->first->next, nullptr);
}

} // namespace

} // namespace tavik
