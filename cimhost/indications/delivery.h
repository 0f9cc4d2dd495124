// One listener: what waits for it, and the thread that brings it there. A listener that hangs holds up only its own.
#pragma once

#include "cimhost/broker/log.h"
#include "cimhost/http/client.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace cimhost {

struct DeliveryOptions {
    http::ClientLimits limits;
    std::size_t queueLength = 16384;                ///< then the oldest goes
    std::size_t queueBytes = std::size_t{32} << 20; ///< likewise
    std::chrono::milliseconds firstPause{100};      ///< after a failure; doubled after each further one
    std::chrono::milliseconds longestPause{5'000};  ///< no pause is longer
    std::chrono::milliseconds patience{60'000};     ///< how long an indication is tried before it is given up
    std::chrono::milliseconds stopGrace{2'000};     ///< for what waits when the server ends
};

struct DeliveryCounts {
    std::uint64_t delivered = 0; ///< the listener took it
    std::uint64_t refused = 0;   ///< the listener answered with an error; not tried again
    std::uint64_t dropped = 0;   ///< the queue was full
    std::uint64_t givenUp = 0;   ///< out of patience, or the server ended
    std::uint64_t attempts = 0;
};

/// An indication as <INSTANCE> without its end tag: sequence properties are still to come. Shared by all listeners.
using OpenInstance = std::shared_ptr<const std::string>;

class Delivery {
public:
    /// name is what reports call the listener, made printable; the context is sent as SequenceContext.
    Delivery(http::Url url, std::string_view name, std::string sequenceContext, DeliveryOptions options, LogSink log);
    /// Stops at once, unless stop() was called.
    ~Delivery();
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    /// Never waits for the listener. Numbers are given here, so a listener sees a gap where one was dropped.
    void enqueue(OpenInstance indication);

    /// Ends the thread: after what waits has been brought or the time is over, and at once while the listener fails.
    void stop(std::chrono::milliseconds grace);
    /// Tells the thread to end at once, and does not wait for it. True once it has.
    bool abandon();

    [[nodiscard]] DeliveryCounts counts() const;

private:
    using Clock = std::chrono::steady_clock;
    struct Waiting {
        OpenInstance instance;
        std::uint64_t number;
        Clock::time_point until;
    };
    enum class Attempt { taken, refused, failed };

    void run();
    bool waitForWork(std::unique_lock<std::mutex>& lock);
    Attempt attempt(const Waiting& waiting, std::string& reason);
    std::string messageFor(const Waiting& waiting) const;
    void noteFailure(const std::string& reason);
    void noteSuccess();
    void dropOldest();
    void giveUpExpired();
    void report(LogLevel level, const std::string& text) const;

    const std::string listener;
    const std::string context;
    const DeliveryOptions settings;
    const LogSink log;
    http::Client client;

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::deque<Waiting> queue;
    std::size_t queuedBytes = 0;
    std::uint64_t nextNumber = 0;
    DeliveryCounts totals;
    std::uint64_t lostAtLastReport = 0;
    bool isFailing = false;
    bool isStopping = false;
    bool hasEnded = false;
    Clock::time_point stopAt{};
    std::chrono::milliseconds pause{};
    std::thread thread; // last: it uses all of the above
};

} // namespace cimhost
