#include "cimhost/cli/command_line.h"
#include "cimhost/indications/indication_server.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cimhost::cli {

void addServe(CommandLine& line) {
    const auto options = std::make_shared<ServeOptions>();
    options->state = defaultStateFile().string();
    CLI::App& command = line.add("serve", "Serve CIM-XML clients until stopped");
    command.add_option("--listen", options->listen, "Address and port; default 127.0.0.1:5988, with TLS port 5989");
    command.add_option("--server-name", options->serverNames,
                       "One more name or address that clients may call this server by; may be given again");
    command.add_option("--certificate", options->certificate, "TLS certificate with its chain, PEM");
    command.add_option("--key", options->key, "TLS key, PEM");
    command.add_option("--credentials", options->credentials, "File of users, made by: cimhost user add FILE NAME");
    command.add_flag("--anonymous-writes", options->anonymousWrites,
                     "Without users, let any client call methods and create, modify and delete instances");
    command.add_option("--connections", options->connections, "Clients at the same time")
        ->check(CLI::Range(1, 10000))
        ->capture_default_str();
    command
        .add_option("--largest-request", options->largestRequestMebibytes,
                    "MiB; a flash image sent as bytes takes up to twenty times its size")
        ->check(CLI::Range(1, 1024))
        ->capture_default_str();
    command.add_option("--workers", options->workers, "Requests that the provider answers at the same time")
        ->check(CLI::Range(1, 64))
        ->capture_default_str();
    command
        .add_option("--deadline", options->deadlineSeconds,
                    "Seconds after which a request that waits for the provider gets an error; does not end a flash "
                    "update that has begun")
        ->check(CLI::Range(1, 3600))
        ->capture_default_str();
    command
        .add_option("--metrics", options->metrics,
                    "Serve metrics for Prometheus at this ADDRESS:PORT, with the users and TLS of the CIM clients")
        ->type_name("ADDRESS:PORT");
    command.add_option("--state", options->state, "File in which subscriptions are stored; \"\" for none")
        ->capture_default_str();
    line.onRun(command, [options](const Settings& settings) {
        serve(settings.host, *options);
        return ok;
    });
}

} // namespace cimhost::cli
