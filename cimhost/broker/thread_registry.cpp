#include "cimhost/broker/thread_registry.h"

#include <atomic>
#include <cerrno>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <unordered_map>
#include <utility>

namespace cimhost {
namespace {

struct Thread {
    ThreadFunction function;
    void* argument;
    bool isDetached;
    const Broker* owner;
    pthread_t handle{};
    bool isRunning = true;
    bool isJoined = false; // somebody waits for its end
};

struct Registry {
    std::mutex mutex;
    std::unordered_map<void*, std::unique_ptr<Thread>> threads;
};

std::atomic<std::size_t> missingThreads = 0;

// Never destroyed: a provider's thread may outlive everything else.
Registry& registry() {
    static auto& only = *std::make_unique<Registry>().release();
    return only;
}

void noteEnd(Thread* thread) {
    Registry& known = registry();
    const std::lock_guard lock(known.mutex);
    thread->isRunning = false;
    if (thread->isDetached) known.threads.erase(thread);
}

void* runThread(void* argument) {
    auto* thread = static_cast<Thread*>(argument);
    // This also runs when the thread ends itself by pthread_exit.
    const std::unique_ptr<Thread, void (*)(Thread*)> atEnd(thread, noteEnd);
    return thread->function(thread->argument);
}

} // namespace

void* startThread(ThreadFunction function, void* argument, bool isDetached, const Broker* owner) {
    Registry& known = registry();
    const std::lock_guard lock(known.mutex);
    auto thread = std::make_unique<Thread>(Thread{function, argument, isDetached, owner});
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    if (isDetached) pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    const int failure = pthread_create(&thread->handle, &attributes, runThread, thread.get());
    pthread_attr_destroy(&attributes);
    if (failure != 0) {
        ++missingThreads;
        return nullptr;
    }
    void* const handle = thread.get();
    known.threads.emplace(handle, std::move(thread));
    return handle;
}

std::size_t countMissingThreads() noexcept { return missingThreads; }

int joinThread(void* thread, void** result) {
    Registry& known = registry();
    std::unique_lock lock(known.mutex);
    const auto place = known.threads.find(thread);
    if (place == known.threads.end() || place->second->isDetached || place->second->isJoined) return ESRCH;
    const pthread_t handle = place->second->handle;
    if (pthread_equal(handle, pthread_self())) return EDEADLK;
    place->second->isJoined = true;
    lock.unlock();
    const int failure = pthread_join(handle, result);
    lock.lock();
    if (failure == 0) {
        known.threads.erase(thread);
    } else {
        known.threads.at(thread)->isJoined = false; // it still runs
    }
    return failure;
}

std::size_t countRunningThreads(const Broker& owner) {
    Registry& known = registry();
    const std::lock_guard lock(known.mutex);
    std::size_t count = 0;
    for (const auto& [handle, thread] : known.threads) {
        const bool isOwned = !thread->owner || thread->owner == &owner;
        count += thread->isRunning && isOwned ? 1 : 0;
    }
    return count;
}

} // namespace cimhost
