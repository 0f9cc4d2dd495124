#include "cimhost/cli/command_line.h"
#include "cimhost/cli/fleet_edit.h"

#include <CLI/CLI.hpp>

#include <map>
#include <memory>
#include <string>

namespace cimhost::cli {

namespace {

const std::map<std::string, LinkState> states = {
    {"up", LinkState::up}, {"down", LinkState::down}, {"testing", LinkState::testing}};
const std::map<std::string, LinkSide> sides = {{"storage", LinkSide::storage}, {"ethernet", LinkSide::ethernet}};

void addSetLink(CommandLine& line, CLI::App& fleet) {
    const auto change = std::make_shared<LinkChange>();
    CLI::App& command = line.add("set-link", "Set the link state of a port", fleet);
    command.add_option("CARD", change->card, "Serial number, or place in the file")->required();
    command.add_option("PORT", change->port, "Number of the port")->required();
    command.add_option("STATE", change->state, "up, down or testing")
        ->required()
        ->transform(CLI::CheckedTransformer(states));
    command.add_option("FILE", change->file, "The fleet file")->required();
    command.add_option("--only", change->side, "storage or ethernet; otherwise both functions of the port")
        ->transform(CLI::CheckedTransformer(sides));
    line.onRun(command, [change](const Settings&) {
        setLink(*change);
        return ok;
    });
}

} // namespace

void addFleet(CommandLine& line) { addSetLink(line, line.addGroup("fleet", "Change a fleet file")); }

} // namespace cimhost::cli
