// Listeners whose names take the resolver for ever.
#include "fake_listeners.h"
#include "indication_world.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <netdb.h>

#include <atomic>
#include <chrono>
#include <string_view>
#include <thread>

using namespace std::chrono_literals;
using cimhost::testing_support::becomesTrue;
using cimhost::testing_support::FakeListener;
using cimhost::testing_support::World;

namespace {

constexpr std::string_view slowName = "slow.invalid";
std::atomic<bool> isHanging = false;
std::atomic<bool> isReleased = false;

} // namespace

// In the place of the C library's for this program, which it asks for all other names.
extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
    if (node && node == slowName) {
        isHanging = true;
        while (!isReleased)
            std::this_thread::sleep_for(5ms);
        return EAI_FAIL;
    }
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    return real(node, service, hints, result);
}

TEST(SlowName, HoldsUpNobodyElsesIndications) {
    isHanging = false;
    isReleased = false;
    FakeListener listener;
    World world;
    const std::string filter = world.filter("f", "SELECT * FROM CIM_AlertIndication");
    const std::string destination = world.destination("slow", "http://slow.invalid:1/");
    const std::string slow = world.subscribe(filter, destination);
    world.subscribe(filter, world.destination("quick", listener.url()));
    world.deliver("Merolt_NIC_IndicationEthernetPortLinkUp");
    EXPECT_TRUE(becomesTrue([] { return isHanging.load(); }));
    EXPECT_EQ(listener.bodies(1).size(), 1U);
    world.remove(slow);

    // Each change tidies up what has ended, and one of them meets the name that is still being looked up.
    const std::string other = world.destination("other", "http://127.0.0.1:1/");
    std::atomic<int> changes = 0;
    std::thread changing([&] {
        for (; !isReleased; ++changes)
            world.remove(world.subscribe(filter, other));
    });
    EXPECT_TRUE(becomesTrue([&] {
        const int before = changes;
        std::this_thread::sleep_for(500ms);
        return changes == before;
    }));
    std::atomic<bool> isDelivered = false;
    std::thread delivering([&] {
        world.deliver("Merolt_NIC_IndicationEthernetPortLinkUp");
        isDelivered = true;
    });
    EXPECT_TRUE(becomesTrue([&] { return isDelivered.load(); }));
    isReleased = true;
    delivering.join();
    changing.join();
    EXPECT_EQ(listener.bodies(2).size(), 2U);
}
