// The signal that tells a server to read its files again.
#pragma once

#include <atomic>
#include <functional>
#include <thread>

namespace cimhost::cli {

class HangupWatch {
public:
    /// From now on SIGHUP ends nothing: it waits until start(). To be made before any other thread.
    HangupWatch();
    /// From now on SIGHUP is ignored. Waits for a call under way.
    ~HangupWatch();
    HangupWatch(const HangupWatch&) = delete;
    HangupWatch& operator=(const HangupWatch&) = delete;

    /// Calls this for each SIGHUP, on a thread of its own, one call at a time. It must not throw.
    void start(std::function<void()> onHangup);

    /// No further call, and none under way. To be called before what the function uses goes.
    void stop();

private:
    std::atomic<bool> stopping = false;
    std::thread thread;
};

} // namespace cimhost::cli
