#include "cimhost/cli/command_line.h"

#include "cimhost/cli/installation.h"

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <utility>

namespace cimhost::cli {

namespace {

// Warnings and errors of host and provider; what is routine stays unsaid.
void logToStandardError(LogLevel level, std::string_view text) {
    if (level < LogLevel::warning) return;
    std::string line = level == LogLevel::error ? "cimhost: error: " : "cimhost: warning: ";
    line.append(text).append("\n");
    std::cerr << line << std::flush;
}

/// The provider sleeps for seconds where it starts and ends. For this program it waits for what the sleeps stand for:
/// its first request comes behind the first build either way.
void spareFixedWaits() { ::setenv("MEROLT_CNA_WAITS", "events", 0); }

void chooseAdapters(const std::string& fleet) {
    if (!fleet.empty()) ::setenv("TAVIK_SOURCE", ("fleet:" + fleet).c_str(), 1);
    if (const std::optional<std::string> problem = checkFleet()) throw std::runtime_error(*problem);
}

void addCommonOptions(CLI::App& app, Settings& settings) {
    const Locations standard = defaultLocations();
    settings.host.provider = standard.provider;
    settings.host.mofDirectory = standard.mof;
    settings.host.broker.log = logToStandardError;
    app.add_option("--provider", settings.host.provider, "The provider library")->capture_default_str();
    app.add_option("--mof", settings.host.mofDirectory, "Folder of the class definitions")->capture_default_str();
    app.add_option("--fleet", settings.fleet, "Adapters from a fleet file (as TAVIK_SOURCE=fleet:FILE)");
    app.add_flag("--json", settings.json, "JSON for tools");
    app.add_flag_callback(
        "--bare-arrays", [&settings] { settings.host.arrayArguments = ArrayArguments::bare; },
        "Array arguments of methods without their element type, as some servers deliver them");
    app.add_option("--interop-namespace", settings.host.interopNamespace, "Interop namespace")->capture_default_str();
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

ExitStatus CommandLine::run() const {
    spareFixedWaits();
    chooseAdapters(settings.fleet);
    return given(settings);
}

} // namespace cimhost::cli
