// Who shares a look at the adapters, and who does not wait for one that hangs.
#include "cimhost/metrics/readings.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace cimhost::metrics {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 60s; // of what is not to end by itself

class NoMetrics final : public Reading {
public:
    void write(Exposition&) const override {}
};

/// A look at the adapters that lasts until it is let go.
class Gate {
public:
    SharedReading pass() {
        std::unique_lock lock(mutex);
        ++looks;
        changed.notify_all();
        changed.wait(lock, [this] { return isOpen; });
        return std::make_shared<NoMetrics>();
    }
    void waitForLooks(int count) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return looks >= count; });
    }
    void open() {
        const std::lock_guard lock(mutex);
        isOpen = true;
        changed.notify_all();
    }
    int count() {
        const std::lock_guard lock(mutex);
        return looks;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    int looks = 0;
    bool isOpen = false;
};

std::future<SharedReading> ask(Readings& readings, std::chrono::milliseconds limit) {
    const auto answer = std::make_shared<std::promise<SharedReading>>();
    readings.ask(limit, [answer](const SharedReading& reading) { answer->set_value(reading); });
    return answer->get_future();
}

TEST(Readings, AreSharedByRequestsThatComeTogether) {
    Gate gate;
    Readings readings([&] { return gate.pass(); });
    std::vector<std::future<SharedReading>> answers;
    answers.push_back(ask(readings, patience));
    gate.waitForLooks(1);
    for (int asker = 0; asker < 5; ++asker)
        answers.push_back(ask(readings, patience));
    gate.open();
    const SharedReading first = answers[0].get();
    ASSERT_TRUE(first);
    for (std::size_t asker = 1; asker < answers.size(); ++asker)
        EXPECT_EQ(answers[asker].get(), first);
    EXPECT_EQ(gate.count(), 1);
}

TEST(Readings, AreNewForALaterRequest) {
    Gate gate;
    gate.open();
    Readings readings([&] { return gate.pass(); });
    EXPECT_TRUE(ask(readings, patience).get());
    EXPECT_TRUE(ask(readings, patience).get());
    EXPECT_EQ(gate.count(), 2);
}

TEST(Readings, AreWaitedForUntilTheDeadline) {
    Gate gate;
    Readings readings([&] { return gate.pass(); });
    EXPECT_FALSE(ask(readings, 50ms).get());
    // By now the look has lasted longer than this one would wait.
    EXPECT_FALSE(ask(readings, 50ms).get());
    EXPECT_FALSE(readings.isAwaited());
    EXPECT_EQ(gate.count(), 1);
    gate.open();
}

TEST(Readings, ComeBackOnceTheAdaptersAnswerAgain) {
    Gate gate;
    Readings readings([&] { return gate.pass(); });
    EXPECT_FALSE(ask(readings, 50ms).get());
    gate.open();
    EXPECT_TRUE(ask(readings, patience).get());
}

TEST(Readings, ThatFailGiveNoAnswer) {
    Readings readings([]() -> SharedReading { throw std::runtime_error("no adapters"); });
    EXPECT_FALSE(ask(readings, patience).get());
    EXPECT_FALSE(ask(readings, patience).get());
}

TEST(Readings, EndForAllWhenTheyStop) {
    Gate gate;
    Readings readings([&] { return gate.pass(); });
    auto waiting = ask(readings, patience);
    gate.waitForLooks(1);
    readings.stop();
    EXPECT_FALSE(waiting.get());
    EXPECT_FALSE(ask(readings, patience).get());
    gate.open();
}

} // namespace
} // namespace cimhost::metrics
