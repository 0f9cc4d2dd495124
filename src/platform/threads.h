// What the broker's thread functions leave open: when a thread has really ended, that its code stays in place until
// then, and where it may be cancelled.
#pragma once

#include <chrono>
#include <sys/types.h>

namespace merolt::platform {

/// The system's number of the calling thread.
pid_t threadNumber();

/// Waits until this process has no thread of that number, which is when the last of the thread's instructions is done.
/// @param limit for a server that keeps its threads for further use. @return whether the thread is gone.
bool waitForThreadEnd(pid_t number, std::chrono::milliseconds limit);

/// Keeps the shared library that this code is part of loaded while the object lives, even if a server closes it. Does
/// nothing where the code is part of the program.
class LibraryPin {
public:
    LibraryPin();
    ~LibraryPin();
    LibraryPin(const LibraryPin&) = delete;
    LibraryPin& operator=(const LibraryPin&) = delete;

private:
    void* handle = nullptr;
};

/// Whether a cancellation of the calling thread takes effect (pthread_setcancelstate) while the object lives.
class CancelState {
public:
    ~CancelState();
    CancelState(const CancelState&) = delete;
    CancelState& operator=(const CancelState&) = delete;

protected:
    explicit CancelState(int state);

private:
    int former = 0;
};

/// Lets cancellations wait: the provider's code, the wrapper's and the management library's cannot be left at every
/// place where the system would end a thread.
class CancellationDelay : public CancelState {
public:
    CancellationDelay();
};

/// Lets them take effect, where a thread sleeps and holds nothing.
class CancellationPermit : public CancelState {
public:
    CancellationPermit();
};

} // namespace merolt::platform
