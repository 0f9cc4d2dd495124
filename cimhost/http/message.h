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

    /// By name, without regard to case: the first of that name, or null.
    [[nodiscard]] const std::string* field(std::string_view name) const;
};

struct Response {
    unsigned status = 200;
    std::vector<Field> fields; // Content-Length, Connection and Date are the server's own
    ByteBuffer body;
    /// What tells the same behind the pieces of another answer that has begun to leave; empty: nothing can.
    std::vector<Field> trailers = {};
    Receipt receipt = {};
};

/// A short answer in plain text.
Response textResponse(unsigned status, std::string_view text);

/// "Not Found" for 404.
std::string_view reasonPhrase(unsigned status);

} // namespace cimhost::http
