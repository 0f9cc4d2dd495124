// Calls of the provider on their way: each waits for a thread, is carried out there, and is answered for by somebody
// else when that takes too long. A call that hangs in the provider cannot be ended; it holds nobody but itself.
//
// The same threads take the messages apart in which calls come, so that a call whose turn has come is carried out where
// it was understood: to wake another thread for it would cost as much as many a call.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace cimhost {

/// One call, shared by the queue and the thread that carries it out. Of its answers the first one counts.
class QueuedCall {
public:
    virtual ~QueuedCall() = default;

    /// On a thread of the queue. Keeps its answer. Throws nothing.
    virtual void carryOut() = 0;
    /// On the same thread, once the call no longer counts as under way: gives its client the answer, who may ask for
    /// the next of a kind of which one runs at a time. Throws nothing.
    virtual void giveAnswer() = 0;
    /// On any thread, also while it is carried out: tells its client why there is no other answer.
    virtual void answerInstead(const std::string& reason) = 0;
    /// False once its client has left.
    [[nodiscard]] virtual bool isAwaited() const = 0;
    /// What it belongs to, such as "flash update", if no two calls of that may run at the same moment; or empty.
    [[nodiscard]] virtual std::string_view aloneAs() const = 0;
};

struct CallQueueOptions {
    std::size_t workers = 4; ///< calls at the same moment, and as many threads besides for what is posted
    std::chrono::milliseconds deadline{30'000}; ///< until a call is answered for
    std::size_t mostOverdue = 32;               ///< calls beyond their deadline that do not count as one of these
};

class CallQueue {
public:
    explicit CallQueue(CallQueueOptions options);
    /// Stops, and waits for the calls that have begun.
    ~CallQueue();
    CallQueue(const CallQueue&) = delete;
    CallQueue& operator=(const CallQueue&) = delete;

    /// Never waits. A call is not begun, and is told so, where another one of its kind is queued or under way, and if
    /// its client leaves, its deadline passes or the queue stops before its turn has come. One that runs alone has no
    /// deadline once it has begun.
    void submit(std::shared_ptr<QueuedCall> call);

    /// Carries the work out on a thread of the queue, behind what was posted before, also while the queue stops. It may
    /// submit calls; it must not wait for anything. Dropped once the queue has finished. Never waits.
    /// @return false where the queue has no thread and the system gives it none: then the work is not done here.
    bool post(std::function<void()> work);

    /// As submit(). In a work that was posted here, a call whose turn it is is carried out and answered before this
    /// returns.
    void submitHere(std::shared_ptr<QueuedCall> call);

    /// How many calls wait for a thread, are carried out, and of these are beyond their deadline.
    struct Depth {
        std::size_t waiting = 0;
        std::size_t running = 0;
        std::size_t overdue = 0;
    };
    [[nodiscard]] Depth depth() const;

    /// Begins no more calls. Does not wait.
    void stop();

    /// The same, and waits for what was posted and for the calls that have begun: for ever, where one hangs.
    void finish();

private:
    using Clock = std::chrono::steady_clock;
    struct Entry {
        std::shared_ptr<QueuedCall> call;
        Clock::time_point deadline;
        bool isOverdue = false;
    };
    // What is said to clients goes behind the lock.
    struct Notice {
        std::shared_ptr<QueuedCall> call;
        std::string reason;
    };
    using Notices = std::vector<Notice>;

    using Lock = std::unique_lock<std::mutex>;

    static void tell(const Notices& notices);
    [[nodiscard]] std::size_t mostRunning() const;
    [[nodiscard]] bool hasRoom() const;
    [[nodiscard]] bool mayBegin() const;
    [[nodiscard]] bool isUnderWay(std::string_view kind) const;
    [[nodiscard]] Clock::time_point nextLook() const;
    [[nodiscard]] std::string refusalOf(const QueuedCall& call) const;
    void addThreads();
    void work();
    void doPosted(Lock& lock);
    void carryOut(Lock& lock, std::list<Entry>& begun);
    void tellWatcher(Clock::time_point look);
    void watch();
    void dropWaiting(Clock::time_point now, Notices& notices);
    void noteOverdue(Clock::time_point now, Notices& notices);

    const CallQueueOptions settings;
    const std::string deadlineText;

    mutable std::mutex mutex;
    std::condition_variable changed; // for the threads that carry out
    std::condition_variable added;   // for the one that watches
    std::deque<std::function<void()>> posted;
    std::size_t postedUnderWay = 0; // without those that carry out a call
    std::deque<Entry> waiting;
    std::list<Entry> running;
    std::size_t overdue = 0;
    bool isStopping = false;
    bool isFinished = false;
    bool hasNews = false;           // for the watcher, since it looked
    Clock::time_point watcherWaits; // until then at the latest
    std::vector<std::thread> threads;
    std::thread watcher; // last: it uses all of the above
};

} // namespace cimhost
