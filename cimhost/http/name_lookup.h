// Host names to addresses, on threads of their own: the C library's lookup cannot be called back, and one that hangs
// must hold up nobody. Private to the HTTP client.
#pragma once

#include "cimhost/http/mailbox.h"

#include <boost/asio/ip/tcp.hpp>

#include <functional>
#include <memory>
#include <string>

namespace cimhost::http {

using Places = boost::asio::ip::tcp::resolver::results_type;
using LookupDone = std::function<void(boost::system::error_code, Places)>;

/// Calls done through the box once the name is known or known not to be. Of one name there is one lookup at a time, of
/// all at most 64; others wait for their turn, and are dropped if wanted has ended by then.
void lookUp(const std::string& host, const std::string& port, std::weak_ptr<void> wanted, std::shared_ptr<Mailbox> box,
            LookupDone done);

} // namespace cimhost::http
