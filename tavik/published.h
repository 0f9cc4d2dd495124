// An object that every call looks at and that is seldom replaced by another one: whoever looks takes no lock.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

namespace tavik {

/** All members can be called from several threads at once. A thread remembers what it saw last, without keeping it
 *  alive, and asks again behind the lock only once there is another one. */
template <typename Object>
class Published {
public:
    /** The object of now, which lives as long as somebody holds it; null if there is none. */
    std::shared_ptr<Object> get() const {
        struct Seen {
            std::uint64_t number = 0;
            std::weak_ptr<Object> object;
        };
        thread_local Seen seen;
        if (seen.number == number_.load(std::memory_order_acquire)) {
            if (std::shared_ptr<Object> object = seen.object.lock()) return object;
        }
        // There is another one, or there was none, or the one seen was replaced and went a moment ago.
        const std::lock_guard lock(mutex_);
        seen.object = object_;
        seen.number = number_.load(std::memory_order_relaxed);
        return object_;
    }

    /** Replaces it. @return the one before. */
    std::shared_ptr<Object> set(std::shared_ptr<Object> object) {
        static std::atomic<std::uint64_t> numbers{0};
        const std::lock_guard lock(mutex_);
        std::swap(object_, object);
        number_.store(++numbers, std::memory_order_release);
        return object;
    }

private:
    mutable std::mutex mutex_;
    std::shared_ptr<Object> object_;
    std::atomic<std::uint64_t> number_{0}; ///< of no other object of the type; 0 before the first
};

} // namespace tavik
