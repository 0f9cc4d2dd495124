// Reads the adapters when somebody asks. All who ask while a reading is under way share it. Nobody waits for longer
// than the given patience.
#pragma once

#include "cimhost/metrics/exposition.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace cimhost::metrics {

/// What one reading of the adapters has found.
class Reading {
public:
    virtual ~Reading() = default;
    virtual void write(Exposition& out) const = 0;
};

using SharedReading = std::shared_ptr<const Reading>;

class Readings {
public:
    using Clock = std::chrono::steady_clock;
    using Read = std::function<SharedReading()>;
    using Give = std::function<void(const SharedReading&)>;

    /// Throws std::system_error if the system gives no thread.
    /// @param read reads the adapters, on a thread of this object, and may take long. If it throws, there is no reading
    explicit Readings(Read read);
    /// The same as finish().
    ~Readings();
    Readings(const Readings&) = delete;
    Readings& operator=(const Readings&) = delete;

    /// Asks for a reading. Never waits. give is called once, on a thread of this object or before this returns: with a
    /// reading, or with null if the patience is over, the reading fails, or this stops. If a reading has been under way
    /// for longer than the patience already, give gets null at once. give must not throw.
    void ask(std::chrono::milliseconds patience, Give give);

    /// False if nobody waits any more for the reading that is under way.
    [[nodiscard]] bool isAwaited() const;

    /// Begins no further reading, and gives null to all who wait. Does not wait.
    void stop();
    /// The same, and waits for the reading that is under way; for ever if that hangs.
    void finish();

private:
    struct Asker {
        Clock::time_point until;
        Give give;
    };
    using Askers = std::list<Asker>;

    static void tell(const Askers& askers, const SharedReading& reading);
    [[nodiscard]] Askers takeLate(Clock::time_point now);
    [[nodiscard]] SharedReading readNow() const noexcept;
    void readOnDemand();
    void watch();

    const Read read;
    mutable std::mutex mutex;
    std::condition_variable changed;
    Askers askers;
    bool isReading = false;
    Clock::time_point begun;
    bool isStopping = false;
    std::thread reader;
    std::thread watcher; // last: they use all of the above
};

} // namespace cimhost::metrics
