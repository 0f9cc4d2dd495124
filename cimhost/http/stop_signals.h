// SIGINT and SIGTERM as a call, on a way that does not lead through an event loop.
#pragma once

#include <atomic>
#include <functional>
#include <thread>

namespace cimhost::http {

class StopSignals {
public:
    /// From now on the first of the two signals has this called, on a thread of its own and again and again until this
    /// object ends; a second signal ends the process at once. One object at a time. Throws std::system_error
    /// where the system has no thread or descriptor left.
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
