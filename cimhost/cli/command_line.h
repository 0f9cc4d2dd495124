// The command line: what every command may be told, and how a command brings its own options. Each command is a file of
// its own with one function that adds it; the table in main.cpp names these functions.
#pragma once

#include "cimhost/cli/commands.h"
#include "cimhost/cli/messages.h"

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class ParseError;
} // namespace CLI

namespace cimhost::cli {

/// The options that stand before or behind any command. Read when the command runs, not when it is added.
struct Settings {
    HostOptions host;
    std::string fleet; ///< file of the adapters; empty: whatever TAVIK_SOURCE names
    MessageOptions messages;

    /// How an answer is to look: JSON for tools, otherwise a table for people.
    [[nodiscard]] Form form() const { return messages.json ? Form::json : Form::table; }
};

class CommandLine {
public:
    /// What a command does when it was given; may throw CimFailure, or std::exception if it cannot start.
    using Action = std::function<ExitStatus(const Settings&)>;

    /// @param program and all that it owns outlive this object.
    explicit CommandLine(CLI::App& program);

    /// A command without a parent stands right behind the program's name, another one behind its parent.
    /// @return what takes its options; owned by the program.
    CLI::App& add(const std::string& name, const std::string& description);
    CLI::App& add(const std::string& name, const std::string& description, CLI::App& parent);
    /// Such as "image", which only leads to "image make" and "image show".
    CLI::App& addGroup(const std::string& name, const std::string& description);

    /// What to do for a command. It owns what its options write to.
    void onRun(CLI::App& command, Action action);
    /// For one that asks CIM servers where its options name some.
    void onRun(CLI::App& command, const ServerOptions& servers, Action action);
    /// For a command that does not ask the provider: its source of adapters may be missing.
    void onRunAlone(CLI::App& command, Action action);

    [[nodiscard]] CLI::App& program() const { return app; }

    /// Reads the words behind the program's name, runs the command that they give, and says what goes wrong.
    /// @return the program's status.
    int run(const std::vector<std::string>& words);

private:
    ExitStatus runGiven() const;
    int refuse(const CLI::ParseError& error, const std::vector<std::string>& words) const;

    CLI::App& app;
    Settings settings;
    Action given;
    bool asksProvider = true;
};

/// One of the functions by which a command gets onto the command line.
using AddCommand = void (*)(CommandLine& line);

void addServe(CommandLine& line);
void addQueries(CommandLine& line);
void addOptics(CommandLine& line);
void addDoctor(CommandLine& line);
void addListen(CommandLine& line);
void addMetrics(CommandLine& line);
void addFleet(CommandLine& line);
void addInvoke(CommandLine& line);
void addImage(CommandLine& line);
void addUpdate(CommandLine& line);
void addUser(CommandLine& line);
void addHelp(CommandLine& line);

/// Prints what could stand in place of the last word, one a line, for a shell that completes it; ":files" in place of
/// names of files. @param words behind the program's name.
void complete(const CommandLine& line, const std::vector<std::string>& words);

} // namespace cimhost::cli
