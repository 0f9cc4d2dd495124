// An HTTP request and its answer as the handler of a server sees them: no sockets, no parser.
#pragma once

#include "cimhost/byte_buffer.h"
#include "cimhost/receipt.h"

#include <string>
#include <string_view>
#include <vector>

namespace cimhost::http {

struct Field {
    std::string name;
    std::string value;
};

struct Request {
    std::string method; // "POST"
    std::string target; // "/cimom"
    std::vector<Field> fields;
    std::string body;
    std::string user;        // who authenticated; empty on a server without credentials
    std::string client = {}; // where the request comes from: "127.0.0.1:40218", "[::1]:40218"

    /// The value of the first field of that name, in any case; null if there is none.
    [[nodiscard]] const std::string* field(std::string_view name) const;
};

struct Response {
    unsigned status = 200;
    std::vector<Field> fields; // Content-Length, Connection and Date are the server's own
    ByteBuffer body;
    /// Say the same as this answer in the trailers of another one, which has begun to leave in pieces when this one
    /// comes. Empty: trailers cannot say it.
    std::vector<Field> trailers = {};
    Receipt receipt = {}; // confirmed once the client has the answer
};

/// A short answer in plain text.
Response textResponse(unsigned status, std::string_view text);

/// "Not Found" for 404; "Unknown" for a status that this server does not use.
std::string_view reasonPhrase(unsigned status);

} // namespace cimhost::http
