#include "../protocol/certificate.h"
#include "../protocol/temporary_file.h"
#include "fake_listeners.h"
#include "indication_world.h"

#include "cimhost/cimxml/request.h"
#include "cimhost/cli/received_indication.h"
#include "tests/becomes_true.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

using namespace std::chrono_literals;
using cimhost::DeliveryOptions;
using cimhost::http::Response;
using cimhost::testing_support::FakeListener;
using cimhost::testing_support::RawListener;
using cimhost::testing_support::World;
using testing::AnyOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using tests::becomesTrue;
using Clock = std::chrono::steady_clock;

namespace {

const std::string alerts = "SELECT * FROM CIM_AlertIndication";
const std::string linkUp = "Merolt_NIC_IndicationEthernetPortLinkUp";
const std::string linkDown = "Merolt_NIC_IndicationEthernetPortLinkDown";

DeliveryOptions quick() {
    DeliveryOptions options;
    options.limits.connect = 300ms;
    options.limits.answer = 300ms;
    options.firstPause = 5ms;
    options.longestPause = 20ms;
    options.stopGrace = 300ms;
    return options;
}

class Delivering : public testing::Test {
protected:
    explicit Delivering(DeliveryOptions options = quick()) : world({}, options) {}

    std::string subscribe(const std::string& query, const std::string& url) {
        const std::string name = std::to_string(count++);
        return world.subscribe(world.filter(name, query), world.destination(name, url));
    }
    bool isLogged(const std::string& text) {
        return becomesTrue([&] {
            for (const std::string& line : world.messages()) {
                if (line.find(text) != std::string::npos) return true;
            }
            return false;
        });
    }

    World world;
    int count = 0;
};

// A handshake takes its time on a busy machine.
DeliveryOptions patient() {
    DeliveryOptions options = quick();
    options.limits = {};
    return options;
}

// The certificate of a listener on this machine, which whoever verifies one trusts, or not.
class Certificate {
protected:
    explicit Certificate(bool isTrusted) {
        cimhost::testing_support::makeCertificate(certificate.path, key.path);
        ::setenv("SSL_CERT_FILE", isTrusted ? certificate.path.c_str() : "/dev/null", 1);
    }
    ~Certificate() { ::unsetenv("SSL_CERT_FILE"); }

    cimhost::http::Tls tls() const { return {certificate.path, key.path}; }

private:
    cimhost::testing_support::TemporaryFile certificate;
    cimhost::testing_support::TemporaryFile key;
};

// Deliveries read the environment as long as they run, so it changes before and behind them.
class DeliveringToTrusted : protected Certificate, public Delivering {
protected:
    DeliveringToTrusted() : Certificate(true), Delivering(patient()) {}

    FakeListener listener{FakeListener::good, 0, tls()};
};

class DeliveringToUnknown : protected Certificate, public Delivering {
protected:
    DeliveringToUnknown() : Certificate(false), Delivering(patient()) {}

    FakeListener listener{FakeListener::good, 0, tls()};
};

class Impatient : public Delivering {
protected:
    static DeliveryOptions options() {
        DeliveryOptions made = quick();
        made.patience = 100ms;
        made.queueLength = 10;
        return made;
    }
    Impatient() : Delivering(options()) {}
};

std::string messageOf(const std::string& body) {
    const auto decoded = cimhost::cimxml::decodeExport(body);
    for (const auto& property : std::get<cimhost::cimxml::ExportRequest>(decoded).indication.properties) {
        if (property.name == "Message") return std::string(property.value.texts[0]);
    }
    return {};
}

} // namespace

TEST_F(Delivering, AListenerGetsWhatItsFilterSelectsWithNumbers) {
    FakeListener listener;
    subscribe("SELECT * FROM " + linkUp + " WHERE PerceivedSeverity = 2", listener.url());
    EXPECT_EQ(world.deliver(linkDown, {{"PerceivedSeverity", "2"}}), CMPI_RC_OK);
    world.deliver(linkUp, {{"PerceivedSeverity", "3"}});
    world.deliver(linkUp, {{"PerceivedSeverity", "2"}}, "root/PG_InterOp");
    world.deliver(linkUp, {{"PerceivedSeverity", "2"}, {"Message", "<first> & \"best\""}});
    world.deliver(linkUp, {{"PerceivedSeverity", "2"}, {"Message", "second"}});
    const auto bodies = listener.bodies(2);
    ASSERT_THAT(bodies, SizeIs(2));
    EXPECT_EQ(messageOf(bodies[0]), "<first> & \"best\"");
    EXPECT_THAT(bodies[0], HasSubstr("<PROPERTY NAME=\"SequenceNumber\" TYPE=\"sint64\"><VALUE>0</VALUE>"));
    EXPECT_THAT(bodies[1], HasSubstr("<PROPERTY NAME=\"SequenceNumber\" TYPE=\"sint64\"><VALUE>1</VALUE>"));
    EXPECT_THAT(bodies[1], HasSubstr("<INSTANCE CLASSNAME=\"" + linkUp + "\">"));
}

TEST_F(Delivering, ControlCharactersOfANameStayOutOfTheLog) {
    world.subscribe(world.filter("f", alerts),
                    world.destination("a\nlistener b: answers\x7f\xc2\x85 again", "http://127.0.0.1:1/"));
    world.deliver(linkUp);
    EXPECT_TRUE(isLogged("listener a listener b: answers    again at 127.0.0.1:1: "));
}

TEST_F(Delivering, AFilterForASuperclassSelectsItsSubclasses) {
    FakeListener listener;
    subscribe("SELECT * FROM CIM_Indication", listener.url());
    world.deliver(linkDown);
    EXPECT_THAT(listener.bodies(1), SizeIs(1));
}

TEST_F(Delivering, AListenerThatWasGoneGetsEverythingInOrderWhenItIsBack) {
    std::uint16_t port = 0;
    std::string url;
    {
        FakeListener first;
        port = first.port();
        url = first.url();
        subscribe(alerts, url);
        world.deliver(linkUp, {{"Message", "0"}});
        EXPECT_THAT(first.bodies(1), SizeIs(1));
    }
    for (int number = 1; number < 20; ++number)
        world.deliver(linkUp, {{"Message", std::to_string(number)}});
    EXPECT_TRUE(isLogged("each indication is tried for 60 seconds"));
    FakeListener again(FakeListener::good, port);
    const auto bodies = again.bodies(19);
    ASSERT_THAT(bodies, SizeIs(19));
    for (std::size_t place = 0; place < bodies.size(); ++place)
        EXPECT_EQ(messageOf(bodies[place]), std::to_string(place + 1));
    EXPECT_TRUE(isLogged("answers again; 0 indications lost"));
}

TEST_F(Delivering, ABadListenerDelaysNobodyElse) {
    RawListener hanging;
    RawListener endless(std::string(65536, 'x'));
    FakeListener garbage([](std::size_t) { return FakeListener::withBody("<html>no</html>"); });
    FakeListener failing([](std::size_t) { return Response{500, {}, {}}; });
    FakeListener good;
    for (const std::string& url :
         {hanging.url(), endless.url(), garbage.url(), failing.url(), std::string("http://127.0.0.1:1/"), good.url()})
        subscribe(alerts, url);
    const auto begin = Clock::now();
    for (int number = 0; number < 100; ++number)
        world.deliver(linkUp);
    EXPECT_LT(Clock::now() - begin, 20s) << "those that hang would take a minute and more";
    EXPECT_THAT(good.bodies(100), SizeIs(100));
    EXPECT_TRUE(isLogged("no answer in time"));
    EXPECT_TRUE(isLogged("body limit exceeded"));
    EXPECT_TRUE(isLogged("the answer is no CIM-XML"));
    EXPECT_TRUE(isLogged("answered with HTTP status 500"));
    EXPECT_TRUE(isLogged("Connection refused"));
}

TEST_F(DeliveringToTrusted, AListenerBehindTlsGetsItsIndications) {
    subscribe(alerts, listener.url("https", "localhost"));
    for (int number = 0; number < 20; ++number)
        world.deliver(linkUp, {{"Message", std::to_string(number)}});
    const auto bodies = listener.bodies(20);
    ASSERT_THAT(bodies, SizeIs(20));
    for (std::size_t place = 0; place < bodies.size(); ++place)
        EXPECT_EQ(messageOf(bodies[place]), std::to_string(place));
    EXPECT_THAT(world.messages(), SizeIs(0));
}

TEST_F(DeliveringToTrusted, ACertificateForAnotherNameIsRefused) {
    subscribe(alerts, listener.url("https", "127.0.0.1"));
    world.deliver(linkUp);
    EXPECT_TRUE(isLogged("TLS: certificate verify failed"));
    EXPECT_THAT(listener.bodies(0), SizeIs(0));
}

TEST_F(DeliveringToTrusted, AListenerWithoutTlsGetsNothingUnencrypted) {
    FakeListener plain;
    subscribe(alerts, plain.url("https", "localhost"));
    world.deliver(linkUp);
    EXPECT_TRUE(isLogged("TLS: "));
    EXPECT_THAT(plain.bodies(0), SizeIs(0));
}

TEST_F(DeliveringToUnknown, AListenerWithAnUntrustedCertificateGetsNothing) {
    subscribe(alerts, listener.url("https", "localhost"));
    world.deliver(linkUp);
    EXPECT_TRUE(isLogged("TLS: certificate verify failed"));
    EXPECT_THAT(listener.bodies(0), SizeIs(0));
}

TEST_F(Delivering, AnErrorFromTheListenerIsReportedAndNotTriedAgain) {
    FakeListener listener([](std::size_t number) {
        if (number > 0) return FakeListener::good(number);
        return FakeListener::withBody(
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
            "PROTOCOLVERSION=\"1.0\"><SIMPLEEXPRSP><EXPMETHODRESPONSE NAME=\"ExportIndication\">"
            "<ERROR CODE=\"1\" DESCRIPTION=\"disk&#10;full\"/></EXPMETHODRESPONSE></SIMPLEEXPRSP>"
            "</MESSAGE></CIM>");
    });
    subscribe(alerts, listener.url());
    world.deliver(linkUp, {{"Message", "a"}});
    world.deliver(linkUp, {{"Message", "b"}});
    const auto bodies = listener.bodies(2);
    ASSERT_THAT(bodies, SizeIs(2));
    EXPECT_EQ(messageOf(bodies[1]), "b");
    EXPECT_TRUE(isLogged("refused an indication: status 1 disk full"));
}

// What the kernel tells of this process.
std::size_t countOfEntries(const char* folder) {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder))
        ++count;
    return count;
}

/// As many connections as a server with many clients can spare.
class FewConnections : public Delivering {
protected:
    static DeliveryOptions options() {
        DeliveryOptions made = quick();
        made.connections = 8;
        return made;
    }
    FewConnections() : Delivering(options()) {}
};

// Connections to it stand in the kernel, and nobody ever takes them.
class DeafListener {
public:
    DeafListener() : socket(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        EXPECT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), length), 0);
        EXPECT_EQ(::listen(socket, 256), 0);
        ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
        port = ntohs(address.sin_port);
    }
    ~DeafListener() { ::close(socket); }
    DeafListener(const DeafListener&) = delete;
    DeafListener& operator=(const DeafListener&) = delete;

    std::string url() const { return "http://127.0.0.1:" + std::to_string(port) + "/"; }

private:
    int socket;
    std::uint16_t port = 0;
};

TEST_F(FewConnections, ManyListenersThatHangTakeNoThreadsAndFewDescriptors) {
    DeafListener hanging;
    FakeListener good;
    for (int number = 0; number < 60; ++number)
        subscribe(alerts, hanging.url());
    subscribe(alerts, good.url());
    const std::size_t threads = countOfEntries("/proc/self/task");
    const std::size_t descriptors = countOfEntries("/proc/self/fd");
    for (int number = 0; number < 20; ++number)
        world.deliver(linkUp, {{"Message", std::to_string(number)}});
    EXPECT_THAT(good.bodies(1), Not(IsEmpty()));
    EXPECT_LE(countOfEntries("/proc/self/task"), threads);
    EXPECT_LE(countOfEntries("/proc/self/fd"), descriptors + 8 + 1); // the good listener has one end more
    EXPECT_TRUE(becomesTrue([&] { return good.bodies(20).size() == 20; }));
    EXPECT_TRUE(isLogged("no answer in time"));
}

TEST_F(FewConnections, AListenerThatIsQuietGivesItsConnectionToOthers) {
    std::vector<std::unique_ptr<FakeListener>> listeners;
    for (int number = 0; number < 24; ++number) {
        listeners.push_back(std::make_unique<FakeListener>());
        subscribe(alerts, listeners.back()->url());
    }
    for (int round = 1; round <= 3; ++round) {
        world.deliver(linkUp, {{"Message", std::to_string(round)}});
        for (const auto& listener : listeners)
            EXPECT_THAT(listener->bodies(static_cast<std::size_t>(round)), SizeIs(round));
    }
    EXPECT_THAT(world.messages(), SizeIs(0));
}

/// Waits longer for an answer than a slow machine takes for anything else.
class WaitingLong : public Delivering {
protected:
    static DeliveryOptions options() {
        DeliveryOptions made = quick();
        made.limits.answer = 120s;
        return made;
    }
    WaitingLong() : Delivering(options()) {}
};

TEST_F(WaitingLong, RemovingASubscriptionDoesNotWaitForItsListener) {
    RawListener hanging;
    const std::string subscription = subscribe(alerts, hanging.url());
    world.deliver(linkUp);
    const auto begin = Clock::now();
    world.remove(subscription);
    EXPECT_LT(Clock::now() - begin, 60s);
    EXPECT_EQ(world.deliver(linkUp), CMPI_RC_ERR_FAILED);
}

/// Its end is given time for all, on a slow machine too.
class LongEnding : public Delivering {
protected:
    static DeliveryOptions options() {
        DeliveryOptions made = quick();
        made.stopGrace = 60s;
        return made;
    }
    LongEnding() : Delivering(options()) {}
};

TEST_F(LongEnding, AServerThatStopsDeliversQueuedIndications) {
    FakeListener listener;
    subscribe(alerts, listener.url());
    for (int number = 0; number < 50; ++number)
        world.deliver(linkUp);
    world.server->router().stop();
    EXPECT_THAT(listener.bodies(50), SizeIs(50));
}

TEST_F(Impatient, AFullQueueDropsTheOldestAndTheListenerSeesTheGap) {
    RawListener hanging;
    subscribe(alerts, hanging.url());
    for (int number = 0; number < 30; ++number)
        world.deliver(linkUp);
    EXPECT_TRUE(isLogged("the queue is full, the oldest is dropped"));
}

TEST_F(Impatient, IndicationsThatComeTooLateAreDroppedAndCounted) {
    std::uint16_t port = 0;
    {
        FakeListener first;
        port = first.port();
        subscribe(alerts, first.url());
        world.deliver(linkUp);
        first.bodies(1);
    }
    world.deliver(linkUp, {{"Message", "lost"}});
    std::this_thread::sleep_for(250ms);
    FakeListener again(FakeListener::good, port);
    world.deliver(linkUp, {{"Message", "new"}});
    const auto bodies = again.bodies(1);
    ASSERT_FALSE(bodies.empty());
    EXPECT_EQ(messageOf(bodies[0]), "new");
    EXPECT_THAT(bodies[0], HasSubstr("<VALUE>2</VALUE>"));
    EXPECT_TRUE(isLogged("answers again; 1 indication lost"));
}

TEST_F(Delivering, ABurstArrivesWholeAndInOrder) {
    constexpr int burst = 10000;
    FakeListener listener;
    subscribe(alerts, listener.url());
    const auto begin = Clock::now();
    for (int number = 0; number < burst; ++number)
        world.deliver(linkUp, {{"Message", std::to_string(number)}});
    const auto queued = Clock::now();
    std::size_t arrived = 0;
    while (arrived < burst && Clock::now() - begin < 60s)
        arrived = listener.bodies(burst).size();
    const auto bodies = listener.bodies(burst);
    ASSERT_THAT(bodies, SizeIs(burst));
    for (std::size_t place = 0; place < bodies.size(); ++place)
        ASSERT_EQ(messageOf(bodies[place]), std::to_string(place));
    const auto milliseconds = [](auto time) {
        return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
    };
    RecordProperty("queued_ms", milliseconds(queued - begin));
    RecordProperty("arrived_ms", milliseconds(Clock::now() - begin));
}
