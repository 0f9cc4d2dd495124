// The CMPIBrokerExtFT table: threads, mutexes and conditions, on POSIX threads.

#include <cerrno>
#include <chrono>
#include <memory>
#include <pthread.h>
#include <thread>

#include "cimhost/broker/broker.h"
#include "cimhost/broker/table_support.h"
#include "cimhost/broker/thread_registry.h"

namespace cimhost {
namespace {

static_assert(sizeof(pthread_key_t) == sizeof(CMPI_THREAD_KEY_TYPE));
static_assert(sizeof(pthread_once_t) == sizeof(int) && PTHREAD_ONCE_INIT == 0);

// The name itself: the host has no folder of its own for the files of providers.
char* resolveFileName(const char* name) noexcept {
    return name ? const_cast<char*>(workArena().copyText(name).data()) : nullptr;
}

const Broker* noteThreadCall(const char* function) {
    const ThreadBinding* binding = currentBinding();
    if (binding) return binding->broker;
    Broker::noteUnownedCall(function);
    return nullptr;
}

void* newThread(ThreadFunction function, void* argument, int detached) noexcept {
    if (!function) return nullptr;
    // Production servers take 1 for detached and everything else for joinable.
    return startThread(function, argument, detached == 1, noteThreadCall("newThread"));
}

int joinThreadFromTable(void* thread, void** result) noexcept {
    noteThreadCall("joinThread");
    return joinThread(thread, result);
}

int threadSleep(CMPIUint32 milliseconds) noexcept {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    return 0;
}

int threadOnce(int* once, void (*function)()) noexcept {
    return once && function ? pthread_once(once, function) : EINVAL;
}

int createThreadKey(CMPI_THREAD_KEY_TYPE* key, void (*cleanup)(void*)) noexcept {
    return key ? pthread_key_create(key, cleanup) : EINVAL;
}

int destroyThreadKey(CMPI_THREAD_KEY_TYPE key) noexcept { return pthread_key_delete(key); }

void* getThreadSpecific(CMPI_THREAD_KEY_TYPE key) noexcept { return pthread_getspecific(key); }

int setThreadSpecific(CMPI_THREAD_KEY_TYPE key, void* value) noexcept { return pthread_setspecific(key, value); }

void* newMutex(int /*options*/) noexcept {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    auto mutex = std::make_unique<pthread_mutex_t>();
    const int failure = pthread_mutex_init(mutex.get(), &attributes);
    pthread_mutexattr_destroy(&attributes);
    return failure == 0 ? mutex.release() : nullptr;
}

void destroyMutex(void* mutex) noexcept {
    const std::unique_ptr<pthread_mutex_t> owned(static_cast<pthread_mutex_t*>(mutex));
    if (owned) pthread_mutex_destroy(owned.get());
}

void lockMutex(void* mutex) noexcept { pthread_mutex_lock(static_cast<pthread_mutex_t*>(mutex)); }

void unlockMutex(void* mutex) noexcept { pthread_mutex_unlock(static_cast<pthread_mutex_t*>(mutex)); }

void* newCondition(int /*options*/) noexcept {
    auto condition = std::make_unique<pthread_cond_t>();
    return pthread_cond_init(condition.get(), nullptr) == 0 ? condition.release() : nullptr;
}

void destroyCondition(void* condition) noexcept {
    const std::unique_ptr<pthread_cond_t> owned(static_cast<pthread_cond_t*>(condition));
    if (owned) pthread_cond_destroy(owned.get());
}

int condWait(void* condition, void* mutex) noexcept {
    return pthread_cond_wait(static_cast<pthread_cond_t*>(condition), static_cast<pthread_mutex_t*>(mutex));
}

int timedCondWait(void* condition, void* mutex, timespec* until) noexcept {
    if (!until) return condWait(condition, mutex);
    return pthread_cond_timedwait(static_cast<pthread_cond_t*>(condition), static_cast<pthread_mutex_t*>(mutex), until);
}

int signalCondition(void* condition) noexcept { return pthread_cond_signal(static_cast<pthread_cond_t*>(condition)); }

} // namespace

const CMPIBrokerExtFT tables::extension = {
    CMPICurrentVersion,
    resolveFileName,
    newThread,
    joinThreadFromTable,
    nullptr, // exitThread: a thread that ends so leaves its locks held
    nullptr, // cancelThread: the same
    threadSleep,
    threadOnce,
    createThreadKey,
    destroyThreadKey,
    getThreadSpecific,
    setThreadSpecific,
    newMutex,
    destroyMutex,
    lockMutex,
    unlockMutex,
    newCondition,
    destroyCondition,
    condWait,
    timedCondWait,
    signalCondition,
};

} // namespace cimhost
