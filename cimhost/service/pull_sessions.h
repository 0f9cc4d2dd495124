// The enumerations that clients read in several answers (pulled enumerations of DSP0200): the elements that are left of
// each, its owner, and how long it is kept.
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
    std::size_t sessionsOfOne = 1024;                 // of these, of one user; all clients without a name are one user
    std::size_t bytes = std::size_t{256} << 20;       // of elements that wait for their clients
    std::size_t bytesOfOne = std::size_t{128} << 20;  // of these, of one user
    std::size_t bytesOfAnswer = std::size_t{8} << 20; // an answer of so many takes no further element
    std::chrono::seconds standardTimeout{60};         // if the client names none
    std::chrono::seconds longestTimeout{300};         // that a client may name
    std::size_t emptyPulls = 100;                     // so many requests in a row may pull nothing
    std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
};

enum class PulledKind { instances, paths };

/// Who opened a session, or asks for one.
struct PullOwner {
    std::string user;
    std::string nameSpace; ///< by its own name
    /// What the session's Pull operations return. In a request, nothing: either kind will do.
    std::optional<PulledKind> kind;
};

class PullSessions;

/// What is left of one enumeration: the XML of its elements. Used by one thread at a time. Its PullSessions outlives
/// it.
class PullSession {
public:
    ~PullSession();
    PullSession(const PullSession&) = delete;
    PullSession& operator=(const PullSession&) = delete;

    /// Adds one element behind the others. Throws CimFailure with CIM_ERR_SERVER_LIMITS_EXCEEDED if the sessions, or
    /// those of its user, hold too much.
    void append(std::string_view element);

    [[nodiscard]] bool isEmpty() const noexcept { return pieces.empty() && gatheredEnds.empty(); }

    /// Moves the first elements to the end of the answer: at most `count`, and none after bytesOfAnswer have been
    /// moved. Throws CimFailure with CIM_ERR_SERVER_LIMITS_EXCEEDED if too many calls in a row ask for no element.
    void moveTo(ByteBuffer& answer, std::uint32_t count);

private:
    friend class PullSessions;

    // Elements one behind the other, whose memory goes back to the system once all of them have been moved.
    struct Piece {
        Pages bytes;
        std::vector<std::uint32_t> ends;
        std::size_t next = 0;    // the first element that is left
        std::size_t charged = 0; // bytes, to the session's user
    };

    PullSession(PullSessions& all, PullOwner whose, std::chrono::seconds patience)
        : sessions(all), owner(std::move(whose)), timeout(patience) {}
    void seal();

    PullSessions& sessions;
    const PullOwner owner;
    const std::chrono::seconds timeout;
    std::deque<Piece> pieces;
    ByteBuffer gathered; // elements for the next piece
    std::vector<std::uint32_t> gatheredEnds;
    std::size_t emptyPulls = 0;
    bool isCounted = false; // among the open sessions
};

class PullSessions {
public:
    explicit PullSessions(PullOptions how = {}) : settings(std::move(how)) {}
    /// Ends all sessions that are kept.
    ~PullSessions();
    PullSessions(const PullSessions&) = delete;
    PullSessions& operator=(const PullSessions&) = delete;

    [[nodiscard]] const PullOptions& options() const noexcept { return settings; }

    /// Opens a session, which no client can take yet. Throws CimFailure with CIM_ERR_SERVER_LIMITS_EXCEEDED if too many
    /// are open, or too many of that user.
    [[nodiscard]] std::unique_ptr<PullSession> open(PullOwner owner, std::chrono::seconds timeout);

    /// Keeps the session until its timeout has passed. Throws CimFailure with CIM_ERR_SERVER_LIMITS_EXCEEDED if
    /// sessions hold too much, and with CIM_ERR_FAILED if the system has no random numbers; then the session has ended.
    /// @return a name that cannot be guessed and by which the session can be taken once: the client's enumeration
    /// context
    [[nodiscard]] std::string keep(std::unique_ptr<PullSession> session);

    /// Takes the session of that name, which then is no longer kept. Throws CimFailure with
    /// CIM_ERR_INVALID_ENUMERATION_CONTEXT if there is none: the name never existed, was used before, or its time has
    /// passed. The same if the session belongs to another user, namespace or kind; then it stays kept.
    [[nodiscard]] std::unique_ptr<PullSession> take(const std::string& context, const PullOwner& asking);

    /// Ends the session of that name if it is still kept, because its client never learnt the name.
    void end(const std::string& context) noexcept;

    struct Figures {
        std::size_t sessions = 0;
        std::size_t bytes = 0;
    };
    /// How many sessions are open, and how many bytes they hold.
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
    mutable std::mutex mutex; // no session ends while it is held: the end of each takes it
    std::condition_variable changed;
    std::unordered_map<std::string, Kept> kept;
    std::set<std::pair<Clock::time_point, std::string>> deadlines; // of what is kept
    std::map<std::string, Figures> users;
    Figures all;
    Clock::time_point nextLook = Clock::time_point::max();
    bool isStopping = false;
    std::thread watcher; // begins when the first session is kept
};

} // namespace cimhost
