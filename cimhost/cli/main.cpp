// The program cimhost: one command a call.

#include "cimhost/cli/command_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace cimhost;

/// In the order in which the help shows them.
constexpr cli::AddCommand commands[] = {
    cli::addServe, cli::addQueries, cli::addOptics, cli::addDoctor, cli::addMetrics, cli::addListen,
    cli::addFleet, cli::addInvoke,  cli::addImage,  cli::addUpdate, cli::addUser,    cli::addHelp,
};

// Whatever the program was started by may have blocked them; they end it from here on.
void heedSignals() {
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    pthread_sigmask(SIG_UNBLOCK, &ending, nullptr);
}

// A password behind --user is out of the list of processes as soon as it has been read.
void hidePasswords(int argumentCount, char** argumentValues) {
    constexpr std::string_view option = "--user";
    for (int index = 1; index < argumentCount; ++index) {
        const std::string_view word = argumentValues[index];
        const bool isBehind = std::string_view(argumentValues[index - 1]) == option;
        if (!isBehind && word.substr(0, option.size() + 1) != "--user=") continue;
        char* const colon = std::strchr(argumentValues[index], ':');
        if (colon) std::fill(colon + 1, colon + std::strlen(colon), '*');
    }
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
    hidePasswords(argumentCount, argumentValues);
    // Of shells, and not of people: its words need not make sense.
    if (!words.empty() && words.front() == "complete") {
        cli::complete(line, {words.begin() + 1, words.end()});
        return cli::ok;
    }
    return line.run(words);
}
