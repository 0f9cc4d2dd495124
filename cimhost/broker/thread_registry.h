// The threads that providers make through the broker. The host keeps a list of them, so that it can tell which still
// run.
#pragma once

#include <cstddef>

namespace cimhost {

class Broker;

using ThreadFunction = void* (*)(void*);

/// Starts a thread. One that is not detached must be joined once, by joinThread().
/// @param owner may be null
/// @return the thread for joinThread(); null if the system gives none
void* startThread(ThreadFunction function, void* argument, bool isDetached, const Broker* owner);

/// How many threads the system has refused so far.
std::size_t countMissingThreads() noexcept;

/// Waits for the end of the thread, and forgets it.
/// @param result takes what the thread's function returned; may be null
/// @return 0 or an error number: ESRCH if this is no thread to be joined or somebody waits for it already, EDEADLK for
/// the
///         calling thread
int joinThread(void* thread, void** result);

/// How many threads of that owner still run. Those without an owner count for every owner.
std::size_t countRunningThreads(const Broker& owner);

} // namespace cimhost
