#include "cimhost/http/connection_host.h"

#include "cimhost/http/connection.h"
#include "cimhost/http/wire.h"

#include <boost/asio/post.hpp>

#include <chrono>
#include <utility>

namespace cimhost::http {

namespace asio = boost::asio;

ConnectionHost::ConnectionHost(Options settings, Handler& requestHandler)
    : options(std::move(settings)), handler(requestHandler), names(options.names),
      room({options.limits.newcomers, options.limits.connections, options.limits.bodyBytesPerSecond}),
      mailbox(std::make_shared<Mailbox>(io)), watch(io), workers(options.workers), verifier(1) {}

bool closeIfAny(Standing* standing) {
    if (standing) static_cast<Connection*>(standing)->close();
    return standing != nullptr;
}

bool ConnectionHost::giveWay(Standing* standing) {
    if (!closeIfAny(standing)) return false;
    ++options.traffic->madeRoom;
    return true;
}

bool ConnectionHost::makeRoomForKnown(const Source& source) {
    if (!room.isFullOfKnown()) return true;
    for (Standing* standing : room.all())
        static_cast<Connection*>(standing)->noteUntaken();
    return giveWay(room.knownToGiveWay(Standing::Clock::now(), source));
}

bool ConnectionHost::makeRoomForGuest() {
    return !room.isFullOfGuests() || giveWay(room.guestToGiveWay(Standing::Clock::now()));
}

void ConnectionHost::watchForLeaving() {
    if (isWatching) return;
    isWatching = true;
    watch.expires_after(std::chrono::milliseconds(100));
    watch.async_wait([this](boost::system::error_code) {
        isWatching = false;
        bool isAnswering = false;
        for (Standing* standing : room.all()) {
            if (standing->phase != Standing::Phase::answering || standing->isClosed) continue;
            isAnswering = true;
            static_cast<Connection*>(standing)->noteIfLeft();
        }
        if (isAnswering) watchForLeaving();
    });
}

void ConnectionHost::verify(Guess guess) {
    const Source source = guess.connection->source;
    guesses.push(source, std::move(guess));
    verifyNext();
}

void ConnectionHost::work(std::function<void()> work) {
    if (options.answers && options.answers(work)) return;
    asio::post(workers, std::move(work));
}

// A guess that was settled by an earlier one of the same address is not verified again.
void ConnectionHost::verifyNext() {
    while (!isVerifying && !guesses.empty()) {
        Guess guess = guesses.pop();
        if (guess.connection->isClosed) continue;
        if (std::optional<std::string> user = options.credentials->recall(guess.authorization)) {
            guess.connection->onLogin(std::move(*user));
            continue;
        }
        if (const auto wait = gate.wait(guess.connection->source, guess.user, LoginGate::Clock::now())) {
            guess.connection->onWrongLogin(tooManyGuesses(*wait));
            continue;
        }
        isVerifying = true;
        asio::post(verifier, [this, credentials = options.credentials, guess = std::move(guess)]() mutable {
            std::optional<std::string> user = credentials->verify(guess.authorization);
            // The connection's end touches what belongs to the network thread.
            asio::post(io, [this, guess = std::move(guess), user = std::move(user)] { onVerified(guess, user); });
        });
    }
}

void ConnectionHost::onVerified(const Guess& guess, const std::optional<std::string>& user) {
    isVerifying = false;
    Connection& connection = *guess.connection;
    if (user) {
        gate.succeeded(connection.source, guess.user);
        connection.onLogin(*user);
    } else {
        gate.failed(connection.source, guess.user, LoginGate::Clock::now());
        connection.onWrongLogin(unauthorized());
    }
    verifyNext();
}

} // namespace cimhost::http
