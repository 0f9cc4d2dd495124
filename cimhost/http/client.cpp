#include "cimhost/http/client.h"

#include "cimhost/http/wire.h"
#include "cimhost/model/names.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/host_name_verification.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>

#include <algorithm>
#include <atomic>
#include <variant>

namespace cimhost::http {

namespace asio = boost::asio;
namespace beast = boost::beast;
using asio::ip::tcp;
using boost::system::error_code;

namespace {

constexpr std::size_t longestUrl = 2048;
constexpr std::uint32_t largestHead = 16U << 10;

bool startsWith(std::string_view text, std::string_view head) {
    return text.size() >= head.size() && equalNames(text.substr(0, head.size()), head);
}

bool isPort(std::string_view text) {
    const bool isNumber = !text.empty() && text.size() <= 5 && std::all_of(text.begin(), text.end(), [](char digit) {
        return digit >= '0' && digit <= '9';
    });
    const int port = isNumber ? std::stoi(std::string(text)) : 0;
    return port > 0 && port <= 65535;
}

bool isHostCharacter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '-' || character == '.' || character == '_';
}

// Leaves what follows the host in text. False if that is no host.
bool takeHost(std::string_view& text, Url& url) {
    const bool isBracketed = !text.empty() && text.front() == '[';
    const std::size_t end = isBracketed ? text.find(']') : std::min(text.find(':'), text.size());
    if (end == std::string_view::npos) return false;
    url.host = text.substr(isBracketed ? 1 : 0, end - (isBracketed ? 1 : 0));
    text.remove_prefix(end + (isBracketed ? 1 : 0));
    if (isBracketed) {
        error_code error;
        asio::ip::make_address_v6(url.host, error);
        return !error;
    }
    return !url.host.empty() && std::all_of(url.host.begin(), url.host.end(), isHostCharacter);
}

bool isVisible(char character) { return character > ' ' && character < 0x7f; }

} // namespace

std::string Url::authority() const {
    const bool isV6 = host.find(':') != std::string::npos;
    return (isV6 ? "[" + host + "]" : host) + ":" + port;
}

std::optional<Url> parseUrl(std::string_view text) {
    Url url;
    if (text.size() > longestUrl || !std::all_of(text.begin(), text.end(), isVisible)) return std::nullopt;
    url.isSecure = startsWith(text, "https://");
    if (!url.isSecure && !startsWith(text, "http://")) return std::nullopt;
    text.remove_prefix(url.isSecure ? 8 : 7);
    const std::size_t slash = std::min(text.find_first_of("/?#"), text.size());
    std::string_view authority = text.substr(0, slash);
    const std::string_view path = text.substr(slash);
    if (!path.empty() && path.front() != '/') return std::nullopt;
    if (!takeHost(authority, url)) return std::nullopt;
    url.port = url.isSecure ? "443" : "80";
    if (!authority.empty()) {
        authority.remove_prefix(1);
        if (!isPort(authority)) return std::nullopt;
        url.port = authority;
    }
    if (!path.empty()) url.path = path.substr(0, path.find('#'));
    return url;
}

struct Client::State {
    using Plain = beast::tcp_stream;
    using Secure = beast::ssl_stream<beast::tcp_stream>;
    using Outgoing = beast::http::request<beast::http::string_body>;
    using Incoming = beast::http::response_parser<GrowingBody>;

    State(Url target, ClientLimits bounds) : url(std::move(target)), limits(bounds) {}

    // Runs what was started until it ends; its own deadline ends it if nothing else does.
    error_code finish(error_code& error) {
        io.restart();
        if (!isAborted) io.run();
        if (isAborted) error = asio::error::operation_aborted;
        return error;
    }

    template <typename Start>
    void perform(std::string_view step, Start start) {
        error_code error = asio::error::operation_aborted;
        start([&error](error_code result, auto&&...) { error = result; });
        if (!finish(error)) return;
        isOutOfTime = error == beast::error::timeout;
        throw ClientError(std::string(step) + ": " + (isOutOfTime ? "no answer in time" : error.message()));
    }

    Plain& lowest() {
        if (auto* plain = std::get_if<Plain>(&stream)) return *plain;
        return std::get<Secure>(stream).next_layer();
    }

    void connect();
    ClientAnswer exchange(const Outgoing& request);
    template <typename Stream>
    void transfer(Stream& through, const Outgoing& request, Incoming& parser);
    void close() { stream.emplace<std::monostate>(); }
    [[nodiscard]] bool isOpen() const { return !std::holds_alternative<std::monostate>(stream); }

    Url url;
    ClientLimits limits;
    std::atomic<bool> isAborted = false;
    bool hasAnswer = false;   // some byte of one has come
    bool isOutOfTime = false; // that was the last error
    asio::io_context io;
    asio::ssl::context tls{asio::ssl::context::tls_client};
    beast::flat_buffer buffer;
    std::variant<std::monostate, Plain, Secure> stream;
};

void Client::State::connect() {
    tcp::resolver resolver(io);
    tcp::resolver::results_type places;
    perform("looking up " + url.host, [&](auto done) {
        resolver.async_resolve(url.host, url.port,
                               [&places, done](error_code error, tcp::resolver::results_type found) {
                                   places = std::move(found);
                                   done(error);
                               });
    });
    buffer.clear();
    if (url.isSecure) {
        tls.set_default_verify_paths();
        tls.set_verify_mode(asio::ssl::verify_peer);
        Secure& made = stream.emplace<Secure>(io, tls);
        made.set_verify_callback(asio::ssl::host_name_verification(url.host));
        SSL_set_tlsext_host_name(made.native_handle(), url.host.c_str());
    } else {
        stream.emplace<Plain>(io);
    }
    lowest().expires_after(limits.connect);
    perform("connecting", [&](auto done) { lowest().async_connect(places, done); });
    error_code ignored;
    lowest().socket().set_option(tcp::no_delay(true), ignored);
    if (auto* secure = std::get_if<Secure>(&stream)) {
        perform("TLS", [&](auto done) { secure->async_handshake(asio::ssl::stream_base::client, done); });
    }
}

template <typename Stream>
void Client::State::transfer(Stream& through, const Outgoing& request, Incoming& parser) {
    perform("sending", [&](auto done) { beast::http::async_write(through, request, done); });
    perform("waiting for the answer",
            [&](auto done) { beast::http::async_read_header(through, buffer, parser, done); });
    hasAnswer = true;
    perform("reading the answer", [&](auto done) { beast::http::async_read(through, buffer, parser, done); });
}

ClientAnswer Client::State::exchange(const Outgoing& request) {
    hasAnswer = false;
    if (!isOpen()) connect();
    Incoming parser;
    parser.header_limit(largestHead);
    parser.body_limit(limits.answerBytes);
    lowest().expires_after(limits.answer);
    if (auto* secure = std::get_if<Secure>(&stream)) {
        transfer(*secure, request, parser);
    } else {
        transfer(std::get<Plain>(stream), request, parser);
    }
    lowest().expires_never();
    if (!parser.keep_alive()) close();
    return {parser.get().result_int(), std::move(parser.get().body())};
}

Client::Client(Url url, ClientLimits limits) : state(std::make_unique<State>(std::move(url), limits)) {}

Client::~Client() = default;

ClientAnswer Client::post(const std::vector<Field>& fields, std::string_view body) {
    State::Outgoing request(beast::http::verb::post, state->url.path, 11);
    request.set(beast::http::field::host, state->url.authority());
    for (const Field& field : fields)
        request.set(field.name, field.value);
    request.body() = body;
    request.prepare_payload();
    const bool isKept = state->isOpen();
    try {
        return state->exchange(request);
    } catch (const ClientError&) {
        state->close();
        if (!isKept || state->hasAnswer || state->isOutOfTime || state->isAborted) throw;
    }
    try {
        return state->exchange(request);
    } catch (const ClientError&) {
        state->close();
        throw;
    }
}

void Client::abort() {
    state->isAborted = true;
    state->io.stop();
}

} // namespace cimhost::http
