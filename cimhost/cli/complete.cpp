// What a shell may put in the place of the word that somebody is typing. Nobody waits for the provider here: classes
// come from their files, serial numbers from the fleet file.
#include "cimhost/cli/command_line.h"
#include "cimhost/cli/installation.h"
#include "cimhost/model/class_repository.h"
#include "tavik/fleet/fleet_file.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <set>
#include <string_view>
#include <utility>

namespace cimhost::cli {

namespace {

using Words = std::vector<std::string>;

constexpr const char* fileNames = ":files";

/// The line as far as it was typed.
struct Typed {
    const CLI::App* program = nullptr;
    const CLI::App* command = nullptr;     ///< the innermost one
    const CLI::Option* awaiting = nullptr; ///< the option in front of the last word, if it takes a value
    Words positionals;
    std::string fleet; ///< --fleet
    std::string last;
};

/// Of the command, or one that stands before or behind any.
const CLI::Option* findOption(const Typed& typed, const std::string& name) {
    if (const CLI::Option* own = typed.command->get_option_no_throw(name)) return own;
    return typed.program->get_option_no_throw(name);
}

const CLI::App* findCommand(const Typed& typed, const std::string& name) {
    for (const CLI::App* command : typed.command->get_subcommands([](const CLI::App*) { return true; })) {
        if (command->get_name() == name) return command;
    }
    return nullptr;
}

bool takesValue(const CLI::Option* option) { return option && option->get_items_expected_max() > 0; }

void take(Typed& typed, const std::string& word) {
    if (word == "=") return; // some shells cut "--fleet=FILE" into three
    if (const CLI::Option* option = std::exchange(typed.awaiting, nullptr)) {
        if (option->check_name("--fleet")) typed.fleet = word;
        return;
    }
    if (word.substr(0, 1) == "-") {
        const CLI::Option* option = findOption(typed, word.substr(0, word.find('=')));
        if (takesValue(option) && word.find('=') == std::string::npos) typed.awaiting = option;
        return;
    }
    if (const CLI::App* command = findCommand(typed, word)) {
        typed.command = command;
        return;
    }
    typed.positionals.push_back(word);
}

Typed read(const CLI::App& program, const Words& words) {
    Typed typed;
    typed.program = typed.command = &program;
    for (std::size_t index = 0; index + 1 < words.size(); ++index)
        take(typed, words[index]);
    typed.last = words.empty() || words.back() == "=" ? "" : words.back();
    return typed;
}

Words classNames(const Typed&) {
    const auto mof = defaultLocations().mof / "merolt.mof";
    const HostOptions options;
    ClassRepository repository;
    repository.loadFile(options.nameSpace, mof);
    Words names;
    for (const ClassDeclaration* declaration : repository.classes(options.nameSpace))
        names.push_back(declaration->name());
    return names;
}

std::string fleetFileOf(const Typed& typed) {
    constexpr std::string_view scheme = "fleet:";
    const char* variable = std::getenv("TAVIK_SOURCE");
    const std::string_view source = variable ? variable : "";
    if (!typed.fleet.empty() || source.substr(0, scheme.size()) != scheme) return typed.fleet;
    return std::string(source.substr(scheme.size()));
}

Words serialNumbers(const Typed& typed) {
    const tavik::FleetOrError fleet = tavik::readFleetFile(fleetFileOf(typed));
    Words numbers;
    const auto* described = std::get_if<tavik::Fleet>(&fleet);
    if (!described || !described->cards) return numbers;
    for (const tavik::Card& card : *described->cards)
        numbers.push_back(card.serialNumber);
    return numbers;
}

Words files(const Typed&) { return {fileNames}; }
Words linkStates(const Typed&) { return {"up", "down", "testing"}; }
Words linkSides(const Typed&) { return {"storage", "ethernet"}; }
Words ports(const Typed&) { return {"1", "2"}; }

struct Kind {
    std::string_view name; ///< of an option or a place
    Words (*candidates)(const Typed& typed);
};

constexpr Kind kinds[] = {
    {"CLASS", classNames},   {"PATH", classNames},
    {"OBJECT", classNames},  {"--association", classNames},
    {"CARD", serialNumbers}, {"--result-class", classNames},
    {"PORT", ports},         {"STATE", linkStates},
    {"--only", linkSides},   {"FILE", files},
    {"--fleet", files},      {"--provider", files},
    {"--mof", files},        {"--certificate", files},
    {"--key", files},        {"--credentials", files},
    {"--state", files},      {"--payload", files},
    {"--cacert", files},
};

Words candidatesFor(const CLI::Option& option, const Typed& typed) {
    for (const Kind& kind : kinds) {
        if (option.check_name(std::string(kind.name))) return kind.candidates(typed);
    }
    return {};
}

/// The option that the next word without a dash goes to; null behind the last.
const CLI::Option* nextPlace(const Typed& typed) {
    std::size_t taken = typed.positionals.size();
    for (const CLI::Option* option : typed.command->get_options()) {
        if (!option->get_positional()) continue;
        const auto room = static_cast<std::size_t>(option->get_items_expected_max());
        if (taken < room) return option;
        taken -= room;
    }
    return nullptr;
}

void addOptions(const CLI::App& command, Words& found) {
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames())
            found.push_back("--" + name);
    }
}

void addCommands(const CLI::App& command, Words& found) {
    for (const CLI::App* next : command.get_subcommands([](const CLI::App*) { return true; }))
        found.push_back(next->get_name());
}

Words candidates(const Typed& typed) {
    Words found;
    if (typed.awaiting) return candidatesFor(*typed.awaiting, typed);
    if (typed.last.substr(0, 1) == "-") {
        addOptions(*typed.command, found);
        if (typed.command != typed.program) addOptions(*typed.program, found);
        return found;
    }
    addCommands(*typed.command, found);
    if (!found.empty()) return typed.positionals.empty() ? found : Words();
    const CLI::Option* place = nextPlace(typed);
    return place ? candidatesFor(*place, typed) : found;
}

} // namespace

void complete(const CommandLine& line, const std::vector<std::string>& words) try {
    const Typed typed = read(line.program(), words);
    std::set<std::string> shown;
    for (const std::string& candidate : candidates(typed)) {
        const bool fits = candidate == fileNames || candidate.substr(0, typed.last.size()) == typed.last;
        if (fits && shown.insert(candidate).second) std::cout << candidate << '\n';
    }
} catch (const std::exception&) {
    // Nothing to offer; the command itself will tell why.
}

} // namespace cimhost::cli
