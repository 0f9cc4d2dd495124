// What the connections of a server share: its settings, its handler, the room for clients, and the passwords that wait
// to be verified. Private to the HTTP server; belongs to the network thread.
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

// The name and password of one request, until they are found right or wrong.
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

    // Closes that connection because another client needs its place. Null is no connection: then false.
    bool giveWay(Standing* standing);
    // Both return whether there is room for one more. Where there is none, they close a connection whose client has
    // left, is late or (for a known client) is idle. False if there is none to close, or none for that address.
    bool makeRoomForKnown(const Source& source);
    bool makeRoomForGuest();
    // Has the password verified when its turn comes, and then calls the connection.
    void verify(Guess guess);
    // Has the work done where requests are answered: by Options::answers, or by a worker.
    void work(std::function<void()> work);
    // Looks ten times a second whether clients whose requests are being answered have left, as long as there are such.
    // Nothing is read from them meanwhile, so no read tells.
    void watchForLeaving();

    Options options;
    Handler& handler;
    HostNames names;
    std::function<bool(const Authority&)> isCertified; // whether the certificate bears that name; empty without TLS
    Room room;                                         // outlives the io_context: the last connections end with that
    std::size_t bodyBytes = 0;                         // of bodies, held by all connections together
    bool stopping = false;
    std::function<void()> onLastConnectionGone;
    boost::asio::io_context io;
    std::shared_ptr<Mailbox> mailbox;
    boost::asio::steady_timer watch;
    bool isWatching = false;
    WorkerPool workers;
    // Verifies passwords, one at a time and on a thread of its own: a client that guesses passwords costs the others no
    // worker's time.
    WorkerPool verifier;

private:
    void verifyNext();
    void onVerified(const Guess& guess, const std::optional<std::string>& user);

    LoginGate gate;
    GuessQueue<Guess> guesses;
    bool isVerifying = false;
};

// Closes the connection and returns true; false for null. Every standing in a server's room is one of its connections.
bool closeIfAny(Standing* standing);

} // namespace cimhost::http
