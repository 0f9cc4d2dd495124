#include "cimhost/cli/command_line.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cimhost::cli {

namespace {

struct Given {
    MetricsOptions metrics;
    ServerOptions servers;
};

ExitStatus run(const Given& given, const Settings& settings) {
    if (given.servers.areGiven()) return printMetrics(settings.host, given.metrics, given.servers, settings.messages);
    const Progress progress(settings.messages, "asking the provider");
    printMetrics(settings.host, given.metrics);
    return ok;
}

} // namespace

void addMetrics(CommandLine& line) {
    const auto given = std::make_shared<Given>();
    MetricsOptions* options = &given->metrics;
    options->nameSpace = HostOptions().nameSpace;
    CLI::App& command = line.add("metrics", "Show the metrics of the adapters once, as Prometheus reads them");
    command.add_flag("--openmetrics", options->isOpenMetrics, "As OpenMetrics, in place of the text format 0.0.4");
    command.add_option("--namespace", options->nameSpace, "Namespace")->capture_default_str();
    addServerOptions(command, given->servers);
    line.onRun(command, given->servers, [given](const Settings& settings) { return run(*given, settings); });
}

} // namespace cimhost::cli
