#include "cimhost/cli/command_line.h"
#include "cimhost/cli/update.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cimhost::cli {

void addUpdate(CommandLine& line) {
    const auto given = std::make_shared<UpdateOptions>();
    given->nameSpace = HostOptions().nameSpace;
    given->servers.timeoutSeconds = 600;
    CLI::App& command = line.add("update", "Write a flash image to cards");
    command.add_option("IMAGE", given->image, "File of the image")->required();
    command.add_option("--card", given->cards, "Serial number of a card; may be given again")
        ->required()
        ->type_name("SERIAL")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command.add_option("--path", given->path,
                       "Where the image lies on the server's host, for services that read a file");
    command.add_flag("--yes", given->isAgreed, "Do not ask");
    command.add_option("--namespace", given->nameSpace, "Namespace")->capture_default_str();
    addServerOptions(command, given->servers);
    line.onRun(command, given->servers, [given](const Settings& settings) {
        UpdateOptions options = *given;
        options.form = settings.form();
        return update(settings.host, options, settings.messages);
    });
}

} // namespace cimhost::cli
