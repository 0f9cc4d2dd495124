#include "cimhost/cli/stop_limit.h"

#include "cimhost/cli/commands.h"
#include "cimhost/thread.h"

#include <iostream>
#include <unistd.h>

namespace cimhost::cli {

StopLimit::StopLimit(std::chrono::milliseconds duration) : limit(duration), thread(makeThread([this] { wait(); })) {}

StopLimit::~StopLimit() {
    {
        const std::lock_guard lock(mutex);
        isOver = true;
    }
    changed.notify_all();
    thread.join();
}

void StopLimit::begin() {
    {
        const std::lock_guard lock(mutex);
        isBegun = true;
    }
    changed.notify_all();
}

void StopLimit::wait() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return isBegun || isOver; });
    if (changed.wait_for(lock, limit, [this] { return isOver; })) return;
    std::cerr
        << "cimhost: a call of the provider did not end in time; it is cut short, and what it was about to change "
           "stays as it was\n"
        << std::flush;
    ::_exit(cutShort);
}

} // namespace cimhost::cli
