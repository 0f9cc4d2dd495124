// Listeners of every manner: good ones, and such as a server must survive.
#pragma once

#include "cimhost/http/server.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace cimhost::testing_support {

/// Answers every export with what the test likes, and remembers the bodies.
class FakeListener final : public http::Handler {
public:
    using Answer = std::function<http::Response(std::size_t number)>;

    explicit FakeListener(Answer answer = good, std::uint16_t port = 0, std::optional<http::Tls> tls = {});
    ~FakeListener() override;

    static http::Response good(std::size_t number);
    static http::Response withBody(const std::string& body);

    [[nodiscard]] std::string url(const std::string& scheme = "http", const std::string& host = "127.0.0.1") const;
    [[nodiscard]] std::uint16_t port() const { return server->port(); }
    /// The bodies received so far. Waits up to a minute until there are so many.
    std::vector<std::string> bodies(std::size_t count);

    [[nodiscard]] std::optional<http::Response> refuse(const http::Request&) const override { return std::nullopt; }
    [[nodiscard]] http::Response answer(http::Request request) override;

private:
    Answer reply;
    std::mutex mutex;
    std::vector<std::string> received;
    std::unique_ptr<http::Server> server;
    std::thread thread;
};

/// Takes connections and never says a word; or, with bytes, says them again and again.
class RawListener {
public:
    explicit RawListener(std::string endlessBytes = "");
    ~RawListener();
    [[nodiscard]] std::string url() const;

private:
    void run();

    std::string bytes;
    int socket = -1;
    std::uint16_t port = 0;
    std::atomic<bool> isStopping = false;
    std::thread thread;
};

} // namespace cimhost::testing_support
