#include "cimhost/indications/delivery_loop.h"

namespace cimhost {

DeliveryLoop::~DeliveryLoop() { end(); }

void DeliveryLoop::end() {
    clients.stop();
    if (thread.joinable()) thread.join();
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
