// Which names a request may call this server by. A web page whose name was made to lead here is none of them.
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

/// Nothing for what is no `name`, `a.b.c.d` or `[address]` with or without `:port`. The port is not looked at
/// otherwise: somebody may forward another one to the server.
std::optional<Authority> parseAuthority(std::string_view text);

/// A numeric address as the system writes it, one of IPv4 never as IPv6; the text itself where it is none.
std::string normalizedAddress(const std::string& text);

class HostNames {
public:
    /// The machine's own name, short and as it reports it, and these; each a name or an address.
    explicit HostNames(const std::vector<std::string>& further);

    /// The qualified name that the machine's own name resolves to, if any. May ask the network.
    void addQualifiedName();

    /// Whether a client may call by that name who connected to that address, numeric.
    [[nodiscard]] bool contains(const Authority& authority, const std::string& localAddress) const;

private:
    void add(std::string_view name);

    std::vector<std::string> names;
};

} // namespace cimhost::http
