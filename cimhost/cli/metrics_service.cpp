#include "cimhost/cli/metrics_service.h"

#include "cimhost/metrics/adapter_reading.h"
#include "cimhost/metrics/metrics_endpoint.h"
#include "cimhost/metrics/process_figures.h"
#include "cimhost/metrics/readings.h"
#include "cimhost/thread.h"

#include <exception>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace cimhost::cli {

namespace {

// What a client waits for comes first. The provider's lock knows no order: who takes it again at once gets it again.
constexpr std::chrono::milliseconds pauseForClients{2};

/// Ends a look at the adapters that nobody waits for any more.
struct Abandoned final : std::exception {
    [[nodiscard]] const char* what() const noexcept override { return "nobody waits for the adapters any more"; }
};

/// The server takes its port before there is anything to answer with.
class LateHandler final : public http::Handler {
public:
    [[nodiscard]] std::optional<http::Response> refuse(const http::Request& head) const override {
        return endpoint->refuse(head);
    }
    [[nodiscard]] http::Response answer(http::Request request) override { return endpoint->answer(std::move(request)); }
    void answerTo(http::Request request, const std::shared_ptr<http::Reply>& reply) override {
        endpoint->answerTo(std::move(request), reply);
    }

    std::optional<metrics::MetricsEndpoint> endpoint;
};

bool areClientsWaiting(const CallQueue& queue) {
    const CallQueue::Depth depth = queue.depth();
    return depth.waiting + depth.running > depth.overdue;
}

} // namespace

struct MetricsService::State {
    explicit State(http::Options given) : settings(std::move(given)), server(settings, handler) {}

    metrics::SharedReading read(Host& host, const std::string& nameSpace, const CallQueue& queue);

    const http::Options settings;
    metrics::AdapterReader adapters;
    std::unique_ptr<metrics::Readings> readings;
    LateHandler handler;
    http::Server server;
    std::thread thread;
};

metrics::SharedReading MetricsService::State::read(Host& host, const std::string& nameSpace, const CallQueue& queue) {
    RequestScope scope(host.broker());
    Operations& operations = host.operations();
    return adapters.read([&](const char* className) {
        if (areClientsWaiting(queue)) std::this_thread::sleep_for(pauseForClients);
        if (!readings->isAwaited()) throw Abandoned();
        return operations.enumerateInstances(scope, {}, operations.findClass(nameSpace, className), true, std::nullopt);
    });
}

MetricsService::MetricsService(http::Options settings) : state(std::make_unique<State>(std::move(settings))) {}

MetricsService::~MetricsService() { finish(); }

void MetricsService::start(Host& host, const std::string& nameSpace, const metrics::ServerFigures& figures,
                           std::chrono::milliseconds patience) {
    State* self = state.get();
    self->readings = std::make_unique<metrics::Readings>(
        [self, &host, nameSpace, &queue = figures.queue] { return self->read(host, nameSpace, queue); });
    const auto writeOwn = [figures](metrics::Exposition& out) {
        writeServer(out, figures);
        writeProcess(out);
    };
    self->handler.endpoint.emplace(*self->readings, writeOwn, patience);
    self->thread = makeThread([self] { self->server.run(); });
}

const http::Options& MetricsService::options() const { return state->settings; }

std::uint16_t MetricsService::port() const { return state->server.port(); }

void MetricsService::useTls(const http::Tls& files) { state->server.useTls(files); }

void MetricsService::stop() {
    state->server.stop();
    if (state->readings) state->readings->stop();
}

void MetricsService::finish() {
    stop();
    if (state->thread.joinable()) state->thread.join();
    if (state->readings) state->readings->finish();
}

} // namespace cimhost::cli
