// What the LLDP daemon tells, and a daemon that does not: its library is one of the tests' own, behind a real socket.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "scratch_tree.h"
#include "tavik/host/descriptor.h"
#include "tavik/host/lldp_client.h"

namespace tavik::host::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* library = FAKE_LLDPCTL;
constexpr std::chrono::milliseconds enough = 60s;

/** Listens in place of the daemon, and does with each who connects as it is told. */
class Daemon {
public:
    explicit Daemon(const std::filesystem::path& path) : listener_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.string().copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
        if (::bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
            ::listen(listener_.get(), 8) != 0)
            throw std::runtime_error("no socket at " + path.string());
    }
    ~Daemon() {
        isOver_ = true;
        if (thread_.joinable()) thread_.join();
    }
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    /** @param serve gets a connection that has sent its question, and says whether to call it again. */
    void run(std::function<bool(int)> serve) {
        thread_ = std::thread([this, serve = std::move(serve)] {
            while (awaitInput(listener_.get())) {
                const Descriptor client(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
                char question = 0;
                if (!awaitInput(client.get()) || ::recv(client.get(), &question, 1, 0) != 1) break;
                while (!isOver_ && serve(client.get())) {
                }
            }
        });
    }

    void answer(const std::string& text) {
        run([text](int client) {
            ::send(client, text.data(), text.size(), MSG_NOSIGNAL);
            return false;
        });
    }

private:
    bool awaitInput(int descriptor) const {
        pollfd wait{descriptor, POLLIN, 0};
        while (!isOver_)
            if (::poll(&wait, 1, 10) > 0) return true;
        return false;
    }

    Descriptor listener_;
    std::atomic<bool> isOver_ = false;
    std::thread thread_;
};

class Lldp : public testing::Test {
protected:
    Lldp() : path_(scratch_.root() / "socket") { ::setenv("FAKE_LLDP_SOCKET", path_.c_str(), 1); }
    ~Lldp() override { ::unsetenv("FAKE_LLDP_SOCKET"); }

    ScratchTree scratch_;
    const std::filesystem::path path_;
};

constexpr const char* twoNeighbours = "eth0\t00:1c:73:00:00:01\tEthernet1/7\tswitch17.example\tto web3\n"
                                      "eth1\n"
                                      "eth2\tcore\t7\tr\xC3\xBC"
                                      "ck\t \n.\n";

std::string reasonOf(const Attribute<NeighboursOfPorts>& told) { return told ? "told" : told.absence().reason; }

TEST_F(Lldp, NeighboursOfAllPortsAreTold) {
    Daemon daemon(path_);
    daemon.answer(twoNeighbours);
    const auto told = askLldpDaemon(library, enough);
    ASSERT_TRUE(told) << told.absence().reason;
    const NeighboursOfPorts expected = {
        {"eth0", {{"switch17.example", "Ethernet1/7", "to web3", "00:1c:73:00:00:01"}}},
        {"eth1", {}},
        {"eth2", {{"r??ck", "7", "", "core"}}},
    };
    EXPECT_EQ(*told, expected);
}

TEST_F(Lldp, AMissingLibraryIsNamed) {
    EXPECT_EQ(reasonOf(askLldpDaemon("libno-such-library.so.4", enough)), "no libno-such-library.so.4");
    EXPECT_EQ(reasonOf(askLldpDaemon("libc.so.6", enough)), "libc.so.6 lacks a call");
}

TEST_F(Lldp, NothingIsToldWithoutADaemon) {
    EXPECT_EQ(reasonOf(askLldpDaemon(library, enough)), "lldpd: No such file or directory");
    { const Daemon gone(path_); }
    EXPECT_EQ(reasonOf(askLldpDaemon(library, enough)), "lldpd: Connection refused");
    ::setenv("FAKE_LLDP_SOCKET", std::string(200, 'x').c_str(), 1);
    EXPECT_EQ(reasonOf(askLldpDaemon(library, enough)), "lldpd: File name too long");
}

TEST_F(Lldp, ADaemonThatHangsIsGivenUp) {
    const Daemon daemon(path_); // takes connections and never reads
    EXPECT_EQ(reasonOf(askLldpDaemon(library, 50ms)), "lldpd: Connection timed out");
}

TEST_F(Lldp, ADaemonThatNeverComesToAnEndIsGivenUp) {
    Daemon daemon(path_);
    daemon.run([](int client) {
        std::this_thread::sleep_for(1ms);
        return ::send(client, "x", 1, MSG_NOSIGNAL) == 1;
    });
    EXPECT_EQ(reasonOf(askLldpDaemon(library, 50ms)), "lldpd: Connection timed out");
}

TEST_F(Lldp, ADaemonThatHangsUpIsToldOf) {
    Daemon daemon(path_);
    daemon.answer("eth0");
    EXPECT_EQ(reasonOf(askLldpDaemon(library, enough)), "lldpd: Connection reset by peer");
}

TEST_F(Lldp, WhatWasToldIsKeptForSecondsAndAFailureForLonger) {
    LldpNeighbours neighbours(library, enough);
    const LldpNeighbours::Clock::time_point start{};
    EXPECT_FALSE(neighbours.of("eth0", start));
    {
        Daemon daemon(path_);
        daemon.answer(twoNeighbours);
        EXPECT_FALSE(neighbours.of("eth0", start + 59s));
        const auto told = neighbours.of("eth0", start + 60s);
        ASSERT_TRUE(told) << told.absence().reason;
        EXPECT_EQ(told->front().port, "Ethernet1/7");
    }
    EXPECT_TRUE(neighbours.of("eth0", start + 69s));
    const auto none = neighbours.of("eth1", start + 69s);
    ASSERT_FALSE(none);
    EXPECT_EQ(none.absence().reason, "lldpd knows none");
    EXPECT_FALSE(neighbours.of("eth0", start + 70s));
}

} // namespace
} // namespace tavik::host::test
