#include "cimhost/metrics/server_metrics.h"

#include "cimhost/service/cim_failure.h"
#include "cimhost/service/dispatcher.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::metrics {

namespace {

/// DurationHistogram::limits as labels, which never change their spelling (OpenMetrics: canonical numbers).
constexpr std::array<std::string_view, DurationHistogram::limits.size()> limitTexts = {
    "0.001", "0.0025", "0.01", "0.05", "0.25", "1.0", "5.0", "15.0", "60.0"};

void writeHistogram(Exposition& out, const Labels& labels, const DurationHistogram& histogram) {
    std::uint64_t soFar = 0;
    for (std::size_t bucket = 0; bucket < limitTexts.size(); ++bucket) {
        soFar += histogram.count(bucket);
        out.bucket(labels, limitTexts[bucket], soFar);
    }
    soFar += histogram.count(limitTexts.size());
    out.bucket(labels, "+Inf", soFar);
    out.countAndSum(labels, soFar, histogram.sumSeconds());
}

std::uint64_t answersOf(const RequestFigures::Operation& operation) {
    std::uint64_t count = 0;
    for (const auto& answers : operation.answers)
        count += answers;
    return count;
}

/// Nothing is written for an operation that has not been used yet.
void writeRequests(Exposition& out, const RequestFigures& requests) {
    const std::vector<std::string_view> names = Dispatcher::operationNames();
    out.family("merolt_cna_cim_requests", Type::counter, "CIM requests answered, by operation and CIM status.");
    for (std::size_t place = 0; place < names.size(); ++place) {
        const auto& answers = requests.byOperation[place].answers;
        for (std::size_t status = 0; status < answers.size(); ++status) {
            if (answers[status] == 0) continue;
            const std::string_view name = status == 0 ? "ok" : statusName(static_cast<CMPIrc>(status));
            out.sample(Labels().add("operation", names[place]).add("status", name), answers[status]);
        }
    }
    out.family("merolt_cna_cim_request_duration_seconds", Type::histogram,
               "Time from the last byte of a CIM request to its answer, before that is sent.");
    for (std::size_t place = 0; place < names.size(); ++place) {
        const RequestFigures::Operation& operation = requests.byOperation[place];
        if (answersOf(operation) > 0) writeHistogram(out, Labels().add("operation", names[place]), operation.durations);
    }
}

void writeProvider(Exposition& out, const ServerFigures& figures) {
    out.family("merolt_cna_provider_wait_duration_seconds", Type::histogram,
               "Time that requests waited until a thread was free to call the provider.");
    writeHistogram(out, {}, figures.requests.waits);
    out.family("merolt_cna_provider_call_duration_seconds", Type::histogram,
               "Time of calls of the provider, with the waiting for its own locks and the making of the answer.");
    writeHistogram(out, {}, figures.requests.calls);
    const CallQueue::Depth depth = figures.queue.depth();
    out.family("merolt_cna_provider_calls_waiting", Type::gauge, "Requests that wait for a thread.")
        .sample({}, std::uint64_t{depth.waiting});
    out.family("merolt_cna_provider_calls_running", Type::gauge, "Calls of the provider under way.")
        .sample({}, std::uint64_t{depth.running});
    out.family("merolt_cna_provider_calls_overdue", Type::gauge, "Of these, calls that are beyond their deadline.")
        .sample({}, std::uint64_t{depth.overdue});
    out.family("merolt_cna_inventory_first_build_seconds", Type::gauge,
               "Time of the first request to the provider, for which it builds its inventory.")
        .sample({}, std::chrono::duration<double>(figures.firstBuild).count());
}

void writePulls(Exposition& out, const PullSessions& pulls) {
    const PullSessions::Figures open = pulls.figures();
    out.family("merolt_cna_pulled_enumerations", Type::gauge, "Enumerations that clients have opened to pull from.")
        .sample({}, std::uint64_t{open.sessions});
    out.family("merolt_cna_pulled_enumerations_bytes", Type::gauge, "What these hold.")
        .sample({}, std::uint64_t{open.bytes});
}

void writeTraffic(Exposition& out, const http::Traffic& traffic) {
    out.family("merolt_cna_http_responses", Type::counter,
               "Answers to CIM clients by HTTP status; refusals are 4xx and 5xx.");
    for (std::size_t status = 0; status < traffic.answers.size(); ++status) {
        if (traffic.answers[status] > 0) {
            out.sample(Labels().add("code", std::to_string(status)), std::uint64_t{traffic.answers[status]});
        }
    }
    const std::uint64_t gone = traffic.disconnections; // read first, so that it is never more than the connections
    const std::uint64_t come = traffic.connections;
    out.family("merolt_cna_http_connections", Type::counter, "Connections of CIM clients that were accepted.")
        .sample({}, come);
    out.family("merolt_cna_http_connections_open", Type::gauge, "Connections of CIM clients at this moment.")
        .sample({}, come - gone);
    out.family("merolt_cna_http_connections_displaced", Type::counter,
               "Connections of CIM clients that were closed because others needed their room.")
        .sample({}, std::uint64_t{traffic.madeRoom});
    out.family("merolt_cna_http_received_bytes", Type::counter, "Bytes of CIM requests, before TLS.")
        .sample({}, std::uint64_t{traffic.receivedBytes});
    out.family("merolt_cna_http_sent_bytes", Type::counter, "Bytes of answers to CIM clients, before TLS.")
        .sample({}, std::uint64_t{traffic.sentBytes});
}

void writeIndications(Exposition& out, IndicationServer& indications) {
    const Router::Totals totals = indications.router().totals();
    const DeliveryCounts& counts = totals.counts;
    const std::uint64_t settled = counts.delivered + counts.refused;
    const auto counter = [&](std::string_view name, std::string_view help, std::uint64_t value) {
        out.family(name, Type::counter, help).sample({}, value);
    };
    counter("merolt_cna_indications_delivered", "Indications that a listener took.", counts.delivered);
    counter("merolt_cna_indications_refused", "Indications that a listener answered with an error.", counts.refused);
    counter("merolt_cna_indications_dropped", "Indications lost because too many waited.", counts.dropped);
    counter("merolt_cna_indications_given_up", "Indications given up after too many attempts.", counts.givenUp);
    counter("merolt_cna_indications_retried", "Attempts to deliver an indication that failed.",
            counts.attempts > settled ? counts.attempts - settled : 0);
    out.family("merolt_cna_indications_waiting", Type::gauge, "Indications that wait for their listeners.")
        .sample({}, std::uint64_t{totals.queued});
    out.family("merolt_cna_listeners", Type::gauge, "Destinations that indications go to.")
        .sample({}, std::uint64_t{totals.listeners});
    out.family("merolt_cna_subscriptions", Type::gauge, "Subscriptions to indications.")
        .sample({}, std::uint64_t{indications.subscriptions().size()});
}

} // namespace

void writeServer(Exposition& out, const ServerFigures& figures) {
    writeRequests(out, figures.requests);
    writeProvider(out, figures);
    writePulls(out, figures.pulls);
    writeTraffic(out, figures.traffic);
    writeIndications(out, figures.indications);
}

} // namespace cimhost::metrics
