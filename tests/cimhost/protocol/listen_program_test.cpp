// The command cimhost listen at a server that asks for a user.
#include "program.h"
#include "waiting_client.h"

#include "cimhost/http/server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

namespace cimhost {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using testing_support::cimhost;
using testing_support::Ended;
using testing_support::lineCount;
using testing_support::Process;
using testing_support::TemporaryFile;
using testing_support::urlOf;

class Listening : public testing::Test {
protected:
    void SetUp() override {
        url = urlOf(server);
        ASSERT_NE(url, "") << server.errors();
    }

    std::vector<std::string> listen(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> command = {PROGRAM, "listen", "--port", "0", "--subscribe", url};
        command.insert(command.end(), more.begin(), more.end());
        return command;
    }

    /// Subscribes, and takes everything back when it is told to end.
    void expectSubscription(Process& listener) {
        EXPECT_TRUE(listener.hasError("subscribed at " + url.substr(7))) << listener.errors();
        listener.signal(SIGTERM);
        EXPECT_EQ(listener.wait(), 0);
        EXPECT_EQ(lineCount(listener.errors()), 1U) << listener.errors();
    }

    void expectRefusal(const std::vector<std::string>& more, const std::string& message) const {
        const Ended ended = testing_support::run(listen(more));
        EXPECT_EQ(ended.status, 2);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors, "cimhost: " + message + "\n");
    }

    // The password is "secret".
    TemporaryFile users{"anna:$5$abcdefgh$gruCpC7VkOTspMQTTSAR8mtlO9Upms.fwqE5y16JVM.\n"};
    Process server{{PROGRAM, "--fleet", FLEET, "serve", "--listen", "127.0.0.1:0", "--state", "", "--credentials",
                    users.path.string()}};
    std::string url;
};

TEST_F(Listening, SubscribesAsTheUserOfTheOptionOrTheEnvironment) {
    Process told(listen({"--user", "anna:secret"}));
    expectSubscription(told);
    ::setenv("CIMHOST_USER", "anna:secret", 1);
    Process environment(listen());
    ::unsetenv("CIMHOST_USER");
    expectSubscription(environment);
    const TemporaryFile logins{"machine 127.0.0.1 login anna password secret\n"};
    Process named(listen({"--netrc", logins.path.string()}));
    expectSubscription(named);
    expectRefusal({}, url + ": it asks for a user (HTTP 401): give --user NAME, CIMHOST_USER or --netrc FILE");
    expectRefusal({"--user", "anna:wrong"}, url + ": it does not take this user and password (HTTP 401)");
    expectRefusal({"--user", "bert:secret"}, url + ": it does not take this user and password (HTTP 401)");
}

TEST(ListenProgram, AnIndicationThatCannotBePrintedIsNotConfirmed) {
    Process listener({"/bin/sh", "-c", "exec \"$0\" listen --port 0 >/dev/full", PROGRAM});
    ASSERT_TRUE(listener.hasError("listening for indications on http://127.0.0.1:")) << listener.errors();
    const std::string line = listener.errors();
    const auto url = http::parseUrl(line.substr(line.find("http://"), line.find('\n') - line.find("http://")));
    ASSERT_TRUE(url);
    const http::ClientAnswer answer = testing_support::postAndWait(
        *url, {{"Content-Type", "application/xml"}, {"CIMExport", "MethodRequest"}},
        "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"7\" PROTOCOLVERSION=\"1.0\"><SIMPLEEXPREQ>"
        "<EXPMETHODCALL NAME=\"ExportIndication\"><EXPPARAMVALUE NAME=\"NewIndication\"><INSTANCE "
        "CLASSNAME=\"T_Alert\"/></EXPPARAMVALUE></EXPMETHODCALL></SIMPLEEXPREQ></MESSAGE></CIM>");
    EXPECT_EQ(answer.status, 503);
    EXPECT_EQ(listener.wait(), 2);
    EXPECT_EQ(lineCount(listener.errors()), 2U) << listener.errors();
    EXPECT_THAT(listener.errors(), HasSubstr("cimhost: standard output takes no more indications\n"));
}

TEST(ListenProgram, AMissingServerIsReported) {
    const Ended ended = cimhost({"listen", "--port", "0", "--subscribe", "http://127.0.0.1:1"});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, StartsWith("cimhost: http://127.0.0.1:1: no connection to port 1 (Connection refused)"));
    EXPECT_EQ(lineCount(ended.errors), 1U);
    const Ended noUrl = cimhost({"listen", "--port", "0", "--subscribe", "localhost:5988"});
    EXPECT_EQ(noUrl.status, 2);
    EXPECT_THAT(noUrl.errors, HasSubstr("--subscribe: \"localhost:5988\" is no URL"));
}

// Takes no filter, and keeps what it was asked for.
class FilterRefuser final : public http::Handler {
public:
    std::optional<http::Response> refuse(const http::Request&) const override { return std::nullopt; }
    http::Response answer(http::Request request) override {
        asked = std::move(request.body);
        return http::textResponse(503, "no filters");
    }

    std::string asked;
};

// sfcb knows an object by those of its keys that it was told, and answers with all of them.
TEST(ListenProgram, AFilterIsMadeWithAllItsKeys) {
    FilterRefuser handler;
    http::Options options;
    options.port = 0;
    http::Server server(options, handler);
    std::thread serving([&] { server.run(); });
    const std::string url = "http://127.0.0.1:" + std::to_string(server.port());
    const Ended ended = cimhost({"listen", "--port", "0", "--subscribe", url});
    server.stop();
    serving.join();
    EXPECT_EQ(ended.status, 2);
    for (const std::string key : {"SystemCreationClassName", "SystemName", "CreationClassName", "Name"}) {
        EXPECT_THAT(handler.asked, HasSubstr("<PROPERTY NAME=\"" + key + "\" TYPE=\"string\"><VALUE>")) << key;
    }
}

} // namespace
} // namespace cimhost
