// The provider's mutexes: recursive, owned by a thread, taken without time limit.
#pragma once

#include <memory>
#include <mutex>

namespace merolt::platform {

/// Recursive: whoever holds it may take it again. Usable with std::lock_guard and std::unique_lock.
class Mutex {
public:
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }

private:
    std::recursive_mutex mutex;
};

/// @param error receives the system's error number when the result is null.
std::unique_ptr<Mutex> makeMutex(int& error);

} // namespace merolt::platform
