#include "cimhost/cli/command_line.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace cimhost::cli {

namespace {

constexpr const char* examples =
    "Examples:\n"
    "  cimhost tree                                         the adapters of this machine\n"
    "  cimhost --fleet fleet.json tree                      those of a fleet file\n"
    "  cimhost optics                                       modules, their light and their limits\n"
    "  cimhost doctor                                       what is wrong, and what to do\n"
    "  cimhost enumerate Merolt_FCHBA_FCPort                its storage ports\n"
    "  cimhost names Merolt_NIC_NetworkPort --json          paths, for tools\n"
    "  cimhost serve --listen 127.0.0.1:5988                any CIM client may ask\n"
    "  cimhost listen --port 5990 --subscribe http://127.0.0.1:5988\n"
    "\n"
    "cimhost help COMMAND tells the options of a command. Those above stand before or behind it.";

const CLI::App& commandOf(const CLI::App& program, const std::vector<std::string>& names) {
    const CLI::App* command = &program;
    for (const std::string& name : names) {
        try {
            command = command->get_subcommand(name);
        } catch (const CLI::OptionNotFound&) {
            throw std::runtime_error("there is no command \"" + name + "\"; see: cimhost help");
        }
    }
    return *command;
}

} // namespace

void addHelp(CommandLine& line) {
    const auto names = std::make_shared<std::vector<std::string>>();
    CLI::App& command = line.add("help", "Tell how a command is used");
    command.add_option("COMMAND", *names, "Such as: enumerate, or: image make");
    line.onRunAlone(command, [names, &program = line.program()](const Settings&) {
        std::string fullName = "cimhost";
        for (const std::string& name : *names)
            fullName += " " + name;
        const CLI::App& told = commandOf(program, *names);
        // Of the program itself App::help() would tell about the command that was given, which is this one.
        std::cout << told.get_formatter()->make_help(&told, fullName, CLI::AppFormatMode::Normal);
        return ok;
    });
    line.program().footer(examples); // after the command was added, which would take it over
}

} // namespace cimhost::cli
