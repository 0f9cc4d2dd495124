#include "cimhost/cli/command_line.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <unistd.h>

namespace cimhost::cli {

void addOptics(CommandLine& line) {
    const auto given = std::make_shared<OpticsOptions>();
    const auto servers = std::make_shared<ServerOptions>();
    given->nameSpace = HostOptions().nameSpace;
    CLI::App& command = line.add("optics", "Show the transceiver modules, their readings and their limits");
    command.add_option("--namespace", given->nameSpace, "Namespace")->capture_default_str();
    addServerOptions(command, *servers);
    line.onRun(command, *servers, [given, servers](const Settings& settings) {
        OpticsOptions options = *given;
        options.form = settings.form();
        options.layout = layoutOf(STDOUT_FILENO);
        if (servers->areGiven()) return showOptics(settings.host, options, *servers, settings.messages);
        const Progress progress(settings.messages, "asking the provider");
        showOptics(settings.host, options);
        return ok;
    });
}

} // namespace cimhost::cli
