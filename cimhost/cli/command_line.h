// The command line: what every command may be told, and how a command brings its own options. Each command is a file of
// its own with one function that adds it; the table in main.cpp names these functions.
#pragma once

#include "cimhost/cli/commands.h"

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace cimhost::cli {

/// The options that stand before or behind any command. Read when the command runs, not when it is added.
struct Settings {
    HostOptions host;
    std::string fleet; ///< file of the adapters; empty: whatever TAVIK_SOURCE names
    bool json = false;

    /// How an answer is to look: JSON for tools, otherwise a table for people.
    [[nodiscard]] Form form() const { return json ? Form::json : Form::table; }
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

    /// Runs the command that was parsed. @return the program's status.
    ExitStatus run() const;

private:
    CLI::App& app;
    Settings settings;
    Action given;
};

/// One of the functions by which a command gets onto the command line.
using AddCommand = void (*)(CommandLine& line);

void addServe(CommandLine& line);
void addQueries(CommandLine& line);
void addListen(CommandLine& line);
void addFleet(CommandLine& line);
void addInvoke(CommandLine& line);
void addImage(CommandLine& line);

} // namespace cimhost::cli
