#include "tavik/alarm_dispatcher.h"

#include <atomic>
#include <future>
#include <string>

#include <gtest/gtest.h>

namespace tavik {

namespace {

struct Heard {
    std::mutex mutex;
    std::condition_variable more;
    std::vector<std::uint32_t> devices;

    void clear() {
        const std::lock_guard lock(mutex);
        devices.clear();
    }
    void add(std::uint32_t device) {
        const std::lock_guard lock(mutex);
        devices.push_back(device);
        more.notify_all();
    }
    bool waitFor(std::size_t count) {
        std::unique_lock lock(mutex);
        return more.wait_for(lock, std::chrono::seconds(20), [&] { return devices.size() >= count; });
    }
};

Heard first, second;
std::promise<void> entered;
std::shared_future<void> mayLeave;

int hearFirst(std::uint32_t device, std::uint32_t, std::uint32_t, const char*) {
    first.add(device);
    return 0;
}

int hearSecond(std::uint32_t device, std::uint32_t, std::uint32_t, const char*) {
    second.add(device);
    return 0;
}

constexpr std::uint16_t deviceToWaitAt = 1;

int waitInside(std::uint32_t device, std::uint32_t, std::uint32_t, const char*) {
    if (device == deviceToWaitAt) {
        entered.set_value();
        mayLeave.wait();
    }
    first.add(device);
    return 0;
}

class AlarmDispatcherTest : public ::testing::Test {
protected:
    AlarmDispatcherTest() {
        first.clear();
        second.clear();
        entered = std::promise<void>();
    }
};

TEST_F(AlarmDispatcherTest, AlarmsArriveInTheirOrder) {
    AlarmDispatcher dispatcher;
    dispatcher.add(hearFirst);
    for (std::uint16_t device = 0; device < 100; ++device)
        dispatcher.push({device, "text"});
    ASSERT_TRUE(first.waitFor(100));
    for (std::uint32_t device = 0; device < 100; ++device)
        EXPECT_EQ(first.devices[device], device);
}

TEST_F(AlarmDispatcherTest, EveryCallbackHearsAnAlarmOnce) {
    AlarmDispatcher dispatcher;
    dispatcher.add(hearFirst);
    dispatcher.add(hearSecond);
    dispatcher.add(hearFirst);
    dispatcher.push({7, "text"});
    ASSERT_TRUE(second.waitFor(1));
    dispatcher.stop();
    EXPECT_EQ(first.devices, std::vector<std::uint32_t>{7});
    EXPECT_EQ(second.devices, std::vector<std::uint32_t>{7});
}

TEST_F(AlarmDispatcherTest, AnAlarmFromBeforeTheCallbackIsNotTold) {
    AlarmDispatcher dispatcher;
    dispatcher.push({1, "before"});
    dispatcher.add(hearFirst);
    dispatcher.push({2, "after"});
    ASSERT_TRUE(first.waitFor(1));
    EXPECT_EQ(first.devices, std::vector<std::uint32_t>{2});
}

TEST_F(AlarmDispatcherTest, RemovingWaitsForTheCallbackThatRuns) {
    std::promise<void> leave;
    mayLeave = leave.get_future().share();
    AlarmDispatcher dispatcher;
    dispatcher.add(waitInside);
    dispatcher.push({deviceToWaitAt, "text"});
    entered.get_future().wait();
    auto removal = std::async(std::launch::async, [&] { return dispatcher.remove(waitInside); });
    EXPECT_EQ(removal.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    leave.set_value();
    EXPECT_EQ(removal.get(), statusOk);
    EXPECT_EQ(first.devices, std::vector<std::uint32_t>{deviceToWaitAt});
}

TEST_F(AlarmDispatcherTest, RemovingAnUnknownCallbackIsAnError) {
    AlarmDispatcher dispatcher;
    EXPECT_EQ(dispatcher.remove(hearFirst), statusInvalidArgument);
}

TEST_F(AlarmDispatcherTest, AStoppedDispatcherTellsNothing) {
    AlarmDispatcher dispatcher;
    dispatcher.add(hearFirst);
    dispatcher.stop();
    dispatcher.push({7, "text"});
    EXPECT_TRUE(first.devices.empty());
}

TEST_F(AlarmDispatcherTest, AFullQueueDropsTheOldestAlarms) {
    std::promise<void> leave;
    mayLeave = leave.get_future().share();
    AlarmDispatcher dispatcher;
    dispatcher.add(waitInside);
    dispatcher.push({deviceToWaitAt, "running"});
    entered.get_future().wait();
    for (std::size_t i = 0; i < AlarmDispatcher::longestQueue; ++i)
        dispatcher.push({2, "dropped"});
    for (std::size_t i = 0; i < AlarmDispatcher::longestQueue; ++i)
        dispatcher.push({3, "kept"});
    leave.set_value();
    ASSERT_TRUE(first.waitFor(1 + AlarmDispatcher::longestQueue));
    dispatcher.stop();
    std::vector<std::uint32_t> expected(1 + AlarmDispatcher::longestQueue, 3);
    expected[0] = deviceToWaitAt;
    EXPECT_EQ(first.devices, expected);
}

} // namespace

} // namespace tavik
