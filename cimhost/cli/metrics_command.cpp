#include "cimhost/cli/command_line.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cimhost::cli {

void addMetrics(CommandLine& line) {
    const auto options = std::make_shared<MetricsOptions>();
    options->nameSpace = HostOptions().nameSpace;
    CLI::App& command = line.add("metrics", "Show the metrics of the adapters once, as Prometheus reads them");
    command.add_flag("--openmetrics", options->isOpenMetrics, "As OpenMetrics, in place of the text format 0.0.4");
    command.add_option("--namespace", options->nameSpace, "Namespace")->capture_default_str();
    line.onRun(command, [options](const Settings& settings) {
        const Progress progress(settings.messages, "asking the provider");
        printMetrics(settings.host, *options);
        return ok;
    });
}

} // namespace cimhost::cli
