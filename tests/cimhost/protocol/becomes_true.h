// Waiting for what another thread or process does.
#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace cimhost::testing_support {

/// True once the condition holds; false if it does not within a minute.
inline bool becomesTrue(const std::function<bool()>& condition) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > until) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace cimhost::testing_support
