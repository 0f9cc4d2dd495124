#include "cimhost/http/tls_files.h"

#include "cimhost/storage/descriptor.h"
#include "cimhost/storage/private_file.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/stat.h>

namespace cimhost::http {

namespace {

[[noreturn]] void fail(const std::filesystem::path& file, const std::string& what) {
    throw std::runtime_error(file.string() + ": " + what);
}

// OpenSSL's own message for a file that does not exist or is a folder would help nobody.
void requireReadable(const std::filesystem::path& file) {
    const Descriptor opened(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (opened.get() < 0 || ::fstat(opened.get(), &status) != 0) fail(file, std::strerror(errno));
    if (!S_ISREG(status.st_mode)) fail(file, "no regular file");
}

std::string libraryReason() {
    const char* reason = ERR_reason_error_string(ERR_peek_last_error());
    return reason ? reason : "unknown reason";
}

} // namespace

void loadServerFiles(SSL_CTX* context, const Tls& files) {
    requireReadable(files.certificate);
    requirePrivateFile(files.key, Readers::rootsGroup);
    ERR_clear_error();
    if (SSL_CTX_use_certificate_chain_file(context, files.certificate.c_str()) != 1) {
        fail(files.certificate, "no certificate: " + libraryReason());
    }
    if (SSL_CTX_use_PrivateKey_file(context, files.key.c_str(), SSL_FILETYPE_PEM) != 1) {
        fail(files.key, "no key for the certificate: " + libraryReason());
    }
}

void loadAuthorities(SSL_CTX* context, const std::filesystem::path& file) {
    requireReadable(file);
    ERR_clear_error();
    if (SSL_CTX_load_verify_locations(context, file.c_str(), nullptr) != 1) {
        fail(file, "no certificate of an authority: " + libraryReason());
    }
}

} // namespace cimhost::http
