// Which CIM servers a command asks, as whom, and for how long: the same options for every command that can.
#pragma once

#include "cimhost/remote/identity.h"
#include "cimhost/remote/server_url.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cimhost::cli {

/// What the command line says of the client's identity, before passwords are asked for.
struct IdentityOptions {
    std::string user; ///< "name" or "name:password"
    std::string logins;
    std::string authorities;
    bool verifies = true;
};

struct ServerOptions {
    std::vector<std::string> urls;
    std::string list; ///< file of more of them
    std::size_t parallel = 16;
    double timeoutSeconds = 60;
    IdentityOptions identity;

    /// False: the provider here is asked.
    [[nodiscard]] bool areGiven() const { return !urls.empty() || !list.empty(); }
    [[nodiscard]] std::chrono::milliseconds timeout() const {
        return std::chrono::milliseconds(static_cast<std::chrono::milliseconds::rep>(timeoutSeconds * 1000));
    }
};

/// Both write to options, which outlives the command.
void addServerOptions(CLI::App& command, ServerOptions& options);
void addIdentityOptions(CLI::App& command, IdentityOptions& options);

/// Those that the options name, each once, in their order. Throws std::runtime_error.
std::vector<remote::Server> serversOf(const ServerOptions& options);

/// Asks for the password if a user is named without one: hidden at a terminal, otherwise the first line of standard
/// input. Warns on standard error if certificates are not verified. Throws std::runtime_error for unusable options.
remote::Identity identityOf(const IdentityOptions& options, const std::vector<remote::Server>& servers);

} // namespace cimhost::cli
