#include "cimhost/cli/commands.h"
#include "cimhost/cli/output_stream.h"
#include "cimhost/cli/own_location.h"
#include "cimhost/metrics/adapter_reading.h"

namespace cimhost::cli {

namespace {

std::string metricsOf(Host& host, const MetricsOptions& options) {
    RequestScope scope(host.broker());
    Operations& operations = host.operations();
    const metrics::SharedReading reading = metrics::AdapterReader().read([&](const char* className) {
        const ClassDeclaration& declaration = operations.findClass(options.nameSpace, className);
        return operations.enumerateInstances(scope, {}, declaration, true, std::nullopt);
    });
    ByteBuffer text;
    metrics::Exposition out(text, options.isOpenMetrics ? metrics::Format::openMetrics : metrics::Format::prometheus);
    reading->write(out);
    out.end();
    return std::string(text.view());
}

} // namespace

void printMetrics(const HostOptions& hostOptions, const MetricsOptions& options) {
    useOwnInstallLocation();
    const CleanOutput output(hostOptions.broker.log);
    Host host(hostOptions);
    output.write(metricsOf(host, options));
    host.shutdown();
}

} // namespace cimhost::cli
