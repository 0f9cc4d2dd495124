// Calls that hang, that nobody waits for any more, and that must not meet.
#include "cimhost/service/call_queue.h"
#include "tests/becomes_true.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace std::chrono_literals;
using testing::HasSubstr;
using tests::becomesTrue;

namespace cimhost {
namespace {

// Hangs until it is released; remembers what became of it.
class TestCall final : public QueuedCall {
public:
    explicit TestCall(std::string kindOfCall = "") : kind(std::move(kindOfCall)) {}

    void carryOut() override {
        thread = std::this_thread::get_id();
        hasBegun = true;
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return isReleased; });
        hasEnded = true;
    }
    void giveAnswer() override {
        if (onAnswer) onAnswer();
        isTold = true;
    }
    void answerInstead(const std::string& reason) override {
        const std::lock_guard lock(mutex);
        said = reason;
    }
    bool isAwaited() const override { return hasClient; }
    std::string_view aloneAs() const override { return kind; }

    void release() {
        const std::lock_guard lock(mutex);
        isReleased = true;
        changed.notify_all();
    }
    std::string answer() {
        const std::lock_guard lock(mutex);
        return said;
    }
    bool isAnswered() { return !answer().empty(); }

    std::atomic<bool> hasBegun = false;
    std::atomic<bool> hasEnded = false;
    std::atomic<bool> isTold = false;
    std::atomic<bool> hasClient = true;
    std::function<void()> onAnswer; // set before it is submitted
    std::thread::id thread;         // known once it has begun

private:
    const std::string kind;
    std::mutex mutex;
    std::condition_variable changed;
    bool isReleased = false;
    std::string said;
};

class CallQueueTest : public testing::Test {
protected:
    ~CallQueueTest() override {
        for (const auto& call : calls)
            call->release();
    }

    void open(std::size_t workers, std::chrono::milliseconds deadline, std::size_t mostOverdue = 32) {
        queue = std::make_unique<CallQueue>(CallQueueOptions{workers, deadline, mostOverdue});
    }
    TestCall& submit(const std::string& kind = "") {
        calls.push_back(std::make_shared<TestCall>(kind));
        queue->submit(calls.back());
        return *calls.back();
    }
    /// A message that turns out to be a call.
    TestCall& post() {
        calls.push_back(std::make_shared<TestCall>());
        queue->post([this, call = calls.back()] { queue->submitHere(call); });
        return *calls.back();
    }
    /// Whether what is posted now is done.
    bool doesWork() {
        const auto isDone = std::make_shared<std::atomic<bool>>(false);
        queue->post([isDone] { *isDone = true; });
        return becomesTrue([&] { return isDone->load(); });
    }
    TestCall& begun(const std::string& kind = "") {
        TestCall& call = submit(kind);
        EXPECT_TRUE(becomesTrue([&] { return call.hasBegun.load(); }));
        return call;
    }
    /// Tries again where the machine is so busy that the deadline comes before the call's turn.
    TestCall& begunWithinDeadline() {
        TestCall* call = &submit();
        EXPECT_TRUE(becomesTrue([&] {
            if (!call->hasBegun && call->isAnswered()) call = &submit();
            return call->hasBegun.load();
        }));
        return *call;
    }

    std::unique_ptr<CallQueue> queue;
    std::vector<std::shared_ptr<TestCall>> calls; // let go before the queue waits for them
};

TEST_F(CallQueueTest, AsManyCallsAsWorkersRunAtTheSameTime) {
    open(2, 1h);
    TestCall& first = begun();
    begun();
    TestCall& third = submit();
    std::this_thread::sleep_for(20ms);
    EXPECT_FALSE(third.hasBegun);
    first.release();
    EXPECT_TRUE(becomesTrue([&] { return third.hasBegun.load(); }));
}

TEST_F(CallQueueTest, ACallThatHangsIsAnsweredAtItsDeadlineAndGivesItsPlaceToOthers) {
    open(1, 50ms);
    TestCall& hanging = begunWithinDeadline();
    EXPECT_TRUE(becomesTrue([&] { return hanging.isAnswered(); }));
    EXPECT_THAT(hanging.answer(), HasSubstr("no answer of the provider within 50 milliseconds"));
    TestCall& next = begunWithinDeadline();
    next.release();
    EXPECT_TRUE(becomesTrue([&] { return next.hasEnded.load(); }));
    EXPECT_FALSE(hanging.hasEnded);
}

TEST_F(CallQueueTest, CallsThatHangAreBounded) {
    open(1, 500ms, 2);
    TestCall& first = begunWithinDeadline();
    begunWithinDeadline();
    begunWithinDeadline();
    TestCall& next = submit();
    EXPECT_TRUE(becomesTrue([&] { return next.isAnswered(); }));
    EXPECT_THAT(next.answer(), HasSubstr("not begun within 500 milliseconds, nothing was done"));
    EXPECT_FALSE(next.hasBegun);
    first.release();
    EXPECT_TRUE(becomesTrue([&] { return first.hasEnded.load(); }));
    begunWithinDeadline();
}

TEST_F(CallQueueTest, ACallWhoseClientHasLeftIsNotBegun) {
    open(1, 1h);
    TestCall& first = begun();
    TestCall& left = submit();
    TestCall& patient = submit();
    left.hasClient = false;
    EXPECT_TRUE(becomesTrue([&] { return left.isAnswered(); }));
    first.release();
    EXPECT_TRUE(becomesTrue([&] { return patient.hasBegun.load(); }));
    EXPECT_FALSE(left.hasBegun);
}

TEST_F(CallQueueTest, ASecondExclusiveCallIsRefusedAtOnce) {
    open(4, 1h);
    TestCall& first = begun("flash update");
    TestCall& second = submit("flash update");
    EXPECT_EQ(second.answer(), "a flash update is under way already, nothing was done: try again when that has ended");
    EXPECT_FALSE(second.hasBegun);
    begun("other");
    begun();
    first.release();
    EXPECT_TRUE(becomesTrue([&] { return !submit("flash update").isAnswered(); }));
}

TEST_F(CallQueueTest, AnExclusiveCallMayFollowTheAnswerOfAnother) {
    open(4, 1h);
    const auto first = std::make_shared<TestCall>("flash update");
    const auto next = std::make_shared<TestCall>("flash update");
    calls = {first, next};
    first->onAnswer = [&] { queue->submit(next); };
    first->release();
    queue->submit(first);
    EXPECT_TRUE(becomesTrue([&] { return first->isTold.load(); }));
    EXPECT_EQ(next->answer(), "");
    EXPECT_TRUE(becomesTrue([&] { return next->hasBegun.load(); }));
}

TEST_F(CallQueueTest, AnExclusiveCallHasNoDeadlineOnceItHasBegun) {
    open(2, 50ms);
    TestCall& update = begun("flash update");
    TestCall& other = begun();
    EXPECT_TRUE(becomesTrue([&] { return other.isAnswered(); }));
    EXPECT_FALSE(update.isAnswered());
}

TEST_F(CallQueueTest, AStopRefusesQueuedCalls) {
    open(1, 1h);
    TestCall& first = begun();
    TestCall& second = submit();
    queue->stop();
    EXPECT_EQ(second.answer(), "the server is being stopped, nothing was done");
    EXPECT_EQ(submit().answer(), "the server is being stopped, nothing was done");
    first.release();
    queue->finish();
    EXPECT_TRUE(first.hasEnded);
    EXPECT_FALSE(first.isAnswered());
    EXPECT_FALSE(second.hasBegun);
}

TEST_F(CallQueueTest, ACallIsCarriedOutWhereItsMessageIsUnderstood) {
    open(1, 1h);
    std::thread::id understoodOn;
    std::atomic<bool> isBack = false;
    const auto call = std::make_shared<TestCall>();
    calls.push_back(call);
    call->release();
    queue->post([&] {
        understoodOn = std::this_thread::get_id();
        queue->submitHere(call);
        EXPECT_TRUE(call->isTold);
        isBack = true;
    });
    EXPECT_TRUE(becomesTrue([&] { return isBack.load(); }));
    EXPECT_EQ(call->thread, understoodOn);
}

TEST_F(CallQueueTest, AMessageWhoseCallMustWaitHoldsNoThread) {
    open(1, 1h);
    TestCall& first = post();
    EXPECT_TRUE(becomesTrue([&] { return first.hasBegun.load(); }));
    for (int round = 0; round < 8; ++round)
        post();
    EXPECT_TRUE(becomesTrue([&] { return queue->depth().waiting == 8; }));
    EXPECT_TRUE(doesWork());
    EXPECT_EQ(queue->depth().running, 1U);
    for (const auto& call : calls)
        call->release();
    EXPECT_TRUE(becomesTrue([&] { return calls.back()->isTold.load(); }));
}

TEST_F(CallQueueTest, CallsThatHangKeepNoMessageFromBeingUnderstood) {
    open(2, 50ms, 2);
    for (int call = 0; call < 4; ++call) {
        TestCall* hanging = &post();
        EXPECT_TRUE(becomesTrue([&] {
            if (!hanging->hasBegun && hanging->isAnswered()) hanging = &post();
            return hanging->hasBegun.load();
        }));
        EXPECT_TRUE(doesWork());
    }
    TestCall& next = post();
    EXPECT_TRUE(becomesTrue([&] { return next.isAnswered(); }));
    EXPECT_TRUE(doesWork());
}

TEST_F(CallQueueTest, BehindAStopMessagesAreStillUnderstoodAndTheirCallsRefused) {
    open(1, 1h);
    queue->stop();
    TestCall& call = post();
    EXPECT_TRUE(becomesTrue([&] { return call.isAnswered(); }));
    EXPECT_EQ(call.answer(), "the server is being stopped, nothing was done");
    queue->finish();
    EXPECT_FALSE(call.hasBegun);
}

TEST_F(CallQueueTest, WhatWasPostedIsDoneBeforeTheQueueHasFinished) {
    open(1, 1h);
    std::atomic<int> done = 0;
    for (int work = 0; work < 100; ++work)
        queue->post([&] { ++done; });
    queue->finish();
    EXPECT_EQ(done, 100);
}

TEST_F(CallQueueTest, AWorkThatThrowsEndsNoThread) {
    open(1, 1h);
    for (int round = 0; round < 4; ++round)
        queue->post([] { throw std::runtime_error("thrown by a test"); });
    EXPECT_TRUE(doesWork());
}

} // namespace
} // namespace cimhost
