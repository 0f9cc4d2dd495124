#include "cimhost/remote/server_url.h"

#include "cimhost/model/printable.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <stdexcept>

namespace cimhost::remote {

namespace {

constexpr std::string_view blanks = " \t\r";

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

std::string_view authorityOf(std::string_view text) {
    const std::size_t scheme = text.find("://");
    if (scheme != std::string_view::npos) text.remove_prefix(scheme + 3);
    return text.substr(0, text.find_first_of("/?#"));
}

bool namesPort(std::string_view authority) {
    const std::size_t bracket = authority.find(']');
    return authority.find(':', bracket == std::string_view::npos ? 0 : bracket) != std::string_view::npos;
}

} // namespace

Server parseServer(std::string_view text) {
    const std::string_view authority = authorityOf(text);
    if (authority.find('@') != std::string_view::npos) {
        throw std::runtime_error("a server's URL names no user: others would see the password; give --user NAME");
    }
    std::optional<http::Url> url = http::parseUrl(text);
    if (!url) {
        throw std::runtime_error("\"" + printable(text.substr(0, 200)) +
                                 "\" is no URL of a CIM server, such as https://san1:5989");
    }
    if (!namesPort(authority)) url->port = url->isSecure ? "5989" : "5988";
    if (url->path == "/") url->path = "/cimom";
    return {std::string(text), std::move(*url)};
}

std::vector<Server> readServers(const std::filesystem::path& file) {
    std::ifstream lines(file);
    if (!lines) throw std::runtime_error(file.string() + ": cannot be read");
    std::vector<Server> servers;
    std::string line;
    for (std::size_t number = 1; std::getline(lines, line); ++number) {
        const std::string_view text = trimmed(std::string_view(line).substr(0, line.find('#')));
        if (text.empty()) continue;
        try {
            servers.push_back(parseServer(text));
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(file.string() + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    if (lines.bad()) throw std::runtime_error(file.string() + ": cannot be read");
    if (servers.empty()) throw std::runtime_error(file.string() + ": names no server");
    return servers;
}

} // namespace cimhost::remote
