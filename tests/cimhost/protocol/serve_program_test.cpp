// cimhost serve as an operator runs it: who may do what, what is told of it, and files that are read again.
#include "certificate.h"
#include "program.h"
#include "socket_client.h"
#include "temporary_file.h"
#include "waiting_client.h"

#include "tests/becomes_true.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/bio.h>
#include <openssl/ssl.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace cimhost {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testing_support::cimhost;
using testing_support::Ended;
using testing_support::makeCertificate;
using testing_support::Process;
using testing_support::SocketClient;
using testing_support::TemporaryFile;

// The passwords are "secret".
const std::string annaLine = "anna:$5$abcdefgh$gruCpC7VkOTspMQTTSAR8mtlO9Upms.fwqE5y16JVM.\n";
const std::string bertLine = "bert:$5$abcdefgh$gruCpC7VkOTspMQTTSAR8mtlO9Upms.fwqE5y16JVM.\n";

const std::string annaSecret = "Basic YW5uYTpzZWNyZXQ=";
const std::string annaWrong = "Basic YW5uYTp3cm9uZw==";
const std::string bertSecret = "Basic YmVydDpzZWNyZXQ=";

const std::string start = "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">";
const std::string nameSpace = "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"merolt_cmpi\"/>"
                              "</LOCALNAMESPACEPATH>";
const std::string readClass = start + "<SIMPLEREQ><IMETHODCALL NAME=\"EnumerateClassNames\">" + nameSpace +
                              "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
// Names no image: the method is called, and fails.
const std::string install = start + "<SIMPLEREQ><METHODCALL NAME=\"InstallFromURI\"><LOCALCLASSPATH>" + nameSpace +
                            "<CLASSNAME NAME=\"Merolt_NIC_SoftwareInstallationService\"/></LOCALCLASSPATH>"
                            "</METHODCALL></SIMPLEREQ></MESSAGE></CIM>";

// As a certificate has it: for localhost.
std::string namedUrlOf(Process& server) {
    for (std::string line = server.readLine(); !line.empty(); line = server.readLine()) {
        const std::size_t begin = line.find("http");
        if (line.find("cimhost: listening on") == std::string::npos || begin == std::string::npos) continue;
        std::string url = line.substr(begin, line.find(',') - begin);
        if (const std::size_t address = url.find("127.0.0.1"); address != std::string::npos) {
            url.replace(address, 9, "localhost");
        }
        return url;
    }
    return "";
}

http::ClientAnswer ask(const std::string& url, const std::string& message, const std::string& authorization,
                       const std::filesystem::path& authorities = {}) {
    std::vector<http::Field> fields = {{"Content-Type", "application/xml"}, {"CIMOperation", "MethodCall"}};
    if (!authorization.empty()) fields.push_back({"Authorization", authorization});
    return testing_support::postAndWait(http::parseUrl(url + "/cimom").value(), fields, message, authorities);
}

std::vector<std::string> serveWith(const std::vector<std::string>& more) {
    std::vector<std::string> command = {PROGRAM, "--fleet", FLEET, "serve", "--listen", "127.0.0.1:0", "--state", ""};
    command.insert(command.end(), more.begin(), more.end());
    return command;
}

TEST(ServeProgram, LogsChangesAndRefusals) {
    const TemporaryFile users(annaLine);
    Process server(serveWith({"--credentials", users.path.string()}));
    const std::string url = namedUrlOf(server);
    ASSERT_NE(url, "") << server.errors();
    EXPECT_EQ(ask(url, readClass, "").status, 401U);
    EXPECT_EQ(ask(url, readClass, annaSecret).status, 200U);
    EXPECT_THAT(server.errors(), Not(HasSubstr("audit:")));
    EXPECT_EQ(ask(url, install, annaSecret).status, 200U);
    EXPECT_TRUE(server.hasError("user=anna operation=InstallFromURI "
                                "object=root/merolt_cmpi:Merolt_NIC_SoftwareInstallationService "
                                "result=CIM_ERR_NO_SUCH_PROPERTY\n"))
        << server.errors();
    EXPECT_EQ(ask(url, install, annaWrong).status, 401U);
    EXPECT_TRUE(server.hasError("user=anna operation=login result=refused\n")) << server.errors();
    EXPECT_THAT(server.errors(), ContainsRegex("cimhost: audit: client=127[.]0[.]0[.]1:[0-9]+ user=anna operation="));
}

TEST(ServeProgram, WarnsOfANameThatEveryMachineCouldHave) {
    const auto serveAs = [](const std::string& name, const std::string& option) {
        return std::vector<std::string>{"env",
                                        "TAVIK_SOURCE=host",
                                        "MEROLT_CNA_SYSTEM_NAME=" + name,
                                        PROGRAM,
                                        option,
                                        "serve",
                                        "--listen",
                                        "127.0.0.1:0",
                                        "--state",
                                        ""};
    };
    constexpr const char* warning = "warning: clients know this machine as 127.0.1.1, and so they will every other one";
    Process warned(serveAs("127.0.1.1", "--ask-once"));
    EXPECT_FALSE(namedUrlOf(warned).empty());
    EXPECT_THAT(warned.errors(), HasSubstr(warning));
    Process quiet(serveAs("127.0.1.1", "--quiet"));
    EXPECT_FALSE(namedUrlOf(quiet).empty());
    EXPECT_THAT(quiet.errors(), Not(HasSubstr("clients know")));
    Process named(serveAs("san1", "--ask-once"));
    EXPECT_FALSE(namedUrlOf(named).empty());
    EXPECT_THAT(named.errors(), Not(HasSubstr("clients know")));
}

TEST(ServeProgram, LogsAnonymousChangesAndThatTheyAreAllowed) {
    Process server(serveWith({"--anonymous-writes"}));
    const std::string url = namedUrlOf(server);
    ASSERT_NE(url, "") << server.errors();
    EXPECT_TRUE(server.hasError("--anonymous-writes: whoever can connect may change")) << server.errors();
    ask(url, install, "");
    EXPECT_TRUE(server.hasError("user=\"\" operation=InstallFromURI ")) << server.errors();
}

TEST(ServeProgram, ReadsItsUsersAgainOnASignalAndKeepsThemIfTheFileIsBroken) {
    const TemporaryFile users(annaLine);
    Process server(serveWith({"--credentials", users.path.string()}));
    const std::string url = namedUrlOf(server);
    ASSERT_NE(url, "") << server.errors();
    EXPECT_EQ(ask(url, readClass, annaSecret).status, 200U);
    std::ofstream(users.path, std::ios::trunc) << bertLine;
    server.signal(SIGHUP);
    ASSERT_TRUE(server.hasError("cimhost: SIGHUP: 1 user from " + users.path.string())) << server.errors();
    EXPECT_EQ(ask(url, readClass, annaSecret).status, 401U);
    EXPECT_EQ(ask(url, readClass, bertSecret).status, 200U);
    std::ofstream(users.path, std::ios::trunc) << bertLine << "anna\n";
    server.signal(SIGHUP);
    ASSERT_TRUE(server.hasError(users.path.string() + ":2: a line reads user:hash; the users stay as they were"))
        << server.errors();
    EXPECT_EQ(ask(url, readClass, bertSecret).status, 200U);
    server.signal(SIGTERM);
    EXPECT_EQ(server.wait(), 0);
}

// Of the signals that a line SigBlk: names.
constexpr bool isHangupAmong(unsigned long long blocked) { return ((blocked >> (SIGHUP - 1)) & 1U) != 0; }
constexpr bool areAllAmong(unsigned long long blocked) { return ((blocked >> (SIGSEGV - 1)) & 1U) != 0; }

// Whether SIGHUP is blocked in the process. A server blocks it before it does anything else. A process that is not the
// server yet, or that is starting a thread, has all signals blocked for a moment.
bool holdsSignalsBack(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("SigBlk:", 0) != 0) continue;
        const unsigned long long blocked = std::stoull(line.substr(7), nullptr, 16);
        return isHangupAmong(blocked) && !areAllAmong(blocked);
    }
    return false;
}

// As a script does that starts a server and goes on: the signal comes while the provider is still being loaded.
TEST(ServeProgram, SighupDuringTheStartDoesNotEndTheServer) {
    const TemporaryFile users(annaLine);
    Process server(serveWith({"--credentials", users.path.string()}));
    ASSERT_TRUE(tests::becomesTrue([&] { return holdsSignalsBack(server.pid()); }));
    for (int count = 0; count < 5; ++count)
        server.signal(SIGHUP);
    const std::string url = namedUrlOf(server);
    ASSERT_NE(url, "") << server.errors();
    EXPECT_TRUE(server.hasError("cimhost: SIGHUP: 1 user from ")) << server.errors();
    EXPECT_EQ(ask(url, readClass, annaSecret).status, 200U);
    server.signal(SIGTERM);
    EXPECT_EQ(server.wait(), 0);
}

TEST(ServeProgram, SighupWithoutUsersOrCertificateIsReported) {
    Process server(serveWith({}));
    const std::string url = namedUrlOf(server);
    ASSERT_NE(url, "") << server.errors();
    server.signal(SIGHUP);
    EXPECT_TRUE(server.hasError("neither users nor a certificate")) << server.errors();
    EXPECT_EQ(ask(url, readClass, "").status, 200U);
}

class SecureServer : public testing::Test {
protected:
    SecureServer() { makeCertificate(certificate.path, key.path); }

    std::vector<std::string> command() const {
        return serveWith({"--credentials", users.path.string(), "--certificate", certificate.path.string(), "--key",
                          key.path.string()});
    }

    TemporaryFile users{annaLine};
    TemporaryFile certificate;
    TemporaryFile key;
};

TEST_F(SecureServer, ShowsARenewedCertificateWithoutARestart) {
    Process server(command());
    const std::string url = namedUrlOf(server);
    ASSERT_NE(url, "") << server.errors();
    const TemporaryFile old;
    std::filesystem::copy_file(certificate.path, old.path, std::filesystem::copy_options::overwrite_existing);
    EXPECT_EQ(ask(url, readClass, annaSecret, old.path).status, 200U);
    makeCertificate(certificate.path, key.path);
    server.signal(SIGHUP);
    ASSERT_TRUE(server.hasError("SIGHUP: a certificate from " + certificate.path.string())) << server.errors();
    EXPECT_EQ(ask(url, readClass, annaSecret, certificate.path).status, 200U);
    EXPECT_THROW(ask(url, readClass, annaSecret, old.path), std::runtime_error);
    std::filesystem::remove(key.path);
    server.signal(SIGHUP);
    ASSERT_TRUE(server.hasError(key.path.string() + ": No such file or directory; the certificate and key stay"))
        << server.errors();
    EXPECT_EQ(ask(url, readClass, annaSecret, certificate.path).status, 200U);
}

/// The port behind that text of a line; 0 where it is another line.
unsigned short portBehind(const std::string& line, const std::string& text) {
    const std::size_t place = line.find(text);
    return place == std::string::npos ? 0 : static_cast<unsigned short>(std::stoi(line.substr(place + text.size())));
}

/// GET /metrics over TLS: what is answered to somebody who believes that certificate alone, and "" where it is another.
std::string scrapeOverTls(unsigned short port, const std::filesystem::path& believed, const std::string& fields) {
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(SSL_CTX_new(TLS_client_method()), SSL_CTX_free);
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER, nullptr);
    if (SSL_CTX_load_verify_locations(context.get(), believed.c_str(), nullptr) != 1) return "";
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> connection(BIO_new_ssl_connect(context.get()), BIO_free_all);
    BIO_set_conn_hostname(connection.get(), ("127.0.0.1:" + std::to_string(port)).c_str());
    if (BIO_do_connect(connection.get()) != 1) return "";
    const std::string request = "GET /metrics HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n" + fields + "\r\n";
    BIO_write(connection.get(), request.data(), static_cast<int>(request.size()));
    std::string answer;
    std::array<char, 4096> bytes{};
    for (int count = 0; (count = BIO_read(connection.get(), bytes.data(), bytes.size())) > 0;)
        answer.append(bytes.data(), static_cast<std::size_t>(count));
    return answer;
}

TEST_F(SecureServer, AnswersPrometheusOverTlsToItsUsersAlone) {
    std::vector<std::string> line = command();
    line.insert(line.end(), {"--metrics", "127.0.0.1:0"});
    Process server(line);
    const unsigned short port = portBehind(server.readLine(), "cimhost: metrics at https://127.0.0.1:");
    ASSERT_NE(port, 0) << server.errors();
    ASSERT_NE(namedUrlOf(server), "") << server.errors();
    const std::string anna = "Authorization: " + annaSecret + "\r\n";
    EXPECT_THAT(scrapeOverTls(port, certificate.path, ""), StartsWith("HTTP/1.1 401 "));
    EXPECT_THAT(scrapeOverTls(port, certificate.path, anna), StartsWith("HTTP/1.1 200 "));
    EXPECT_THAT(scrapeOverTls(port, certificate.path, anna), HasSubstr("\nmerolt_cna_adapters_readable 1\n"));
    const TemporaryFile old;
    std::filesystem::copy_file(certificate.path, old.path, std::filesystem::copy_options::overwrite_existing);
    makeCertificate(certificate.path, key.path);
    server.signal(SIGHUP);
    ASSERT_TRUE(server.hasError("SIGHUP: a certificate from " + certificate.path.string())) << server.errors();
    EXPECT_THAT(scrapeOverTls(port, certificate.path, anna), StartsWith("HTTP/1.1 200 "));
    EXPECT_EQ(scrapeOverTls(port, old.path, anna), "");
    SocketClient plain(port);
    plain.send("GET /metrics HTTP/1.1\r\nHost: localhost\r\n" + anna + "\r\n");
    EXPECT_TRUE(plain.isClosedWithin(std::chrono::seconds(60)));
}

TEST_F(SecureServer, TakesSubscriptionsOfAListenerThatTrustsItsAuthority) {
    Process server(command());
    const std::string url = namedUrlOf(server);
    ASSERT_NE(url, "") << server.errors();
    const std::vector<std::string> listen = {PROGRAM,       "listen", "--port", "0",
                                             "--subscribe", url,      "--user", "anna:secret"};
    const Ended unknown = testing_support::run(listen);
    EXPECT_EQ(unknown.status, 2);
    EXPECT_THAT(unknown.errors, HasSubstr("its certificate is not accepted"));
    std::vector<std::string> told = listen;
    told.insert(told.end(), {"--cacert", certificate.path.string()});
    Process listener(told);
    EXPECT_TRUE(listener.hasError("subscribed at localhost:")) << listener.errors();
    listener.signal(SIGTERM);
    EXPECT_EQ(listener.wait(), 0);
    told.back() = "/nonexistent/ca.pem";
    const Ended missing = testing_support::run(told);
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.errors, "cimhost: /nonexistent/ca.pem: No such file or directory\n");
    const Ended plain = cimhost({"listen", "--port", "0", "--subscribe", "http://localhost:1", "--cacert", FLEET});
    EXPECT_EQ(plain.status, 2);
    EXPECT_THAT(plain.errors, HasSubstr("--cacert is for --subscribe with an https:// URL"));
}

} // namespace
} // namespace cimhost
