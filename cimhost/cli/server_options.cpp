#include "cimhost/cli/server_options.h"

#include "cimhost/cli/password_input.h"

#include <algorithm>
#include <iostream>
#include <stdexcept>

namespace cimhost::cli {

namespace {

bool isOnThisMachine(const remote::Server& server) {
    return server.url.host == "localhost" || server.url.host == "::1" || server.url.host.rfind("127.", 0) == 0;
}

void tellWhatIsGivenUp(const remote::Identity& identity, const std::vector<remote::Server>& servers) {
    const auto isSecure = [](const remote::Server& server) { return server.url.isSecure; };
    if (!identity.verifies && std::any_of(servers.begin(), servers.end(), isSecure)) {
        std::clog << "cimhost: --no-verify: certificates are not checked, so whoever stands in between can pretend to "
                     "be the server, read the password and change the answers"
                  << std::endl;
    }
    if (identity.user.empty() && identity.logins.empty()) return;
    const auto open = std::find_if(servers.begin(), servers.end(), [&](const remote::Server& server) {
        return !isSecure(server) && !isOnThisMachine(server);
    });
    if (open == servers.end()) return;
    std::clog << "cimhost: the password goes to " << open->name << " as it is: whoever stands in between can read it"
              << std::endl;
}

} // namespace

std::vector<remote::Server> serversOf(const ServerOptions& options) {
    std::vector<remote::Server> servers;
    const auto add = [&servers](remote::Server server) {
        const auto isSame = [&server](const remote::Server& other) { return other.name == server.name; };
        if (std::none_of(servers.begin(), servers.end(), isSame)) servers.push_back(std::move(server));
    };
    for (const std::string& url : options.urls)
        add(remote::parseServer(url));
    if (options.list.empty()) return servers;
    for (remote::Server& server : remote::readServers(options.list))
        add(std::move(server));
    return servers;
}

remote::Identity identityOf(const IdentityOptions& options, const std::vector<remote::Server>& servers) {
    remote::Identity identity{options.user, options.logins, options.authorities, options.verifies};
    if (!options.user.empty() && options.user.find(':') == std::string::npos) {
        identity.user += ':' + askForKnownPassword(options.user);
    }
    remote::requireUsable(identity);
    tellWhatIsGivenUp(identity, servers);
    return identity;
}

} // namespace cimhost::cli
