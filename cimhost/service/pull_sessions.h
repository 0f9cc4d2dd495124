// What clients read in several answers (the pulled enumerations of DSP0200): what is left of each, whose it is, and how
// long it is kept.
#pragma once

#include "cimhost/byte_buffer.h"
#include "cimhost/service/pages.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace cimhost {

struct PullOptions {
    std::size_t sessions = 4096;                      // open at the same moment
    std::size_t sessionsOfOne = 1024;                 // of these, of one user; whoever has no name is one user too
    std::size_t bytes = std::size_t{256} << 20;       // of elements that wait for their clients
    std::size_t bytesOfOne = std::size_t{128} << 20;  // of these, of one user
    std::size_t bytesOfAnswer = std::size_t{8} << 20; // an answer that has as many takes no further element
    std::chrono::seconds standardTimeout{60};         // where the client names none
    std::chrono::seconds longestTimeout{300};         // that a client may name
    std::size_t emptyPulls = 100;                     // in a row
    std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
};

enum class PulledKind { instances, paths };

/// Who opened a session, or asks for one.
struct PullOwner {
    std::string user;
    std::string nameSpace; ///< by its own name
    /// Which Pull operations go with it; in a request without a value either will do.
    std::optional<PulledKind> kind;
};

class PullSessions;

/// What is left of one enumeration: its elements, rendered. Not to be used by two threads at a time. Ends before the
/// sessions that it is one of.
class PullSession {
public:
    ~PullSession();
    PullSession(const PullSession&) = delete;
    PullSession& operator=(const PullSession&) = delete;

    /// Adds one element behind the others. Throws CimFailure with CIM_ERR_SERVER_LIMITS_EXCEEDED where sessions hold
    /// too much already.
    void append(std::string_view element);

    [[nodiscard]] bool isEmpty() const noexcept { return pieces.empty() && gatheredEnds.empty(); }

    /// Moves elements from the front to the end of the answer: as many as asked for, but none once bytesOfAnswer have
    /// been moved. Counts pulls of none: throws CimFailure with CIM_ERR_SERVER_LIMITS_EXCEEDED for one too many.
    void moveTo(ByteBuffer& answer, std::uint32_t count);

private:
    friend class PullSessions;

    // Elements one behind the other, in memory that goes back piece by piece.
    struct Piece {
        Pages bytes;
        std::vector<std::uint32_t> ends;
        std::size_t next = 0; // the first that is left
        std::size_t charged = 0;
    };

    PullSession(PullSessions& all, PullOwner whose, std::chrono::seconds patience)
        : sessions(all), owner(std::move(whose)), timeout(patience) {}
    void seal();

    PullSessions& sessions;
    const PullOwner owner;
    const std::chrono::seconds timeout;
    std::deque<Piece> pieces;
    ByteBuffer gathered; // of which the next piece is made
    std::vector<std::uint32_t> gatheredEnds;
    std::size_t emptyPulls = 0;
    bool isCounted = false; // among the sessions
};

class PullSessions {
public:
    explicit PullSessions(PullOptions how = {}) : settings(std::move(how)) {}
    /// All sessions end.
    ~PullSessions();
    PullSessions(const PullSessions&) = delete;
    PullSessions& operator=(const PullSessions&) = delete;

    [[nodiscard]] const PullOptions& options() const noexcept { return settings; }

    /// A session that nobody can ask for yet. Throws CimFailure with CIM_ERR_SERVER_LIMITS_EXCEEDED if there are too
    /// many.
    [[nodiscard]] std::unique_ptr<PullSession> open(PullOwner owner, std::chrono::seconds timeout);

    /// Keeps the session until its timeout has passed, and returns the name by which it can be taken once: what a
    /// client knows as enumeration context. It cannot be guessed.
    [[nodiscard]] std::string keep(std::unique_ptr<PullSession> session);

    /// The session of that name, which from now on is not kept. Throws CimFailure with
    /// CIM_ERR_INVALID_ENUMERATION_CONTEXT, the same for a name that never was, was used or is over, and for the
    /// session of somebody else, of another namespace or of another kind, which stays as it is.
    [[nodiscard]] std::unique_ptr<PullSession> take(const std::string& context, const PullOwner& asking);

    /// Ends the session of that name, if it is still kept: its client never came to know the name.
    void end(const std::string& context) noexcept;

    struct Figures {
        std::size_t sessions = 0;
        std::size_t bytes = 0;
    };
    /// What is open, and what that holds.
    [[nodiscard]] Figures figures() const;

private:
    friend class PullSession;
    using Clock = std::chrono::steady_clock;
    using Ended = std::vector<std::unique_ptr<PullSession>>;
    struct Kept {
        std::unique_ptr<PullSession> session;
        Clock::time_point deadline;
    };

    void charge(const std::string& user, std::size_t bytes);
    void discharge(const std::string& user, std::size_t bytes);
    void closed(const std::string& user);
    void startWatching();
    void watch();
    [[nodiscard]] std::unique_ptr<PullSession> remove(std::unordered_map<std::string, Kept>::iterator place);
    [[nodiscard]] Ended removeOverdue();

    const PullOptions settings;
    mutable std::mutex mutex; // sessions end behind it, since each tells that it does
    std::condition_variable changed;
    std::unordered_map<std::string, Kept> kept;
    std::set<std::pair<Clock::time_point, std::string>> deadlines; // of what is kept
    std::map<std::string, Figures> users;
    Figures all;
    Clock::time_point nextLook = Clock::time_point::max();
    bool isStopping = false;
    std::thread watcher; // from the first session on
};

} // namespace cimhost
