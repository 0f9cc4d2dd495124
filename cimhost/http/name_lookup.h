// Looks up the addresses of host names, on threads of its own: the C library's lookup cannot be interrupted, and one
// that hangs must hold up nobody. Private to the HTTP client.
#pragma once

#include "cimhost/http/mailbox.h"

#include <boost/asio/ip/tcp.hpp>

#include <functional>
#include <memory>
#include <string>

namespace cimhost::http {

using Places = boost::asio::ip::tcp::resolver::results_type;
using LookupDone = std::function<void(boost::system::error_code, Places)>;

/// Calls done through the box, with the addresses or with an error; also if the system gives no thread. Of one name
/// there is one lookup at a time, of all names at most 64. Others wait for their turn; one whose `wanted` has ended by
/// then is dropped, and its done is not called. A numeric address needs no lookup.
/// @param port as a number
void lookUp(const std::string& host, const std::string& port, std::weak_ptr<void> wanted, std::shared_ptr<Mailbox> box,
            LookupDone done);

} // namespace cimhost::http
