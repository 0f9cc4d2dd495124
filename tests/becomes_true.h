// Waiting for what another thread or another process does.
#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace tests {

/// Asks for the condition every two milliseconds, on the calling thread. The limit is generous, since a test must not
/// fail because the machine has much else to do.
/// @return true as soon as the condition holds, false if it does not hold within a minute.
inline bool becomesTrue(const std::function<bool()>& condition) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > until) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace tests
