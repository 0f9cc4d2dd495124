// Listeners whose names take the resolver for ever.
#include "fake_listeners.h"
#include "indication_world.h"

#include "tests/becomes_true.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <netdb.h>

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>
#include <thread>

using namespace std::chrono_literals;
using cimhost::testing_support::FakeListener;
using cimhost::testing_support::World;
using tests::becomesTrue;

namespace {

constexpr std::string_view slowName = "slow.invalid";
std::atomic<bool> isHanging = false;
std::atomic<bool> isReleased = false;
std::atomic<bool> hasReturned = false;

} // namespace

// In the place of the C library's for this program, which it asks for all other names.
extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
    if (node && node == slowName) {
        isHanging = true;
        while (!isReleased)
            std::this_thread::sleep_for(5ms);
        hasReturned = true;
        return EAI_FAIL;
    }
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    return real(node, service, hints, result);
}

TEST(SlowName, DelaysNoOtherListener) {
    FakeListener listener;
    const auto begin = std::chrono::steady_clock::now();
    {
        World world;
        const std::string filter = world.filter("f", "SELECT * FROM CIM_AlertIndication");
        const std::string slow = world.subscribe(filter, world.destination("slow", "http://slow.invalid:1/"));
        world.deliver("Merolt_NIC_IndicationEthernetPortLinkUp");
        EXPECT_TRUE(becomesTrue([] { return isHanging.load(); }));
        world.subscribe(filter, world.destination("quick", listener.url("http", "localhost")));
        world.deliver("Merolt_NIC_IndicationEthernetPortLinkUp");
        EXPECT_EQ(listener.bodies(1).size(), 1U);
        world.remove(slow);
        const std::string other = world.destination("other", "http://127.0.0.1:1/");
        for (int change = 0; change < 20; ++change)
            world.remove(world.subscribe(filter, other));
        world.deliver("Merolt_NIC_IndicationEthernetPortLinkUp");
        EXPECT_EQ(listener.bodies(2).size(), 2U);
        world.subscribe(filter, world.destination("again", "http://slow.invalid:1/"));
        world.deliver("Merolt_NIC_IndicationEthernetPortLinkUp");
        EXPECT_EQ(listener.bodies(3).size(), 3U);
    }
    // Nor did the end wait for the name.
    EXPECT_FALSE(isReleased);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 60s);
    isReleased = true;
    EXPECT_TRUE(becomesTrue([] { return hasReturned.load(); }));
}
