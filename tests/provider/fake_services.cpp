#include "fake_services.h"

std::time_t FakeServices::now() {
    const std::lock_guard guard(mutex);
    return time;
}

void FakeServices::sleepMilliseconds(unsigned milliseconds) {
    std::unique_lock guard(mutex);
    if (testThreads.count(std::this_thread::get_id()) > 0) {
        slept += milliseconds;
        // Who waits for the polling thread sleeps in between: the thread must get on.
        wakeUps = 1;
        changed.notify_all();
        guard.unlock();
        std::this_thread::yield();
        if (afterSleep) afterSleep();
        return;
    }
    // Also when it is cancelled in here.
    struct Sleep {
        explicit Sleep(bool& is) : isSleeping(is) { isSleeping = true; }
        ~Sleep() { isSleeping = false; }
        bool& isSleeping;
    } sleep(sleeping);
    changed.notify_all();
    changed.wait(guard, [&] { return wakeUps > 0; });
    --wakeUps;
}

void FakeServices::sleepUntilNotified(merolt::platform::Wakeup& wakeup, unsigned milliseconds) {
    constexpr unsigned untilATestGivesUp = 60000;
    if (waitsByEvents) return wakeup.waitFor(untilATestGivesUp);
    sleepMilliseconds(milliseconds);
}

void FakeServices::waitUntilIdle() {
    std::unique_lock guard(mutex);
    changed.wait(guard, [&] { return idle(); });
}

bool FakeServices::becomesIdle(std::chrono::milliseconds limit) {
    std::unique_lock guard(mutex);
    return changed.wait_for(guard, limit, [&] { return idle(); });
}

void FakeServices::pass(std::time_t seconds) {
    wake(seconds);
    waitUntilIdle();
}

void FakeServices::wake(std::time_t seconds) {
    waitUntilIdle();
    const std::lock_guard guard(mutex);
    time += seconds;
    wakeUps = 1;
    changed.notify_all();
}

void FakeServices::moveClock(std::time_t seconds) {
    const std::lock_guard guard(mutex);
    time += seconds;
}

void FakeServices::dismissThisThread() {
    const std::lock_guard guard(mutex);
    testThreads.erase(std::this_thread::get_id());
}

void FakeServices::adoptThisThread() {
    const std::lock_guard guard(mutex);
    testThreads.insert(std::this_thread::get_id());
}

unsigned long FakeServices::sleptHere() {
    const std::lock_guard guard(mutex);
    return slept;
}
