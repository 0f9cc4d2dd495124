#include "cimhost/remote/identity.h"

#include "cimhost/http/tls_files.h"
#include "cimhost/storage/private_file.h"

#include <memory>
#include <openssl/ssl.h>
#include <stdexcept>

namespace cimhost::remote {

void requireUsable(const Identity& identity) {
    if (!identity.user.empty() && identity.user.find(':') == std::string::npos) {
        throw std::runtime_error("the user is written NAME:PASSWORD");
    }
    if (!identity.logins.empty()) requirePrivateFile(identity.logins, Readers::owner);
    if (identity.authorities.empty()) return;
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(SSL_CTX_new(TLS_client_method()), SSL_CTX_free);
    if (!context) throw std::runtime_error("TLS cannot be used");
    http::loadAuthorities(context.get(), identity.authorities);
}

} // namespace cimhost::remote
