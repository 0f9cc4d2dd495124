#include "cimhost/service/call_queue.h"

#include "cimhost/thread.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <system_error>
#include <utility>

namespace cimhost {

namespace {

// A client that has left keeps its place in the queue for no longer.
constexpr std::chrono::milliseconds lookInterval{100};

// The queue whose posted work this thread carries out.
thread_local const CallQueue* workingFor = nullptr;

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

bool CallQueue::hasRoom() const { return running.size() < mostRunning(); }

bool CallQueue::mayBegin() const { return !waiting.empty() && hasRoom(); }

bool CallQueue::isUnderWay(std::string_view kind) const {
    const auto isOfKind = [&](const Entry& entry) { return entry.call->aloneAs() == kind; };
    return std::any_of(waiting.begin(), waiting.end(), isOfKind) ||
           std::any_of(running.begin(), running.end(), isOfKind);
}

// Adds threads when they are needed: as many as calls may run at the same moment, which is one more for each call that
// hangs; and as many as `workers` besides, so that calls never hold all threads and messages are still read.
void CallQueue::addThreads() {
    if (isFinished) return;
    const std::size_t most = mostRunning() + settings.workers;
    const std::size_t needed = running.size() + waiting.size() + postedUnderWay + posted.size();
    try {
        while (threads.size() < std::min(most, needed))
            threads.push_back(makeThread([this] { work(); }));
    } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch)
        // The system gives no more threads. Those that there are do the work, or the call is answered at its deadline.
    }
}

bool CallQueue::post(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex);
        if (isFinished) return true;
        posted.push_back(std::move(work));
        addThreads();
        if (threads.empty()) {
            posted.pop_back();
            return false;
        }
    }
    changed.notify_one();
    return true;
}

std::string CallQueue::refusalOf(const QueuedCall& call) const {
    if (isStopping) return "the server is being stopped, nothing was done";
    const std::string kind(call.aloneAs());
    if (kind.empty() || !isUnderWay(kind)) return {};
    return "a " + kind + " is under way already, nothing was done: try again when that has ended";
}

void CallQueue::submit(std::shared_ptr<QueuedCall> call) {
    Lock lock(mutex);
    if (const std::string reason = refusalOf(*call); !reason.empty()) {
        lock.unlock();
        return call->answerInstead(reason);
    }
    const auto now = Clock::now();
    waiting.push_back({std::move(call), now + settings.deadline});
    addThreads();
    tellWatcher(now + std::min<Clock::duration>(lookInterval, settings.deadline));
    const bool isItsTurn = mayBegin();
    lock.unlock();
    if (isItsTurn) changed.notify_one(); // otherwise a thread that has ended a call begins it
}

void CallQueue::submitHere(std::shared_ptr<QueuedCall> call) {
    Lock lock(mutex);
    const bool isItsTurn = workingFor == this && waiting.empty() && hasRoom();
    if (!isItsTurn || !refusalOf(*call).empty()) {
        lock.unlock();
        return submit(std::move(call));
    }
    std::list<Entry> begun;
    begun.push_back({std::move(call), Clock::now() + settings.deadline});
    --postedUnderWay;
    carryOut(lock, begun);
    ++postedUnderWay;
}

void CallQueue::work() {
    Lock lock(mutex);
    while (true) {
        changed.wait(lock, [this] { return isFinished || !posted.empty() || mayBegin(); });
        if (mayBegin()) {
            std::list<Entry> begun;
            begun.push_back(std::move(waiting.front()));
            waiting.pop_front();
            carryOut(lock, begun);
        } else if (!posted.empty()) {
            doPosted(lock);
        } else {
            return;
        }
    }
}

void CallQueue::doPosted(Lock& lock) {
    std::function<void()> work = std::move(posted.front());
    posted.pop_front();
    ++postedUnderWay;
    lock.unlock();
    workingFor = this;
    try {
        work();
    } catch (const std::exception& error) {
        // The work is destroyed, and with it its reply, which then tells the client.
        std::cerr << "cimhost: a request failed: " << error.what() << '\n';
    }
    workingFor = nullptr;
    work = nullptr;
    lock.lock();
    --postedUnderWay;
}

// Carries out one call without the lock, and takes the lock again. After that the thread looks for the next call
// itself, so no other thread is woken for it.
void CallQueue::carryOut(Lock& lock, std::list<Entry>& begun) {
    const auto place = begun.begin();
    running.splice(running.end(), begun);
    const std::shared_ptr<QueuedCall> call = place->call;
    tellWatcher(place->deadline);
    lock.unlock();
    const bool isAwaited = call->isAwaited();
    if (isAwaited) call->carryOut();
    lock.lock();
    if (place->isOverdue) --overdue;
    running.erase(place);
    lock.unlock();
    if (isAwaited) {
        call->giveAnswer();
    } else {
        call->answerInstead("the client has left, nothing was done");
    }
    lock.lock();
}

// Calls come and go while the watcher sleeps. It is woken only if it has to look earlier than it would by itself.
void CallQueue::tellWatcher(Clock::time_point look) {
    hasNews = true;
    if (look < watcherWaits) added.notify_one();
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
    Lock lock(mutex);
    while (!isStopping || !running.empty()) {
        // After something new more is likely to come. The watcher looks again soon, so it need not be woken for that.
        const auto soon = std::exchange(hasNews, false) ? Clock::now() + lookInterval : Clock::time_point::max();
        watcherWaits = std::min(nextLook(), soon);
        if (watcherWaits == Clock::time_point::max()) {
            added.wait(lock);
        } else {
            added.wait_until(lock, watcherWaits);
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
    {
        const std::lock_guard lock(mutex);
        isFinished = true; // no thread is added from here on
    }
    changed.notify_all();
    for (std::thread& thread : threads) {
        if (thread.joinable()) thread.join();
    }
    added.notify_one();
    if (watcher.joinable()) watcher.join();
}

} // namespace cimhost
