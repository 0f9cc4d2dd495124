#include "cimhost/cli/command_line.h"

#include "cimhost/cli/installation.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <utility>

namespace cimhost::cli {

namespace {

/// The provider sleeps for seconds where it starts and ends. For this program it waits for what the sleeps stand for:
/// its first request comes behind the first build either way.
void spareFixedWaits() { ::setenv("MEROLT_CNA_WAITS", "events", 0); }

void chooseAdapters(const std::string& fleet) {
    if (!fleet.empty()) ::setenv("TAVIK_SOURCE", ("fleet:" + fleet).c_str(), 1);
    if (const std::optional<std::string> problem = checkSource()) throw std::runtime_error(*problem);
}

void addMessageOptions(CLI::App& app, MessageOptions& messages) {
    app.add_flag("--json", messages.json, "JSON for tools, errors too");
    CLI::Option* quiet = app.add_flag_callback(
        "-q,--quiet", [&messages] { messages.verbosity = Verbosity::quiet; }, "Errors alone, no warnings or progress");
    app.add_flag_callback(
           "-v,--verbose", [&messages] { messages.verbosity = Verbosity::verbose; }, "Whatever host and provider tell")
        ->excludes(quiet);
    app.set_version_flag("--version", "cimhost " MEROLT_VERSION);
}

void addCommonOptions(CLI::App& app, Settings& settings) {
    const Locations standard = defaultLocations();
    settings.host.provider = standard.provider;
    settings.host.mofDirectory = standard.mof;
    settings.host.broker.log = [&settings](LogLevel level, std::string_view text) {
        say(settings.messages, level, text);
    };
    app.add_option("--provider", settings.host.provider, "The provider library")->capture_default_str();
    app.add_option("--mof", settings.host.mofDirectory, "Folder of the class definitions")->capture_default_str();
    app.add_option("--fleet", settings.fleet, "Adapters from a fleet file (as TAVIK_SOURCE=fleet:FILE)");
    addMessageOptions(app, settings.messages);
    app.add_flag_callback(
        "--bare-arrays", [&settings] { settings.host.arrayArguments = ArrayArguments::bare; },
        "Array arguments of methods without their element type, as some servers deliver them");
    app.add_flag_callback(
        "--ask-once", [&settings] { settings.host.associationCalls = AssociationCalls::once; },
        "Association requests in one call to the provider, not one for each association class");
    app.add_option("--interop-namespace", settings.host.interopNamespace, "Interop namespace")->capture_default_str();
}

/// "image" of `cimhost image bogus`; the program itself where no command was given.
const CLI::App& innermostGiven(const CLI::App& app) {
    const CLI::App* inner = &app;
    for (auto given = inner->get_subcommands(); !given.empty(); given = inner->get_subcommands())
        inner = given.front();
    return *inner;
}

std::string fullNameOf(const CLI::App& command) {
    const CLI::App* parent = command.get_parent();
    if (!parent) return "";
    const std::string front = fullNameOf(*parent);
    return front.empty() ? command.get_name() : front + " " + command.get_name();
}

/// What is wrong with the words, in one line.
std::string reasonOf(const CLI::App& app, const CLI::App& given, const CLI::ParseError& error) {
    const bool wantsCommand = given.get_require_subcommand_min() > 0;
    if (!wantsCommand) return error.what();
    const std::string front = given.get_parent() ? given.get_name() + ": " : "";
    for (const std::string& word : app.remaining(true)) {
        if (word.substr(0, 1) != "-") return front + "there is no command \"" + word + "\"";
    }
    const bool isMissing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    return isMissing ? front + "a command is missing" : error.what();
}

bool holds(const std::vector<std::string>& words, const std::string& word) {
    return std::find(words.begin(), std::find(words.begin(), words.end(), "--"), word) !=
           std::find(words.begin(), words.end(), "--");
}

} // namespace

CommandLine::CommandLine(CLI::App& program) : app(program) {
    app.fallthrough();
    app.require_subcommand(1);
    addCommonOptions(app, settings);
}

CLI::App& CommandLine::add(const std::string& name, const std::string& description) {
    return add(name, description, app);
}

CLI::App& CommandLine::add(const std::string& name, const std::string& description, CLI::App& parent) {
    return *parent.add_subcommand(name, description);
}

CLI::App& CommandLine::addGroup(const std::string& name, const std::string& description) {
    CLI::App& group = add(name, description);
    group.require_subcommand(1);
    return group;
}

void CommandLine::onRun(CLI::App& command, Action action) {
    command.callback([this, action = std::move(action)] { given = action; });
}

void CommandLine::onRun(CLI::App& command, const ServerOptions& servers, Action action) {
    command.callback([this, &servers, action = std::move(action)] {
        given = action;
        asksProvider = !servers.areGiven();
        if (asksProvider || settings.fleet.empty()) return;
        throw CLI::ValidationError("--fleet", "is for the adapters here, and --server asks elsewhere");
    });
}

void CommandLine::onRunAlone(CLI::App& command, Action action) {
    command.callback([this, action = std::move(action)] {
        given = action;
        asksProvider = false;
    });
}

int CommandLine::refuse(const CLI::ParseError& error, const std::vector<std::string>& words) const {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) return app.exit(error); // help, version
    const CLI::App& command = innermostGiven(app);
    MessageOptions messages = settings.messages;
    messages.json = messages.json || holds(words, "--json");
    const std::string name = fullNameOf(command);
    sayError(messages, reasonOf(app, command, error) + "; see: cimhost help" + (name.empty() ? "" : " " + name));
    return cannotStart;
}

ExitStatus CommandLine::runGiven() const {
    spareFixedWaits();
    if (asksProvider) chooseAdapters(settings.fleet);
    return given(settings);
}

int CommandLine::run(const std::vector<std::string>& words) {
    try {
        app.parse(std::vector<std::string>(words.rbegin(), words.rend())); // which takes them from the end
        return runGiven();
    } catch (const CLI::ParseError& error) {
        return refuse(error, words);
    } catch (const CimFailure& failure) {
        sayError(settings.messages, failure);
        return cimError;
    } catch (const std::exception& error) {
        sayError(settings.messages, error.what());
        return cannotStart;
    }
}

} // namespace cimhost::cli
