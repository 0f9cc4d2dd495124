// The connection of a client to one CIM server: messages over HTTP, one after the other, with one deadline for all of
// them.
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

/// Thrown if a server gives no answer of CIM. what() says why and what to try; it has neither the server's name nor any
/// secret.
class ServerFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Used by one thread at a time. Messages go to the URL and nowhere else: proxies and redirections are not followed.
class Connection {
public:
    /// @param timeout the time from now until the last byte of the last answer
    Connection(Server server, const Identity& identity, std::chrono::milliseconds timeout);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    enum class Repeat {
        ifLost, ///< if a connection that was kept is gone, the message is sent once more
        never,  ///< for messages that change something
    };

    /// Takes the body of an answer in pieces. If it throws, post() throws the same.
    using Take = std::function<void(std::string_view piece)>;

    /// Posts a message, and waits for the answer. Throws ServerFailure unless the whole answer comes, with status 200
    /// and as XML.
    /// @return the error in the trailers of an answer that the server could not complete (DSP0200); otherwise nothing
    std::optional<CimError> post(const std::vector<http::Field>& fields, std::string_view body, Repeat repeat,
                                 const Take& take);

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace cimhost::remote
