#include "cimhost/cli/command_line.h"
#include "cimhost/cli/listen.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cimhost::cli {

void addListen(CommandLine& line) {
    const auto given = std::make_shared<ListenOptions>();
    given->nameSpace = HostOptions().nameSpace;
    CLI::App& command = line.add("listen", "Print indications until stopped");
    command.add_option("--port", given->port, "Port to listen on; 0 for any free one")->required();
    command.add_option("--address", given->address, "Address to listen on")->capture_default_str();
    command.add_option("--subscribe", given->subscribe,
                       "Subscribe at this CIM server, such as http://127.0.0.1:5988, until the end");
    addIdentityOptions(command, given->identity);
    command.add_option("--query", given->query, "What to subscribe to")->capture_default_str();
    command.add_option("--namespace", given->nameSpace, "Where the indications come from")->capture_default_str();
    command.add_flag_callback(
        "--all", [given] { given->form = Form::everything; }, "Every property, as a list");
    line.onRunAlone(command, [given](const Settings& settings) {
        ListenOptions options = *given;
        options.interopNamespace = settings.host.interopNamespace;
        options.form = given->form == Form::everything && !settings.messages.json ? Form::everything : settings.form();
        options.isQuiet = settings.messages.verbosity == Verbosity::quiet;
        listen(options);
        return ok;
    });
}

} // namespace cimhost::cli
