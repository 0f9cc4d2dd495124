// A client that sends whatever bytes a test likes, over TLS on loopback. It trusts every server.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace cimhost::testing_support {

/// What comes until the server closes; empty if there is no connection. To be sent with "Connection: close".
std::string askOverTls(std::uint16_t port, std::string_view request);

/// Leaves once that many bytes have come, whatever is still to come.
std::string askOverTlsAndLeave(std::uint16_t port, std::string_view request, std::size_t bytes);

} // namespace cimhost::testing_support
