#include "cimhost/cli/command_line.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cimhost::cli {

void addInvoke(CommandLine& line) {
    const auto given = std::make_shared<InvokeOptions>();
    const auto servers = std::make_shared<ServerOptions>();
    given->nameSpace = HostOptions().nameSpace;
    CLI::App& command = line.add("invoke", "Call a method of an object");
    command.add_option("OBJECT", given->object, "Path of the object, or its class")->required();
    command.add_option("METHOD", given->method)->required();
    command.add_option("ARGUMENTS", given->arguments,
                       "NAME=VALUE: a text, a number, a path, values with commas between them or @FILE for an array");
    command.add_option("--namespace", given->nameSpace, "Namespace")->capture_default_str();
    addServerOptions(command, *servers);
    line.onRun(command, *servers, [given, servers](const Settings& settings) {
        InvokeOptions options = *given;
        options.form = settings.form();
        if (servers->areGiven()) return invoke(settings.host, options, *servers, settings.messages);
        const Progress progress(settings.messages, "waiting for " + options.method);
        const std::string failure = invoke(settings.host, options);
        if (failure.empty()) return ok;
        sayError(settings.messages, failure);
        return methodFailed;
    });
}

} // namespace cimhost::cli
