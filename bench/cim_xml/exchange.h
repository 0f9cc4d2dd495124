// A server in this program, a client that asks it, and what is asked.
#pragma once

#include "cimhost/http/server.h"
#include "cimhost/service/host.h"

#include <boost/asio/connect.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <unistd.h>

namespace bench {

/// A server on a free port of this host, on a thread of its own.
class Running {
public:
    explicit Running(cimhost::http::Handler& handler) : server(options(), handler), thread([this] { server.run(); }) {}
    ~Running() {
        server.stop();
        thread.join();
    }
    std::uint16_t port() const { return server.port(); }

private:
    static cimhost::http::Options options() {
        cimhost::http::Options options;
        options.port = 0;
        return options;
    }
    cimhost::http::Server server;
    std::thread thread;
};

enum class Takes { whole, pieces };

/// One connection that stays open.
class Client {
public:
    using Clock = std::chrono::steady_clock;

    explicit Client(std::uint16_t port) {
        socket.connect({boost::asio::ip::make_address("127.0.0.1"), port});
        socket.set_option(boost::asio::ip::tcp::no_delay(true));
    }

    std::string ask(const std::string& message, Takes takes) {
        namespace http = boost::beast::http;
        http::request<http::string_body> request(http::verb::post, "/cimom", 11);
        request.set(http::field::host, "localhost");
        request.set(http::field::content_type, "application/xml; charset=\"utf-8\"");
        request.set("CIMOperation", "MethodCall");
        if (takes == Takes::pieces) request.set(http::field::te, "trailers");
        request.body() = message;
        request.prepare_payload();
        http::write(socket, request);
        boost::beast::flat_buffer buffer;
        buffer.reserve(std::size_t{64} << 10); // an empty one is read into by 512 bytes at a time
        http::response_parser<http::string_body> parser;
        parser.body_limit(std::uint64_t{1} << 40);
        http::read_header(socket, buffer, parser);
        firstBytes = Clock::now(); // they come with the head
        http::read(socket, buffer, parser);
        return parser.release().body();
    }

    Clock::time_point firstBytes;

private:
    boost::asio::io_context io;
    boost::asio::ip::tcp::socket socket{io};
};

inline std::string call(const std::string& method, const std::string& parameter, const std::string& object) {
    return R"(<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" )"
           R"(PROTOCOLVERSION="1.0"><SIMPLEREQ><IMETHODCALL NAME=")" +
           method +
           R"("><LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="merolt_cmpi"/></LOCALNAMESPACEPATH>)"
           R"(<IPARAMVALUE NAME=")" +
           parameter + "\">" + object + "</IPARAMVALUE>";
}

constexpr const char* callEnd = "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";

inline std::string ofClass(const std::string& method, const std::string& className) {
    return call(method, "ClassName", "<CLASSNAME NAME=\"" + className + "\"/>") + callEnd;
}

/// The provider on a fleet of its own.
class FleetHost {
public:
    explicit FleetHost(const std::string& fleet)
        : file(std::filesystem::temp_directory_path() / ("merolt-cim-xml-" + std::to_string(::getpid()) + ".json")) {
        std::ofstream(file) << fleet;
        setenv("TAVIK_SOURCE", ("fleet:" + file.string()).c_str(), 1);
        cimhost::HostOptions options;
        options.mofDirectory = MEROLT_MOF_DIRECTORY;
        options.provider = MEROLT_PROVIDER_LIBRARY;
        host.emplace(options);
        host->warmUp();
    }
    ~FleetHost() {
        host->shutdown();
        std::filesystem::remove(file);
    }
    FleetHost(const FleetHost&) = delete;
    FleetHost& operator=(const FleetHost&) = delete;

    cimhost::Host& operator*() { return *host; }
    cimhost::Host* operator->() { return &*host; }

private:
    const std::filesystem::path file;
    std::optional<cimhost::Host> host;
};

/// Two-port Fibre Channel cards.
inline std::string fleetOf(int ports) {
    const std::string port = R"({"storage": {"pciDeviceId": "0xA127", "vpd": {"readOnly": {"SN": "MF08S{n}"}}}})";
    return R"({"cards": [{"count": )" + std::to_string(ports / 2) +
           R"(, "serialNumber": "MF08S{n}", "modelName": "MF0802", "ports": [)" + port + ", " + port + "]}]}";
}

} // namespace bench
