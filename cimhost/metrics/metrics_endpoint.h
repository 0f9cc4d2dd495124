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

    /// The readings outlive the endpoint.
    /// @param writeOwn writes the metrics of the server itself; never waits; called on any thread
    /// @param longest the longest wait of a scrape for the adapters. A client that says how long it waits (field
    ///        X-Prometheus-Scrape-Timeout-Seconds) is answered before that time is over
    MetricsEndpoint(Readings& adapters, WriteOwn writeOwn, std::chrono::milliseconds longest);

    [[nodiscard]] std::optional<http::Response> refuse(const http::Request& head) const override;

    /// Answers with the server's own metrics alone.
    [[nodiscard]] http::Response answer(http::Request request) override;

    /// Answers with the metrics of the adapters, too, if these can be read in time.
    void answerTo(http::Request request, const std::shared_ptr<http::Reply>& reply) override;

private:
    [[nodiscard]] http::Response compose(Format format, const SharedReading& reading) const;
    [[nodiscard]] std::chrono::milliseconds patienceOf(const http::Request& request) const;

    Readings& readings;
    const WriteOwn own;
    const std::chrono::milliseconds patience;
};

} // namespace cimhost::metrics
