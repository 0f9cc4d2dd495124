// What all deliveries share: one thread, and as many connections as the server can spare.
#pragma once

#include "cimhost/http/client.h"

#include <cstddef>
#include <deque>
#include <list>
#include <memory>
#include <thread>

namespace cimhost {

/// A user of connections. Called on the loop's thread.
class ConnectionUser {
public:
    virtual ~ConnectionUser() = default;

    /// May have a connection from now on.
    virtual void onGranted() = 0;
    /// The connection that it keeps between two messages is needed by somebody else: closes it, and has none any more.
    virtual void giveUpConnection() = 0;
};

class DeliveryLoop {
public:
    /// That many connections at the same moment.
    explicit DeliveryLoop(std::size_t connections);
    ~DeliveryLoop();
    DeliveryLoop(const DeliveryLoop&) = delete;
    DeliveryLoop& operator=(const DeliveryLoop&) = delete;

    /// Ends the thread, and with it whatever is under way. From another thread.
    void end();

    [[nodiscard]] http::ClientLoop& loop() noexcept { return clients; }

    // All of these on the loop's thread.

    /// True: the user may have a connection. False: it is told later, unless it is gone by then.
    bool request(const std::shared_ptr<ConnectionUser>& user);
    /// It has closed its connection.
    void release();
    /// It keeps its connection, and does not use it now.
    void noteIdle(ConnectionUser& user);
    void noteBusy(ConnectionUser& user);

private:
    void run();
    void handOn();

    const std::size_t most;
    std::size_t used = 0;
    std::deque<std::weak_ptr<ConnectionUser>> waiting;
    std::list<ConnectionUser*> idle; // longest first
    http::ClientLoop clients;
    std::thread thread; // last: it uses all of the above
};

} // namespace cimhost
