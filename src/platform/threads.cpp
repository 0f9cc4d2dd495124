#include "platform/threads.h"

#include <csignal>
#include <dlfcn.h>
#include <pthread.h>
#include <thread>
#include <unistd.h>

namespace merolt::platform {

pid_t threadNumber() { return gettid(); }

bool waitForThreadEnd(pid_t number, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (tgkill(getpid(), number, 0) == 0) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

LibraryPin::LibraryPin() {
    Dl_info place{};
    if (dladdr(reinterpret_cast<const void*>(threadNumber), &place) != 0 && place.dli_fname)
        handle = dlopen(place.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
}

LibraryPin::~LibraryPin() {
    if (handle) dlclose(handle);
}

CancelState::CancelState(int state) { pthread_setcancelstate(state, &former); }

CancelState::~CancelState() { pthread_setcancelstate(former, nullptr); }

CancellationDelay::CancellationDelay() : CancelState(PTHREAD_CANCEL_DISABLE) {}

CancellationPermit::CancellationPermit() : CancelState(PTHREAD_CANCEL_ENABLE) {}

} // namespace merolt::platform
