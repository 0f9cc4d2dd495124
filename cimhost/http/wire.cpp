#include "cimhost/http/wire.h"

#include <boost/beast/http/error.hpp>
#include <boost/beast/http/rfc7230.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <ctime>
#include <iterator>

namespace cimhost::http {

namespace beast_http = boost::beast::http;

namespace {

constexpr unsigned http11 = 11;

std::string text(boost::beast::string_view view) { return {view.data(), view.size()}; }

std::string dateText() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 64> formatted{};
    const std::size_t length = std::strftime(formatted.data(), formatted.size(), "%a, %d %b %Y %H:%M:%S GMT", &parts);
    return {formatted.data(), length};
}

} // namespace

Request headOf(const Parser& parser) {
    Request request;
    const auto& head = parser.get();
    request.method = text(head.method_string());
    request.target = text(head.target());
    for (const auto& field : head)
        request.fields.push_back({text(field.name_string()), text(field.value())});
    return request;
}

std::optional<Response> refuseSender(const Parser& parser, const std::function<bool(const Authority&)>& isOwnName) {
    using beast_http::field;
    const auto& head = parser.get();
    if (head.find(field::origin) != head.end()) {
        return textResponse(403, "web pages may not ask here: the request has a field Origin");
    }
    const auto hosts = head.equal_range(field::host);
    if (hosts.first == hosts.second) {
        if (head.version() < http11) return std::nullopt;
        return textResponse(400, "the field Host is missing");
    }
    if (std::next(hosts.first) != hosts.second) return textResponse(400, "more than one Host");
    const boost::beast::string_view value = hosts.first->value();
    const std::optional<Authority> called = parseAuthority({value.data(), value.size()});
    if (!called) return textResponse(400, "the field Host is no name or address, with or without a port");
    if (!isOwnName(*called)) {
        return textResponse(421, "this server does not know the name in the field Host as its own; "
                                 "cimhost serve --server-name NAME adds a name");
    }
    return std::nullopt;
}

std::optional<Response> refuseFraming(const Parser& parser) {
    using beast_http::field;
    const auto& head = parser.get();
    const auto lengths = head.equal_range(field::content_length);
    const bool hasLength = lengths.first != lengths.second;
    const auto encoding = head.find(field::transfer_encoding);
    if (encoding != head.end() && head.version() < http11) {
        return textResponse(400, "HTTP/1.0 has no Transfer-Encoding");
    }
    if (hasLength && (std::next(lengths.first) != lengths.second ||
                      lengths.first->value().find(',') != boost::beast::string_view::npos)) {
        return textResponse(400, "more than one Content-Length");
    }
    if (encoding != head.end() && (!parser.chunked() || !boost::beast::iequals(encoding->value(), "chunked"))) {
        return textResponse(501, "of all transfer encodings only chunked is known");
    }
    // A GET has no body unless it says so.
    const bool needsLength = head.method() != beast_http::verb::get;
    if (encoding == head.end() && !hasLength && needsLength)
        return textResponse(411, "neither Content-Length nor chunks");
    const auto expect = head.find(field::expect);
    if (expect != head.end() && !boost::beast::iequals(expect->value(), "100-continue")) {
        return textResponse(417, "of all expectations only 100-continue is known");
    }
    return std::nullopt;
}

std::optional<Response> answerToReadError(boost::system::error_code error) {
    if (error.category() != beast_http::make_error_code(beast_http::error::end_of_stream).category())
        return std::nullopt;
    if (error == beast_http::error::end_of_stream || error == beast_http::error::partial_message) return std::nullopt;
    if (error == beast_http::error::header_limit) return textResponse(431, "the header is too long");
    if (error == beast_http::error::buffer_overflow) return textResponse(431, "a line of the request is too long");
    if (error == beast_http::error::body_limit) return textResponse(413, "the body is too long");
    return textResponse(400, "this is no HTTP: " + error.message());
}

Response unauthorized() {
    Response response = textResponse(401, "name and password are needed");
    response.fields.push_back({"WWW-Authenticate", "Basic realm=\"cimhost\", charset=\"UTF-8\""});
    return response;
}

Response tooManyGuesses(std::chrono::seconds wait) {
    const std::string seconds = std::to_string(wait.count());
    Response response = textResponse(429, "too many wrong passwords; try again in " + seconds + " s");
    response.fields.push_back({"Retry-After", seconds});
    return response;
}

bool takesPieces(const Parser& parser) {
    const auto& head = parser.get();
    if (head.version() < http11) return false;
    const auto fields = head.equal_range(beast_http::field::te);
    return std::any_of(fields.first, fields.second,
                       [](const auto& field) { return beast_http::ext_list(field.value()).exists("trailers"); });
}

namespace {

std::string headWith(const Response& response, std::string_view framing, bool closes) {
    std::string head;
    head.reserve(512);
    head.append("HTTP/1.1 ").append(std::to_string(response.status)).append(" ");
    head.append(reasonPhrase(response.status)).append("\r\n");
    for (const Field& field : response.fields)
        head.append(field.name).append(": ").append(field.value).append("\r\n");
    head.append("Date: ").append(dateText()).append("\r\n").append(framing);
    head.append(closes ? "\r\nConnection: close\r\n\r\n" : "\r\nConnection: keep-alive\r\n\r\n");
    return head;
}

} // namespace

std::string serializeHead(const Response& response, bool closes) {
    return headWith(response, "Content-Length: " + std::to_string(response.body.size()), closes);
}

std::string serializeHeadOfPieces(const Response& response, bool closes) {
    return headWith(response, "Transfer-Encoding: chunked", closes);
}

std::string chunkBegin(std::size_t bytes) {
    std::array<char, 2 * sizeof bytes + 2> text{};
    char* const end = std::to_chars(text.data(), text.data() + text.size(), bytes, 16).ptr;
    return std::string(text.data(), end).append("\r\n");
}

std::string lastChunk(const std::vector<Field>& trailers) {
    std::string last = "0\r\n";
    for (const Field& field : trailers)
        last.append(field.name).append(": ").append(field.value).append("\r\n");
    return last.append("\r\n");
}

} // namespace cimhost::http
