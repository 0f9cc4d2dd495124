#include "certificate.h"
#include "socket_client.h"
#include "temporary_file.h"
#include "tls_client.h"

#include "cimhost/http/login_gate.h"
#include "cimhost/http/server.h"
#include "tests/becomes_true.h"

#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <mutex>
#include <ostream>
#include <thread>
#include <vector>

namespace cimhost::http {
namespace {

using namespace std::chrono_literals;
using testing_support::askOverTls;
using testing_support::bodyOf;
using testing_support::post;
using testing_support::SocketClient;
using testing_support::statusOf;
using tests::becomesTrue;

constexpr auto patience = 60s; // for what comes at once on a machine that has time

// Answers with the body it got; waits first where a test wants a slow provider.
class EchoHandler : public Handler {
public:
    std::optional<Response> refuse(const Request& head) const override {
        if (head.method != "POST") return textResponse(405, "use POST");
        return std::nullopt;
    }

    Response answer(Request request) override {
        if (request.body == "wait") {
            std::unique_lock lock(mutex);
            ++waiting;
            changed.notify_all();
            changed.wait(lock, [this] { return released; });
        }
        if (request.body == "throw") throw std::runtime_error("secret");
        Response response;
        response.body.append(request.user + request.body);
        return response;
    }

    // Takes large bodies in pieces where a test wants that.
    std::unique_ptr<BodyReader> readerOfLargeBody(const Request&) override {
        return readsPieces ? std::make_unique<PieceReader>() : nullptr;
    }
    bool readsPieces = false;

    void waitForWaiting(int count) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return waiting >= count; });
    }

    void release() {
        const std::lock_guard lock(mutex);
        released = true;
        changed.notify_all();
    }

private:
    // Answers with the number of pieces, bytes and their sum; refuses a piece that begins with R, fails at one with T
    // and keeps all of what a body of k brings.
    class PieceReader final : public BodyReader {
    public:
        std::optional<Response> read(std::string_view bytes) override {
            ++pieces;
            size += bytes.size();
            for (const char byte : bytes)
                sum = sum * 31 + static_cast<unsigned char>(byte);
            if (bytes.substr(0, 1) == "R") return textResponse(400, "refused");
            if (bytes.substr(0, 1) == "T") throw std::runtime_error("secret");
            if (bytes.substr(0, 1) == "k") held += bytes.size();
            return std::nullopt;
        }
        std::size_t heldBytes() const override { return held; }
        void answerTo(Request request, const std::shared_ptr<Reply>& reply) override {
            EXPECT_EQ(request.body, "");
            Response response;
            response.body.append(summary(pieces > 1, size, sum));
            reply->send(std::move(response));
        }

        static std::string summary(bool inPieces, std::size_t size, std::uint64_t sum) {
            return (inPieces ? "pieces " : "whole ") + std::to_string(size) + " " + std::to_string(sum);
        }
        static std::uint64_t sumOf(std::string_view bytes) {
            std::uint64_t sum = 0;
            for (const char byte : bytes)
                sum = sum * 31 + static_cast<unsigned char>(byte);
            return sum;
        }

    private:
        std::size_t pieces = 0;
        std::size_t size = 0;
        std::uint64_t sum = 0;
        std::size_t held = 0;
    };

public:
    static std::string summaryOf(std::string_view body) {
        return PieceReader::summary(true, body.size(), PieceReader::sumOf(body));
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    int waiting = 0;
    bool released = false;
};

class HttpServer : public testing::Test {
protected:
    HttpServer() { options.port = 0; }
    ~HttpServer() override {
        handler.release();
        stop();
    }

    void start() {
        server = std::make_unique<Server>(options, handler);
        runner = std::thread([this] { server->run(); });
    }

    void stop() {
        if (!runner.joinable()) return;
        server->stop();
        runner.join();
    }

    SocketClient connect() { return SocketClient(server->port()); }

    std::string ask(std::string_view request) {
        SocketClient client = connect();
        client.send(request);
        return client.readAnswer();
    }

    Options options;
    EchoHandler handler;
    std::unique_ptr<Server> server;
    std::thread runner;
};

TEST_F(HttpServer, AnswersARequest) {
    start();
    const std::string answer = ask(post("hello"));
    EXPECT_EQ(statusOf(answer), 200);
    EXPECT_EQ(bodyOf(answer), "hello");
}

TEST_F(HttpServer, KeepsTheConnectionForTheNextRequest) {
    start();
    SocketClient client = connect();
    for (const char* text : {"one", "two", "three"}) {
        client.send(post(text));
        EXPECT_EQ(bodyOf(client.readAnswer()), text);
    }
}

TEST_F(HttpServer, AnswersPipelinedRequestsInOrder) {
    start();
    SocketClient client = connect();
    client.send(post("one") + post("two"));
    EXPECT_EQ(bodyOf(client.readAnswer()), "one");
    EXPECT_EQ(bodyOf(client.readAnswer()), "two");
}

TEST_F(HttpServer, ClosesWhenTheClientWantsIt) {
    start();
    SocketClient client = connect();
    client.send(post("x", "Connection: close\r\n"));
    EXPECT_EQ(statusOf(client.readAnswer()), 200);
    EXPECT_TRUE(client.isClosedWithin(patience));
}

TEST_F(HttpServer, TakesChunks) {
    start();
    const std::string answer = ask("POST / HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n"
                                   "3\r\nabc\r\n4;name=value\r\ndefg\r\n0\r\n\r\n");
    EXPECT_EQ(bodyOf(answer), "abcdefg");
}

TEST_F(HttpServer, TheLastChunkMayComeInAnyPieces) {
    start();
    SocketClient client = connect();
    client.send("POST / HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n");
    for (const char* piece : {"0\r\n", "\r", "\n"}) {
        client.send(piece);
        std::this_thread::sleep_for(20ms); // each in a segment of its own; if not, the answer is the same
    }
    EXPECT_EQ(bodyOf(client.readAnswer()), "abc");
    SocketClient empty = connect();
    empty.send("POST / HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n");
    std::this_thread::sleep_for(20ms);
    for (const char* piece : {"0\r\n", "\r", "\n"}) {
        empty.send(piece);
        std::this_thread::sleep_for(20ms);
    }
    EXPECT_EQ(statusOf(empty.readAnswer()), 200);
}

TEST_F(HttpServer, AnswersExpect100Continue) {
    start();
    SocketClient client = connect();
    client.send("POST / HTTP/1.1\r\nHost: localhost\r\nExpect: 100-continue\r\nContent-Length: 2\r\n\r\n");
    EXPECT_EQ(client.readAnswer(), "HTTP/1.1 100 Continue\r\n\r\n");
    client.send("ok");
    EXPECT_EQ(bodyOf(client.readAnswer()), "ok");
}

TEST_F(HttpServer, AnExceptionOfTheHandlerIsAnErrorWithoutItsText) {
    start();
    const std::string answer = ask(post("throw"));
    EXPECT_EQ(statusOf(answer), 500);
    EXPECT_EQ(answer.find("secret"), std::string::npos);
}

struct BadRequest {
    std::string name;
    std::string request;
    int status;
};

void PrintTo(const BadRequest& bad, std::ostream* out) { *out << bad.name; }

class RefusedRequest : public HttpServer, public testing::WithParamInterface<BadRequest> {};

TEST_P(RefusedRequest, IsAnsweredAndTheConnectionClosed) {
    start();
    SocketClient client = connect();
    client.send(GetParam().request);
    EXPECT_EQ(statusOf(client.readAnswer()), GetParam().status);
    EXPECT_TRUE(client.isClosedWithin(patience));
    EXPECT_EQ(bodyOf(ask(post("still here"))), "still here");
}

std::vector<BadRequest> badRequests() {
    const std::string start = "POST / HTTP/1.1\r\nHost: localhost\r\n";
    std::string manyFields;
    for (int index = 0; index < 5000; ++index)
        manyFields += "X-" + std::to_string(index) + ": y\r\n";
    return {
        {"NoHttp", "hello\r\n\r\n", 400},
        {"BinaryNoise", std::string("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03\r\n\r\n", 15), 400},
        {"OtherMethod", "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n", 405},
        {"NoLength", start + "\r\n", 411},
        {"TwoLengths", start + "Content-Length: 2\r\nContent-Length: 3\r\n\r\nabc", 400},
        {"SameLengthTwice", start + "Content-Length: 3\r\nContent-Length: 3\r\n\r\nabc", 400},
        {"ListOfLengths", start + "Content-Length: 3, 3\r\n\r\nabc", 400},
        {"NegativeLength", start + "Content-Length: -1\r\n\r\n", 400},
        {"LengthNoNumber", start + "Content-Length: many\r\n\r\n", 400},
        {"LengthBeyond64Bits", start + "Content-Length: 99999999999999999999\r\n\r\n", 400},
        {"LengthAndChunks", start + "Content-Length: 3\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", 400},
        {"ChunksAndLength", start + "Transfer-Encoding: chunked\r\nContent-Length: 3\r\n\r\n0\r\n\r\n", 400},
        {"OtherCoding", start + "Transfer-Encoding: gzip, chunked\r\n\r\n0\r\n\r\n", 501},
        {"UnknownCoding", start + "Transfer-Encoding: gzip\r\n\r\n", 501},
        {"BadChunkLength", start + "Transfer-Encoding: chunked\r\n\r\nxyz\r\n", 400},
        {"OtherExpectation", start + "Expect: miracles\r\nContent-Length: 0\r\n\r\n", 417},
        {"BodyOverLimit", start + "Content-Length: 33554433\r\n\r\n", 413},
        {"OverlongTarget", "POST /" + std::string(20'000, 'x') + " HTTP/1.1\r\n\r\n", 431},
        {"OverlongField", start + "X: " + std::string(20'000, 'x') + "\r\n\r\n", 431},
        {"EndlessHeader", start + manyFields, 431},
        {"NoHost", "POST / HTTP/1.1\r\nContent-Length: 0\r\n\r\n", 400},
        {"TwoHosts", start + "Host: localhost\r\nContent-Length: 0\r\n\r\n", 400},
        {"HostNoName", "POST / HTTP/1.1\r\nHost: a b\r\nContent-Length: 0\r\n\r\n", 400},
        {"EmptyHost", "POST / HTTP/1.1\r\nHost:\r\nContent-Length: 0\r\n\r\n", 400},
        {"OtherHost", "POST / HTTP/1.1\r\nHost: evil.example\r\nContent-Length: 0\r\n\r\n", 421},
        {"OtherHostOfAnOldClient", "POST / HTTP/1.0\r\nHost: evil.example\r\nContent-Length: 0\r\n\r\n", 421},
        {"OtherAddress", "POST / HTTP/1.1\r\nHost: 192.0.2.1\r\nContent-Length: 0\r\n\r\n", 421},
        {"WebPage", start + "Origin: http://localhost\r\nContent-Length: 0\r\n\r\n", 403},
        {"WebPageWithoutName", start + "Origin: null\r\nContent-Length: 0\r\n\r\n", 403},
        {"ChunksOfAnOldClient", "POST / HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", 400},
    };
}

INSTANTIATE_TEST_SUITE_P(Requests, RefusedRequest, testing::ValuesIn(badRequests()),
                         [](const auto& row) { return row.param.name; });

TEST_F(HttpServer, AChunkedBodyOverTheLimitIsRefusedOnTheWay) {
    options.limits.bodyBytes = 1000;
    start();
    SocketClient client = connect();
    client.send("POST / HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n");
    const std::string chunk = "100\r\n" + std::string(256, 'x') + "\r\n";
    for (int index = 0; index < 5; ++index)
        client.send(chunk);
    EXPECT_EQ(statusOf(client.readAnswer()), 413);
}

TEST_F(HttpServer, ALengthThatIsNeverSentTakesNoMemoryAndEnds) {
    options.limits.bodyProgress = 100ms;
    start();
    SocketClient client = connect();
    client.send("POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 33554432\r\n\r\nabc");
    EXPECT_TRUE(client.isClosedWithin(patience));
}

TEST_F(HttpServer, BytesBehindTheBodyAreReadAsTheNextRequest) {
    start();
    SocketClient client = connect();
    client.send("POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 3\r\n\r\nabcdef\r\n\r\n");
    EXPECT_EQ(bodyOf(client.readAnswer()), "abc");
    EXPECT_EQ(statusOf(client.readAnswer()), 400);
}

TEST_F(HttpServer, LargeRequestsTogetherAreBounded) {
    options.limits.allBodyBytes = 400'000;
    start();
    SocketClient first = connect();
    const std::string half = post(std::string(150'000, 'x'));
    first.send(half.substr(0, half.size() - 10));
    SocketClient second = connect();
    second.send(half);
    // Whichever of the two goes over the limit is refused; the other is served.
    const int secondStatus = statusOf(second.readAnswer());
    first.send(half.substr(half.size() - 10));
    const int firstStatus = statusOf(first.readAnswer());
    EXPECT_EQ(firstStatus + secondStatus, 200 + 503);
}

TEST_F(HttpServer, SmallBodiesAreServedThoughAllBodiesTakeTooMuch) {
    options.limits.allBodyBytes = 100;
    start();
    const std::string small(10'000, 'x');
    EXPECT_EQ(bodyOf(ask(post(small))), small);
    EXPECT_EQ(statusOf(ask(post(std::string(150'000, 'x')))), 503);
}

std::string largeBody(std::size_t size) {
    std::string body(size, 'a');
    for (std::size_t index = 0; index < size; ++index)
        body[index] = static_cast<char>('a' + index * 7 % 10); // no letter that means something to the reader
    return body;
}

TEST_F(HttpServer, ALargeBodyIsReadInPiecesInOrder) {
    handler.readsPieces = true;
    options.limits.allBodyBytes = 1'000'000; // less than the body
    start();
    const std::string body = largeBody(20'000'000);
    SocketClient client = connect();
    for (int round = 0; round < 2; ++round) {
        client.send(post(body));
        EXPECT_EQ(bodyOf(client.readAnswer()), EchoHandler::summaryOf(body));
        client.send(post("small"));
        EXPECT_EQ(bodyOf(client.readAnswer()), "small") << "what is no more than a piece is held";
    }
}

TEST_F(HttpServer, ALargeBodyInChunksIsReadInPieces) {
    handler.readsPieces = true;
    start();
    const std::string body = largeBody(300'000);
    std::string request = "POST / HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n";
    for (std::size_t begin = 0; begin < body.size(); begin += 1000)
        request += "3E8\r\n" + body.substr(begin, 1000) + "\r\n";
    EXPECT_EQ(bodyOf(ask(request + "0\r\n\r\n")), EchoHandler::summaryOf(body));
}

TEST_F(HttpServer, AReaderRefusesABodyOnTheWay) {
    handler.readsPieces = true;
    start();
    SocketClient client = connect();
    client.send("POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 30000000\r\n\r\n" + std::string(300'000, 'R'));
    const std::string answer = client.readAnswer();
    EXPECT_EQ(statusOf(answer), 400);
    EXPECT_EQ(bodyOf(answer), "refused\n");
}

TEST_F(HttpServer, AReaderThatThrowsIsAnInternalErrorWithoutItsText) {
    handler.readsPieces = true;
    start();
    const std::string answer = ask(post(std::string(300'000, 'T')));
    EXPECT_EQ(statusOf(answer), 500);
    EXPECT_EQ(answer.find("secret"), std::string::npos);
    EXPECT_EQ(bodyOf(ask(post("others are served"))), "others are served");
}

TEST_F(HttpServer, MemoryOfAllReadersTogetherIsBounded) {
    handler.readsPieces = true;
    options.limits.allBodyBytes = 1'000'000;
    start();
    EXPECT_EQ(statusOf(ask(post(std::string(2'000'000, 'k')))), 503);
    EXPECT_EQ(statusOf(ask(post(std::string(500'000, 'k')))), 200);
}

TEST_F(HttpServer, AClientThatLeavesDuringALargeBodyDelaysNobody) {
    handler.readsPieces = true;
    start();
    for (int round = 0; round < 10; ++round) {
        SocketClient client = connect();
        client.send("POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 30000000\r\n\r\n" + largeBody(500'000));
    }
    EXPECT_EQ(bodyOf(ask(post("others are served"))), "others are served");
}

TEST_F(HttpServer, AServerThatStopsInALargeBodyDoesNotWaitForIt) {
    handler.readsPieces = true;
    start();
    SocketClient client = connect();
    client.send("POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 30000000\r\n\r\n" + largeBody(500'000));
    const auto begin = std::chrono::steady_clock::now();
    stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
}

TEST_F(HttpServer, ALargeBodyThatFlowsHasTimeForItsSize) {
    handler.readsPieces = true;
    options.limits.body = 1ms;
    options.limits.bodyBytesPerSecond = 100'000;
    start();
    // A quarter at once, for which ten seconds are given; the rest comes when the first deadline is long over.
    const std::string body = largeBody(4'000'000);
    const std::string request = post(body);
    SocketClient client = connect();
    client.send(std::string_view(request).substr(0, request.size() / 4));
    std::this_thread::sleep_for(300ms);
    client.send(std::string_view(request).substr(request.size() / 4));
    EXPECT_EQ(bodyOf(client.readAnswer()), EchoHandler::summaryOf(body));
}

// Sends a byte now and then until the server has had enough.
bool dripsUntilCut(SocketClient& client, std::string_view bytes, std::chrono::milliseconds longest) {
    const auto begin = std::chrono::steady_clock::now();
    for (const char& byte : bytes) {
        if (!client.send({&byte, 1}) || client.isClosedWithin(10ms)) break;
    }
    return std::chrono::steady_clock::now() - begin < longest;
}

TEST_F(HttpServer, AHeaderSentByteByByteIsCutOff) {
    options.limits.header = 500ms;
    start();
    SocketClient client = connect();
    EXPECT_TRUE(dripsUntilCut(client, "POST / HTTP/1.1\r\nX: " + std::string(10'000, 'x'), patience));
    EXPECT_EQ(bodyOf(ask(post("others are served"))), "others are served");
}

TEST_F(HttpServer, ABodySentByteByByteIsCutOff) {
    options.limits.body = 150ms;
    start();
    SocketClient client = connect();
    client.send("POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 10000\r\n\r\n");
    EXPECT_TRUE(dripsUntilCut(client, std::string(10'000, 'x'), patience));
}

TEST_F(HttpServer, AConnectionThatSaysNothingIsClosed) {
    options.limits.header = 100ms;
    start();
    EXPECT_TRUE(connect().isClosedWithin(patience));
}

TEST_F(HttpServer, AnIdleConnectionIsClosed) {
    options.limits.idle = 100ms;
    start();
    SocketClient client = connect();
    client.send(post("x"));
    EXPECT_EQ(statusOf(client.readAnswer()), 200);
    EXPECT_TRUE(client.isClosedWithin(patience));
}

TEST_F(HttpServer, AClientThatDoesNotReadItsAnswerIsClosed) {
    options.limits.write = 200ms;
    start();
    SocketClient client = connect();
    client.send(post(std::string(16 << 20, 'x')));
    ASSERT_TRUE(client.hasBytesWithin(60s)) << "the answer has begun";
    EXPECT_TRUE(becomesTrue([&] { return options.traffic->disconnections == 1; }));
    // The rest that lay in the buffers still comes, then the end.
    EXPECT_LT(client.readAnswer().size(), std::size_t{16} << 20);
    EXPECT_TRUE(client.isClosedWithin(patience));
}

TEST_F(HttpServer, NewClientsAreRefusedWhileAllOthersWaitForAnswers) {
    options.limits.connections = 4;
    options.limits.room = 100ms;
    start();
    std::vector<SocketClient> clients;
    for (int index = 0; index < 4 + 1; ++index) { // a quarter more are answered once
        clients.push_back(connect());
        clients.back().send(post("wait"));
    }
    handler.waitForWaiting(4);
    EXPECT_EQ(statusOf(ask(post("x"))), 503);
    handler.release();
    for (SocketClient& client : clients)
        EXPECT_EQ(bodyOf(client.readAnswer()), "wait");
    EXPECT_EQ(bodyOf(ask(post("served"))), "served");
}

TEST_F(HttpServer, NewClientsWaitForAPlaceThatBecomesFreeInTime) {
    options.limits.connections = 1;
    options.limits.room = 60s;
    start();
    SocketClient known = connect();
    known.send(post("wait"));
    handler.waitForWaiting(1);
    SocketClient guest = connect();
    guest.send(post("wait"));
    handler.waitForWaiting(2);
    SocketClient last = connect();
    last.send(post("last"));
    EXPECT_FALSE(last.hasBytesWithin(100ms)) << "neither an answer nor a refusal";
    handler.release();
    EXPECT_EQ(bodyOf(known.readAnswer()), "wait");
    EXPECT_EQ(bodyOf(guest.readAnswer()), "wait");
    EXPECT_EQ(bodyOf(last.readAnswer()), "last");
    EXPECT_TRUE(guest.isClosedWithin(patience)) << "it found no place";
}

TEST_F(HttpServer, ASignalStopsItAndIsToldOnce) {
    std::atomic<int> told = 0;
    options.onStop = [&] { ++told; };
    start();
    server->stopOnSignals();
    SocketClient busy = connect();
    busy.send(post("wait"));
    handler.waitForWaiting(1);
    ::kill(::getpid(), SIGTERM);
    EXPECT_TRUE(becomesTrue([&] { return told > 0; }));
    std::this_thread::sleep_for(250ms); // the call is made again meanwhile
    handler.release();
    EXPECT_EQ(bodyOf(busy.readAnswer()), "wait") << "what was under way is answered";
    runner.join();
    EXPECT_EQ(told, 1);
}

TEST_F(HttpServer, AnIdleConnectionMakesRoomForANewOne) {
    options.limits.connections = 2;
    start();
    SocketClient idle = connect();
    idle.send(post("x"));
    idle.readAnswer();
    SocketClient busy = connect();
    busy.send(post("wait"));
    handler.waitForWaiting(1);
    EXPECT_EQ(bodyOf(ask(post("served"))), "served");
    EXPECT_TRUE(idle.isClosedWithin(patience));
}

// Many connections that never come to a whole request, some at most of which there is room for.
class CrowdedServer : public HttpServer, public testing::WithParamInterface<const char*> {};

TEST_P(CrowdedServer, ServesNewClientsAndKeepsIdleOnes) {
    options.limits.connections = 3; // an answered one may still be on its way out when the next asks
    options.limits.newcomers = 8;
    start();
    SocketClient idle = connect();
    idle.send(post("first"));
    EXPECT_EQ(bodyOf(idle.readAnswer()), "first");
    std::vector<SocketClient> crowd;
    for (int index = 0; index < 50; ++index) {
        crowd.push_back(connect());
        crowd.back().send(GetParam());
        if (index % 10 != 0) continue;
        EXPECT_EQ(bodyOf(ask(post("served", "Connection: close\r\n"))), "served");
    }
    idle.send(post("again"));
    EXPECT_EQ(bodyOf(idle.readAnswer()), "again");
    EXPECT_TRUE(crowd.front().isClosedWithin(patience)) << "the oldest gives way";
    EXPECT_FALSE(crowd.back().isClosedWithin(50ms)) << "the newest has a chance";
}

INSTANTIATE_TEST_SUITE_P(OfUnfinished, CrowdedServer,
                         testing::Values("", "POST / HTTP/1.1\r\nX: ",
                                         "POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1000\r\n\r\nx"));

TEST_F(HttpServer, ALateClientGivesWayBeforeIdleOnes) {
    options.limits.connections = 2;
    start();
    SocketClient idle = connect();
    idle.send(post("x"));
    idle.readAnswer();
    SocketClient late = connect();
    late.send(post("x"));
    late.readAnswer();
    late.send("POST / HTTP/1.1\r\n");
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(bodyOf(ask(post("served", "Connection: close\r\n"))), "served");
    EXPECT_TRUE(late.isClosedWithin(patience));
    idle.send(post("still here"));
    EXPECT_EQ(bodyOf(idle.readAnswer()), "still here");
}

// Takes every free descriptor of the process.
class NoDescriptors {
public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &before);
        const int highest = dup(0);
        close(highest);
        rlimit fewer = before;
        fewer.rlim_cur = static_cast<rlim_t>(highest) + 10;
        setrlimit(RLIMIT_NOFILE, &fewer);
        for (int taken = 0; (taken = dup(0)) >= 0;)
            all.push_back(taken);
    }
    ~NoDescriptors() {
        for (const int taken : all)
            close(taken);
        setrlimit(RLIMIT_NOFILE, &before);
    }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

    void giveBackOne() {
        close(all.back());
        all.pop_back();
    }

private:
    rlimit before{};
    std::vector<int> all;
};

TEST_F(HttpServer, WithoutADescriptorLeftASilentConnectionGivesWay) {
    start();
    SocketClient silent = connect();
    SocketClient other = connect(); // behind the silent one, which has therefore been accepted when this is answered
    other.send(post("x"));
    EXPECT_EQ(bodyOf(other.readAnswer()), "x");
    NoDescriptors none;
    none.giveBackOne(); // for the test's own end
    EXPECT_EQ(bodyOf(ask(post("served"))), "served");
    EXPECT_TRUE(silent.isClosedWithin(patience));
}

TEST_F(HttpServer, WithoutADescriptorAtAllANewClientIsCutOffAndLaterOnesAreServed) {
    start();
    {
        NoDescriptors none;
        none.giveBackOne();
        EXPECT_TRUE(connect().isClosedWithin(patience));
    }
    EXPECT_EQ(bodyOf(ask(post("served"))), "served");
}

TEST_F(HttpServer, Http10NeedsNoHostField) {
    start();
    EXPECT_EQ(bodyOf(ask("POST / HTTP/1.0\r\nContent-Length: 3\r\n\r\nold")), "old");
}

TEST_F(HttpServer, AcceptsFurtherNamesOfTheServer) {
    options.names = {"Other.Example"};
    start();
    EXPECT_EQ(statusOf(ask("POST / HTTP/1.1\r\nHost: other.example:80\r\nContent-Length: 0\r\n\r\n")), 200);
    EXPECT_EQ(statusOf(ask("POST / HTTP/1.1\r\nHost: evil.example\r\nContent-Length: 0\r\n\r\n")), 421);
}

TEST_F(HttpServer, AListenerAcceptsAnyName) {
    options.host = HostField::anything;
    start();
    EXPECT_EQ(statusOf(ask("POST / HTTP/1.1\r\nHost: evil.example\r\nContent-Length: 0\r\n\r\n")), 200);
}

TEST_F(HttpServer, ASlowAnswerDelaysNobodyElse) {
    options.workers = 2;
    start();
    SocketClient slow = connect();
    slow.send(post("wait"));
    handler.waitForWaiting(1);
    EXPECT_EQ(bodyOf(ask(post("quick"))), "quick");
    handler.release();
    EXPECT_EQ(bodyOf(slow.readAnswer()), "wait");
}

TEST_F(HttpServer, StoppingWaitsForTheAnswerUnderWay) {
    start();
    SocketClient idle = connect();
    idle.send(post("x"));
    idle.readAnswer();
    SocketClient slow = connect();
    slow.send(post("wait"));
    handler.waitForWaiting(1);
    server->stop();
    EXPECT_TRUE(idle.isClosedWithin(patience));
    handler.release();
    const std::string answer = slow.readAnswer();
    EXPECT_EQ(bodyOf(answer), "wait");
    EXPECT_NE(answer.find("Connection: close"), std::string::npos);
    runner.join();
}

TEST_F(HttpServer, APortInUseIsNamed) {
    start();
    options.port = server->port();
    try {
        Server second(options, handler);
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find(std::to_string(options.port)), std::string::npos) << error.what();
    }
}

TEST(HttpAddress, LoopbackIsKnown) {
    EXPECT_TRUE(isLoopback("127.0.0.1"));
    EXPECT_TRUE(isLoopback("127.8.8.8"));
    EXPECT_TRUE(isLoopback("::1"));
    EXPECT_FALSE(isLoopback("0.0.0.0"));
    EXPECT_FALSE(isLoopback("::"));
    EXPECT_FALSE(isLoopback("192.0.2.1"));
    EXPECT_THROW(isLoopback("example.com"), std::runtime_error);
}

class AuthenticatingServer : public HttpServer {
protected:
    AuthenticatingServer() {
        // The password is "secret".
        const testing_support::TemporaryFile file("anna:$5$abcdefgh$gruCpC7VkOTspMQTTSAR8mtlO9Upms.fwqE5y16JVM.\n");
        options.credentials = std::make_shared<Credentials>(Credentials::load(file.path));
    }
};

constexpr std::string_view annaSecret = "Authorization: Basic YW5uYTpzZWNyZXQ=\r\n";
constexpr std::string_view annaWrong = "Authorization: Basic YW5uYTp3cm9uZw==\r\n";

TEST_F(AuthenticatingServer, AsksForNameAndPassword) {
    start();
    const std::string answer = ask(post("x"));
    EXPECT_EQ(statusOf(answer), 401);
    EXPECT_NE(answer.find("WWW-Authenticate: Basic realm="), std::string::npos);
}

TEST_F(AuthenticatingServer, AcceptsTheRightPassword) {
    start();
    SocketClient client = connect();
    for (int request = 0; request < 2; ++request) {
        client.send(post(" asks", annaSecret));
        EXPECT_EQ(bodyOf(client.readAnswer()), "anna asks");
    }
    EXPECT_EQ(statusOf(ask(post("x", annaWrong))), 401);
}

TEST_F(AuthenticatingServer, RefusesBeforeItReadsABody) {
    start();
    SocketClient client = connect();
    client.send("POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1000000\r\n\r\n");
    EXPECT_EQ(statusOf(client.readAnswer()), 401);
}

TEST_F(AuthenticatingServer, WrongPasswordsAreAnsweredMoreAndMoreSlowly) {
    start();
    int refused = 0;
    for (unsigned guess = 0; guess < LoginGate::freeGuesses; ++guess)
        refused += statusOf(ask(post("x", annaWrong))) == 401 ? 1 : 0;
    EXPECT_EQ(refused, static_cast<int>(LoginGate::freeGuesses));
    const std::string answer = ask(post("x", annaSecret));
    EXPECT_EQ(statusOf(answer), 429) << "and the right one too, as long as that lasts";
    EXPECT_NE(answer.find("Retry-After: 1\r\n"), std::string::npos) << answer;
    int status = 429;
    for (int attempt = 0; attempt < 500 && status == 429; ++attempt) {
        std::this_thread::sleep_for(20ms);
        status = statusOf(ask(post("x", annaSecret)));
    }
    EXPECT_EQ(status, 200);
}

TEST_F(AuthenticatingServer, KnownClientsAreNotDelayedByWrongPasswords) {
    start();
    EXPECT_EQ(statusOf(ask(post("x", annaSecret))), 200);
    for (unsigned guess = 0; guess < 2 * LoginGate::freeGuesses; ++guess)
        ask(post("x", annaWrong));
    EXPECT_EQ(statusOf(ask(post("x", annaWrong))), 429);
    EXPECT_EQ(statusOf(ask(post("x", annaSecret))), 200);
}

TEST_F(AuthenticatingServer, ManyClientsWithTheRightPasswordAreServedTogether) {
    start();
    std::vector<SocketClient> clients;
    for (int index = 0; index < 20; ++index) {
        clients.push_back(connect());
        clients.back().send(post(" asks", annaSecret));
    }
    for (SocketClient& client : clients)
        EXPECT_EQ(bodyOf(client.readAnswer()), "anna asks");
}

TEST_F(AuthenticatingServer, LogsWrongPasswordsWithTheirAddress) {
    std::mutex mutex;
    std::vector<std::string> told;
    options.onRefusedLogin = [&](std::string_view client, std::string_view user) {
        const std::lock_guard lock(mutex);
        told.push_back(std::string(client) + " " + std::string(user));
    };
    start();
    EXPECT_EQ(statusOf(ask(post("x"))), 401);
    EXPECT_EQ(statusOf(ask(post("x", annaSecret))), 200);
    EXPECT_EQ(statusOf(ask(post("x", annaWrong))), 401);
    const std::lock_guard lock(mutex);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told.front().substr(0, 10), "127.0.0.1:");
    EXPECT_EQ(told.front().substr(told.front().find(' ')), " anna");
}

class TlsServer : public HttpServer {
protected:
    TlsServer() {
        testing_support::makeCertificate(certificate.path, key.path);
        options.tls = Tls{certificate.path, key.path};
    }

    testing_support::TemporaryFile certificate;
    testing_support::TemporaryFile key;
};

TEST_F(TlsServer, AnswersARequest) {
    start();
    const std::string large(200'000, 'x');
    const std::string answer = askOverTls(server->port(), post(large, "Connection: close\r\n"));
    EXPECT_EQ(statusOf(answer), 200);
    EXPECT_TRUE(bodyOf(answer) == large) << answer.size() << answer.substr(0, 300);
}

TEST_F(TlsServer, DropsClientsWithoutTls) {
    start();
    SocketClient client = connect();
    client.send(post("hello"));
    EXPECT_TRUE(client.isClosedWithin(patience));
    EXPECT_EQ(bodyOf(askOverTls(server->port(), post("hello", "Connection: close\r\n"))), "hello");
}

TEST_F(TlsServer, UnfinishedHandshakesGiveWay) {
    options.limits.newcomers = 4;
    start();
    std::vector<SocketClient> crowd;
    for (int index = 0; index < 20; ++index) {
        crowd.push_back(connect());
        crowd.back().send(std::string_view("\x16\x03\x01", 3));
        EXPECT_EQ(bodyOf(askOverTls(server->port(), post("served", "Connection: close\r\n"))), "served");
    }
}

// The certificate that the server shows, in PEM.
std::string shownCertificate(std::uint16_t port) {
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(SSL_CTX_new(TLS_client_method()), SSL_CTX_free);
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> connection(BIO_new_ssl_connect(context.get()), BIO_free_all);
    BIO_set_conn_hostname(connection.get(), ("127.0.0.1:" + std::to_string(port)).c_str());
    if (BIO_do_connect(connection.get()) != 1) return "";
    SSL* session = nullptr;
    BIO_get_ssl(connection.get(), &session);
    const std::unique_ptr<X509, decltype(&X509_free)> shown(SSL_get1_peer_certificate(session), X509_free);
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> text(BIO_new(BIO_s_mem()), BIO_free_all);
    PEM_write_bio_X509(text.get(), shown.get());
    char* bytes = nullptr;
    const long length = BIO_get_mem_data(text.get(), &bytes);
    return {bytes, static_cast<std::size_t>(length)};
}

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST_F(TlsServer, ShowsTheNewCertificateFromNowOnAndTheOldOneWhereTheNewOneIsBroken) {
    start();
    const std::string old = contentOf(certificate.path);
    ASSERT_EQ(shownCertificate(server->port()), old);
    testing_support::makeCertificate(certificate.path, key.path);
    server->useTls(*options.tls);
    const std::string renewed = contentOf(certificate.path);
    ASSERT_NE(renewed, old);
    EXPECT_EQ(shownCertificate(server->port()), renewed);
    const testing_support::TemporaryFile otherCertificate;
    const testing_support::TemporaryFile otherKey;
    testing_support::makeCertificate(otherCertificate.path, otherKey.path);
    EXPECT_THROW(server->useTls({certificate.path, otherKey.path}), std::runtime_error);
    EXPECT_THROW(server->useTls({"/nonexistent", key.path}), std::runtime_error);
    EXPECT_EQ(shownCertificate(server->port()), renewed);
}

struct BadTls {
    std::string name;
    std::function<void(Tls&)> spoil;
    std::string reason;
};

void PrintTo(const BadTls& bad, std::ostream* out) { *out << bad.name; }

class RefusedTls : public TlsServer, public testing::WithParamInterface<BadTls> {};

TEST_P(RefusedTls, FileAndReasonAreNamed) {
    GetParam().spoil(*options.tls);
    try {
        start();
        FAIL();
    } catch (const std::runtime_error& error) {
        const std::string text = error.what();
        EXPECT_NE(text.find(GetParam().reason), std::string::npos) << text;
        EXPECT_EQ(text.front(), '/') << text;
    }
}

void setMode(const std::filesystem::path& file, unsigned mode) {
    std::filesystem::permissions(file, static_cast<std::filesystem::perms>(mode));
}

INSTANTIATE_TEST_SUITE_P(
    Files, RefusedTls,
    testing::ValuesIn(std::vector<BadTls>{
        {"NoCertificate", [](Tls& tls) { tls.certificate = "/nonexistent/c.pem"; },
         "/nonexistent/c.pem: No such file or directory"},
        {"NoKey", [](Tls& tls) { tls.key = "/nonexistent/k.pem"; }, "/nonexistent/k.pem: No such file or directory"},
        {"Folder", [](Tls& tls) { tls.certificate = "/tmp"; }, "/tmp: no regular file"},
        {"EmptyCertificate", [](Tls& tls) { std::ofstream(tls.certificate, std::ios::trunc); }, ": no certificate: "},
        {"EmptyKey", [](Tls& tls) { std::ofstream(tls.key, std::ios::trunc); }, ": no key for the certificate: "},
        {"KeyForEverybody", [](Tls& tls) { setMode(tls.key, 0644); }, "run: chmod 600 "},
        {"KeyThatItsGroupChanges", [](Tls& tls) { setMode(tls.key, 0620); }, "run: chmod 600 "},
    }),
    [](const auto& row) { return row.param.name; });

} // namespace
} // namespace cimhost::http
