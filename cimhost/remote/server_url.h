// URLs of CIM servers.
#pragma once

#include "cimhost/http/client.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::remote {

struct Server {
    std::string name; ///< as it was written
    http::Url url;    ///< with the ports of CIM, 5988 and 5989, and /cimom, where the text names none
};

/// Throws std::runtime_error with the error. A text with a user in it is refused and not printed.
Server parseServer(std::string_view text);

/// One URL a line; blank lines and comments after # are ignored. Throws std::runtime_error with file, line and
/// reason; a file without servers is wrong too.
std::vector<Server> readServers(const std::filesystem::path& file);

} // namespace cimhost::remote
