// Metrics over HTTP: GET /metrics.
#pragma once

#include "cimhost/http/server.h"
#include "cimhost/metrics/readings.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace cimhost::metrics {

class MetricsEndpoint final : public http::Handler {
public:
    using WriteOwn = std::function<void(Exposition&)>;

    /// The readings outlive the endpoint. writeOwn tells what the server knows of itself, at once and on any thread. No
    /// scrape waits for the adapters for longer than the patience, nor than the client says it waits (the field
    /// X-Prometheus-Scrape-Timeout-Seconds).
    MetricsEndpoint(Readings& adapters, WriteOwn writeOwn, std::chrono::milliseconds longest);

    [[nodiscard]] std::optional<http::Response> refuse(const http::Request& head) const override;

    /// What the server knows of itself alone.
    [[nodiscard]] http::Response answer(http::Request request) override;

    /// With the adapters, if they can be read in time.
    void answerTo(http::Request request, const std::shared_ptr<http::Reply>& reply) override;

private:
    [[nodiscard]] http::Response compose(Format format, const SharedReading& reading) const;
    [[nodiscard]] std::chrono::milliseconds patienceOf(const http::Request& request) const;

    Readings& readings;
    const WriteOwn own;
    const std::chrono::milliseconds patience;
};

} // namespace cimhost::metrics
