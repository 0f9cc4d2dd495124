#include "provider/locks.h"

#include "log/log.h"
#include "platform/lasting.h"

#include <cstdlib>

namespace merolt {

namespace {

// The polling thread and requests may still take them while the process ends.
using LastingLock = platform::Lasting<std::unique_ptr<platform::Mutex>>;

constinit LastingLock providerLock;
constinit LastingLock enableIndicationsMutex;
constinit LastingLock propertiesFileLock;
constinit LastingLock adapterUpdateLock;

} // namespace

std::unique_ptr<platform::Mutex>& provider_lock = providerLock.value;
std::unique_ptr<platform::Mutex>& enable_indications_mutex = enableIndicationsMutex.value;
std::unique_ptr<platform::Mutex>& properties_file_lock = propertiesFileLock.value;
std::unique_ptr<platform::Mutex>& adapter_update_lock = adapterUpdateLock.value;

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
