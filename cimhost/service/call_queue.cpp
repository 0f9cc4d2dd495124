#include "cimhost/service/call_queue.h"

#include "cimhost/thread.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace cimhost {

namespace {

// How long a client that has left may keep its place in the queue.
constexpr std::chrono::milliseconds lookInterval{100};

std::string textOf(std::chrono::milliseconds duration) {
    const auto milliseconds = duration.count();
    if (milliseconds % 1000 != 0) return std::to_string(milliseconds) + " milliseconds";
    return std::to_string(milliseconds / 1000) + (milliseconds == 1000 ? " second" : " seconds");
}

} // namespace

CallQueue::CallQueue(CallQueueOptions options)
    : settings(options), deadlineText(textOf(options.deadline)), watcher(makeThread([this] { watch(); })) {}

CallQueue::~CallQueue() { finish(); }

void CallQueue::tell(const Notices& notices) {
    for (const Notice& notice : notices)
        notice.call->answerInstead(notice.reason);
}

std::size_t CallQueue::mostRunning() const { return settings.workers + std::min(overdue, settings.mostOverdue); }

bool CallQueue::mayBegin() const { return !waiting.empty() && running.size() < mostRunning(); }

bool CallQueue::isUnderWay(std::string_view kind) const {
    const auto isOfKind = [&](const Entry& entry) { return entry.call->aloneAs() == kind; };
    return std::any_of(waiting.begin(), waiting.end(), isOfKind) ||
           std::any_of(running.begin(), running.end(), isOfKind);
}

// As many as may work at the same moment, and one in the place of each that hangs; none before it is needed.
void CallQueue::addThreads() {
    if (isStopping) return;
    const std::size_t wanted = std::min(mostRunning(), running.size() + waiting.size());
    try {
        while (threads.size() < wanted)
            threads.push_back(makeThread([this] { work(); }));
    } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch)
        // The system has no more of them: those that are there do the work, or else the deadline answers.
    }
}

void CallQueue::submit(std::shared_ptr<QueuedCall> call) {
    Notices notices;
    {
        const std::lock_guard lock(mutex);
        const std::string kind(call->aloneAs());
        if (isStopping) {
            notices.push_back({std::move(call), "the server is being stopped, nothing was done"});
        } else if (!kind.empty() && isUnderWay(kind)) {
            notices.push_back({std::move(call), "a " + kind +
                                                    " is under way already, nothing was done: try again "
                                                    "when that has ended"});
        } else {
            waiting.push_back({std::move(call), Clock::now() + settings.deadline});
            addThreads();
        }
    }
    changed.notify_one();
    added.notify_one();
    tell(notices);
}

void CallQueue::work() {
    std::unique_lock lock(mutex);
    while (true) {
        changed.wait(lock, [this] { return isStopping || mayBegin(); });
        if (isStopping) return;
        const auto place = running.insert(running.end(), std::move(waiting.front()));
        waiting.pop_front();
        const std::shared_ptr<QueuedCall> call = place->call;
        added.notify_one();
        lock.unlock();
        const bool isAwaited = call->isAwaited();
        if (isAwaited) call->carryOut();
        lock.lock();
        if (place->isOverdue) --overdue;
        running.erase(place);
        changed.notify_one();
        lock.unlock();
        if (isAwaited) {
            call->giveAnswer();
        } else {
            call->answerInstead("the client has left, nothing was done");
        }
        lock.lock();
    }
}

CallQueue::Clock::time_point CallQueue::nextLook() const {
    Clock::time_point next = waiting.empty() ? Clock::time_point::max() : Clock::now() + lookInterval;
    for (const Entry& entry : waiting)
        next = std::min(next, entry.deadline);
    for (const Entry& entry : running) {
        if (!entry.isOverdue) next = std::min(next, entry.deadline);
    }
    return next;
}

void CallQueue::watch() {
    std::unique_lock lock(mutex);
    while (!isStopping || !running.empty()) {
        const Clock::time_point next = nextLook();
        if (next == Clock::time_point::max()) {
            added.wait(lock);
        } else {
            added.wait_until(lock, next);
        }
        Notices notices;
        dropWaiting(Clock::now(), notices);
        noteOverdue(Clock::now(), notices);
        lock.unlock();
        tell(notices);
        notices.clear();
        lock.lock();
    }
}

void CallQueue::dropWaiting(Clock::time_point now, Notices& notices) {
    std::erase_if(waiting, [&](const Entry& entry) {
        const bool isLate = entry.deadline <= now;
        if (!isLate && entry.call->isAwaited()) return false;
        notices.push_back({entry.call, isLate ? "not begun within " + deadlineText +
                                                    ", nothing was done: others are still being answered"
                                              : "the client has left, nothing was done"});
        return true;
    });
}

void CallQueue::noteOverdue(Clock::time_point now, Notices& notices) {
    for (Entry& entry : running) {
        if (entry.isOverdue || entry.deadline > now) continue;
        if (entry.call->aloneAs().empty()) {
            notices.push_back({entry.call, "no answer of the provider within " + deadlineText +
                                               ": what was asked for may still be carried out"});
        }
        entry.isOverdue = true;
        ++overdue;
    }
    if (overdue > 0) {
        addThreads();
        changed.notify_all();
    }
}

CallQueue::Depth CallQueue::depth() const {
    const std::lock_guard lock(mutex);
    return {waiting.size(), running.size(), overdue};
}

void CallQueue::stop() {
    Notices notices;
    {
        const std::lock_guard lock(mutex);
        isStopping = true;
        for (Entry& entry : waiting)
            notices.push_back({std::move(entry.call), "the server is being stopped, nothing was done"});
        waiting.clear();
    }
    changed.notify_all();
    added.notify_one();
    tell(notices);
}

void CallQueue::finish() {
    stop();
    // No thread is added behind the stop.
    for (std::thread& thread : threads) {
        if (thread.joinable()) thread.join();
    }
    added.notify_one();
    if (watcher.joinable()) watcher.join();
}

} // namespace cimhost
