// Whether an answer has reached its client.
#pragma once

#include <functional>
#include <utility>

namespace cimhost {

/// Goes with an answer that somebody has to hear of if it does not reach its client: he has left, or has another
/// answer.
class Receipt {
public:
    Receipt() = default;
    /// @param whenLost called on any thread when this ends without having been confirmed. Throws nothing.
    explicit Receipt(std::function<void()> whenLost) : lost(std::move(whenLost)) {}
    ~Receipt() {
        if (lost) lost();
    }
    Receipt(Receipt&& other) noexcept : lost(std::exchange(other.lost, nullptr)) {}
    Receipt& operator=(Receipt&& other) noexcept {
        Receipt before(std::move(*this));
        lost = std::exchange(other.lost, nullptr);
        return *this;
    }

    /// Whether somebody has to hear of it.
    [[nodiscard]] explicit operator bool() const noexcept { return lost != nullptr; }
    /// The client has the answer.
    void confirm() noexcept { lost = nullptr; }

private:
    std::function<void()> lost;
};

} // namespace cimhost
