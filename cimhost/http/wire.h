// Requests and answers on the wire: the checks of a request that Beast's parser leaves open, and the head of an answer.
// Private to the HTTP server and client.
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

// A body that grows as its bytes come. Beast's own string body reserves memory for the length that the client declares,
// before a single byte has come.
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

/// The answer that refuses a request if a foreign web page may have sent it: it has a field Origin, or its field Host
/// is missing, is there twice, or names something other than this server. Nothing if the request may pass.
std::optional<Response> refuseSender(const Parser& parser, const std::function<bool(const Authority&)>& isOwnName);

/// The answer that refuses a request if its head leaves any doubt how long its body is, or has an unknown expectation.
/// Nothing if the request may pass. If a proxy and a server read the length differently, requests can be smuggled past
/// the proxy.
std::optional<Response> refuseFraming(const Parser& parser);

/// The answer to bytes that are no HTTP or exceed a limit. Nothing if the connection itself failed or ended.
std::optional<Response> answerToReadError(boost::system::error_code error);

Response unauthorized();

/// After too many wrong passwords.
Response tooManyGuesses(std::chrono::seconds wait);

/// Whether the client takes an answer in chunks and reads the trailers after them: its field TE says "trailers"
/// (RFC 9110, 10.1.4).
bool takesPieces(const Parser& parser);

/// Everything of an answer but its body.
std::string serializeHead(const Response& response, bool closes);
/// The same for an answer whose body leaves in chunks.
std::string serializeHeadOfPieces(const Response& response, bool closes);

/// What stands before the bytes of a chunk, what stands after them, and what ends the chunks, with the trailers.
std::string chunkBegin(std::size_t bytes);
constexpr std::string_view chunkEnd = "\r\n";
std::string lastChunk(const std::vector<Field>& trailers);

} // namespace cimhost::http
