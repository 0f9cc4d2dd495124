// Calls of the provider. Each call waits for a thread and is carried out there. If that takes too long, its client gets
// another answer. A call that hangs in the provider cannot be ended, but it holds up nothing else.
//
// The same threads also read the messages that hold calls. If its turn has come, a call is carried out on the thread
// that has read its message: to wake another thread would cost as much as many calls do.
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

/// One call, shared by the queue and the thread that carries it out. Its first answer counts.
class QueuedCall {
public:
    virtual ~QueuedCall() = default;

    /// Carries the call out and keeps its answer. Called on a thread of the queue. Must not throw.
    virtual void carryOut() = 0;
    /// Gives the answer to the client. Called on the same thread, once the call no longer counts as under way: the
    /// client may at once ask for the next call of a kind that runs alone. Must not throw.
    virtual void giveAnswer() = 0;
    /// Tells the client why there is no other answer. Called on any thread, also while the call is carried out.
    virtual void answerInstead(const std::string& reason) = 0;
    /// False once its client has left.
    [[nodiscard]] virtual bool isAwaited() const = 0;
    /// The call's kind, such as "flash update", if no two calls of that kind may run at the same moment; or empty.
    [[nodiscard]] virtual std::string_view aloneAs() const = 0;
};

struct CallQueueOptions {
    std::size_t workers = 4; ///< calls at the same moment; as many threads more are for work that is posted
    std::chrono::milliseconds deadline{30'000}; ///< from when a call is submitted until its client gets another answer
    std::size_t mostOverdue = 32;               ///< so many calls beyond their deadline do not count among `workers`
};

class CallQueue {
public:
    /// Throws std::system_error if the system gives no thread.
    explicit CallQueue(CallQueueOptions options);
    /// The same as finish().
    ~CallQueue();
    CallQueue(const CallQueue&) = delete;
    CallQueue& operator=(const CallQueue&) = delete;

    /// Queues a call. Never waits. The call is not begun, and its client is told so, if another call of its kind is
    /// queued or under way; or if its client leaves, its deadline passes or the queue stops before its turn has come.
    /// A call of a kind that runs alone has no deadline once it has begun.
    void submit(std::shared_ptr<QueuedCall> call);

    /// Has work done on a thread of the queue, after what was posted before, also while the queue stops. Work may
    /// submit calls; it must not wait for anything. Once the queue has finished, work is dropped. Never waits.
    /// @return false if the queue has no thread and the system gives it none: then the work is not done here
    bool post(std::function<void()> work);

    /// Like submit(), for work that was posted here: if the call's turn has come, it is carried out and answered before
    /// this returns.
    void submitHere(std::shared_ptr<QueuedCall> call);

    /// How many calls wait for a thread, how many are carried out, and how many of these are beyond their deadline.
    struct Depth {
        std::size_t waiting = 0;
        std::size_t running = 0;
        std::size_t overdue = 0;
    };
    [[nodiscard]] Depth depth() const;

    /// Begins no more calls, and tells so to the clients of those that wait. Does not wait.
    void stop();

    /// Stops, and waits for the work that was posted and for the calls that have begun; for ever if one hangs.
    void finish();

private:
    using Clock = std::chrono::steady_clock;
    struct Entry {
        std::shared_ptr<QueuedCall> call;
        Clock::time_point deadline;
        bool isOverdue = false;
    };
    // Clients are told after the lock is given back.
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
    bool hasNews = false;           // since the watcher last looked
    Clock::time_point watcherWaits; // until then, if it is not woken
    std::vector<std::thread> threads;
    std::thread watcher; // last: it uses all of the above
};

} // namespace cimhost
