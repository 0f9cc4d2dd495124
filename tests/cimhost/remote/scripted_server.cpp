#include "scripted_server.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdlib>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace cimhost::testing_support {

namespace {

std::size_t lengthOf(const std::string& head) {
    constexpr std::string_view field = "Content-Length: ";
    const std::size_t place = head.find(field);
    return place == std::string::npos ? 0 : std::strtoul(head.c_str() + place + field.size(), nullptr, 10);
}

} // namespace

bool sendAll(int socket, std::string_view text) {
    while (!text.empty()) {
        const ssize_t sent = ::send(socket, text.data(), text.size(), MSG_NOSIGNAL);
        if (sent <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

std::string readRequest(int socket) {
    std::string request;
    std::array<char, 4096> bytes{};
    for (;;) {
        const std::size_t end = request.find("\r\n\r\n");
        if (end != std::string::npos && request.size() >= end + 4 + lengthOf(request.substr(0, end))) return request;
        const ssize_t got = ::recv(socket, bytes.data(), bytes.size(), 0);
        if (got <= 0) return {};
        request.append(bytes.data(), static_cast<std::size_t>(got));
    }
}

std::string httpAnswer(const std::string& status, const std::string& contentType, const std::string& body) {
    return "HTTP/1.1 " + status + "\r\nContent-Type: " + contentType +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::function<void(int)> answering(std::string text) {
    return [text = std::move(text)](int socket) {
        while (!readRequest(socket).empty())
            sendAll(socket, text);
    };
}

ScriptedServer::ScriptedServer(std::function<void(int)> given) : script(std::move(given)) {
    listening = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ::bind(listening, reinterpret_cast<sockaddr*>(&address), size);
    ::listen(listening, 64);
    ::getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size);
    port = ntohs(address.sin_port);
    acceptor = std::thread([this] { accept(); });
}

ScriptedServer::~ScriptedServer() {
    isOver = true;
    ::shutdown(listening, SHUT_RDWR);
    acceptor.join();
    for (const int socket : sockets)
        ::shutdown(socket, SHUT_RDWR);
    for (std::thread& connection : connections)
        connection.join();
    for (const int socket : sockets)
        ::close(socket);
    ::close(listening);
}

void ScriptedServer::accept() {
    while (!isOver) {
        const int socket = ::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) continue;
        sockets.push_back(socket);
        connections.emplace_back([this, socket] {
            script(socket);
            ::shutdown(socket, SHUT_RDWR); // closed at the end, so that its number is nobody else's before
        });
    }
}

std::string ScriptedServer::url(const std::string& scheme) const {
    return scheme + "://127.0.0.1:" + std::to_string(port);
}

} // namespace cimhost::testing_support
