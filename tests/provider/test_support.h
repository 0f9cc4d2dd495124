// What tests of threads and of the log share.
#pragma once

#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

constexpr std::chrono::seconds longEnough{20};
constexpr std::chrono::milliseconds aMoment{50};

/// Holds a thread at one place until the test opens it. Wait for the arrival before the gate goes out of scope.
class Gate {
public:
    ~Gate() { open(); }

    /// For the thread that is to be held.
    void pass() {
        // From the arrival on the gate may be gone.
        const std::shared_ptr<State> held = state;
        held->arrived.set_value();
        held->opened.get_future().wait();
    }

    void waitForArrival() { EXPECT_EQ(state->arrived.get_future().wait_for(longEnough), std::future_status::ready); }

    void open() {
        if (!std::exchange(isOpen, true)) state->opened.set_value();
    }

private:
    struct State {
        std::promise<void> arrived;
        std::promise<void> opened;
    };

    std::shared_ptr<State> state = std::make_shared<State>();
    bool isOpen = false;
};

/// Whether the wanted lines stand among the others in that order; what stands between them does not matter.
inline testing::AssertionResult inOrder(const std::vector<std::string>& lines, const std::vector<std::string>& wanted) {
    auto next = wanted.begin();
    for (const std::string& line : lines) {
        if (next != wanted.end() && line == *next) ++next;
    }
    if (next == wanted.end()) return testing::AssertionSuccess();
    auto failure = testing::AssertionFailure() << "\"" << *next << "\" does not follow in\n";
    for (const std::string& line : lines)
        failure << "  " << line << '\n';
    return failure;
}

/// How many lines are exactly that.
inline std::size_t occurrences(const std::vector<std::string>& lines, const std::string& wanted) {
    std::size_t count = 0;
    for (const std::string& line : lines) {
        if (line == wanted) ++count;
    }
    return count;
}
