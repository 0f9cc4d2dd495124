#include "cimhost/cli/hangup_watch.h"

#include <csignal>
#include <utility>

namespace cimhost::cli {

namespace {

sigset_t hangupAlone() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGHUP);
    return set;
}

} // namespace

// Every later thread inherits the mask, and so nobody but the thread of start() takes the signal.
HangupWatch::HangupWatch() {
    const sigset_t set = hangupAlone();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

HangupWatch::~HangupWatch() {
    stop();
    std::signal(SIGHUP, SIG_IGN);
}

void HangupWatch::stop() {
    if (!thread.joinable()) return;
    stopping = true;
    pthread_kill(thread.native_handle(), SIGHUP);
    thread.join();
}

void HangupWatch::start(std::function<void()> onHangup) {
    thread = std::thread([this, call = std::move(onHangup)] {
        const sigset_t set = hangupAlone();
        for (int number = 0; sigwait(&set, &number) == 0 && !stopping;)
            call();
    });
}

} // namespace cimhost::cli
