#include "cimhost/indications/delivery_loop.h"

#include "cimhost/thread.h"

#include <exception>
#include <iostream>

namespace cimhost {

DeliveryLoop::DeliveryLoop(std::size_t connections) : most(connections), thread(makeThread([this] { run(); })) {}

DeliveryLoop::~DeliveryLoop() { end(); }

void DeliveryLoop::end() {
    clients.stop();
    if (thread.joinable()) thread.join();
}

// Deliveries handle their own failures. Any other exception must not end the thread that all of them share.
void DeliveryLoop::run() {
    for (bool isStopped = false; !isStopped;) {
        try {
            clients.run();
            isStopped = true;
        } catch (const std::exception& error) {
            std::cerr << "cimhost: a delivery failed: " << error.what() << '\n';
        }
    }
}

bool DeliveryLoop::request(const std::shared_ptr<ConnectionUser>& user) {
    if (used < most) {
        ++used;
        return true;
    }
    if (idle.empty()) {
        waiting.push_back(user);
        return false;
    }
    ConnectionUser* longest = idle.front();
    idle.pop_front();
    longest->giveUpConnection();
    return true;
}

void DeliveryLoop::release() {
    --used;
    handOn();
}

void DeliveryLoop::handOn() {
    while (!waiting.empty() && used < most) {
        const std::shared_ptr<ConnectionUser> next = waiting.front().lock();
        waiting.pop_front();
        if (!next) continue;
        ++used;
        clients.post([next] { next->onGranted(); });
    }
}

void DeliveryLoop::noteIdle(ConnectionUser& user) {
    if (waiting.empty()) return idle.push_back(&user);
    user.giveUpConnection();
    release();
}

void DeliveryLoop::noteBusy(ConnectionUser& user) { idle.remove(&user); }

} // namespace cimhost
