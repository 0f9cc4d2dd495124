// An HTTP client that posts messages to one place: deadlines, a bounded answer, TLS, a connection kept between
// messages.
#pragma once

#include "cimhost/http/message.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace cimhost::http {

struct Url {
    bool isSecure = false;
    std::string host; ///< without brackets
    std::string port; ///< the scheme's own if the text names none
    std::string path = "/";

    /// "name:port", with brackets where they belong.
    [[nodiscard]] std::string authority() const;
};

/// `http://host[:port][/path]` or https; nothing for anything else, for a user name in it, and beyond 2048 bytes.
std::optional<Url> parseUrl(std::string_view text);

struct ClientLimits {
    std::chrono::milliseconds connect{5'000}; ///< name, connection and TLS handshake
    std::chrono::milliseconds answer{10'000}; ///< from the first byte sent to the last one received
    std::size_t answerBytes = std::size_t{64} << 10;
};

/// No answer; what() says why.
class ClientError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct ClientAnswer {
    unsigned status = 0;
    std::string body;
};

/// One message at a time, by one thread; only abort() may be called from another.
class Client {
public:
    explicit Client(Url url, ClientLimits limits = {});
    ~Client();
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// Throws ClientError. Where a connection that was kept turns out to be gone before any answer, a new one is made.
    ClientAnswer post(const std::vector<Field>& fields, std::string_view body);

    /// Ends the message under way, and every later one at once.
    void abort();

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace cimhost::http
