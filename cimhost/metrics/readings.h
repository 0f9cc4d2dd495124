// Looks at the adapters when somebody asks: whoever asks while a look is under way shares it, and nobody waits for
// longer than he said.
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

/// What one look at the adapters found.
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

    /// read looks at the adapters, on a thread of this object; it may take as long as it likes. What it throws counts
    /// as no reading.
    explicit Readings(Read read);
    /// Stops, and waits for a look that is under way: for ever, where that hangs.
    ~Readings();
    Readings(const Readings&) = delete;
    Readings& operator=(const Readings&) = delete;

    /// Never waits. give is called once, on a thread of this object or at once: with a reading, or with null when the
    /// patience is at its end, the look fails or this stops. A look that has been under way for longer than that
    /// patience is not waited for. give throws nothing.
    void ask(std::chrono::milliseconds patience, Give give);

    /// False where nobody waits for the look that is under way any more.
    [[nodiscard]] bool isAwaited() const;

    /// Begins no further look, and tells all who wait. Does not wait.
    void stop();
    /// The same, and waits for the look that is under way.
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
