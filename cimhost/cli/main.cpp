// The program cimhost: one command a call.

#include "cimhost/cli/command_line.h"

#include <CLI/CLI.hpp>

#include <csignal>

namespace {

using namespace cimhost;

/// In the order in which the help shows them.
constexpr cli::AddCommand commands[] = {
    cli::addServe, cli::addQueries, cli::addOptics, cli::addDoctor, cli::addListen,
    cli::addFleet, cli::addInvoke,  cli::addImage,  cli::addUser,   cli::addHelp,
};

// Whatever the program was started by may have blocked them; they end it from here on.
void heedSignals() {
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    pthread_sigmask(SIG_UNBLOCK, &ending, nullptr);
}

} // namespace

int main(int argumentCount, char** argumentValues) {
    std::signal(SIGPIPE, SIG_IGN);
    heedSignals();
    CLI::App app("A small CIM server for one provider", "cimhost");
    cli::CommandLine line(app);
    for (const cli::AddCommand add : commands)
        add(line);
    const std::vector<std::string> words(argumentValues + 1, argumentValues + argumentCount);
    // Of shells, and not of people: its words need not make sense.
    if (!words.empty() && words.front() == "complete") {
        cli::complete(line, {words.begin() + 1, words.end()});
        return cli::ok;
    }
    return line.run(words);
}
