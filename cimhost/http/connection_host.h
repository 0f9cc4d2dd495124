// What the connections of a server share: its settings and handler, the room that there is, whose passwords are tried.
// Private to the HTTP server; lives on the network thread.
#pragma once

#include "cimhost/http/guess_queue.h"
#include "cimhost/http/host_names.h"
#include "cimhost/http/login_gate.h"
#include "cimhost/http/mailbox.h"
#include "cimhost/http/room.h"
#include "cimhost/http/server.h"
#include "cimhost/http/worker_pool.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace cimhost::http {

class Connection;

using WorkGuard = boost::asio::executor_work_guard<boost::asio::io_context::executor_type>;

// Somebody's name and password, until they are found right or wrong.
struct Guess {
    std::shared_ptr<Connection> connection;
    std::string authorization;
    std::string user;
    WorkGuard keepRunning;
};

struct ConnectionHost {
    ConnectionHost(Options settings, Handler& requestHandler);
    ~ConnectionHost() { mailbox->close(); }
    ConnectionHost(const ConnectionHost&) = delete;
    ConnectionHost& operator=(const ConnectionHost&) = delete;

    // Closes it, if there is one, because another one needs its place.
    bool giveWay(Standing* standing);
    // Closes a late or idle one where that is needed; false if nobody gives way to that address for now.
    bool makeRoomForKnown(const Source& source);
    bool makeRoomForGuest();
    void verify(Guess guess);
    // Where requests are answered.
    void work(std::function<void()> work);
    // Nothing is read from a client whose request is being answered, so that it has left is looked for now and then.
    void watchForLeaving();

    Options options;
    Handler& handler;
    HostNames names;
    std::function<bool(const Authority&)> isCertified; // by the name in the certificate
    Room room;                                         // outlives the io_context, with which the last connections go
    std::size_t bodyBytes = 0;                         // held by all connections
    bool stopping = false;
    std::function<void()> onLastConnectionGone;
    boost::asio::io_context io;
    std::shared_ptr<Mailbox> mailbox;
    boost::asio::steady_timer watch;
    bool isWatching = false;
    WorkerPool workers;
    // Guessing passwords costs whoever guesses: one at a time, and never a worker's time.
    WorkerPool verifier;

private:
    void verifyNext();
    void onVerified(const Guess& guess, const std::optional<std::string>& user);

    LoginGate gate;
    GuessQueue<Guess> guesses;
    bool isVerifying = false;
};

// Every standing in a server's room is a connection of its.
bool closeIfAny(Standing* standing);

} // namespace cimhost::http
