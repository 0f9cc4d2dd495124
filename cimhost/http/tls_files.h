// Reads certificates, keys and authorities from PEM files. An error names the file.
#pragma once

#include "cimhost/http/server.h"

#include <filesystem>

using SSL_CTX = struct ssl_ctx_st;

namespace cimhost::http {

/// Loads the certificate chain and the key of a server. Throws std::runtime_error with file and reason: the file cannot
/// be read, holds no certificate or key, holds the key of another certificate, or is a key that others than its owner
/// can read. A key that belongs to root may be readable for its group.
void loadServerFiles(SSL_CTX* context, const Tls& files);

/// Loads the certificates of the authorities that a client trusts. Throws std::runtime_error with file and reason: the
/// file cannot be read or holds no certificate.
void loadAuthorities(SSL_CTX* context, const std::filesystem::path& file);

} // namespace cimhost::http
