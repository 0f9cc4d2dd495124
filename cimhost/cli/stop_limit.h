// The longest that a server takes to stop.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace cimhost::cli {

/// A call that hangs in a library cannot be ended but by the end of the process. Whatever is written to files is
/// written beside them and put in their place as a whole, so that nothing is left half done.
class StopLimit {
public:
    /// Once begun, ends the process with status ExitStatus::cutShort unless this object is destroyed in time. Its
    /// thread is there from the start: a stop must not depend on whether the system has one left. Throws
    /// std::system_error if it has none.
    explicit StopLimit(std::chrono::milliseconds duration);
    ~StopLimit();
    StopLimit(const StopLimit&) = delete;
    StopLimit& operator=(const StopLimit&) = delete;

    /// From any thread, once.
    void begin();

private:
    void wait();

    const std::chrono::milliseconds limit;
    std::mutex mutex;
    std::condition_variable changed;
    bool isBegun = false;
    bool isOver = false;
    std::thread thread; // last: it uses all of the above
};

} // namespace cimhost::cli
