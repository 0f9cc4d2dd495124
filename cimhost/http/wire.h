// How requests and answers look on the wire: what Beast's parser leaves to decide, and the head of an answer. Private
// to the HTTP server.
#pragma once

#include "cimhost/http/host_names.h"
#include "cimhost/http/message.h"

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/parser.hpp>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::http {

// Beast's own string body reserves what the client declares, before a single byte of it has come.
struct GrowingBody {
    using value_type = std::string;

    class reader {
    public:
        template <bool isRequest, class Fields>
        reader(boost::beast::http::header<isRequest, Fields>&, value_type& target) : body(target) {}

        void init(const boost::optional<std::uint64_t>&, boost::system::error_code& error) { error = {}; }

        template <class Buffers>
        std::size_t put(const Buffers& buffers, boost::system::error_code& error) {
            namespace asio = boost::asio;
            error = {};
            std::size_t total = 0;
            for (auto part = asio::buffer_sequence_begin(buffers); part != asio::buffer_sequence_end(buffers); ++part) {
                const asio::const_buffer bytes(*part);
                body.append(static_cast<const char*>(bytes.data()), bytes.size());
                total += bytes.size();
            }
            return total;
        }

        void finish(boost::system::error_code& error) { error = {}; }

    private:
        value_type& body;
    };
};

using Parser = boost::beast::http::request_parser<GrowingBody>;

/// The head of a parsed request, without its body.
Request headOf(const Parser& parser);

/// An answer where a browser asks for a web page, or where the head calls the server by no name, by several, or by one
/// that is not its own: a page of somebody else's may have sent it.
std::optional<Response> refuseSender(const Parser& parser, const std::function<bool(const Authority&)>& isOwnName);

/// An answer where the head does not say beyond doubt how long its body is, or expects what nobody here knows. Two
/// readings of one request are how requests are smuggled past a proxy.
std::optional<Response> refuseFraming(const Parser& parser);

/// An answer to what cannot be read as HTTP within the limits; nothing where the connection itself failed.
std::optional<Response> answerToReadError(boost::system::error_code error);

Response unauthorized();

/// After too many wrong passwords.
Response tooManyGuesses(std::chrono::seconds wait);

/// Whether the client takes an answer in chunks, and reads the trailers behind them (RFC 9110, 10.1.4).
bool takesPieces(const Parser& parser);

/// Everything of an answer but its body.
std::string serializeHead(const Response& response, bool closes);
/// The same for an answer whose body leaves in chunks.
std::string serializeHeadOfPieces(const Response& response, bool closes);

/// What stands before and behind the bytes of a chunk; and behind the last one, with the trailers.
std::string chunkBegin(std::size_t bytes);
constexpr std::string_view chunkEnd = "\r\n";
std::string lastChunk(const std::vector<Field>& trailers);

} // namespace cimhost::http
