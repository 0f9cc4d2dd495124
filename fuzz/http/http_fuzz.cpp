// What a client sends, read as the server reads it, without a socket: requests one behind the other, their framing,
// their names for the server and the pieces of their bodies. However the bytes are cut, the same requests come out.

#include "cimhost/http/credentials.h"
#include "cimhost/http/wire.h"

#include <boost/beast/http/error.hpp>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace cimhost::http;

constexpr std::uint32_t headerBytes = 16 << 10;
constexpr std::uint64_t bodyBytes = 1 << 20;

struct Accepted {
    std::string line; // "POST /cimom"
    std::string body;

    bool operator==(const Accepted&) const = default;
};

void requireWhole(const Response& response) {
    if (reasonPhrase(response.status) == "Unknown") std::abort();
    const std::string head = serializeHead(response, true);
    if (head.substr(0, 9) != "HTTP/1.1 " || head.substr(head.size() - 4) != "\r\n\r\n") std::abort();
}

std::optional<Response> refuseHead(const Parser& parser) {
    static const HostNames names({"cim.example"});
    const auto isOwn = [](const Authority& called) { return names.contains(called, "127.0.0.1"); };
    if (std::optional<Response> refusal = refuseSender(parser, isOwn)) return refusal;
    if (std::optional<Response> refusal = refuseFraming(parser)) return refusal;
    const Request request = headOf(parser);
    const std::string* authorization = request.field("Authorization");
    if (authorization && !Credentials::claimedUser(*authorization)) return unauthorized();
    return std::nullopt;
}

// Reads requests until one is refused or the bytes end.
class Reader {
public:
    explicit Reader(std::size_t bytesAtOnce) : pieceSize(bytesAtOnce) { beginRequest(); }

    std::vector<Accepted> readAll(std::string_view bytes) {
        for (; !bytes.empty() && !isOver; bytes.remove_prefix(std::min(pieceSize, bytes.size()))) {
            buffer.append(bytes.substr(0, pieceSize));
            while (!isOver && !buffer.empty() && readSome()) {
            }
        }
        return std::move(accepted);
    }

private:
    void beginRequest() {
        parser.emplace();
        parser->header_limit(headerBytes);
        parser->body_limit(bodyBytes);
        parser->eager(true);
        isHeadSeen = false;
    }

    // False if more bytes are needed.
    bool readSome() {
        boost::system::error_code error;
        const std::size_t used = parser->put(boost::asio::buffer(buffer), error);
        if (used > buffer.size()) std::abort();
        buffer.erase(0, used);
        if (error && error != boost::beast::http::error::need_more) {
            const std::optional<Response> answer = answerToReadError(error);
            if (answer) requireWhole(*answer);
            return end();
        }
        if (parser->is_header_done() && !isHeadSeen) {
            isHeadSeen = true;
            if (const std::optional<Response> refusal = refuseHead(*parser)) {
                requireWhole(*refusal);
                return end();
            }
        }
        if (!parser->is_done()) return !error && used > 0;
        const Request request = headOf(*parser);
        accepted.push_back({request.method + " " + request.target, parser->get().body()});
        if (!parser->keep_alive()) isOver = true;
        beginRequest();
        return true;
    }

    bool end() {
        isOver = true;
        return false;
    }

    std::size_t pieceSize;
    std::string buffer;
    boost::optional<Parser> parser;
    bool isHeadSeen = false;
    bool isOver = false;
    std::vector<Accepted> accepted;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size > headerBytes) return 0; // beyond, the limits are reached at different bytes
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::vector<Accepted> whole = Reader(size + 1).readAll(bytes);
    const std::vector<Accepted> pieces = Reader(1 + size % 13).readAll(bytes);
    // What is no request is refused at once or when the time for the rest is over, as the pieces have it.
    if (whole != pieces) std::abort();
    return 0;
}
