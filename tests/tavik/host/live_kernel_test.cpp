// The host source over the running kernel. Each test runs on a thread of its own, in a network namespace and with a
// sysfs that only this thread sees: sysfs shows the interfaces of the namespace in which it was mounted.
#include <sched.h>
#include <stdlib.h>
#include <sys/mount.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "tavik/host/host_facts.h"
#include "tavik/host/host_source.h"
#include "tavik/host/text_forms.h"
#include "tests/becomes_true.h"

namespace tavik::host {
namespace {

/** Why this machine gives the thread no namespace of its own, or nothing once it has one. */
std::optional<std::string> enterNamespace() {
    const auto refusal = [](const char* what) { return std::string(what) + ": " + std::strerror(errno); };
    if (::unshare(CLONE_NEWNET | CLONE_NEWNS) != 0) return refusal("no new namespaces");
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return refusal("no private mounts");
    if (::mount("sysfs", "/sys", "sysfs", 0, nullptr) != 0) return refusal("no fresh sysfs");
    return std::nullopt;
}

bool ip(const std::string& arguments) { return ::system(("ip " + arguments + " 2>/dev/null").c_str()) == 0; }

void require(const std::string& arguments) {
    if (!ip(arguments)) throw std::runtime_error("ip " + arguments + " failed");
}

class LiveKernel : public testing::Test {
protected:
    /** Skips the test where the kernel refuses what it needs. @param set up with ip: refused means skipped, too */
    void inNamespace(const std::string& setUp, const std::function<void()>& body) {
        std::optional<std::string> refusal;
        std::thread thread([&] {
            refusal = enterNamespace();
            if (!refusal && !ip(setUp)) refusal = "the kernel or this machine's ip refuses: ip " + setUp;
            if (refusal) return;
            try {
                body();
            } catch (const std::exception& failure) {
                ADD_FAILURE() << failure.what();
            }
        });
        thread.join();
        if (refusal) GTEST_SKIP() << *refusal;
    }
};

constexpr const char* vethPair = "link add veth0 address 02:00:00:00:0a:01 mtu 1400 type veth "
                                 "peer name veth1 address 02:00:00:00:0a:02";

Fleet load(Source& source) {
    auto loaded = source.load();
    if (auto* error = std::get_if<FleetError>(&loaded)) throw std::runtime_error(error->message);
    return std::get<Fleet>(loaded);
}

NicFunction nicOf(const Fleet& fleet, const std::string& interface) {
    for (const auto& card : *fleet.cards)
        for (const auto& port : *card.ports)
            for (const auto& function : *port.functions)
                if (const auto* nic = std::get_if<NicFunction>(&function); nic && nic->deviceName == interface)
                    return *nic;
    throw std::runtime_error("no card has " + interface);
}

/** The kernel spreads a change of carrier within a second. */
std::uint32_t awaitState(Source& source, const std::string& interface, std::uint32_t state) {
    std::uint32_t now = 0;
    tests::becomesTrue([&] {
        now = source.link(interface).value.state;
        return now == state;
    });
    return now;
}

TEST_F(LiveKernel, NewNamespaceShowsNoAdapters) {
    inNamespace("link show lo", [] {
        const auto source = tavik::makeHostSource();
        EXPECT_TRUE(load(*source).cards->empty());
        EXPECT_FALSE(source->changed());
    });
}

TEST_F(LiveKernel, VethShowsItsAddressesMtuAndSpeed) {
    inNamespace(vethPair, [] {
        require("address add 192.0.2.1/22 dev veth0");
        require("link set veth0 up");
        require("address add 2001:db8::1/64 dev veth0 nodad");
        const auto fleet = load(*tavik::makeHostSource());
        ASSERT_EQ(fleet.cards->size(), 2U);
        EXPECT_EQ(fleet.cards->front().serialNumber, "020000000a01");
        const auto nic = nicOf(fleet, "veth0");
        EXPECT_EQ(formatMac(nic.macAddress), "02:00:00:00:0a:01");
        EXPECT_EQ(nic.mtu, 1400U);
        EXPECT_EQ(nic.link.speed, 10000U);
        EXPECT_EQ(nic.card.modelName, "virtual Ethernet (veth)");
        EXPECT_EQ(formatIPAddress(nic.ip->ipv4), "192.0.2.1");
        EXPECT_EQ(formatIPAddress(nic.ip->ipv4Mask), "255.255.252.0");
        ASSERT_FALSE(nic.ip->firstList.empty());
        EXPECT_EQ(formatIPAddress(nic.ip->firstList[0]), "2001:db8::1");
        EXPECT_EQ(nic.transceiver, std::nullopt);
    });
}

TEST_F(LiveKernel, LinkFollowsBothEndsOfTheCable) {
    inNamespace(vethPair, [] {
        const auto source = tavik::makeHostSource();
        load(*source);
        EXPECT_EQ(source->link("veth0").value.state, LinkDown);
        require("link set veth0 up");
        EXPECT_EQ(awaitState(*source, "veth0", LinkDown), LinkDown);
        require("link set veth1 up");
        EXPECT_EQ(awaitState(*source, "veth0", LinkUp), LinkUp);
        require("link set veth1 down");
        EXPECT_EQ(awaitState(*source, "veth0", LinkDown), LinkDown);
    });
}

TEST_F(LiveKernel, AddressesAndInterfacesThatComeAndGoAreChanges) {
    inNamespace(vethPair, [] {
        const auto source = tavik::makeHostSource();
        const auto changes = [&source] {
            const bool changed = source->changed();
            source->resetChanged();
            return changed;
        };
        EXPECT_FALSE(changes());
        require("address add 192.0.2.1/24 dev veth0");
        EXPECT_TRUE(changes());
        EXPECT_FALSE(changes());
        require("link set veth1 address 02:00:00:00:0a:03");
        EXPECT_TRUE(changes());
        require("link del veth0");
        EXPECT_TRUE(changes());
        EXPECT_FALSE(changes());
    });
}

TEST_F(LiveKernel, RemovedInterfaceIsNoDevice) {
    inNamespace(vethPair, [] {
        const auto source = tavik::makeHostSource();
        load(*source);
        EXPECT_TRUE(source->ipConfiguration("veth1").ok());
        require("link del veth1");
        EXPECT_EQ(source->ipConfiguration("veth1").status, statusNoSuchDevice);
        EXPECT_EQ(source->link("veth1").status, statusNoSuchDevice);
    });
}

TEST_F(LiveKernel, OnAPointToPointLinkTheOwnAddressIsShown) {
    inNamespace(vethPair, [] {
        require("link set veth0 up");
        require("address add 192.0.2.1 peer 192.0.2.99/32 dev veth0");
        require("address add 2001:db8::1 peer 2001:db8::99/128 dev veth0 nodad");
        const auto ip = nicOf(load(*tavik::makeHostSource()), "veth0").ip;
        EXPECT_EQ(formatIPAddress(ip->ipv4), "192.0.2.1");
        ASSERT_FALSE(ip->firstList.empty());
        EXPECT_EQ(formatIPAddress(ip->firstList[0]), "2001:db8::1");
    });
}

TEST_F(LiveKernel, OfABridgeNeitherItselfNorItsVirtualPortsAreShown) {
    inNamespace("link add br0 type bridge", [] {
        require(vethPair);
        require("link set veth1 master br0");
        const SysTree tree;
        const auto queries = makeLinuxQueries();
        const auto selection = NetworkDeviceReader(tree, *queries).select();
        EXPECT_EQ(selection.shown, std::vector<std::string>{"veth0"});
        EXPECT_EQ(selection.leftOut,
                  (std::vector<LeftOutInterface>{
                      {"br0", "a bridge over other interfaces"}, {"lo", "loopback"}, {"veth1", "a port of br0"}}));
    });
}

TEST_F(LiveKernel, InterfaceStackedOnAnotherIsNotShown) {
    inNamespace(vethPair, [] {
        if (!ip("link add link veth0 name stacked type macvlan")) GTEST_SKIP() << "the kernel has no macvlan";
        const SysTree tree;
        const auto queries = makeLinuxQueries();
        EXPECT_EQ(NetworkDeviceReader(tree, *queries).select().shown, (std::vector<std::string>{"veth0", "veth1"}));
    });
}

TEST_F(LiveKernel, DummyWithAnAddressIsShown) {
    inNamespace("link add dummy0 address 02:00:00:00:0a:05 type dummy", [] {
        require("address add 192.0.2.5/32 dev dummy0");
        require("link set dummy0 up");
        const auto source = tavik::makeHostSource();
        const auto nic = nicOf(load(*source), "dummy0");
        EXPECT_EQ(formatMac(nic.macAddress), "02:00:00:00:0a:05");
        EXPECT_EQ(formatIPAddress(nic.ip->ipv4), "192.0.2.5");
        EXPECT_EQ(awaitState(*source, "dummy0", LinkUp), LinkUp);
    });
}

TEST_F(LiveKernel, TapIsReadAndTellsItsDriver) {
    inNamespace("tuntap add tap0 mode tap", [] {
        const SysTree tree;
        const auto queries = makeLinuxQueries();
        const auto facts = readHostFacts(tree, *queries);
        ASSERT_EQ(facts.networkDevices.size(), 1U);
        EXPECT_EQ(facts.networkDevices[0].driver->driver, "tun");
        EXPECT_FALSE(facts.networkDevices[0].permanentAddress);
        EXPECT_FALSE(facts.networkDevices[0].parent);
    });
}

TEST_F(LiveKernel, MoreAddressesThanOneMessageHoldsAreAllRead) {
    inNamespace(vethPair, [] {
        constexpr int count = 600;
        require("link set veth0 up");
        std::string batch;
        for (int i = 0; i < count; ++i)
            batch +=
                "address add 10.9." + std::to_string(i / 250) + "." + std::to_string(i % 250 + 1) + "/16 dev veth0\\n";
        ASSERT_EQ(::system(("printf '" + batch + "' | ip -batch -").c_str()), 0);
        const auto addresses = makeLinuxQueries()->addresses();
        const auto isIPv4 = [](const InterfaceAddress& entry) { return entry.address.family == AddressIPv4; };
        EXPECT_EQ(std::count_if(addresses->begin(), addresses->end(), isIPv4), count);
        EXPECT_EQ(formatIPAddress(selectAddresses(addresses, addresses->front().interfaceIndex)->ipv4), "10.9.0.1");
    });
}

/** Runs lines of ip one after another, as fast as it can. */
int batch(const std::string& lines) { return ::system(("printf '" + lines + "' | ip -batch -").c_str()); }

TEST_F(LiveKernel, AllInterfacesAreToldWhileOthersComeAndGo) {
    inNamespace(vethPair, [] {
        constexpr int pairs = 100; // more than one message holds
        std::string lines;
        for (int i = 0; i < pairs; ++i)
            lines += "link add a" + std::to_string(i) + " type veth peer name b" + std::to_string(i) + "\\n";
        ASSERT_EQ(batch(lines), 0);
        std::atomic<bool> isOver = false;
        std::thread others([&] {
            std::string changes;
            for (int i = 0; i < 150; ++i)
                changes += "link add x type veth peer name y\\nlink del x\\n";
            EXPECT_EQ(batch(changes), 0);
            isOver = true;
        });
        const auto queries = makeLinuxQueries();
        int asked = 0;
        int failed = 0;
        for (; !isOver; ++asked) {
            const auto links = queries->links();
            const auto isLasting = [](const InterfaceLink& link) { return link.name[0] == 'a' || link.name[0] == 'b'; };
            if (!links || std::count_if(links->begin(), links->end(), isLasting) != 2 * pairs) ++failed;
        }
        others.join();
        EXPECT_EQ(failed, 0) << "of " << asked;
    });
}

TEST(LiveKernelQueries, OfAnInterfaceThatIsNotThereAreAbsent) {
    const auto queries = makeLinuxQueries();
    for (const auto* name : {"no_such_if0", "", "../eth0", "a name that is much too long for one"}) {
        EXPECT_EQ(queries->driverInfo(name).absence().reason, "No such device") << name;
        EXPECT_EQ(queries->permanentAddress(name).absence().reason, "No such device") << name;
        EXPECT_EQ(queries->moduleMemory(name).absence().reason, "No such device") << name;
    }
}

TEST(LiveHost, EveryEthernetDeviceOfThisMachineIsOnACard) {
    const SysTree tree;
    std::vector<std::string> devices;
    for (const auto& name : tree.names("sys/class/net")) {
        const auto folder = "sys/class/net/" + name;
        // A device below a master may be a path of another one, with that one's address.
        if (tree.exists(folder + "/device") && !tree.exists(folder + "/master") &&
            tree.text(folder + "/type").valueOr({}) == "1")
            devices.push_back(name);
    }
    if (devices.empty()) GTEST_SKIP() << "this machine has no Ethernet device";
    const auto fleet = load(*tavik::makeHostSource());
    for (const auto& name : devices) {
        const auto nic = nicOf(fleet, name);
        EXPECT_NE(nic.macAddress, MacAddress{}) << name;
        EXPECT_GT(nic.mtu, 0U) << name;
    }
}

} // namespace
} // namespace tavik::host
