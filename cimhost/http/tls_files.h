// Certificates, keys and authorities, as PEM files. What is wrong with one is told with its name.
#pragma once

#include "cimhost/http/server.h"

#include <filesystem>

using SSL_CTX = struct ssl_ctx_st;

namespace cimhost::http {

/// Certificate chain and key of a server. Throws std::runtime_error with file and reason: cannot be read, holds none,
/// a key of another certificate, or one that others than its owner can read. Of a key that is root's, the group may.
void loadServerFiles(SSL_CTX* context, const Tls& files);

/// What a client trusts, and nothing else. Throws as above.
void loadAuthorities(SSL_CTX* context, const std::filesystem::path& file);

} // namespace cimhost::http
