#include "cimhost/http/guess_queue.h"
#include "cimhost/http/login_gate.h"

#include <gtest/gtest.h>

#include <string>

namespace cimhost::http {
namespace {

using namespace std::chrono_literals;

class LoginGateTest : public testing::Test {
protected:
    void fail(unsigned times) {
        for (unsigned index = 0; index < times; ++index)
            gate.failed(here, "anna", now);
    }
    auto wait() { return gate.wait(here, "anna", now); }

    LoginGate gate;
    LoginGate::Clock::time_point now = LoginGate::Clock::now();
    const Source here{1};
    const Source elsewhere{2};
};

TEST_F(LoginGateTest, TheFirstWrongPasswordsCostNoWait) {
    fail(LoginGate::freeGuesses - 1);
    EXPECT_FALSE(wait());
}

TEST_F(LoginGateTest, EachFurtherGuessWaitsTwiceAsLongUpToAMinute) {
    fail(LoginGate::freeGuesses);
    for (const auto expected : {1s, 2s, 4s, 8s, 16s, 32s, 60s, 60s}) {
        EXPECT_EQ(wait(), expected);
        now += expected;
        EXPECT_FALSE(wait());
        fail(1);
    }
}

TEST_F(LoginGateTest, OtherAddressesAreNotDelayed) {
    fail(100);
    EXPECT_TRUE(wait());
    EXPECT_FALSE(gate.wait(elsewhere, "anna", now));
}

TEST_F(LoginGateTest, GuessesUnderManyNamesAreLimited) {
    unsigned allowed = 0;
    for (int name = 0; name < 10'000; ++name) {
        const std::string user = "user" + std::to_string(name);
        if (gate.wait(here, user, now)) continue;
        ++allowed;
        gate.failed(here, user, now);
    }
    EXPECT_LE(allowed, 16 * LoginGate::freeGuesses);
}

TEST_F(LoginGateTest, TheRightPasswordResetsTheCount) {
    fail(LoginGate::freeGuesses - 1);
    gate.succeeded(here, "anna");
    fail(LoginGate::freeGuesses - 1);
    EXPECT_FALSE(wait());
}

TEST_F(LoginGateTest, GuessesAreForgottenInTime) {
    fail(100);
    now += 11min;
    fail(1);
    EXPECT_FALSE(wait());
}

TEST_F(LoginGateTest, ManyAddressesTakeBoundedMemory) {
    for (unsigned number = 0; number < 2 * LoginGate::mostRecords; ++number) {
        Source source{};
        source[0] = static_cast<std::uint8_t>(number >> 8);
        source[1] = static_cast<std::uint8_t>(number);
        now += 1ms;
        gate.failed(source, "anna", now);
    }
    EXPECT_EQ(gate.size(), LoginGate::mostRecords);
}

TEST(GuessQueueTest, AddressesTakeTurns) {
    GuessQueue<int> queue;
    const Source many{1};
    const Source one{2};
    for (int job = 0; job < 3; ++job)
        queue.push(many, job);
    queue.push(one, 100);
    EXPECT_EQ(queue.pop(), 0);
    EXPECT_EQ(queue.pop(), 100);
    EXPECT_EQ(queue.pop(), 1);
    EXPECT_EQ(queue.pop(), 2);
    EXPECT_TRUE(queue.empty());
}

} // namespace
} // namespace cimhost::http
