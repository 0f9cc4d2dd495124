// A client that sends whatever bytes a test likes, over a plain socket on loopback.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace cimhost::testing_support {

class SocketClient {
public:
    explicit SocketClient(std::uint16_t port);
    ~SocketClient();
    SocketClient(const SocketClient&) = delete;
    SocketClient& operator=(const SocketClient&) = delete;
    SocketClient(SocketClient&& other) noexcept;

    /// False if the other side has closed.
    bool send(std::string_view bytes);

    /// Closes this side; what comes can still be read.
    void endSending() const;

    /// One whole answer: head, and as many bytes as its Content-Length says. What has come until then if the other side
    /// closes or nothing comes for a minute.
    std::string readAnswer();

    /// What comes, up to the end that is looked for and with it, or so many bytes; fewer as above.
    std::string readUntil(std::string_view end);
    std::string readBytes(std::size_t count);

    /// True once bytes of the other side are there to be read, which this leaves.
    bool hasBytesWithin(std::chrono::milliseconds time) const;

    /// True if the other side closes within that time; what it sends before is dropped.
    bool isClosedWithin(std::chrono::milliseconds time);

private:
    bool receive(std::chrono::milliseconds time);

    int socket;
    std::string received;
};

/// A POST to /cimom with these further header lines, each ending in CRLF, and its Content-Length.
std::string post(std::string_view body, std::string_view fields = "");

/// 200 for "HTTP/1.1 200 OK..."; 0 for what is no answer.
int statusOf(std::string_view answer);

std::string bodyOf(std::string_view answer);

} // namespace cimhost::testing_support
