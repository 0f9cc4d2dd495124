#include "cimhost/cli/commands.h"
#include "cimhost/cli/local_round.h"
#include "cimhost/cli/remote_source.h"
#include "cimhost/cli/server_round.h"
#include "cimhost/metrics/adapter_reading.h"

#include <nlohmann/json.hpp>

#include <stdexcept>

namespace cimhost::cli {

namespace {

std::string metricsOf(ObjectSource& source, const MetricsOptions& options) {
    RequestScope scope(source.broker());
    const metrics::SharedReading reading = metrics::AdapterReader().read(
        [&](const char* className) { return source.enumerateInstances(scope, options.nameSpace, className); });
    ByteBuffer text;
    metrics::Exposition out(text, options.isOpenMetrics ? metrics::Format::openMetrics : metrics::Format::prometheus);
    reading->write(out);
    out.end();
    return std::string(text.view());
}

} // namespace

void printMetrics(const HostOptions& hostOptions, const MetricsOptions& options) {
    askHere(hostOptions, [&](ObjectSource& source) { return ServerAnswer{metricsOf(source, options), {}}; });
}

ExitStatus printMetrics(const HostOptions& hostOptions, const MetricsOptions& options, const ServerOptions& servers,
                        const MessageOptions& messages) {
    if (serversOf(servers).size() > 1) {
        throw std::runtime_error("metrics are of one server at a time: nothing in them tells whose they are");
    }
    DeclaredClasses declared(hostOptions, options.nameSpace);
    return askServers(servers, messages, declared, [&](ObjectSource& source) {
        std::string text = metricsOf(source, options);
        return ServerAnswer{messages.json ? nlohmann::json(text).dump() : std::move(text), {}};
    });
}

} // namespace cimhost::cli
