// One CIM server as a client reaches it: messages over HTTP, one after the other, until a deadline that covers them
// all.
#pragma once

#include "cimhost/http/message.h"
#include "cimhost/model/cim_error.h"
#include "cimhost/remote/identity.h"
#include "cimhost/remote/server_url.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace cimhost::remote {

/// A server gave no answer of CIM; what() says why, and what to try, without its name and without any secret.
class ServerFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// For one thread at a time. Nothing is sent elsewhere than the URL says: no proxies, no redirections.
class Connection {
public:
    /// @param timeout from now until the last byte of the last answer
    Connection(Server server, const Identity& identity, std::chrono::milliseconds timeout);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    enum class Repeat {
        ifLost, ///< where a connection that was kept turns out to be gone, the message is sent once more
        never,  ///< for what changes something
    };

    /// What takes the body of an answer, in pieces, and may throw; that comes out of post().
    using Take = std::function<void(std::string_view piece)>;

    /// Posts a message. Gives the error that stands behind the pieces of an answer which the server could not bring to
    /// an end, in its trailers (DSP0200). Throws ServerFailure unless the whole answer came, with status 200 and as
    /// XML.
    std::optional<CimError> post(const std::vector<http::Field>& fields, std::string_view body, Repeat repeat,
                                 const Take& take);

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace cimhost::remote
