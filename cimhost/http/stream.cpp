#include "cimhost/http/stream.h"

#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/host_name_verification.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>

namespace cimhost::http {

namespace asio = boost::asio;
using asio::ip::tcp;
using Plain = boost::beast::tcp_stream;
using Secure = boost::beast::ssl_stream<boost::beast::tcp_stream>;

namespace {

template <class Layers>
class StreamOf : public Stream {
public:
    template <typename... Arguments>
    explicit StreamOf(Arguments&&... arguments) : layers(std::forward<Arguments>(arguments)...) {}

    [[nodiscard]] bool isSecure() const override { return false; }
    [[nodiscard]] tcp::socket& socket() override { return lowest().socket(); }

    void expireAt(std::chrono::steady_clock::time_point when) override { lowest().expires_at(when); }
    void expireNever() override { lowest().expires_never(); }
    void close() override { lowest().close(); }

    void connect(const Places& places, Done done) override {
        lowest().async_connect(places, [done = std::move(done)](error_code error, const auto&) { done(error, 0); });
    }
    void handshake(Done done) override { done({}, 0); }
    void shutDown(Done done) override { done({}, 0); }
    void readSome(asio::mutable_buffer into, Done done) override { layers.async_read_some(into, std::move(done)); }
    using Stream::write;
    void write(const Parts& parts, Done done) override {
        std::array<asio::const_buffer, std::tuple_size_v<Parts>> buffers;
        for (std::size_t place = 0; place < parts.size(); ++place)
            buffers[place] = asio::buffer(parts[place].data(), parts[place].size());
        asio::async_write(layers, buffers, std::move(done));
    }

protected:
    Plain& lowest() { return boost::beast::get_lowest_layer(layers); }

    Layers layers;
};

class SecureStream final : public StreamOf<Secure> {
public:
    template <typename... Arguments>
    explicit SecureStream(asio::ssl::stream_base::handshake_type ofSide, Arguments&&... arguments)
        : StreamOf(std::forward<Arguments>(arguments)...), side(ofSide) {}

    [[nodiscard]] bool isSecure() const override { return true; }

    void handshake(Done done) override {
        layers.async_handshake(side, [done = std::move(done)](error_code error) { done(error, 0); });
    }
    void shutDown(Done done) override {
        layers.async_shutdown([done = std::move(done)](error_code error) { done(error, 0); });
    }

    void expectName(const std::string& name) {
        layers.set_verify_callback(asio::ssl::host_name_verification(name));
        SSL_set_tlsext_host_name(layers.native_handle(), name.c_str());
    }

private:
    const asio::ssl::stream_base::handshake_type side;
};

} // namespace

std::unique_ptr<Stream> acceptedStream(tcp::socket socket, asio::ssl::context* tls) {
    if (!tls) return std::make_unique<StreamOf<Plain>>(std::move(socket));
    return std::make_unique<SecureStream>(asio::ssl::stream_base::server, Plain(std::move(socket)), *tls);
}

std::unique_ptr<Stream> clientStream(asio::io_context& io, asio::ssl::context* tls, const std::string& serverName) {
    if (!tls) return std::make_unique<StreamOf<Plain>>(io);
    auto made = std::make_unique<SecureStream>(asio::ssl::stream_base::client, io, *tls);
    made->expectName(serverName);
    return made;
}

} // namespace cimhost::http
