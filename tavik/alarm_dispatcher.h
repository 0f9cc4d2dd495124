// Delivers alarms to the registered callbacks, one after another, on a thread of its own and without holding a lock,
// so that a callback may take its time and may call the library.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "inventory/tavik.h"
#include "tavik/source.h"

namespace tavik {

class AlarmDispatcher {
public:
    /** Alarms that wait while a callback takes its time; beyond them the oldest is dropped, and that is reported. */
    static constexpr std::size_t longestQueue = 65536;

    AlarmDispatcher();
    ~AlarmDispatcher();
    AlarmDispatcher(const AlarmDispatcher&) = delete;
    AlarmDispatcher& operator=(const AlarmDispatcher&) = delete;

    /** Returns at once. */
    void push(Alarm alarm);

    /** A callback is called once for each alarm, however often it was added. Alarms from before are not told. */
    void add(TAVIK_AlarmCallback callback);

    /** When this returns the callback is not running and is never called again; only from within a callback it
     *  returns while that one still runs. @return statusInvalidArgument if the callback was never added. */
    Status remove(TAVIK_AlarmCallback callback);

    bool isOwnThread() const;

    /** Drops what waits and ends the thread. @pre not called from within a callback. */
    void stop();

private:
    void run();
    void deliver(std::unique_lock<std::mutex>& lock);

    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable delivered_;
    std::deque<Alarm> queue_;
    std::vector<TAVIK_AlarmCallback> callbacks_;
    bool delivering_ = false;
    std::uint64_t deliveries_ = 0; ///< finished ones
    bool stopping_ = false;
    bool overflowed_ = false;
    std::thread::id threadId_;
    std::thread thread_; // last: the thread uses all of the above
};

} // namespace tavik
