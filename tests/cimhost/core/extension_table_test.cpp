#include "broker_fixture.h"

#include "tests/becomes_true.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <thread>

using tests::becomesTrue;

namespace {

class ExtensionTable : public BrokerTest {
protected:
    ExtensionTable() : xft(*cmpi->xft) {}

    const CMPIBrokerExtFT& xft;
};

void* addOne(void* number) {
    ++*static_cast<std::atomic<int>*>(number);
    return number;
}

timespec inMilliseconds(long milliseconds) {
    timespec until{};
    clock_gettime(CLOCK_REALTIME, &until);
    const long nanoseconds = until.tv_nsec + milliseconds % 1000 * 1000000;
    until.tv_sec += milliseconds / 1000 + nanoseconds / 1000000000;
    until.tv_nsec = nanoseconds % 1000000000;
    return until;
}

} // namespace

TEST_F(ExtensionTable, AThreadRunsAndIsJoinedWithItsResult) {
    std::atomic<int> number = 0;
    void* thread = xft.newThread(addOne, &number, 0);
    ASSERT_NE(thread, nullptr);
    void* result = nullptr;
    EXPECT_EQ(xft.joinThread(thread, &result), 0);
    EXPECT_EQ(result, &number);
    EXPECT_EQ(number, 1);
    EXPECT_EQ(xft.joinThread(thread, nullptr), ESRCH) << "joined once";
    EXPECT_EQ(broker->runningThreads(), 0U);
}

TEST_F(ExtensionTable, AResultNeedNotBeTaken) {
    std::atomic<int> number = 0;
    EXPECT_EQ(xft.joinThread(xft.newThread(addOne, &number, 2), nullptr), 0) << "only 1 means detached";
    EXPECT_EQ(number, 1);
}

TEST_F(ExtensionTable, ADetachedThreadCannotBeJoined) {
    std::atomic<int> gate = 0;
    const auto waitForGate = [](void* argument) -> void* {
        EXPECT_TRUE(becomesTrue([&] { return *static_cast<std::atomic<int>*>(argument) != 0; }));
        return nullptr;
    };
    void* thread = xft.newThread(waitForGate, &gate, 1);
    ASSERT_NE(thread, nullptr);
    EXPECT_EQ(broker->runningThreads(), 1U);
    EXPECT_EQ(xft.joinThread(thread, nullptr), ESRCH);
    gate = 1;
    EXPECT_TRUE(becomesTrue([&] { return broker->runningThreads() == 0; }));
}

TEST_F(ExtensionTable, AThreadOfAnotherBrokerCannotBeJoined) {
    cimhost::Broker other(classes);
    void* mutex = xft.newMutex(0);
    xft.lockMutex(mutex);
    struct Shared {
        const CMPIBrokerExtFT* xft;
        void* mutex;
    } shared{&xft, mutex};
    void* thread = xft.newThread(
        [](void* argument) -> void* {
            const auto* both = static_cast<const Shared*>(argument);
            both->xft->lockMutex(both->mutex);
            both->xft->unlockMutex(both->mutex);
            return nullptr;
        },
        &shared, 0);
    EXPECT_EQ(broker->runningThreads(), 1U);
    EXPECT_EQ(other.runningThreads(), 0U);
    xft.unlockMutex(mutex);
    EXPECT_EQ(xft.joinThread(thread, nullptr), 0);
    xft.destroyMutex(mutex);
}

TEST_F(ExtensionTable, AThreadCannotJoinItselfOrBeJoinedTwiceAtOnce) {
    struct Shared {
        const CMPIBrokerExtFT* xft;
        std::atomic<void*> self = nullptr;
        std::atomic<int> selfJoin = -1;
        std::atomic<bool> mayEnd = false;
    } shared{.xft = &xft};
    shared.self = xft.newThread(
        [](void* argument) -> void* {
            auto* all = static_cast<Shared*>(argument);
            EXPECT_TRUE(becomesTrue([&] { return all->self != nullptr; }));
            all->selfJoin = all->xft->joinThread(all->self, nullptr);
            EXPECT_TRUE(becomesTrue([&] { return all->mayEnd.load(); }));
            return nullptr;
        },
        &shared, 0);
    EXPECT_TRUE(becomesTrue([&] { return shared.selfJoin != -1; }));
    EXPECT_EQ(shared.selfJoin, EDEADLK);
    std::atomic<int> joined = 0;
    std::atomic<int> refused = 0;
    std::vector<std::thread> waiting;
    for (int count = 0; count < 3; ++count) {
        waiting.emplace_back([&] { xft.joinThread(shared.self, nullptr) == 0 ? ++joined : ++refused; });
    }
    EXPECT_TRUE(becomesTrue([&] { return refused == 2; }));
    shared.mayEnd = true;
    for (std::thread& thread : waiting)
        thread.join();
    EXPECT_EQ(joined, 1);
    EXPECT_EQ(refused, 2);
}

TEST_F(ExtensionTable, ThreadsAndJoinsWithoutAttachmentAreCounted) {
    std::atomic<int> number = 0;
    std::thread([&] {
        void* thread = xft.newThread(addOne, &number, 0);
        EXPECT_EQ(xft.joinThread(thread, nullptr), 0);
    }).join();
    EXPECT_EQ(number, 1);
    EXPECT_EQ(broker->fatalUnattachedCalls(), 2U);
}

TEST_F(ExtensionTable, UnknownThreadsAreRefused) {
    EXPECT_EQ(xft.newThread(nullptr, nullptr, 0), nullptr);
    int number = 0;
    EXPECT_EQ(xft.joinThread(&number, nullptr), ESRCH);
    EXPECT_EQ(xft.joinThread(nullptr, nullptr), ESRCH);
}

TEST_F(ExtensionTable, ThreadsCannotBeEndedFromOutside) {
    EXPECT_EQ(xft.exitThread, nullptr);
    EXPECT_EQ(xft.cancelThread, nullptr);
}

TEST_F(ExtensionTable, SleepTakesMilliseconds) {
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(xft.threadSleep(20), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(20));
}

TEST_F(ExtensionTable, AOnceFunctionRunsOnce) {
    static std::atomic<int> calls = 0;
    static int once = 0;
    calls = 0;
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count) {
        threads.emplace_back([&] { EXPECT_EQ(xft.threadOnce(&once, [] { ++calls; }), 0); });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(xft.threadOnce(nullptr, [] {}), EINVAL);
    EXPECT_EQ(xft.threadOnce(&once, nullptr), EINVAL);
}

TEST_F(ExtensionTable, AKeyHoldsAValueForEachThreadAndCleansUp) {
    static std::atomic<int> cleaned = 0;
    cleaned = 0;
    CMPI_THREAD_KEY_TYPE key = 0;
    ASSERT_EQ(xft.createThreadKey(&key, [](void*) { ++cleaned; }), 0);
    EXPECT_EQ(xft.getThreadSpecific(key), nullptr);
    int mine = 0;
    int others = 0;
    EXPECT_EQ(xft.setThreadSpecific(key, &mine), 0);
    std::thread([&] {
        EXPECT_EQ(xft.getThreadSpecific(key), nullptr);
        EXPECT_EQ(xft.setThreadSpecific(key, &others), 0);
        EXPECT_EQ(xft.getThreadSpecific(key), &others);
    }).join();
    EXPECT_EQ(cleaned, 1);
    EXPECT_EQ(xft.getThreadSpecific(key), &mine);
    EXPECT_EQ(xft.destroyThreadKey(key), 0);
    EXPECT_EQ(xft.createThreadKey(nullptr, nullptr), EINVAL);
}

TEST_F(ExtensionTable, AMutexIsRecursiveAndKeepsOthersOut) {
    void* mutex = xft.newMutex(0);
    ASSERT_NE(mutex, nullptr);
    int number = 0;
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count) {
        threads.emplace_back([&] {
            for (int round = 0; round < 1000; ++round) {
                xft.lockMutex(mutex);
                xft.lockMutex(mutex);
                ++number;
                xft.unlockMutex(mutex);
                xft.unlockMutex(mutex);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(number, 4000);
    xft.destroyMutex(mutex);
    xft.destroyMutex(nullptr);
}

TEST_F(ExtensionTable, AConditionWakesItsWaiter) {
    void* mutex = xft.newMutex(0);
    void* condition = xft.newCondition(0);
    ASSERT_NE(condition, nullptr);
    bool isReady = false;
    std::thread waiter([&] {
        xft.lockMutex(mutex);
        while (!isReady)
            EXPECT_EQ(xft.condWait(condition, mutex), 0);
        xft.unlockMutex(mutex);
    });
    xft.lockMutex(mutex);
    isReady = true;
    xft.unlockMutex(mutex);
    EXPECT_EQ(xft.signalCondition(condition), 0);
    waiter.join();
    xft.destroyCondition(condition);
    xft.destroyCondition(nullptr);
    xft.destroyMutex(mutex);
}

TEST_F(ExtensionTable, ATimedWaitEndsAtItsTimeOrWithItsSignal) {
    void* mutex = xft.newMutex(0);
    void* condition = xft.newCondition(0);
    xft.lockMutex(mutex);
    timespec soon = inMilliseconds(20);
    EXPECT_EQ(xft.timedCondWait(condition, mutex, &soon), ETIMEDOUT);
    bool isReady = false;
    std::thread signaller([&] {
        xft.lockMutex(mutex);
        isReady = true;
        xft.unlockMutex(mutex);
        xft.signalCondition(condition);
    });
    timespec late = inMilliseconds(20000);
    int code = 0;
    while (!isReady && code == 0)
        code = xft.timedCondWait(condition, mutex, &late);
    EXPECT_EQ(code, 0);
    xft.unlockMutex(mutex);
    signaller.join();
    xft.destroyCondition(condition);
    xft.destroyMutex(mutex);
}

TEST_F(ExtensionTable, AFileNameIsTakenAsItIs) {
    EXPECT_STREQ(xft.resolveFileName("name.so"), "name.so");
    EXPECT_EQ(xft.resolveFileName(nullptr), nullptr);
}
