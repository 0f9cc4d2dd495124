#include "cimhost/cli/stop_limit.h"

#include "cimhost/cli/commands.h"

#include <iostream>
#include <unistd.h>

namespace cimhost::cli {

StopLimit::~StopLimit() {
    {
        const std::lock_guard lock(mutex);
        isOver = true;
    }
    changed.notify_all();
    if (thread.joinable()) thread.join();
}

void StopLimit::begin() {
    thread = std::thread([this] { wait(); });
}

void StopLimit::wait() {
    std::unique_lock lock(mutex);
    if (changed.wait_for(lock, limit, [this] { return isOver; })) return;
    std::cerr
        << "cimhost: a call of the provider did not end in time; it is cut short, and what it was about to change "
           "stays as it was\n"
        << std::flush;
    ::_exit(cutShort);
}

} // namespace cimhost::cli
