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

// An option that takes the words alone, and not the numbers that stand for them here.
template <typename Value>
CLI::Option* addWord(CLI::App& command, const std::string& name, const std::string& description,
                     const std::map<std::string, Value>& words, const std::shared_ptr<LinkChange>& change,
                     Value LinkChange::*target) {
    const auto take = [&words, change, target](const std::string& word) { (*change).*target = words.at(word); };
    return command.add_option_function<std::string>(name, take, description)->check(CLI::IsMember(&words));
}

void addSetLink(CommandLine& line, CLI::App& fleet) {
    const auto change = std::make_shared<LinkChange>();
    CLI::App& command = line.add("set-link", "Set the link state of a port", fleet);
    command.add_option("CARD", change->card, "Serial number, or place in the file")->required();
    command.add_option("PORT", change->port, "Number of the port")->required();
    addWord(command, "STATE", "up, down or testing", states, change, &LinkChange::state)->required();
    command.add_option("FILE", change->file, "The fleet file")->required();
    addWord(command, "--only", "storage or ethernet; otherwise both functions of the port", sides, change,
            &LinkChange::side);
    line.onRunAlone(command, [change](const Settings&) {
        setLink(*change);
        return ok;
    });
}

} // namespace

void addFleet(CommandLine& line) { addSetLink(line, line.addGroup("fleet", "Change a fleet file")); }

} // namespace cimhost::cli
