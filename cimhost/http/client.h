// HTTP clients that post messages to one place each: deadlines, a bounded answer, TLS, a connection kept between
// messages. Many of them share one thread.
#pragma once

#include "cimhost/http/message.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

struct ClientAnswer {
    unsigned status = 0;
    std::string body;
};

/// What became of a message.
struct ClientResult {
    ClientAnswer answer;
    std::string error; ///< why there is no answer; empty: there is one
};

/// What the clients of one thread share: its loop, and the certificates that they trust.
class ClientLoop {
public:
    /// @param authorities PEM file of those whose certificates are believed; empty: the system's, or those of
    ///        SSL_CERT_FILE. Throws std::runtime_error naming it if it cannot be used.
    explicit ClientLoop(const std::filesystem::path& authorities = {});
    ~ClientLoop();
    ClientLoop(const ClientLoop&) = delete;
    ClientLoop& operator=(const ClientLoop&) = delete;

    /// Runs what is to be done, by one thread, until stop().
    void run();
    /// From any thread.
    void stop();
    /// From any thread: does the work on the thread that runs the loop.
    void post(std::function<void()> work);

    struct State;

private:
    friend class AsyncClient;
    friend class Timer;
    std::unique_ptr<State> state;
};

/// Of a loop, and for its thread alone.
class Timer {
public:
    /// The loop ends before the timer, or the timer is not running.
    explicit Timer(ClientLoop& loop);
    ~Timer();
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    /// Does the work then, in the place of what was to be done before.
    void start(std::chrono::steady_clock::time_point when, std::function<void()> work);
    void cancel();

private:
    struct State;
    std::unique_ptr<State> state;
};

/// One message at a time, on the thread of its loop alone. Waits for nothing.
class AsyncClient {
public:
    using Done = std::function<void(ClientResult)>;

    /// The loop outlives the client.
    AsyncClient(ClientLoop& loop, Url url, ClientLimits limits = {});
    ~AsyncClient();
    AsyncClient(const AsyncClient&) = delete;
    AsyncClient& operator=(const AsyncClient&) = delete;

    /// Calls done once. Where a connection that was kept turns out to be gone before any answer, a new one is made.
    void post(const std::vector<Field>& fields, std::string body, Done done);

    /// Ends the message under way, and every later one at once.
    void abort();

    /// True while a connection is kept. Between two messages it may be closed.
    [[nodiscard]] bool isOpen() const;
    void close();

private:
    struct State;
    std::shared_ptr<State> state;
};

} // namespace cimhost::http
