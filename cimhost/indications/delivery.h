// One listener: the indications that wait for it, and how they get there. A listener that hangs delays no other.
#pragma once

#include "cimhost/broker/log.h"
#include "cimhost/indications/delivery_loop.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

namespace cimhost {

struct DeliveryOptions {
    http::ClientLimits limits;
    std::size_t queueLength = 16384;                ///< indications; if more wait, the oldest is dropped
    std::size_t queueBytes = std::size_t{32} << 20; ///< the same for their bytes
    std::chrono::milliseconds firstPause{100};      ///< after a failure; doubled after each further one
    std::chrono::milliseconds longestPause{5'000};  ///< no pause is longer
    std::chrono::milliseconds patience{60'000};     ///< how long an indication is tried before it is given up
    std::chrono::milliseconds stopGrace{2'000};     ///< for indications that wait when the server ends
    std::size_t connections = 256;                  ///< to all listeners at the same moment; further ones wait
};

struct DeliveryCounts {
    std::uint64_t delivered = 0; ///< the listener took it
    std::uint64_t refused = 0;   ///< the listener answered with an error; not tried again
    std::uint64_t dropped = 0;   ///< the queue was full
    std::uint64_t givenUp = 0;   ///< its time was over, or the server ended
    std::uint64_t attempts = 0;  ///< to send one, whatever came of it

    DeliveryCounts& operator+=(const DeliveryCounts& more);
};

/// An indication as <INSTANCE> without its end tag, since each listener's sequence properties are still to come. Shared
/// by all listeners.
using OpenInstance = std::shared_ptr<const std::string>;

/// Belongs to the thread of its loop, except for what is said to be for other threads.
class Delivery final : public ConnectionUser, public std::enable_shared_from_this<Delivery> {
public:
    /// The loop outlives the delivery.
    /// @param name what reports call the listener; it is made printable
    /// @param sequenceContext sent as SequenceContext
    /// @param log takes reports of failures and losses; may be empty
    Delivery(DeliveryLoop& loop, http::Url url, std::string_view name, std::string sequenceContext,
             DeliveryOptions options, LogSink log);
    ~Delivery() override;
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    using Clock = std::chrono::steady_clock;

    /// Queues an indication and gives it its sequence number, so that a listener sees a gap if one is dropped. From any
    /// thread. Never waits.
    void enqueue(OpenInstance indication);

    /// Takes no more indications, and ends once those that wait have been sent. It ends at once if the listener fails,
    /// and at the given time in any case. From any thread. Does not wait for the end.
    void stop(Clock::time_point until);
    /// Waits for the end, which comes no later than the time given to stop(). From any thread but the loop's.
    void waitForEnd();

    /// From any thread.
    [[nodiscard]] DeliveryCounts counts() const;
    /// How many indications wait, with the one on its way. From any thread.
    [[nodiscard]] std::size_t queued() const;
    /// True after the end: nothing changes any more. From any thread.
    [[nodiscard]] bool isOver() const;

    void onGranted() override;
    void giveUpConnection() override;

private:
    struct Waiting {
        OpenInstance instance;
        std::uint64_t number;
        Clock::time_point until;
    };
    enum class Attempt { taken, refused, failed };

    enum class Stage { idle, waitingForConnection, sending, pausing, ended };

    template <class Step>
    void tryStep(Step step);
    void failStep(const char* reason);
    void noteAsleep();
    void postWake();
    void wake();
    void onStop();
    void takeNext();
    void send();
    void onResult(const http::ClientResult& result);
    void settle(Attempt result, const std::string& reason);
    void startPause();
    void endPause();
    void end();
    void closeConnection();
    [[nodiscard]] bool isToEnd() const;
    Attempt judge(const http::ClientResult& result, std::string& reason) const;
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

    // Used by the loop's thread alone.
    DeliveryLoop& shared;
    http::AsyncClient client;
    http::Timer timer;     // ends a pause
    http::Timer stopTimer; // ends the delivery
    Stage stage = Stage::idle;
    bool hasConnection = false; // of those that the loop grants
    std::uint64_t sentNumber = 0;
    std::chrono::milliseconds pause{};

    mutable std::mutex mutex; // guards all that follows
    std::condition_variable changed;
    std::deque<Waiting> queue;
    std::size_t queuedBytes = 0;
    std::uint64_t nextNumber = 0;
    DeliveryCounts totals;
    std::uint64_t lostAtLastReport = 0;
    bool isAwake = false; // the loop has been told that there is something to do
    bool isFailing = false;
    bool isStopping = false;
    bool hasEnded = false;
    Clock::time_point stopAt{};
};

} // namespace cimhost
