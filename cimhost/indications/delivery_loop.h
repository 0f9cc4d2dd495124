// What all deliveries share: one thread, and a limited number of connections.
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

    /// From now on it may have a connection.
    virtual void onGranted() = 0;
    /// Closes the connection that it keeps between two messages, because another user needs one. It must not call
    /// release() for that connection.
    virtual void giveUpConnection() = 0;
};

class DeliveryLoop {
public:
    /// Starts the thread. Throws std::system_error if the system gives none.
    /// @param connections the most at the same moment
    explicit DeliveryLoop(std::size_t connections);
    ~DeliveryLoop();
    DeliveryLoop(const DeliveryLoop&) = delete;
    DeliveryLoop& operator=(const DeliveryLoop&) = delete;

    /// Ends the thread; messages under way are dropped. Called on another thread.
    void end();

    [[nodiscard]] http::ClientLoop& loop() noexcept { return clients; }

    // All of these are called on the loop's thread.

    /// True if the user may have a connection now. If false, onGranted() tells it later, unless the user is gone by
    /// then.
    bool request(const std::shared_ptr<ConnectionUser>& user);
    /// A user has closed its connection.
    void release();
    /// The user keeps its connection but does not use it now. If others wait, it is told at once to give it up.
    void noteIdle(ConnectionUser& user);
    /// The user is not idle any more.
    void noteBusy(ConnectionUser& user);

private:
    void run();
    void handOn();

    const std::size_t most;
    std::size_t used = 0;
    std::deque<std::weak_ptr<ConnectionUser>> waiting;
    std::list<ConnectionUser*> idle; // the one that has been idle for longest comes first
    http::ClientLoop clients;
    std::thread thread; // last: it uses all of the above
};

} // namespace cimhost
