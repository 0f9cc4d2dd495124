// What EnumerateInstances of the storage ports costs a client over HTTP, as a multiple of the same bytes rendered
// beforehand and sent by the same server. Aim: at most 2 at 64 ports.
//
// The two are asked in turns, each over a connection that stays open; figures are medians of the time that passes.
#include "cimhost/service/endpoint.h"
#include "cimhost/service/host.h"

#include <boost/asio/connect.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace cimhost;
using boost::asio::ip::tcp;
namespace http_protocol = boost::beast::http;

constexpr const char* enumerateInstances = R"(<?xml version="1.0" encoding="utf-8"?>
<CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ>
<IMETHODCALL NAME="EnumerateInstances"><LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="merolt_cmpi"/>
</LOCALNAMESPACEPATH><IPARAMVALUE NAME="ClassName"><CLASSNAME NAME="Merolt_FCHBA_FCPort"/></IPARAMVALUE>
</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>)";

/// Sends the same answer to everybody.
class ReadyHandler final : public http::Handler {
public:
    explicit ReadyHandler(std::string_view answer) : bytes(answer) {}
    std::optional<http::Response> refuse(const http::Request&) const override { return std::nullopt; }
    http::Response answer(http::Request) override {
        http::Response response;
        response.fields.push_back({"Content-Type", "application/xml; charset=\"utf-8\""});
        response.fields.push_back({"CIMOperation", "MethodResponse"});
        response.body.append(bytes);
        return response;
    }

private:
    std::string bytes;
};

/// A server on a free port of this host, on a thread of its own.
class Running {
public:
    explicit Running(http::Handler& handler) : server(options(), handler), thread([this] { server.run(); }) {}
    ~Running() {
        server.stop();
        thread.join();
    }
    std::uint16_t port() const { return server.port(); }

private:
    static http::Options options() {
        http::Options options;
        options.port = 0;
        return options;
    }
    http::Server server;
    std::thread thread;
};

class Client {
public:
    explicit Client(std::uint16_t port) {
        socket.connect({boost::asio::ip::make_address("127.0.0.1"), port});
        socket.set_option(tcp::no_delay(true));
    }

    std::string ask() {
        http_protocol::request<http_protocol::string_body> request(http_protocol::verb::post, "/cimom", 11);
        request.set(http_protocol::field::host, "localhost");
        request.set(http_protocol::field::content_type, "application/xml; charset=\"utf-8\"");
        request.set("CIMOperation", "MethodCall");
        request.set("CIMMethod", "EnumerateInstances");
        request.set("CIMObject", "root/merolt_cmpi");
        request.body() = enumerateInstances;
        request.prepare_payload();
        http_protocol::write(socket, request);
        boost::beast::flat_buffer buffer;
        http_protocol::response_parser<http_protocol::string_body> parser;
        parser.body_limit(boost::none);
        http_protocol::read(socket, buffer, parser);
        return parser.release().body();
    }

private:
    boost::asio::io_context io;
    tcp::socket socket{io};
};

double microsecondsOf(Client& client) {
    const auto start = std::chrono::steady_clock::now();
    client.ask();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Two-port Fibre Channel cards.
std::string fleetOf(int ports) {
    const std::string port = R"({"storage": {"pciDeviceId": "0xA127", "vpd": {"readOnly": {"SN": "MF08S{n}"}}}})";
    return R"({"cards": [{"count": )" + std::to_string(ports / 2) +
           R"(, "serialNumber": "MF08S{n}", "modelName": "MF0802", "ports": [)" + port + ", " + port + "]}]}";
}

void measure(int ports) {
    const auto fleet = std::filesystem::temp_directory_path() / "merolt-cim-xml.json";
    std::ofstream(fleet) << fleetOf(ports);
    setenv("TAVIK_SOURCE", ("fleet:" + fleet.string()).c_str(), 1);
    HostOptions options;
    options.mofDirectory = MEROLT_MOF_DIRECTORY;
    options.provider = MEROLT_PROVIDER_LIBRARY;
    Host host(options);
    host.warmUp();
    Dispatcher dispatcher(host.operations(), host.broker());
    Endpoint endpoint(dispatcher);
    {
        const Running real(endpoint);
        Client realClient(real.port());
        const std::string answer = realClient.ask();
        ReadyHandler ready(answer);
        const Running prepared(ready);
        Client readyClient(prepared.port());
        std::vector<double> realTimes;
        std::vector<double> readyTimes;
        for (int round = 0; round < 400; ++round) {
            realTimes.push_back(microsecondsOf(realClient));
            readyTimes.push_back(microsecondsOf(readyClient));
        }
        const double realTime = median(realTimes);
        const double readyTime = median(readyTimes);
        std::printf("%5d ports: %8zu bytes, request %8.1f us, rendered beforehand %8.1f us, ratio %.2f\n", ports,
                    answer.size(), realTime, readyTime, realTime / readyTime);
    }
    host.shutdown();
    std::filesystem::remove(fleet);
}

} // namespace

int main() {
    for (const int ports : {2, 64, 1024})
        measure(ports);
}
