// The bytes of one connection, with TLS or without. Asio and Beast generate much code for each type of stream and of
// handler. Here is one type of each, so that the code is generated once, in stream.cpp. Private to the HTTP server and
// client.
#pragma once

#include "cimhost/http/name_lookup.h"

#include <boost/asio/async_result.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace boost::asio::ssl {
class context;
}

namespace cimhost::http {

/// Reads and writes, with at most one operation of each kind at a time. Operations under way end with an error when the
/// stream is closed or destroyed.
class Stream {
public:
    using error_code = boost::system::error_code;
    /// bytes is 0 for an operation that moves none. If an operation throws, its handler is destroyed without a call.
    using Done = std::function<void(error_code error, std::size_t bytes)>;
    using executor_type = boost::asio::ip::tcp::socket::executor_type;

    virtual ~Stream() = default;

    [[nodiscard]] virtual bool isSecure() const = 0;
    [[nodiscard]] virtual boost::asio::ip::tcp::socket& socket() = 0;

    /// An operation that is under way at that time, or begins later, ends with boost::beast::error::timeout.
    virtual void expireAt(std::chrono::steady_clock::time_point when) = 0;
    virtual void expireNever() = 0;
    void expireAfter(std::chrono::milliseconds duration) { expireAt(std::chrono::steady_clock::now() + duration); }

    virtual void close() = 0;

    /// Tries one place after the other. TLS does not begin before handshake().
    virtual void connect(const Places& places, Done done) = 0;
    /// Begin and end TLS. Without TLS they call done at once.
    virtual void handshake(Done done) = 0;
    virtual void shutDown(Done done) = 0;
    virtual void readSome(boost::asio::mutable_buffer into, Done done) = 0;
    /// Writes all bytes, one part after the other. The caller keeps them until done is called. Parts that are not
    /// needed are empty and stand at the end.
    using Parts = std::array<std::string_view, 3>;
    virtual void write(const Parts& parts, Done done) = 0;
    void write(std::string_view bytes, Done done) { write(Parts{bytes}, std::move(done)); }

    /// What Beast asks of a stream that it reads from.
    executor_type get_executor() { return socket().get_executor(); }
    template <typename Buffers, typename Handler>
    auto async_read_some(const Buffers& into, Handler&& handler) {
        const boost::asio::mutable_buffer first = *boost::asio::buffer_sequence_begin(into);
        const auto begin = [this, first](auto&& taken) {
            using Taken = std::decay_t<decltype(taken)>;
            readSome(first, [kept = std::make_shared<Taken>(std::forward<decltype(taken)>(taken))](
                                error_code error, std::size_t bytes) { (*kept)(error, bytes); });
        };
        return boost::asio::async_initiate<Handler, void(error_code, std::size_t)>(begin, handler);
    }
};

/// The stream of a client that was accepted.
/// @param tls null: without TLS. The stream keeps a share of what the context holds, so the context may end before it.
std::unique_ptr<Stream> acceptedStream(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context* tls);

/// A stream to a server, whose certificate has to bear that name.
/// @param tls as above
std::unique_ptr<Stream> clientStream(boost::asio::io_context& io, boost::asio::ssl::context* tls,
                                     const std::string& serverName);

} // namespace cimhost::http
