// The names by which a request may call this server. A web page can make its own name lead to this machine; that name
// is none of them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::http {

/// Host and port of a Host field.
struct Authority {
    std::string host; ///< a name in lower case without its last dot; a numeric address as the system writes it
    bool isAddress = false;
};

/// Reads `name`, `a.b.c.d` or `[address]`, with or without `:port`. Nothing for any other text. Any port will do, since
/// somebody may forward another port to the server.
std::optional<Authority> parseAuthority(std::string_view text);

/// A numeric address as the system writes it; ::ffff:a.b.c.d becomes a.b.c.d. A text that is no address is returned as
/// it is.
std::string normalizedAddress(const std::string& text);

class HostNames {
public:
    /// Knows the machine's own name, as the machine reports it and without its domain, and the further ones, each of
    /// which is a name or an address.
    explicit HostNames(const std::vector<std::string>& further);

    /// Adds the qualified name to which the machine's own name resolves, if there is one. May wait for the network.
    void addQualifiedName();

    /// Whether a client may call this server by that name.
    /// @param localAddress the numeric address of this machine to which the client connected
    [[nodiscard]] bool contains(const Authority& authority, const std::string& localAddress) const;

private:
    void add(std::string_view name);

    std::vector<std::string> names;
};

} // namespace cimhost::http
