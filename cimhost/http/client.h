// HTTP clients, each of which posts messages to one place: with deadlines, a limit on the answer, TLS, and a connection
// that is kept between messages. Many of them share one thread.
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

/// Reads `http://host[:port][/path]`, or the same with https. Nothing for any other text, for one with a user name in
/// it, and for one longer than 2048 bytes.
std::optional<Url> parseUrl(std::string_view text);

struct ClientLimits {
    std::chrono::milliseconds connect{5'000}; ///< lookup of the name; again for connection and TLS handshake together
    std::chrono::milliseconds answer{10'000}; ///< from the first byte sent to the last one received
    std::size_t answerBytes = std::size_t{64} << 10; ///< of the answer's body
};

struct ClientAnswer {
    unsigned status = 0;
    std::string body;
};

/// What became of a message.
struct ClientResult {
    ClientAnswer answer;
    std::string error; ///< why there is no answer; empty if there is one
};

/// What the clients of one thread share: the thread's event loop, and the certificates that they trust.
class ClientLoop {
public:
    /// @param authorities PEM file with the certificates of the authorities to trust. Empty: the system's authorities,
    ///        or those in the file that SSL_CERT_FILE names.
    /// Throws std::runtime_error, which names the file, if the file cannot be used.
    explicit ClientLoop(const std::filesystem::path& authorities = {});
    ~ClientLoop();
    ClientLoop(const ClientLoop&) = delete;
    ClientLoop& operator=(const ClientLoop&) = delete;

    /// Does all work of the clients on the calling thread, until stop(). One thread calls it. An exception of posted
    /// work leaves it; then it may be called again.
    void run();
    /// Ends run(). From any thread.
    void stop();
    /// Has the work done on the thread that runs the loop. From any thread.
    void post(std::function<void()> work);

    struct State;

private:
    friend class AsyncClient;
    friend class Timer;
    std::unique_ptr<State> state;
};

/// A timer of a loop. Used only on the loop's thread.
class Timer {
public:
    /// The loop outlives the timer. A timer that is destroyed is not running, or the loop has ended.
    explicit Timer(ClientLoop& loop);
    ~Timer();
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    /// Has the work done at that time. Work that was set before and is not done yet is dropped.
    void start(std::chrono::steady_clock::time_point when, std::function<void()> work);
    void cancel();

private:
    struct State;
    std::unique_ptr<State> state;
};

/// Posts one message at a time. Used only on the thread of its loop. No call waits.
class AsyncClient {
public:
    using Done = std::function<void(ClientResult)>;

    /// The loop outlives the client.
    AsyncClient(ClientLoop& loop, Url url, ClientLimits limits = {});
    ~AsyncClient();
    AsyncClient(const AsyncClient&) = delete;
    AsyncClient& operator=(const AsyncClient&) = delete;

    /// Posts a message and calls done once, with the answer or with the reason why there is none; it may do so before
    /// this returns. If a connection that was kept is gone before any byte of the answer, a new one is made.
    void post(const std::vector<Field>& fields, std::string body, Done done);

    /// Ends the message under way with an error, and from now on every later one at once.
    void abort();

    /// True while there is a connection.
    [[nodiscard]] bool isOpen() const;
    /// Closes the connection. Only between two messages.
    void close();

private:
    struct State;
    std::shared_ptr<State> state;
};

} // namespace cimhost::http
