#include "cimhost/http/host_names.h"

#include "cimhost/model/host_name.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

namespace cimhost::http {

namespace {

// As getaddrinfo() and inet_ntop() write.
std::optional<std::string> addressText(const std::string& text) {
    std::array<char, INET6_ADDRSTRLEN> written{};
    in_addr v4{};
    if (inet_pton(AF_INET, text.c_str(), &v4) == 1) return inet_ntop(AF_INET, &v4, written.data(), written.size());
    in6_addr v6{};
    if (inet_pton(AF_INET6, text.c_str(), &v6) != 1) return std::nullopt;
    if (IN6_IS_ADDR_V4MAPPED(&v6)) {
        std::memcpy(&v4, &v6.s6_addr[12], sizeof v4);
        return inet_ntop(AF_INET, &v4, written.data(), written.size());
    }
    return inet_ntop(AF_INET6, &v6, written.data(), written.size());
}

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

bool isPortOrNothing(std::string_view text) {
    if (text.empty()) return true;
    return text.front() == ':' && text.size() <= 6 && std::all_of(text.begin() + 1, text.end(), isDigit);
}

bool isNameByte(char byte) {
    return isDigit(byte) || (byte >= 'a' && byte <= 'z') || byte == '-' || byte == '.' || byte == '_';
}

std::string lowered(std::string_view name) {
    std::string lower(name);
    for (char& byte : lower) {
        if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
    }
    if (lower.size() > 1 && lower.back() == '.') lower.pop_back();
    return lower;
}

bool isLoopbackText(const std::string& address) { return address.substr(0, 4) == "127." || address == "::1"; }

} // namespace

std::optional<Authority> parseAuthority(std::string_view text) {
    if (!text.empty() && text.front() == '[') {
        const std::size_t end = text.find(']');
        if (end == std::string_view::npos || !isPortOrNothing(text.substr(end + 1))) return std::nullopt;
        const std::optional<std::string> address = addressText(std::string(text.substr(1, end - 1)));
        if (!address) return std::nullopt;
        return Authority{*address, true};
    }
    const std::size_t colon = std::min(text.find(':'), text.size());
    if (!isPortOrNothing(text.substr(colon))) return std::nullopt;
    const std::string name = lowered(text.substr(0, colon));
    if (name.empty() || !std::all_of(name.begin(), name.end(), isNameByte)) return std::nullopt;
    if (std::optional<std::string> address = addressText(name)) return Authority{std::move(*address), true};
    return Authority{name, false};
}

std::string normalizedAddress(const std::string& text) { return addressText(text).value_or(text); }

HostNames::HostNames(const std::vector<std::string>& further) {
    const std::string own = hostName();
    add(own);
    add(std::string_view(own).substr(0, own.find('.')));
    for (const std::string& name : further)
        add(name);
}

void HostNames::add(std::string_view name) {
    if (!name.empty()) names.push_back(normalizedAddress(lowered(name)));
}

void HostNames::addQualifiedName() {
    addrinfo hints{};
    hints.ai_flags = AI_CANONNAME;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(hostName().c_str(), nullptr, &hints, &found) != 0) return;
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, freeaddrinfo);
    if (found->ai_canonname) add(found->ai_canonname);
}

bool HostNames::contains(const Authority& authority, const std::string& localAddress) const {
    const std::string local = normalizedAddress(localAddress);
    if (authority.isAddress && authority.host == local) return true;
    if (authority.host == "localhost" && isLoopbackText(local)) return true;
    return std::find(names.begin(), names.end(), authority.host) != names.end();
}

} // namespace cimhost::http
