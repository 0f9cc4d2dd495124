// What a client sees of a large answer, on the wire: it leaves in chunks while the provider still delivers, if the
// client said that it reads trailers, and whole otherwise; and nobody pays for a client that reads slowly or not at
// all.
#include "certificate.h"
#include "socket_client.h"
#include "temporary_file.h"
#include "tls_client.h"

#include "cimhost/http/server.h"
#include "cimhost/service/call_queue.h"
#include "cimhost/service/dispatcher.h"
#include "cimhost/service/endpoint.h"
#include "tests/becomes_true.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <thread>

namespace cimhost {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;
using testing_support::askOverTls;
using testing_support::askOverTlsAndLeave;
using testing_support::bodyOf;
using testing_support::SocketClient;
using testing_support::statusOf;
using tests::becomesTrue;

constexpr const char* mof = R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride, ToSubclass);
class T_Port { [Key] string Id; string Text; };
class T_Other { [Key] string Id; string Text; };
[Association] class T_Link { [Key] T_Port ref Left; [Key] T_Port ref Right; };
)";

constexpr auto generous = 60s;

/// Delivers instances of a class, each as large as a test likes, one by one and under a lock, as a provider does.
class Source final : public ProviderCalls {
public:
    std::size_t count = 300;
    std::size_t textBytes = 1000;
    std::optional<std::size_t> failsAt;
    std::optional<std::size_t> waitsAt; // until it is released

    Outcome enumerateInstances(RequestScope& scope, const CallContext& context, const ObjectPathObject& classPath,
                               const PropertyList&) override {
        return deliver(scope, classPath.className(), [&](const InstanceObject& made) { context.sink->deliver(made); });
    }
    Outcome enumerateInstanceNames(RequestScope& scope, const CallContext& context,
                                   const ObjectPathObject& classPath) override {
        return deliver(scope, classPath.className(),
                       [&](const InstanceObject& made) { context.sink->deliver(*made.path(scope.arena())); });
    }
    Outcome associators(RequestScope& scope, const CallContext& context, const ObjectPathObject&,
                        const AssociationFilter&, const PropertyList&) override {
        return deliver(scope, "T_Port", [&](const InstanceObject& made) { context.sink->deliver(made); });
    }
    Outcome associatorNames(RequestScope& scope, const CallContext& context, const ObjectPathObject&,
                            const AssociationFilter&) override {
        return deliver(scope, "T_Port",
                       [&](const InstanceObject& made) { context.sink->deliver(*made.path(scope.arena())); });
    }
    Outcome references(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                       const AssociationFilter&, const PropertyList&) override {
        return deliver(scope, "T_Port",
                       [&](const InstanceObject& made) { context.sink->deliver(linkOf(scope, source, made)); });
    }
    Outcome referenceNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                           const AssociationFilter&) override {
        return deliver(scope, "T_Port", [&](const InstanceObject& made) {
            context.sink->deliver(*linkOf(scope, source, made).path(scope.arena()));
        });
    }
    Outcome getInstance(RequestScope&, const CallContext&, const ObjectPathObject&, const PropertyList&) override {
        return notSupported("");
    }
    Outcome createInstance(RequestScope&, const CallContext&, const ObjectPathObject&, const InstanceObject&) override {
        return notSupported("");
    }
    Outcome deleteInstance(RequestScope&, const CallContext&, const ObjectPathObject&) override {
        return notSupported("");
    }

    bool waitUntilHeld() {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, generous, [this] { return isHeld; });
    }
    void release() {
        const std::lock_guard lock(mutex);
        waitsAt.reset();
        changed.notify_all();
    }
    /// Of calls that have ended: how many objects the last one delivered, and what the objects of one took.
    bool waitForCalls(std::size_t number) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, generous, [&] { return calls >= number; });
    }
    std::size_t delivered = 0;
    std::size_t mostDelivered = 0;
    std::size_t largestArena = 0;

private:
    struct Ending {
        Source& source;
        RequestScope& scope;
        std::size_t done = 0;

        ~Ending() {
            const std::lock_guard lock(source.mutex);
            ++source.calls;
            source.delivered = done;
            source.mostDelivered = std::max(source.mostDelivered, done);
            source.largestArena = std::max(source.largestArena, scope.arena().size());
            source.changed.notify_all();
        }
    };

    template <typename Give>
    Outcome deliver(RequestScope& scope, std::string_view className, Give give) {
        const std::lock_guard provider(providerLock);
        Ending ending{*this, scope};
        Outcome outcome;
        const std::size_t total = className == "T_Other" ? 1 : count;
        while (ending.done < total) {
            if (total > 1) hold(ending.done);
            if (failsAt == ending.done && total > 1) {
                outcome.error = CimError{CMPI_RC_ERR_NOT_FOUND, "gone: 5 % of it,\nf\xC3\xBCr immer"};
                return outcome;
            }
            const Arena::Place place = scope.arena().place();
            give(instance(scope, className, std::to_string(ending.done)));
            ++ending.done;
            scope.arena().rewind(place);
        }
        return outcome;
    }

    void hold(std::size_t position) {
        std::unique_lock lock(mutex);
        if (waitsAt != position) return;
        isHeld = true;
        changed.notify_all();
        changed.wait_for(lock, generous, [this] { return !waitsAt; });
    }

    const InstanceObject& instance(RequestScope& scope, std::string_view className, const std::string& id) const {
        InstanceObject& made = *scope.make().instance(*scope.make().path("root/ns", className));
        made.setProperty("Id", *scope.make().value(CMPI_string, id));
        made.setProperty("Text", *scope.make().value(CMPI_string, std::string(textBytes, '<')));
        return made;
    }

    static const InstanceObject& linkOf(RequestScope& scope, const ObjectPathObject& source,
                                        const InstanceObject& far) {
        InstanceObject& made = *scope.make().instance(*scope.make().path("root/ns", "T_Link"));
        made.setProperty("Left", ObjectMaker::value(source));
        made.setProperty("Right", ObjectMaker::value(*far.path(scope.arena())));
        return made;
    }

    std::mutex providerLock; // held while a request is answered
    std::mutex mutex;
    std::condition_variable changed;
    bool isHeld = false;
    std::size_t calls = 0;
};

std::string callOf(const std::string& method, const std::string& parameters) {
    return "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>"
           "<IMETHODCALL NAME=\"" +
           method + "\"><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"ns\"/></LOCALNAMESPACEPATH>" +
           parameters + "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

std::string ofClass(const std::string& method, const std::string& className = "T_Port") {
    return callOf(method, "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"" + className + "\"/></IPARAMVALUE>");
}

std::string ofObject(const std::string& method) {
    return callOf(method, "<IPARAMVALUE NAME=\"ObjectName\"><INSTANCENAME CLASSNAME=\"T_Port\"><KEYBINDING NAME=\"Id\">"
                          "<KEYVALUE VALUETYPE=\"string\">source</KEYVALUE></KEYBINDING></INSTANCENAME></IPARAMVALUE>");
}

const std::string enumerateAll = ofClass("EnumerateInstances");
const std::string takesTrailers = "TE: trailers\r\nConnection: TE\r\n";

std::string post(const std::string& body, const std::string& fields) {
    return testing_support::post(body, "CIMOperation: MethodCall\r\nContent-Type: application/xml\r\n" + fields);
}

struct ChunkedAnswer {
    std::string head;
    std::string body;
    std::size_t chunks = 0;
    std::string trailers; // lines, without the empty one
    bool isWhole = false;
};

/// What has come already, read as a SocketClient reads.
class Received {
public:
    explicit Received(std::string text) : rest(std::move(text)) {}

    std::string readUntil(std::string_view end) {
        return readBytes(std::min(rest.size(), rest.find(end)) + end.size());
    }
    std::string readBytes(std::size_t count) {
        std::string bytes = rest.substr(0, count);
        rest.erase(0, count);
        return bytes;
    }

private:
    std::string rest;
};

/// False at the last chunk, or if there is none.
template <typename Client>
bool readChunk(Client& client, ChunkedAnswer& answer) {
    const std::string line = client.readUntil("\r\n");
    if (line.size() < 3) return false;
    const std::size_t size = std::stoul(line, nullptr, 16);
    if (size == 0) {
        for (std::string trailer = client.readUntil("\r\n"); trailer.size() > 2; trailer = client.readUntil("\r\n"))
            answer.trailers += trailer;
        answer.isWhole = true;
        return false;
    }
    ++answer.chunks;
    answer.body += client.readBytes(size);
    return client.readBytes(2) == "\r\n";
}

template <typename Client>
ChunkedAnswer readChunked(Client& client) {
    ChunkedAnswer answer;
    answer.head = client.readUntil("\r\n\r\n");
    EXPECT_THAT(answer.head, HasSubstr("\r\nTransfer-Encoding: chunked\r\n"));
    EXPECT_THAT(answer.head, Not(HasSubstr("Content-Length")));
    while (readChunk(client, answer)) {
    }
    return answer;
}

class AnswerInPieces : public testing::Test {
protected:
    AnswerInPieces() {
        options.port = 0;
        repository.loadText("root/ns", mof);
        registration = Registration::ofPrefix("T_", repository);
    }
    ~AnswerInPieces() override { stop(); }

    void stop() {
        source.release();
        if (!server) return;
        server->stop();
        thread.join();
        queue->finish();
        server.reset();
    }

    void start(std::size_t longestAnswer = longestAnswerDocument) {
        dispatcher = std::make_unique<Dispatcher>(operations, broker, nullptr, longestAnswer);
        queue = std::make_unique<CallQueue>(queueOptions);
        endpoint = std::make_unique<Endpoint>(*dispatcher, Writers::users, queue.get(), &figures);
        server = std::make_unique<http::Server>(options, *endpoint);
        thread = std::thread([this] { server->run(); });
    }

    SocketClient connect() const { return SocketClient(server->port()); }

    SocketClient ask(const std::string& body, const std::string& fields = takesTrailers) const {
        SocketClient client = connect();
        client.send(post(body, fields));
        return client;
    }

    std::string askWhole(const std::string& body) const { return ask(body, "").readAnswer(); }

    http::Options options;
    CallQueueOptions queueOptions;
    ClassRepository repository;
    Registration registration;
    Source source;
    Broker broker{repository};
    Operations operations{repository, registration, source};
    RequestFigures figures;
    std::unique_ptr<Dispatcher> dispatcher;
    std::unique_ptr<CallQueue> queue;
    std::unique_ptr<Endpoint> endpoint;
    std::unique_ptr<http::Server> server;
    std::thread thread;
};

struct Operation {
    std::string name;
    std::string message;
};

void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

class EachOperation : public AnswerInPieces, public testing::WithParamInterface<Operation> {};

TEST_P(EachOperation, LeavesInChunksOfTheSameBytes) {
    source.count = 2000;
    source.textBytes = 300;
    start();
    const std::string whole = bodyOf(askWhole(GetParam().message));
    ASSERT_GT(whole.size(), 200'000U);
    EXPECT_THAT(whole, HasSubstr("<IRETURNVALUE>"));
    SocketClient client = ask(GetParam().message);
    const ChunkedAnswer answer = readChunked(client);
    EXPECT_TRUE(answer.isWhole);
    EXPECT_EQ(answer.trailers, "");
    EXPECT_GT(answer.chunks, 2U);
    EXPECT_TRUE(answer.body == whole);
    EXPECT_LT(source.largestArena, std::size_t{512} << 10);
}

INSTANTIATE_TEST_SUITE_P(Operations, EachOperation,
                         testing::Values(Operation{"EnumerateInstances", ofClass("EnumerateInstances")},
                                         Operation{"EnumerateInstanceNames", ofClass("EnumerateInstanceNames")},
                                         Operation{"Associators", ofObject("Associators")},
                                         Operation{"AssociatorNames", ofObject("AssociatorNames")},
                                         Operation{"References", ofObject("References")},
                                         Operation{"ReferenceNames", ofObject("ReferenceNames")}),
                         [](const auto& row) { return row.param.name; });

TEST_F(AnswerInPieces, TheFirstBytesComeWhileTheProviderStillDelivers) {
    source.waitsAt = 200;
    start();
    SocketClient client = ask(enumerateAll);
    ASSERT_TRUE(source.waitUntilHeld());
    ChunkedAnswer answer;
    answer.head = client.readUntil("\r\n\r\n");
    EXPECT_EQ(statusOf(answer.head), 200);
    ASSERT_TRUE(readChunk(client, answer));
    EXPECT_THAT(answer.body, HasSubstr("<KEYVALUE VALUETYPE=\"string\">0</KEYVALUE>"));
    source.release();
    while (readChunk(client, answer)) {
    }
    EXPECT_TRUE(answer.isWhole);
    EXPECT_THAT(answer.body, HasSubstr("<KEYVALUE VALUETYPE=\"string\">299</KEYVALUE>"));
}

TEST_F(AnswerInPieces, ASmallAnswerStaysOneWithItsLength) {
    source.count = 5;
    start();
    const std::string whole = askWhole(enumerateAll);
    SocketClient client = ask(enumerateAll);
    const std::string answer = client.readAnswer();
    EXPECT_THAT(answer, HasSubstr("\r\nContent-Length: "));
    EXPECT_THAT(answer, Not(HasSubstr("Trailer")));
    EXPECT_EQ(bodyOf(answer), bodyOf(whole));
}

TEST_F(AnswerInPieces, AClientWithoutTrailersGetsItWhole) {
    start();
    for (const char* fields : {"", "TE: deflate\r\n", "TE: deflate;q=0.5, gzip\r\n", "TE: \r\n", "Trailer: x\r\n"}) {
        SocketClient client = ask(enumerateAll, fields);
        const std::string answer = client.readAnswer();
        EXPECT_THAT(answer.substr(0, 500), HasSubstr("\r\nContent-Length: ")) << fields;
        EXPECT_THAT(answer.substr(answer.size() - 100), HasSubstr("</CIM>\n")) << fields;
    }
    for (const char* fields : {"TE: Trailers\r\n", "TE: deflate;q=0.5, trailers\r\n", "TE: chunked, trailers\r\n",
                               "TE: deflate\r\nTE: trailers\r\n"}) {
        SocketClient client = ask(enumerateAll, fields);
        EXPECT_TRUE(readChunked(client).isWhole) << fields;
    }
}

TEST_F(AnswerInPieces, HttpOneZeroGetsItWhole) {
    start();
    std::string request = post(enumerateAll, takesTrailers);
    request.replace(request.find("HTTP/1.1"), 8, "HTTP/1.0");
    SocketClient client = connect();
    client.send(request);
    const std::string answer = client.readAnswer();
    EXPECT_THAT(answer.substr(0, 500), HasSubstr("\r\nContent-Length: "));
    EXPECT_EQ(bodyOf(answer), bodyOf(askWhole(enumerateAll)));
}

TEST_F(AnswerInPieces, AnErrorBehindTheFirstBytesStandsInTheTrailers) {
    source.failsAt = 250;
    start();
    SocketClient client = ask(enumerateAll);
    const ChunkedAnswer answer = readChunked(client);
    EXPECT_THAT(answer.head, HasSubstr("\r\nTrailer: CIMError, CIMStatusCode, CIMStatusCodeDescription\r\n"));
    EXPECT_TRUE(answer.isWhole);
    EXPECT_THAT(answer.body, Not(HasSubstr("</IRETURNVALUE>")));
    EXPECT_THAT(answer.body, Not(HasSubstr("<ERROR")));
    EXPECT_EQ(answer.trailers, "CIMStatusCode: 6\r\nCIMStatusCodeDescription: gone: 5 %25 of it,%0Af%C3%BCr immer\r\n");
    EXPECT_EQ(figures.byOperation[0].answers[CMPI_RC_ERR_NOT_FOUND], 1U);
    client.send(post(ofClass("EnumerateInstances", "T_Other"), takesTrailers));
    EXPECT_EQ(statusOf(client.readAnswer()), 200) << "the connection goes on";
}

TEST_F(AnswerInPieces, AClientWithoutTrailersGetsTheErrorAlone) {
    source.failsAt = 250;
    start();
    const std::string answer = askWhole(enumerateAll);
    EXPECT_THAT(answer, HasSubstr("<ERROR CODE=\"6\""));
    EXPECT_THAT(answer, Not(HasSubstr("<IRETURNVALUE>")));
}

TEST_F(AnswerInPieces, AnErrorBeforeTheFirstBytesIsAnOrdinaryAnswer) {
    source.failsAt = 3;
    start();
    SocketClient client = ask(enumerateAll);
    const std::string answer = client.readAnswer();
    EXPECT_THAT(answer, HasSubstr("\r\nContent-Length: "));
    EXPECT_THAT(answer, HasSubstr("<ERROR CODE=\"6\""));
}

TEST_F(AnswerInPieces, PipelinedRequestsAreAnsweredBehindIt) {
    start();
    SocketClient client = connect();
    const std::string small = ofClass("EnumerateInstances", "T_Other");
    client.send(post(enumerateAll, takesTrailers) + post(small, takesTrailers) + post(enumerateAll, takesTrailers));
    EXPECT_TRUE(readChunked(client).isWhole);
    EXPECT_THAT(client.readAnswer(), HasSubstr("T_Other"));
    EXPECT_TRUE(readChunked(client).isWhole);
    client.send(post(small, "Connection: close, TE\r\nTE: trailers\r\n"));
    EXPECT_THAT(client.readAnswer(), HasSubstr("\r\nConnection: close\r\n"));
}

TEST_F(AnswerInPieces, TheConnectionIsClosedAfterTheLastChunkIfTheClientAsks) {
    start();
    SocketClient client = ask(enumerateAll, "Connection: close, TE\r\nTE: trailers\r\n");
    const ChunkedAnswer answer = readChunked(client);
    EXPECT_THAT(answer.head, HasSubstr("\r\nConnection: close\r\n"));
    EXPECT_TRUE(answer.isWhole);
    EXPECT_TRUE(client.isClosedWithin(generous));
}

// Far more than the system's buffers take, so that the reader is the one whom the answer waits for. How long the
// provider takes for it is the machine's affair, and no reason to cut the reader off meanwhile.
TEST_F(AnswerInPieces, AClientThatReadsNothingDelaysNobodyElse) {
    source.count = 200;
    source.textBytes = 25'000; // 100 kB of XML
    options.limits.write = 1h;
    options.limits.writeProgress = 1h;
    start();
    SocketClient slow = ask(enumerateAll);
    EXPECT_THAT(askWhole(ofClass("EnumerateInstances", "T_Other")), HasSubstr("T_Other"));
    ASSERT_TRUE(source.waitForCalls(2)) << "the provider has delivered all, and nobody has read it";
    EXPECT_THAT(askWhole(ofClass("EnumerateInstances", "T_Other")), HasSubstr("T_Other"));
    const ChunkedAnswer answer = readChunked(slow);
    EXPECT_TRUE(answer.isWhole);
    EXPECT_EQ(answer.trailers, "");
    ASSERT_GT(answer.body.size(), 20'000'000U);
    EXPECT_THAT(answer.body.substr(answer.body.size() - 100), HasSubstr("</IRETURNVALUE>"));
}

TEST_F(AnswerInPieces, AClientThatDisconnectsEndsItsAnswer) {
    source.count = 20'000;
    source.waitsAt = 200;
    start();
    {
        SocketClient gone = ask(enumerateAll);
        ASSERT_TRUE(source.waitUntilHeld());
        EXPECT_EQ(statusOf(gone.readUntil("\r\n\r\n")), 200);
    }
    // Somebody else asks meanwhile, and waits for the provider.
    SocketClient other = ask(ofClass("EnumerateInstances", "T_Other"));
    source.release();
    EXPECT_EQ(statusOf(other.readAnswer()), 200);
    ASSERT_TRUE(source.waitForCalls(2));
    SocketClient next = ask(ofClass("EnumerateInstances", "T_Other"));
    EXPECT_EQ(statusOf(next.readAnswer()), 200);
    EXPECT_LT(source.mostDelivered, source.count) << "what nobody waits for is not delivered to its end";
}

TEST_F(AnswerInPieces, AClientThatHasEndedItsSideGetsAll) {
    source.waitsAt = 200;
    start();
    SocketClient client = ask(enumerateAll);
    ASSERT_TRUE(source.waitUntilHeld());
    client.endSending();
    ChunkedAnswer answer;
    answer.head = client.readUntil("\r\n\r\n");
    std::this_thread::sleep_for(250ms); // the server looks for clients that left ten times a second
    source.release();
    while (readChunk(client, answer)) {
    }
    EXPECT_TRUE(answer.isWhole);
    EXPECT_EQ(answer.trailers, "");
}

TEST_F(AnswerInPieces, TheDeadlineEndsAnAnswerThatHasBegun) {
    std::optional<SocketClient> client;
    ChunkedAnswer answer;
    std::size_t asked = 0;
    // A busy machine may have begun nothing by then: tried again with more time.
    for (const auto deadline : {300ms, 3'000ms, 30'000ms}) {
        client.reset();
        stop();
        queueOptions.deadline = deadline;
        source.waitsAt = 200;
        start();
        client.emplace(ask(enumerateAll));
        ++asked;
        answer.head = client->readUntil("\r\n\r\n");
        if (answer.head.find("\r\nTransfer-Encoding: chunked\r\n") != std::string::npos) break;
    }
    while (readChunk(*client, answer)) {
    }
    EXPECT_TRUE(answer.isWhole);
    EXPECT_THAT(answer.trailers, HasSubstr("CIMStatusCode: 1\r\n"));
    EXPECT_THAT(answer.trailers, HasSubstr("CIMStatusCodeDescription: no answer of the provider within 3"));
    source.release();
    ASSERT_TRUE(source.waitForCalls(asked));
    EXPECT_LT(source.delivered, source.count) << "what nobody waits for is not delivered to its end";
    EXPECT_EQ(figures.byOperation[0].answers[CMPI_RC_ERR_FAILED], asked);
    EXPECT_EQ(figures.byOperation[0].answers[CMPI_RC_OK], 0U);
    client->send(post(ofClass("EnumerateInstances", "T_Other"), takesTrailers));
    EXPECT_EQ(statusOf(client->readAnswer()), 200);
}

TEST_F(AnswerInPieces, AnAnswerInPiecesIsNoLongerThanAWholeOne) {
    start(std::size_t{1} << 20);
    EXPECT_THAT(askWhole(enumerateAll), HasSubstr("<ERROR CODE=\"1\""));
    SocketClient client = ask(enumerateAll);
    const ChunkedAnswer answer = readChunked(client);
    EXPECT_TRUE(answer.isWhole);
    EXPECT_LE(answer.body.size(), std::size_t{1} << 20);
    EXPECT_THAT(answer.trailers, HasSubstr("CIMStatusCode: 1\r\n"));
    EXPECT_THAT(answer.trailers, HasSubstr("longer than 1 MiB"));
}

TEST_F(AnswerInPieces, AllBytesAreCounted) {
    start();
    SocketClient client = ask(enumerateAll);
    const ChunkedAnswer answer = readChunked(client);
    client.send(post(ofClass("EnumerateInstances", "T_Other"), ""));
    const std::string next = client.readAnswer();
    const std::size_t wanted = answer.head.size() + answer.body.size() + next.size();
    // A client can have read bytes that the server is just about to count.
    EXPECT_TRUE(becomesTrue([&] { return options.traffic->sentBytes > wanted; }));
    EXPECT_EQ(options.traffic->answers[200], 2U);
}

std::string number(const std::string& name, std::size_t value) {
    return "<IPARAMVALUE NAME=\"" + name + "\"><VALUE>" + std::to_string(value) + "</VALUE></IPARAMVALUE>";
}

const std::string openWithTen =
    callOf("OpenEnumerateInstances", "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"T_Port\"/></IPARAMVALUE>" +
                                         number("MaxObjectCount", 10) + number("OperationTimeout", 300));

std::string pull(const std::string& context, std::size_t most) {
    return callOf("PullInstancesWithPath", "<IPARAMVALUE NAME=\"EnumerationContext\"><VALUE>" + context +
                                               "</VALUE></IPARAMVALUE>" + number("MaxObjectCount", most));
}

std::string contextOf(const std::string& answer) {
    constexpr std::string_view before = "\"EnumerationContext\" PARAMTYPE=\"string\"><VALUE>";
    const std::size_t at = answer.find(before);
    return at == std::string::npos
               ? ""
               : answer.substr(at + before.size(), answer.find('<', at + before.size()) - at - before.size());
}

std::size_t countOf(const std::string& text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

class PulledOnTheWire : public AnswerInPieces {
protected:
    std::size_t openCount() const { return dispatcher->pulls().figures().sessions; }
};

TEST_F(PulledOnTheWire, WhatItsClientDidNotWaitForIsEnded) {
    source.waitsAt = 200;
    start();
    {
        const SocketClient gone = ask(openWithTen);
        ASSERT_TRUE(source.waitUntilHeld());
        EXPECT_EQ(openCount(), 1U);
    }
    source.release();
    ASSERT_TRUE(source.waitForCalls(1));
    EXPECT_TRUE(becomesTrue([&] { return openCount() == 0; }));
    EXPECT_EQ(dispatcher->pulls().figures().bytes, 0U);
}

TEST_F(PulledOnTheWire, AClientThatSendsNothingMoreOnItsConnectionPullsOnAnother) {
    source.waitsAt = 200;
    start();
    SocketClient client = ask(openWithTen);
    ASSERT_TRUE(source.waitUntilHeld());
    client.endSending();
    source.release();
    const std::string context = contextOf(client.readAnswer());
    EXPECT_TRUE(client.isClosedWithin(generous));
    EXPECT_EQ(openCount(), 1U);
    EXPECT_EQ(countOf(askWhole(pull(context, 1'000)), "<VALUE.INSTANCEWITHPATH>"), 290U);
    EXPECT_EQ(openCount(), 0U);
}

class OverTls : public PulledOnTheWire {
protected:
    OverTls() {
        testing_support::makeCertificate(certificate.path, key.path);
        options.tls = http::Tls{certificate.path, key.path};
    }

    std::string ask(const std::string& body, const std::string& fields) const {
        return askOverTls(server->port(), post(body, fields));
    }

    const std::string onlyOne = "Connection: close\r\n";
    const std::string inPieces = "TE: trailers\r\nConnection: close, TE\r\n";
    testing_support::TemporaryFile certificate;
    testing_support::TemporaryFile key;
};

TEST_F(OverTls, AnAnswerLeavesInChunksOfTheSameBytes) {
    start();
    const std::string whole = bodyOf(ask(enumerateAll, onlyOne));
    ASSERT_GT(whole.size(), 1'000'000U);
    Received received(ask(enumerateAll, inPieces));
    const ChunkedAnswer answer = readChunked(received);
    EXPECT_TRUE(answer.isWhole);
    EXPECT_EQ(answer.trailers, "");
    EXPECT_GT(answer.chunks, 2U);
    EXPECT_TRUE(answer.body == whole);
}

TEST_F(OverTls, AnErrorBehindTheFirstBytesStandsInTheTrailers) {
    source.failsAt = 250;
    start();
    Received received(ask(enumerateAll, inPieces));
    const ChunkedAnswer answer = readChunked(received);
    EXPECT_TRUE(answer.isWhole);
    EXPECT_THAT(answer.trailers, HasSubstr("CIMStatusCode: 6\r\n"));
}

TEST_F(OverTls, AReaderThatLeavesInTheMiddleEndsHisAnswer) {
    source.count = 20'000;
    source.waitsAt = 400;
    start();
    EXPECT_EQ(statusOf(askOverTlsAndLeave(server->port(), post(enumerateAll, inPieces), 300'000)), 200);
    EXPECT_TRUE(becomesTrue([&] { return options.traffic->disconnections == 1; }));
    source.release();
    ASSERT_TRUE(source.waitForCalls(1));
    EXPECT_LT(source.delivered, source.count) << "what nobody waits for is not delivered to its end";
    EXPECT_THAT(ask(ofClass("EnumerateInstances", "T_Other"), onlyOne), HasSubstr("T_Other"));
}

TEST_F(OverTls, AnEnumerationIsPulledToItsEnd) {
    start();
    std::string answer = ask(openWithTen, onlyOne);
    std::string all = bodyOf(answer);
    for (int pulls = 0; answer.find("<VALUE>TRUE</VALUE>") == std::string::npos && pulls < 10; ++pulls) {
        answer = ask(pull(contextOf(answer), 100), onlyOne);
        all += bodyOf(answer);
    }
    EXPECT_EQ(countOf(all, "<VALUE.INSTANCEWITHPATH>"), 300U);
    for (int id = 0; id < 300; ++id)
        EXPECT_EQ(countOf(all, "<KEYVALUE VALUETYPE=\"string\">" + std::to_string(id) + "</KEYVALUE>"), 1U) << id;
    EXPECT_EQ(openCount(), 0U);
}

} // namespace
} // namespace cimhost
