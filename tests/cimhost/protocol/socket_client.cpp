#include "socket_client.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace cimhost::testing_support {

namespace {

constexpr std::chrono::seconds patience{60};
constexpr std::string_view headEnd = "\r\n\r\n";

} // namespace

SocketClient::SocketClient(std::uint16_t port) : socket(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("no connection");
    }
}

SocketClient::SocketClient(SocketClient&& other) noexcept
    : socket(std::exchange(other.socket, -1)), received(std::move(other.received)) {}

SocketClient::~SocketClient() {
    if (socket >= 0) ::close(socket);
}

bool SocketClient::send(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

void SocketClient::endSending() const { ::shutdown(socket, SHUT_WR); }

bool SocketClient::receive(std::chrono::milliseconds time) {
    pollfd wait{socket, POLLIN, 0};
    if (::poll(&wait, 1, static_cast<int>(time.count())) <= 0) return false;
    std::array<char, 65536> bytes;
    const ssize_t count = ::recv(socket, bytes.data(), bytes.size(), 0);
    if (count <= 0) return false;
    received.append(bytes.data(), static_cast<std::size_t>(count));
    return true;
}

std::string SocketClient::readAnswer() {
    std::size_t end = std::string::npos;
    while ((end = received.find(headEnd)) == std::string::npos) {
        if (!receive(patience)) return std::exchange(received, {});
    }
    end += headEnd.size();
    constexpr std::string_view field = "Content-Length: ";
    const std::size_t length = received.find(field);
    const std::size_t body = length < end ? std::strtoul(received.c_str() + length + field.size(), nullptr, 10) : 0;
    while (received.size() < end + body && receive(patience)) {
    }
    std::string answer = received.substr(0, end + body);
    received.erase(0, answer.size());
    return answer;
}

std::string SocketClient::readUntil(std::string_view end) {
    while (received.find(end) == std::string::npos) {
        if (!receive(patience)) return std::exchange(received, {});
    }
    return readBytes(received.find(end) + end.size());
}

std::string SocketClient::readBytes(std::size_t count) {
    while (received.size() < count && receive(patience)) {
    }
    std::string bytes = received.substr(0, count);
    received.erase(0, bytes.size());
    return bytes;
}

bool SocketClient::hasBytesWithin(std::chrono::milliseconds time) const {
    pollfd wait{socket, POLLIN, 0};
    return ::poll(&wait, 1, static_cast<int>(time.count())) > 0;
}

bool SocketClient::isClosedWithin(std::chrono::milliseconds time) {
    const auto deadline = std::chrono::steady_clock::now() + time;
    while (true) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return false;
        pollfd wait{socket, POLLIN, 0};
        if (::poll(&wait, 1, static_cast<int>(left.count())) <= 0) return false;
        std::array<char, 4096> bytes;
        if (::recv(socket, bytes.data(), bytes.size(), 0) <= 0) return true;
    }
}

std::string post(std::string_view body, std::string_view fields) {
    std::string request = "POST /cimom HTTP/1.1\r\nHost: localhost\r\n";
    request.append(fields)
        .append("Content-Length: ")
        .append(std::to_string(body.size()))
        .append("\r\n\r\n")
        .append(body);
    return request;
}

int statusOf(std::string_view answer) {
    constexpr std::string_view start = "HTTP/1.1 ";
    if (answer.substr(0, start.size()) != start) return 0;
    return std::atoi(std::string(answer.substr(start.size(), 3)).c_str());
}

std::string bodyOf(std::string_view answer) {
    const std::size_t end = answer.find(headEnd);
    return end == std::string_view::npos ? "" : std::string(answer.substr(end + headEnd.size()));
}

} // namespace cimhost::testing_support
