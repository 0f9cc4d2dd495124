// Turns SIGINT and SIGTERM into a call. It needs no event loop, which may be short of memory at that moment.
#pragma once

#include <atomic>
#include <functional>
#include <thread>

namespace cimhost::http {

class StopSignals {
public:
    /// After the first of the two signals, `stop` is called on a thread of its own, ten times a second until this
    /// object ends: a call may fail for want of memory. A second signal ends the process at once. There may be one
    /// object at a time. Throws std::system_error if the system has no thread or descriptor left.
    explicit StopSignals(std::function<void()> stop);
    /// Both signals end the process at once again.
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

private:
    void watch() const;
    void callOnce() const;

    const std::function<void()> call;
    std::atomic<bool> isOver = false;
    std::thread thread; // last: it uses all of the above
};

} // namespace cimhost::http
