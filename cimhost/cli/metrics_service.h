// The metrics of a running server, at an address of their own.
#pragma once

#include "cimhost/http/server.h"
#include "cimhost/metrics/server_metrics.h"
#include "cimhost/service/host.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace cimhost::cli {

class MetricsService {
public:
    /// Takes the port at once, and answers from start() on. Throws as http::Server does.
    explicit MetricsService(http::Options settings);
    /// As finish().
    ~MetricsService();
    MetricsService(const MetricsService&) = delete;
    MetricsService& operator=(const MetricsService&) = delete;

    /// From now on scrapes are answered, none of them later than after the patience. Host and figures outlive finish().
    void start(Host& host, const std::string& nameSpace, const metrics::ServerFigures& figures,
               std::chrono::milliseconds patience);

    [[nodiscard]] const http::Options& options() const;
    [[nodiscard]] std::uint16_t port() const;
    void useTls(const http::Tls& files);

    /// From any thread: no further scrape is answered. Does not wait.
    void stop();
    /// The same, and waits until no thread reads the adapters any more: for ever, if the provider hangs.
    void finish();

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace cimhost::cli
