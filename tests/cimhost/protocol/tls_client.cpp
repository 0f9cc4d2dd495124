#include "tls_client.h"

#include <openssl/bio.h>
#include <openssl/ssl.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace cimhost::testing_support {

std::string askOverTls(std::uint16_t port, std::string_view request) {
    return askOverTlsAndLeave(port, request, SIZE_MAX);
}

std::string askOverTlsAndLeave(std::uint16_t port, std::string_view request, std::size_t bytes) {
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(SSL_CTX_new(TLS_client_method()), SSL_CTX_free);
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> connection(BIO_new_ssl_connect(context.get()), BIO_free_all);
    BIO_set_conn_hostname(connection.get(), ("127.0.0.1:" + std::to_string(port)).c_str());
    if (BIO_do_connect(connection.get()) != 1) return "";
    BIO_write(connection.get(), request.data(), static_cast<int>(request.size()));
    std::string answer;
    std::array<char, 4096> room;
    while (answer.size() < bytes) {
        const int count = BIO_read(connection.get(), room.data(), room.size());
        if (count <= 0) break;
        answer.append(room.data(), static_cast<std::size_t>(count));
    }
    return answer;
}

} // namespace cimhost::testing_support
