// A delivery while memory runs out, at one place after the other, on the thread that delivers for all.
#include "../../provider/failing_memory.h"
#include "fake_listeners.h"

#include "cimhost/indications/delivery.h"
#include "tests/becomes_true.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>

using namespace std::chrono_literals;
using cimhost::Delivery;
using cimhost::DeliveryLoop;
using cimhost::DeliveryOptions;
using cimhost::testing_support::FakeListener;
using tests::becomesTrue;

namespace {

constexpr unsigned mostAllocations = 2000;

DeliveryOptions quick() {
    DeliveryOptions options;
    options.firstPause = 1ms;
    options.longestPause = 5ms;
    return options;
}

cimhost::OpenInstance instance() {
    return std::make_shared<const std::string>("<INSTANCE CLASSNAME=\"CIM_AlertIndication\">");
}

class ShortMemory : public testing::Test {
protected:
    ShortMemory() : delivery(newDelivery()) {}
    ~ShortMemory() override {
        delivery->stop(Delivery::Clock::now());
        delivery->waitForEnd();
        loop.end();
    }

    std::shared_ptr<Delivery> newDelivery() {
        return std::make_shared<Delivery>(loop, *cimhost::http::parseUrl(listener.url()), "short", "context", quick(),
                                          nullptr);
    }
    /// Lets the n-th allocation of the loop's thread fail from now on, once.
    void failNext(unsigned n) {
        std::atomic<bool> isArmed = false;
        loop.loop().post([&isArmed, n] {
            failAllocation(n);
            isArmed = true;
        });
        ASSERT_TRUE(becomesTrue([&] { return isArmed.load(); }));
    }
    bool hasFailed() {
        std::atomic<int> answer = -1;
        loop.loop().post([&answer] { answer = allocationFailed() ? 1 : 0; });
        EXPECT_TRUE(becomesTrue([&] { return answer >= 0; }));
        return answer == 1;
    }

    FakeListener listener;
    DeliveryLoop loop{4};
    std::shared_ptr<Delivery> delivery;
};

} // namespace

TEST_F(ShortMemory, AFailureOnTheThreadDoesNotEndIt) {
    std::atomic<bool> goesOn = false;
    loop.loop().post([] { throw std::bad_alloc(); });
    loop.loop().post([&goesOn] { goesOn = true; });
    EXPECT_TRUE(becomesTrue([&] { return goesOn.load(); }));
}

TEST_F(ShortMemory, AnIndicationArrivesWhicheverAllocationOfItsDeliveryFails) {
    unsigned place = 1;
    for (bool hadEffect = true; hadEffect && place < mostAllocations; ++place) {
        delivery->stop(Delivery::Clock::now());
        delivery->waitForEnd();
        delivery = newDelivery(); // without a connection that was kept
        failNext(place);
        delivery->enqueue(instance());
        ASSERT_TRUE(becomesTrue([&] { return delivery->counts().delivered == 1; })) << "allocation " << place;
        hadEffect = hasFailed();
    }
    EXPECT_GT(place, 10U);
    EXPECT_LT(place, mostAllocations);
}
