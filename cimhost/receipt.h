// Whether an answer has reached its client.
#pragma once

#include <functional>
#include <utility>

namespace cimhost {

/// Goes with an answer whose loss has to be told to somebody. An answer is lost if its client has left or has been
/// given another answer.
class Receipt {
public:
    Receipt() = default;
    /// @param whenLost called if this ends without having been confirmed, on the thread on which it ends. Must not
    /// throw.
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

    /// Whether a loss would be told to somebody.
    [[nodiscard]] explicit operator bool() const noexcept { return lost != nullptr; }
    /// The client has the answer: nothing will be told.
    void confirm() noexcept { lost = nullptr; }

private:
    std::function<void()> lost;
};

} // namespace cimhost
