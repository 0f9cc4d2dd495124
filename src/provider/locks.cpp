#include "provider/locks.h"

#include "log/log.h"

#include <cstdlib>

namespace merolt {

std::unique_ptr<platform::Mutex> provider_lock;
std::unique_ptr<platform::Mutex> enable_indications_mutex;
std::unique_ptr<platform::Mutex> properties_file_lock;
std::unique_ptr<platform::Mutex> adapter_update_lock;

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
