#include "cimhost/cli/command_line.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <unistd.h>

namespace cimhost::cli {

namespace {

constexpr unsigned longestInterval = 86400;

struct Given {
    DoctorOptions doctor;
    ServerOptions servers;
    bool showsRules = false;
};

ExitStatus run(const Given& given, const Settings& settings) {
    DoctorOptions options = given.doctor;
    options.form = settings.form();
    options.layout = layoutOf(STDOUT_FILENO);
    if (given.showsRules) {
        showRules(options);
        return ok;
    }
    if (given.servers.areGiven()) return examine(settings.host, options, given.servers, settings.messages);
    const Progress progress(settings.messages, "looking at the adapters");
    return examine(settings.host, options);
}

} // namespace

void addDoctor(CommandLine& line) {
    const auto given = std::make_shared<Given>();
    given->doctor.nameSpace = HostOptions().nameSpace;
    CLI::App& command = line.add("doctor", "Tell what is wrong with the adapters, why it matters and what to do");
    command.add_option("--ignore", given->doctor.ignored, "Leave out this rule; may be given again")
        ->type_name("RULE")
        ->allow_extra_args(false);
    command
        .add_option("--interval", given->doctor.intervalSeconds, "Read error counters twice, this many seconds apart")
        ->type_name("SECONDS")
        ->check(CLI::Range(1U, longestInterval));
    command.add_flag("--rules", given->showsRules, "Show the rules and look at nothing");
    command.add_option("--namespace", given->doctor.nameSpace, "Namespace")->capture_default_str();
    addServerOptions(command, given->servers);
    line.onRun(command, given->servers, [given](const Settings& settings) { return run(*given, settings); });
}

} // namespace cimhost::cli
