// The options of server_options.h, as the command line reads them.
#include "cimhost/cli/server_options.h"

#include <CLI/CLI.hpp>

namespace cimhost::cli {

void addIdentityOptions(CLI::App& command, IdentityOptions& options) {
    command
        .add_option(
            "--user", options.user,
            "User at the servers; NAME alone asks for the password, unseen; CIMHOST_USER may hold NAME:PASSWORD")
        ->envname("CIMHOST_USER")
        ->type_name("NAME[:PASSWORD]");
    command.add_option("--netrc", options.logins,
                       "File of users and passwords, as .netrc; nobody else may be able to read it");
    command.add_option("--cacert", options.authorities,
                       "Certificates to trust, PEM; default: the system's authorities");
    command.add_flag_callback(
        "--no-verify", [&options] { options.verifies = false; },
        "Accept any certificate; others on the network can then read and change everything");
}

void addServerOptions(CLI::App& command, ServerOptions& options) {
    command.add_option("--server", options.urls, "Ask this CIM server, such as https://san1:5989; may be given again")
        ->type_name("URL")
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command.add_option("--servers", options.list, "File of CIM servers, one URL a line, # for comments");
    command.add_option("--parallel", options.parallel, "How many servers to ask at the same time")
        ->check(CLI::Range(1, 256))
        ->capture_default_str();
    command.add_option("--timeout", options.timeoutSeconds, "Seconds that a server may take for all its answers")
        ->check(CLI::Range(0.1, 86400.0))
        ->capture_default_str();
    addIdentityOptions(command, options.identity);
}

} // namespace cimhost::cli
