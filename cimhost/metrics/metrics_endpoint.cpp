#include "cimhost/metrics/metrics_endpoint.h"

#include "cimhost/model/text_lines.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <string>
#include <utility>

namespace cimhost::metrics {

namespace {

constexpr std::string_view path = "/metrics";

Format formatFor(const http::Request& request) {
    const std::string* accept = request.field("Accept");
    return accept ? preferredFormat(*accept) : Format::prometheus;
}

/// Seconds such as "10" or "9.5"; nothing for what is no positive number.
std::optional<double> secondsOf(const std::string& text) {
    double seconds = 0;
    const std::string_view digits = trim(text);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), seconds);
    if (error != std::errc() || end != digits.data() + digits.size() || !(seconds > 0)) return std::nullopt;
    return seconds;
}

} // namespace

MetricsEndpoint::MetricsEndpoint(Readings& adapters, WriteOwn writeOwn, std::chrono::milliseconds longest)
    : readings(adapters), own(std::move(writeOwn)), patience(longest) {}

std::optional<http::Response> MetricsEndpoint::refuse(const http::Request& head) const {
    if (std::string_view(head.target).substr(0, head.target.find('?')) != path) {
        return http::textResponse(404, "metrics are at /metrics");
    }
    if (head.method == "GET") return std::nullopt;
    http::Response response = http::textResponse(405, "use GET");
    response.fields.push_back({"Allow", "GET"});
    return response;
}

http::Response MetricsEndpoint::compose(Format format, const SharedReading& reading) const {
    http::Response response;
    response.fields.push_back({"Content-Type", std::string(contentType(format))});
    Exposition out(response.body, format);
    out.family("merolt_cna_adapters_readable", Type::gauge,
               "1 if the provider answered in time, so that the adapters' metrics are there; else 0.")
        .sample({}, std::uint64_t{reading ? 1U : 0U});
    if (reading) reading->write(out);
    own(out);
    out.end();
    return response;
}

http::Response MetricsEndpoint::answer(http::Request request) { return compose(formatFor(request), nullptr); }

// A client is answered a little before it gives up.
std::chrono::milliseconds MetricsEndpoint::patienceOf(const http::Request& request) const {
    const std::string* told = request.field("X-Prometheus-Scrape-Timeout-Seconds");
    const std::optional<double> seconds = told ? secondsOf(*told) : std::nullopt;
    if (!seconds) return patience;
    constexpr double share = 0.9;
    constexpr double longestSeconds = 3600;
    const std::chrono::duration<double> wanted(std::min(*seconds, longestSeconds) * share);
    return std::min(patience, std::chrono::duration_cast<std::chrono::milliseconds>(wanted));
}

void MetricsEndpoint::answerTo(http::Request request, const std::shared_ptr<http::Reply>& reply) {
    readings.ask(patienceOf(request), [this, format = formatFor(request), reply](const SharedReading& reading) {
        try {
            reply->send(compose(format, reading));
        } catch (const std::exception&) {
            reply->send(http::textResponse(500, "the metrics could not be written"));
        }
    });
}

} // namespace cimhost::metrics
