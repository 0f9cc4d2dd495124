#include "fake_listeners.h"

#include "tests/becomes_true.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace cimhost::testing_support {

namespace {

constexpr const char* goodAnswer =
    "<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
    "<SIMPLEEXPRSP><EXPMETHODRESPONSE NAME=\"ExportIndication\"><IRETURNVALUE/></EXPMETHODRESPONSE></SIMPLEEXPRSP>"
    "</MESSAGE></CIM>";

http::Options optionsFor(std::uint16_t port, std::optional<http::Tls> tls) {
    http::Options options;
    options.port = port;
    options.tls = std::move(tls);
    options.workers = 1;
    return options;
}

} // namespace

FakeListener::FakeListener(Answer answer, std::uint16_t port, std::optional<http::Tls> tls)
    : reply(std::move(answer)), server(std::make_unique<http::Server>(optionsFor(port, std::move(tls)), *this)),
      thread([this] { server->run(); }) {}

FakeListener::~FakeListener() {
    server->stop();
    thread.join();
}

http::Response FakeListener::withBody(const std::string& body) {
    http::Response response;
    response.body.append(body);
    return response;
}

http::Response FakeListener::good(std::size_t) { return withBody(goodAnswer); }

std::string FakeListener::url(const std::string& scheme, const std::string& host) const {
    return scheme + "://" + host + ":" + std::to_string(server->port()) + "/";
}

http::Response FakeListener::answer(http::Request request) {
    std::size_t number = 0;
    {
        const std::lock_guard lock(mutex);
        number = received.size();
        received.push_back(std::move(request.body));
    }
    return reply(number);
}

std::vector<std::string> FakeListener::bodies(std::size_t count) {
    tests::becomesTrue([&] {
        const std::lock_guard lock(mutex);
        return received.size() >= count;
    });
    const std::lock_guard lock(mutex);
    return received;
}

RawListener::RawListener(std::string endlessBytes)
    : bytes(std::move(endlessBytes)), socket(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(socket, reinterpret_cast<const sockaddr*>(&address), length) != 0 || ::listen(socket, 16) != 0)
        throw std::system_error(errno, std::generic_category(), "no listening socket");
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
    port = ntohs(address.sin_port);
    thread = std::thread([this] { run(); });
}

RawListener::~RawListener() {
    isStopping = true;
    thread.join();
    ::close(socket);
}

std::string RawListener::url() const { return "http://127.0.0.1:" + std::to_string(port) + "/"; }

void RawListener::run() {
    std::vector<int> clients;
    while (!isStopping) {
        pollfd waiting{socket, POLLIN, 0};
        if (::poll(&waiting, 1, clients.empty() || bytes.empty() ? 20 : 0) > 0) {
            clients.push_back(::accept4(socket, nullptr, nullptr, SOCK_NONBLOCK));
            const std::string head = "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\n\r\n";
            if (!bytes.empty()) ::send(clients.back(), head.data(), head.size(), MSG_NOSIGNAL);
        }
        for (const int client : clients) {
            if (!bytes.empty()) ::send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        }
    }
    for (const int client : clients)
        ::close(client);
}

} // namespace cimhost::testing_support
