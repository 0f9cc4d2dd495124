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
    http::Url url;    ///< if the text names none, with port 5988 or 5989 and the path /cimom
};

/// Throws std::runtime_error with the reason. A text with a user in it is refused, and the error does not repeat it.
Server parseServer(std::string_view text);

/// Reads one URL from each line. Blank lines and comments after # are ignored. Throws std::runtime_error with file,
/// line and reason, also for a file without servers.
std::vector<Server> readServers(const std::filesystem::path& file);

} // namespace cimhost::remote
