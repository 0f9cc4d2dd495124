// The program cimhost: reads its command line, runs one command, and turns what goes wrong into one message and an exit
// status.

#include "cimhost/cli/command_line.h"
#include "cimhost/service/cim_failure.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <iostream>

namespace {

using namespace cimhost;

/// In the order in which the help shows them.
constexpr cli::AddCommand commands[] = {
    cli::addServe, cli::addQueries, cli::addListen, cli::addFleet, cli::addInvoke, cli::addImage,
};

} // namespace

int main(int argumentCount, char** argumentValues) {
    std::signal(SIGPIPE, SIG_IGN);
    CLI::App app("A small CIM server for one provider");
    cli::CommandLine line(app);
    for (const cli::AddCommand add : commands)
        add(line);
    try {
        app.parse(argumentCount, argumentValues);
        return line.run();
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? cli::ok : cli::cannotStart;
    } catch (const CimFailure& failure) {
        std::cerr << "cimhost: " << statusName(failure.error().code) << " (" << failure.error().code
                  << "): " << failure.what() << '\n';
        return cli::cimError;
    } catch (const std::exception& error) {
        std::cerr << "cimhost: " << error.what() << '\n';
        return cli::cannotStart;
    }
}
