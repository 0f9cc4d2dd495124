#include "cimhost/service/pull_sessions.h"

#include "cimhost/model/names.h"
#include "cimhost/service/cim_failure.h"
#include "cimhost/thread.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/random.h>
#include <system_error>

namespace cimhost {

namespace {

constexpr std::size_t pieceBytes = std::size_t{1} << 20;

// 128 bits that nobody can foresee, as hexadecimal digits.
std::string newContext() {
    std::array<unsigned char, 16> bytes{};
    ssize_t count = -1;
    do {
        count = ::getrandom(bytes.data(), bytes.size(), 0);
    } while (count < 0 && errno == EINTR);
    if (count != static_cast<ssize_t>(bytes.size())) {
        throw CimFailure(CMPI_RC_ERR_FAILED, "the system has no random numbers");
    }
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

[[noreturn]] void refuse(const std::string& reason) { throw CimFailure(serverLimitsExceeded, reason); }

std::string mebibytes(std::size_t bytes) { return std::to_string(bytes >> 20) + " MiB"; }

} // namespace

PullSession::~PullSession() {
    if (!isCounted) return;
    std::size_t charged = 0;
    for (const Piece& piece : pieces)
        charged += piece.charged;
    pieces.clear();
    sessions.discharge(owner.user, charged);
    sessions.closed(owner.user);
}

void PullSession::append(std::string_view element) {
    gathered.append(element);
    gatheredEnds.push_back(static_cast<std::uint32_t>(gathered.size()));
    if (gathered.size() >= pieceBytes) seal();
}

// Makes a piece of the gathered elements, in pages of its own.
void PullSession::seal() {
    if (gatheredEnds.empty()) return;
    Piece& piece = pieces.emplace_back();
    piece.bytes = Pages(gathered.view());
    piece.ends.assign(gatheredEnds.begin(), gatheredEnds.end());
    const std::size_t size = piece.bytes.size() + piece.ends.size() * sizeof(piece.ends[0]);
    sessions.charge(owner.user, size);
    piece.charged = size;
    gathered.truncate(0);
    gatheredEnds.clear();
}

void PullSession::moveTo(ByteBuffer& answer, std::uint32_t count) {
    emptyPulls = count == 0 ? emptyPulls + 1 : 0;
    if (emptyPulls > sessions.options().emptyPulls) {
        refuse("more than " + std::to_string(sessions.options().emptyPulls) +
               " requests in a row have pulled nothing: the enumeration is closed");
    }
    const std::size_t begin = answer.size();
    for (; count > 0 && !pieces.empty() && answer.size() - begin < sessions.options().bytesOfAnswer; --count) {
        Piece& piece = pieces.front();
        const std::size_t from = piece.next == 0 ? 0 : piece.ends[piece.next - 1];
        answer.append(piece.bytes.view().substr(from, piece.ends[piece.next] - from));
        if (++piece.next < piece.ends.size()) continue;
        sessions.discharge(owner.user, piece.charged);
        pieces.pop_front();
    }
}

PullSessions::~PullSessions() {
    {
        const std::lock_guard lock(mutex);
        isStopping = true;
    }
    changed.notify_one();
    if (watcher.joinable()) watcher.join();
    kept.clear();
}

std::unique_ptr<PullSession> PullSessions::open(PullOwner owner, std::chrono::seconds timeout) {
    std::unique_ptr<PullSession> session(new PullSession(*this, std::move(owner), timeout));
    const std::lock_guard lock(mutex);
    if (all.sessions >= settings.sessions) {
        refuse("as many enumerations are open as may be, " + std::to_string(settings.sessions));
    }
    Figures& own = users[session->owner.user];
    if (own.sessions >= settings.sessionsOfOne) {
        refuse("this user has as many open enumerations as one may have, " + std::to_string(settings.sessionsOfOne));
    }
    ++own.sessions;
    ++all.sessions;
    session->isCounted = true;
    return session;
}

void PullSessions::charge(const std::string& user, std::size_t bytes) {
    const std::lock_guard lock(mutex);
    Figures& own = users[user];
    if (bytes > settings.bytes - std::min(all.bytes, settings.bytes)) {
        refuse("the open enumerations hold as much as they may, " + mebibytes(settings.bytes));
    }
    if (bytes > settings.bytesOfOne - std::min(own.bytes, settings.bytesOfOne)) {
        refuse("the open enumerations of this user hold as much as one user's may, " + mebibytes(settings.bytesOfOne));
    }
    own.bytes += bytes;
    all.bytes += bytes;
}

void PullSessions::discharge(const std::string& user, std::size_t bytes) {
    const std::lock_guard lock(mutex);
    users[user].bytes -= bytes;
    all.bytes -= bytes;
}

void PullSessions::closed(const std::string& user) {
    const std::lock_guard lock(mutex);
    --all.sessions;
    const auto own = users.find(user);
    if (--own->second.sessions == 0) users.erase(own);
}

std::string PullSessions::keep(std::unique_ptr<PullSession> session) {
    session->seal();
    session->gathered = {};
    session->gatheredEnds = {};
    std::string context = newContext();
    const Clock::time_point deadline = settings.now() + session->timeout;
    Ended ended;
    bool isSooner = false;
    {
        const std::lock_guard lock(mutex);
        ended = removeOverdue();
        deadlines.emplace(deadline, context);
        Kept& place = kept[context];
        place.session = std::move(session);
        place.deadline = deadline;
        startWatching();
        isSooner = deadline < nextLook;
    }
    if (isSooner) changed.notify_one();
    return context;
}

std::unique_ptr<PullSession> PullSessions::take(const std::string& context, const PullOwner& asking) {
    Ended ended;
    const std::lock_guard lock(mutex);
    ended = removeOverdue();
    const auto found = kept.find(context);
    const PullOwner* owner = found == kept.end() ? nullptr : &found->second.session->owner;
    if (!owner || owner->user != asking.user || !equalNames(owner->nameSpace, asking.nameSpace) ||
        (asking.kind && asking.kind != owner->kind)) {
        throw CimFailure(invalidEnumerationContext,
                         "there is no such open enumeration: each context is good for one request, and ends if nobody "
                         "asks within its time");
    }
    return remove(found);
}

void PullSessions::end(const std::string& context) noexcept {
    std::unique_ptr<PullSession> ended;
    const std::lock_guard lock(mutex);
    const auto found = kept.find(context);
    if (found != kept.end()) ended = remove(found);
}

std::unique_ptr<PullSession> PullSessions::remove(std::unordered_map<std::string, Kept>::iterator place) {
    std::unique_ptr<PullSession> session = std::move(place->second.session);
    deadlines.erase({place->second.deadline, place->first});
    kept.erase(place);
    return session;
}

PullSessions::Ended PullSessions::removeOverdue() {
    Ended ended;
    const Clock::time_point now = settings.now();
    while (!deadlines.empty() && deadlines.begin()->first <= now) {
        ended.emplace_back();
        const auto place = kept.find(deadlines.begin()->second);
        if (place == kept.end()) {
            deadlines.erase(deadlines.begin()); // of a session for which there was no memory
        } else {
            ended.back() = remove(place);
        }
    }
    return ended;
}

PullSessions::Figures PullSessions::figures() const {
    const std::lock_guard lock(mutex);
    return all;
}

void PullSessions::startWatching() {
    if (watcher.joinable() || isStopping) return;
    try {
        watcher = makeThread([this] { watch(); });
    } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch)
        // The system gives no thread. Until a later session gets one, requests end what is overdue.
    }
}

// Ends the sessions whose timeout has passed.
void PullSessions::watch() {
    std::unique_lock lock(mutex);
    while (!isStopping) {
        Ended ended = removeOverdue();
        if (!ended.empty()) {
            lock.unlock();
            ended.clear();
            lock.lock();
            continue;
        }
        nextLook = deadlines.empty() ? Clock::time_point::max() : deadlines.begin()->first;
        if (deadlines.empty()) {
            changed.wait(lock);
        } else {
            changed.wait_until(lock, nextLook);
        }
    }
}

} // namespace cimhost
