// What a person is told of a server that gives no answer of CIM: one line, in time, and without any secret.
#include "../protocol/certificate.h"
#include "../protocol/temporary_file.h"
#include "scripted_server.h"

#include "cimhost/http/server.h"
#include "cimhost/remote/connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace cimhost::remote {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing_support::answering;
using testing_support::httpAnswer;
using testing_support::makeCertificate;
using testing_support::readRequest;
using testing_support::ScriptedServer;
using testing_support::sendAll;
using testing_support::TemporaryFile;

constexpr std::chrono::milliseconds generous{60'000};
constexpr std::chrono::milliseconds brief{300};

std::string post(Connection& connection, Connection::Repeat repeat = Connection::Repeat::ifLost) {
    std::string answer;
    connection.post({{"CIMOperation", "MethodCall"}}, "<CIM/>", repeat,
                    [&answer](std::string_view piece) { answer += piece; });
    return answer;
}

/// Why a server gives no answer.
std::string failureOf(const std::string& url, const Identity& identity = {},
                      std::chrono::milliseconds timeout = generous) {
    Connection connection(parseServer(url), identity, timeout);
    try {
        return "it answers: " + post(connection);
    } catch (const ServerFailure& failure) {
        EXPECT_EQ(std::string(failure.what()).find('\n'), std::string::npos);
        return failure.what();
    }
}

TEST(Connection, TakesTheAnswerInPiecesAndKeepsTheConnection) {
    std::atomic<int> connections = 0;
    const ScriptedServer server([&connections](int socket) {
        ++connections;
        answering(httpAnswer("200 OK", "application/xml; charset=\"utf-8\"", std::string(100'000, 'x')))(socket);
    });
    Connection connection(parseServer(server.url()), {}, generous);
    EXPECT_EQ(post(connection).size(), 100'000U);
    EXPECT_EQ(post(connection).size(), 100'000U);
    EXPECT_EQ(connections, 1);
}

TEST(Connection, AnAnswerInChunksIsTakenToo) {
    const ScriptedServer server(
        answering("HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nTransfer-Encoding: chunked\r\n\r\n"
                  "3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n"));
    Connection connection(parseServer(server.url()), {}, generous);
    EXPECT_EQ(post(connection), "abcde");
}

TEST(Connection, NameAndPasswordGoWithEachMessage) {
    std::string request;
    const ScriptedServer server([&request](int socket) {
        request = readRequest(socket);
        sendAll(socket, httpAnswer("200 OK", "text/xml", "a"));
    });
    Identity identity;
    identity.user = "anna:a:b";
    Connection connection(parseServer(server.url()), identity, generous);
    EXPECT_EQ(post(connection), "a");
    EXPECT_THAT(request, HasSubstr("Authorization: Basic YW5uYTphOmI=\r\n"));
    EXPECT_THAT(request, HasSubstr("POST /cimom HTTP/1.1\r\n"));
}

TEST(Connection, AFileOfLoginsNamesTheUserOfEachServer) {
    std::string request;
    const ScriptedServer server([&request](int socket) {
        request = readRequest(socket);
        sendAll(socket, httpAnswer("200 OK", "text/xml", "a"));
    });
    const TemporaryFile logins("machine 127.0.0.1 login anna password secret\nmachine san2 login bea password other\n");
    Identity identity;
    identity.logins = logins.path;
    Connection connection(parseServer(server.url()), identity, generous);
    EXPECT_EQ(post(connection), "a");
    EXPECT_THAT(request, HasSubstr("Authorization: Basic YW5uYTpzZWNyZXQ=\r\n"));
}

TEST(Connection, AChangeIsNeverSentTwice) {
    std::atomic<int> requests = 0;
    const ScriptedServer server([&requests](int socket) {
        if (readRequest(socket).empty()) return;
        ++requests;
        sendAll(socket, httpAnswer("200 OK", "text/xml", "a"));
        if (!readRequest(socket).empty()) ++requests; // and closes
    });
    Connection connection(parseServer(server.url()), {}, generous);
    EXPECT_EQ(post(connection), "a");
    EXPECT_EQ(post(connection), "a"); // by a new connection, as the kept one closes
    EXPECT_EQ(requests, 3);
    EXPECT_EQ(post(connection, Connection::Repeat::never), "a");
    EXPECT_EQ(requests, 4);
}

TEST(Connection, ExceptionsOfTheCallersFunctionPassThrough) {
    const ScriptedServer server(answering(httpAnswer("200 OK", "text/xml", "a")));
    Connection connection(parseServer(server.url()), {}, generous);
    const auto refuse = [](std::string_view) { throw std::out_of_range("no more"); };
    EXPECT_THROW(connection.post({}, "", Connection::Repeat::ifLost, refuse), std::out_of_range);
}

struct BadAnswer {
    const char* name;
    std::string text;
    std::string reason;
};

void PrintTo(const BadAnswer& bad, std::ostream* out) { *out << bad.name; }

class BadServer : public testing::TestWithParam<BadAnswer> {};

TEST_P(BadServer, IsReportedInOneLineWithAdvice) {
    const ScriptedServer server([](int socket) {
        if (readRequest(socket).empty()) return;
        sendAll(socket, GetParam().text);
    });
    EXPECT_THAT(failureOf(server.url()), HasSubstr(GetParam().reason));
}

std::vector<BadAnswer> badAnswers() {
    const std::string html = "<html>verylongpage</html>";
    return {
        {"Nothing", "",
         "it does not answer with HTTP (Empty reply from server): if that port speaks TLS, try https://"},
        {"NoHttp", "SSH-2.0-OpenSSH_9.2\r\n", "it does not answer with HTTP"},
        {"Html", httpAnswer("200 OK", "text/html", html),
         "it answers with text/html and not with CIM-XML: no CIM server"},
        {"Json", httpAnswer("200 OK", "application/json", "{}"),
         "it answers with application/json and not with CIM-XML"},
        {"Unauthorized", httpAnswer("401 Unauthorized", "text/html", html),
         "it asks for a user (HTTP 401): give --user NAME"},
        {"Forbidden", httpAnswer("403 Forbidden", "text/plain", "not from there\n"),
         "it forbids this (HTTP 403: not from there)"},
        {"NotFound", httpAnswer("404 Not Found", "text/html", html),
         "it has nothing at this path (HTTP 404): check port and path"},
        {"OtherName", httpAnswer("421 Misdirected Request", "text/plain", "x"),
         "it does not go by this name (HTTP 421)"},
        {"TooManyGuesses", httpAnswer("429 Too Many Requests", "text/plain", "x"),
         "too many wrong passwords (HTTP 429)"},
        {"Busy", httpAnswer("503 Service Unavailable", "text/html", html),
         "it is too busy or not up yet (HTTP 503): try again later"},
        {"Redirected", "HTTP/1.1 301 Moved\r\nLocation: http://127.0.0.1:1/\r\nContent-Length: 0\r\n\r\n",
         "it sends elsewhere (HTTP 301)"},
        {"Refused", "HTTP/1.1 400 Bad Request\r\nCIMError: request-not-valid\r\nContent-Length: 0\r\n\r\n",
         "it refuses the request (HTTP 400, request-not-valid)"},
        {"Unimplemented", httpAnswer("501 Not Implemented", "text/plain", "no POST"),
         "it answers HTTP 501 Not Implemented: no POST"},
        {"Status418", httpAnswer("418 x", "text/html", html), "it answers HTTP 418"},
        {"CutInTheBody", "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: 900\r\n\r\n<CIM",
         "it closed the connection in the middle of its answer"},
        {"CutInAChunk", "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nTransfer-Encoding: chunked\r\n\r\n900\r\n<CIM",
         "it closed the connection in the middle of its answer"},
        {"ControlCharacters", httpAnswer("403 Forbidden", "text/plain", "\033[31mred\a"), "(HTTP 403:  [31mred )"},
    };
}

INSTANTIATE_TEST_SUITE_P(Answers, BadServer, testing::ValuesIn(badAnswers()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Connection, ARefusedPasswordIsNotPrinted) {
    const ScriptedServer server(answering(httpAnswer("401 Unauthorized", "text/plain", "Basic")));
    Identity identity;
    identity.user = "anna:verysecret";
    const std::string failure = failureOf(server.url(), identity);
    EXPECT_THAT(failure, HasSubstr("it does not take this user and password (HTTP 401)"));
    EXPECT_THAT(failure, Not(HasSubstr("verysecret")));
}

TEST(Connection, AnUnknownHostAndAClosedPortAreReported) {
    EXPECT_THAT(failureOf("http://no-such-host.invalid"),
                HasSubstr("no host of the name no-such-host.invalid is known"));
    EXPECT_THAT(failureOf("http://127.0.0.1:1"), HasSubstr("no connection to port 1 (Connection refused): check"));
}

TEST(Connection, AServerThatSaysNothingEndsAtTheDeadline) {
    const ScriptedServer server([](int socket) {
        readRequest(socket);
        readRequest(socket); // until the client goes
    });
    EXPECT_EQ(failureOf(server.url(), {}, brief), "no whole answer within 0.3 s: --timeout allows more");
}

TEST(Connection, AServerThatSendsForEverEndsAtTheDeadline) {
    const ScriptedServer server([](int socket) {
        readRequest(socket);
        sendAll(socket, "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nTransfer-Encoding: chunked\r\n\r\n");
        while (sendAll(socket, "1\r\n \r\n"))
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    });
    EXPECT_EQ(failureOf(server.url(), {}, brief), "no whole answer within 0.3 s: --timeout allows more");
}

TEST(Connection, AHeadWithoutAnEndIsRefused) {
    const ScriptedServer server([](int socket) {
        readRequest(socket);
        sendAll(socket, "HTTP/1.1 200 OK\r\n");
        while (sendAll(socket, "X: " + std::string(1000, 'x') + "\r\n")) {
        }
    });
    EXPECT_EQ(failureOf(server.url()), "the head of its answer has no end");
}

TEST(Connection, TheDeadlineIsThatOfAllMessagesTogether) {
    const ScriptedServer server(answering(httpAnswer("200 OK", "text/xml", "a")));
    Connection connection(parseServer(server.url()), {}, brief);
    EXPECT_EQ(post(connection), "a");
    std::this_thread::sleep_for(brief);
    EXPECT_THROW(post(connection), ServerFailure);
}

/// Answers with XML over TLS.
class TlsConnection : public testing::Test, public http::Handler {
protected:
    explicit TlsConnection(long certificateBeginsIn = 0) {
        makeCertificate(certificate.path, key.path, certificateBeginsIn);
        http::Options options;
        options.port = 0;
        options.tls = http::Tls{certificate.path, key.path};
        server = std::make_unique<http::Server>(options, *this);
        thread = std::thread([this] { server->run(); });
        identity.authorities = certificate.path;
    }
    ~TlsConnection() override {
        server->stop();
        thread.join();
    }

    std::optional<http::Response> refuse(const http::Request&) const override { return std::nullopt; }
    http::Response answer(http::Request) override {
        http::Response response;
        response.fields = {{"Content-Type", "application/xml"}};
        response.body.append("<CIM/>");
        return response;
    }

    std::string url(const std::string& place) const { return place + ":" + std::to_string(server->port()); }

    const TemporaryFile certificate;
    const TemporaryFile key;
    Identity identity;
    std::unique_ptr<http::Server> server;
    std::thread thread;
};

TEST_F(TlsConnection, ACertificateOfATrustedAuthorityIsAccepted) {
    EXPECT_EQ(failureOf(url("https://localhost"), identity), "it answers: <CIM/>");
}

TEST_F(TlsConnection, AnUntrustedCertificateIsNotAccepted) {
    EXPECT_THAT(failureOf(url("https://localhost")),
                testing::AllOf(HasSubstr("its certificate is not accepted (self"), HasSubstr("--cacert FILE"),
                               HasSubstr("--no-verify")));
}

TEST_F(TlsConnection, ACertificateForAnotherNameIsNotAccepted) {
    EXPECT_THAT(failureOf(url("https://127.0.0.1"), identity), HasSubstr("its certificate is not accepted ("));
}

TEST_F(TlsConnection, WithoutVerificationEveryCertificateIsAccepted) {
    Identity believing;
    believing.verifies = false;
    EXPECT_EQ(failureOf(url("https://127.0.0.1"), believing), "it answers: <CIM/>");
}

TEST_F(TlsConnection, PlainHttpAtATlsPortIsReportedWithAdvice) {
    const std::string failure = failureOf(url("http://localhost"));
    EXPECT_THAT(failure, HasSubstr("it does not answer with HTTP"));
    EXPECT_THAT(failure, HasSubstr("if that port speaks TLS, try " + url("https://localhost")));
}

class ExpiredTls : public TlsConnection {
protected:
    ExpiredTls() : TlsConnection(-7200) {}
};

TEST_F(ExpiredTls, AnExpiredCertificateIsNotAccepted) {
    EXPECT_THAT(failureOf(url("https://localhost"), identity),
                HasSubstr("its certificate is not accepted (certificate has expired): --cacert FILE"));
}

TEST(Connection, TlsAtAPlainPortIsReportedWithAdvice) {
    const ScriptedServer server([](int socket) {
        std::string hello(1, '\0');
        sendAll(socket, "HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n");
        readRequest(socket);
    });
    EXPECT_THAT(failureOf(server.url("https")),
                testing::AllOf(HasSubstr("TLS does not come about ("),
                               HasSubstr("if that port speaks plain HTTP, try http://127.0.0.1:")));
}

} // namespace
} // namespace cimhost::remote
