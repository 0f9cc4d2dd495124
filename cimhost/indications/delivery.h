// One listener: what waits for it, and how it gets there. A listener that hangs holds up only its own.
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
    std::size_t queueLength = 16384;                ///< then the oldest goes
    std::size_t queueBytes = std::size_t{32} << 20; ///< likewise
    std::chrono::milliseconds firstPause{100};      ///< after a failure; doubled after each further one
    std::chrono::milliseconds longestPause{5'000};  ///< no pause is longer
    std::chrono::milliseconds patience{60'000};     ///< how long an indication is tried before it is given up
    std::chrono::milliseconds stopGrace{2'000};     ///< for what waits when the server ends
    std::size_t connections = 256;                  ///< to all listeners at the same moment; others wait for one
};

struct DeliveryCounts {
    std::uint64_t delivered = 0; ///< the listener took it
    std::uint64_t refused = 0;   ///< the listener answered with an error; not tried again
    std::uint64_t dropped = 0;   ///< the queue was full
    std::uint64_t givenUp = 0;   ///< out of patience, or the server ended
    std::uint64_t attempts = 0;

    DeliveryCounts& operator+=(const DeliveryCounts& more);
};

/// An indication as <INSTANCE> without its end tag: sequence properties are still to come. Shared by all listeners.
using OpenInstance = std::shared_ptr<const std::string>;

/// Belongs to the thread of its loop, but for what is said to be for any thread.
class Delivery final : public ConnectionUser, public std::enable_shared_from_this<Delivery> {
public:
    /// name is what reports call the listener, made printable; the context is sent as SequenceContext. The loop's end
    /// comes before that of the delivery.
    Delivery(DeliveryLoop& loop, http::Url url, std::string_view name, std::string sequenceContext,
             DeliveryOptions options, LogSink log);
    ~Delivery() override;
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    using Clock = std::chrono::steady_clock;

    /// From any thread. Never waits. Numbers are given here, so a listener sees a gap where one was dropped.
    void enqueue(OpenInstance indication);

    /// From any thread: takes nothing more, and ends when what waits has been brought; at once while the listener
    /// fails, and when the time has come. Does not wait for that.
    void stop(Clock::time_point until);
    /// From any other thread than the loop's: waits for the end. At the latest it comes with the time given to stop().
    void waitForEnd();

    /// From any thread.
    [[nodiscard]] DeliveryCounts counts() const;
    /// From any thread: how many indications wait, the one on its way included, and whether nothing changes any more.
    [[nodiscard]] std::size_t queued() const;
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

    // The loop's thread alone.
    DeliveryLoop& shared;
    http::AsyncClient client;
    http::Timer timer;     // of a pause
    http::Timer stopTimer; // of the end
    Stage stage = Stage::idle;
    bool hasConnection = false; // one of those that the loop has to give
    std::uint64_t sentNumber = 0;
    std::chrono::milliseconds pause{};

    mutable std::mutex mutex; // of all below
    std::condition_variable changed;
    std::deque<Waiting> queue;
    std::size_t queuedBytes = 0;
    std::uint64_t nextNumber = 0;
    DeliveryCounts totals;
    std::uint64_t lostAtLastReport = 0;
    bool isAwake = false; // the loop knows that there is something to do
    bool isFailing = false;
    bool isStopping = false;
    bool hasEnded = false;
    Clock::time_point stopAt{};
};

} // namespace cimhost
