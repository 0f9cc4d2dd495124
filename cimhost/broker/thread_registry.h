// The threads that providers make through the broker: real ones, but known, so that the host can tell which still run.
#pragma once

#include <cstddef>

namespace cimhost {

class Broker;

using ThreadFunction = void* (*)(void*);

/// Starts a thread; owner may be null. A joinable one is to be joined once through joinThread(). Null on failure.
void* startThread(ThreadFunction function, void* argument, bool isDetached, const Broker* owner);

/// How many threads the system has not given so far.
std::size_t countMissingThreads() noexcept;

/// Waits for the thread and forgets it. 0, or an error number: ESRCH for what is no joinable thread of ours or is
/// waited for already, EDEADLK for the calling thread.
int joinThread(void* thread, void** result);

/// Threads of that owner whose function has not yet returned; those without an owner count for everybody.
std::size_t countRunningThreads(const Broker& owner);

} // namespace cimhost
