#include "cimhost/http/stop_signals.h"

#include "cimhost/thread.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <exception>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace cimhost::http {

namespace {

constexpr std::array<int, 2> stopSignals{SIGINT, SIGTERM};
// The call is made again, in case it failed.
constexpr int again = 100; // milliseconds

// These belong to the one object that there is. A signal may come on any thread.
std::atomic<int> bell = -1;
std::atomic<bool> hasRung = false;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

void ring() {
    const std::uint64_t once = 1;
    [[maybe_unused]] const ssize_t written = ::write(bell, &once, sizeof once);
}

extern "C" void onStopSignal(int) {
    const int before = errno;
    for (const int number : stopSignals)
        std::signal(number, SIG_DFL); // a second signal ends the process
    hasRung = true;
    ring();
    errno = before;
}

int openBell() {
    const int opened = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (opened < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
    return opened;
}

} // namespace

StopSignals::StopSignals(std::function<void()> stop) : call(std::move(stop)) {
    hasRung = false;
    bell = openBell();
    try {
        thread = makeThread([this] { watch(); });
    } catch (...) {
        ::close(bell.exchange(-1));
        throw;
    }
    struct sigaction action {};
    action.sa_handler = onStopSignal;
    action.sa_flags = SA_RESTART;
    sigfillset(&action.sa_mask);
    for (const int number : stopSignals)
        ::sigaction(number, &action, nullptr);
}

StopSignals::~StopSignals() {
    for (const int number : stopSignals)
        std::signal(number, SIG_DFL);
    isOver = true;
    ring();
    thread.join();
    ::close(bell.exchange(-1));
}

void StopSignals::watch() const {
    for (;;) {
        pollfd waits{bell, POLLIN, 0};
        ::poll(&waits, 1, hasRung ? again : -1);
        std::uint64_t count = 0;
        [[maybe_unused]] const ssize_t taken = ::read(bell, &count, sizeof count);
        if (isOver) return;
        if (hasRung) callOnce();
    }
}

void StopSignals::callOnce() const {
    try {
        call();
    } catch (const std::exception&) { // for want of memory: the call is made again
    }
}

} // namespace cimhost::http
