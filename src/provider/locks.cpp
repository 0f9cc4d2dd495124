#include "provider/locks.h"

#include "log/log.h"

#include <cstdlib>

namespace merolt {

namespace {

/// Stands until the process is gone: a server may exit without cleaning up, while the polling thread and requests
/// still take locks.
union LastingLock {
    constexpr LastingLock() : mutex() {}
    ~LastingLock() {}

    std::unique_ptr<platform::Mutex> mutex;
};

constinit LastingLock providerLock;
constinit LastingLock enableIndicationsMutex;
constinit LastingLock propertiesFileLock;
constinit LastingLock adapterUpdateLock;

} // namespace

std::unique_ptr<platform::Mutex>& provider_lock = providerLock.mutex;
std::unique_ptr<platform::Mutex>& enable_indications_mutex = enableIndicationsMutex.mutex;
std::unique_ptr<platform::Mutex>& properties_file_lock = propertiesFileLock.mutex;
std::unique_ptr<platform::Mutex>& adapter_update_lock = adapterUpdateLock.mutex;

namespace {

struct Lock {
    std::unique_ptr<platform::Mutex>* mutex;
    const char* nameInError;
};

// In the order in which they are made and closed. The fourth is reported under the third one's name.
const Lock locks[] = {
    {&provider_lock, "provider_lock"},
    {&enable_indications_mutex, "enable_indications_mutex"},
    {&properties_file_lock, "properties_file_lock"},
    {&adapter_update_lock, "properties_file_lock"},
};

} // namespace

void makeLocks() {
    for (const Lock& lock : locks) {
        int error = 0;
        *lock.mutex = platform::makeMutex(error);
        if (*lock.mutex) continue;
        ERROR_LOG("Error %d Initializing %s mutex", error, lock.nameInError);
        std::exit(1);
    }
}

void closeLocks() {
    for (const Lock& lock : locks)
        lock.mutex->reset();
}

} // namespace merolt
