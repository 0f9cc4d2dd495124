#include "cimhost/http/server.h"

#include "cimhost/http/connection.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>

#include <csignal>
#include <iostream>
#include <stdexcept>

namespace cimhost::http {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;
using PlainSession = Session<boost::beast::tcp_stream>;
using TlsSession = Session<boost::beast::ssl_stream<boost::beast::tcp_stream>>;

namespace {

constexpr std::chrono::milliseconds acceptRetry{100};
constexpr std::chrono::seconds stopGrace{7};

asio::ip::address parseAddress(const std::string& text) {
    error_code error;
    asio::ip::address address = asio::ip::make_address(text, error);
    if (error) throw std::runtime_error(text + ": no numeric address such as 127.0.0.1 or ::1");
    return address;
}

asio::ssl::context makeTlsContext(const Tls& files) {
    asio::ssl::context context(asio::ssl::context::tls_server);
    context.set_options(asio::ssl::context::default_workarounds | asio::ssl::context::no_sslv2 |
                        asio::ssl::context::no_sslv3 | asio::ssl::context::no_tlsv1 | asio::ssl::context::no_tlsv1_1);
    error_code error;
    context.use_certificate_chain_file(files.certificate.string(), error);
    if (error) throw std::runtime_error(files.certificate.string() + ": no certificate: " + error.message());
    context.use_private_key_file(files.key.string(), asio::ssl::context::pem, error);
    if (error) throw std::runtime_error(files.key.string() + ": no key for the certificate: " + error.message());
    return context;
}

} // namespace

struct Server::State : ConnectionHost {
    State(Options settings, Handler& requestHandler)
        : ConnectionHost(std::move(settings), requestHandler), acceptor(io), signals(io), retryTimer(io),
          graceTimer(io) {
        if (options.tls) tls = makeTlsContext(*options.tls);
        onLastConnectionGone = [this] { graceTimer.cancel(); };
    }
    ~State() { onLastConnectionGone = nullptr; }

    void listen();
    void accept();
    void admit(tcp::socket socket);
    bool makeRoom();
    void beginStop();
    void closeIf(bool (*condition)(Connection::Phase));

    std::optional<asio::ssl::context> tls;
    tcp::acceptor acceptor;
    asio::signal_set signals;
    asio::steady_timer retryTimer;
    asio::steady_timer graceTimer;
};

void Server::State::listen() {
    const tcp::endpoint endpoint(parseAddress(options.address), options.port);
    try {
        acceptor.open(endpoint.protocol());
        acceptor.set_option(asio::socket_base::reuse_address(true));
        acceptor.bind(endpoint);
        acceptor.listen();
    } catch (const boost::system::system_error& error) {
        throw std::runtime_error("cannot listen on " + options.address + " port " + std::to_string(options.port) +
                                 ": " + error.code().message());
    }
}

void Server::State::accept() {
    acceptor.async_accept(io, [this](error_code error, tcp::socket socket) {
        if (stopping || error == asio::error::operation_aborted) return;
        if (!error) {
            accept(); // first: what goes wrong with one client does not shut out the next
            return admit(std::move(socket));
        }
        // Out of descriptors, most likely: trying again at once would only burn the processor.
        retryTimer.expires_after(acceptRetry);
        retryTimer.async_wait([this](error_code waitError) {
            if (!waitError) accept();
        });
    });
}

void Server::State::admit(tcp::socket socket) {
    error_code ignored;
    socket.set_option(tcp::no_delay(true), ignored);
    if (connections.size() >= options.limits.connections && !makeRoom()) {
        if (tls) return;
        const std::string refusal = serializeHead(Response{503, {}, {}}, true);
        socket.non_blocking(true, ignored);
        socket.send(asio::buffer(refusal), 0, ignored);
        return;
    }
    if (tls) {
        std::make_shared<TlsSession>(*this, boost::beast::tcp_stream(std::move(socket)), *tls)->start();
    } else {
        std::make_shared<PlainSession>(*this, std::move(socket))->start();
    }
}

// Who has been silent for longest after an answer gives way to who has something to ask.
bool Server::State::makeRoom() {
    Connection* longest = nullptr;
    for (Connection* connection : connections) {
        if (connection->phase() != Connection::Phase::waiting) continue;
        if (!longest || connection->waitingSince() < longest->waitingSince()) longest = connection;
    }
    if (longest) longest->close();
    return longest != nullptr;
}

void Server::State::closeIf(bool (*condition)(Connection::Phase)) {
    for (Connection* connection : connections) {
        if (condition(connection->phase())) connection->close();
    }
}

void Server::State::beginStop() {
    if (stopping) return;
    stopping = true;
    if (options.onStop) options.onStop();
    error_code ignored;
    acceptor.close(ignored);
    signals.cancel(ignored);
    retryTimer.cancel();
    closeIf([](Connection::Phase phase) {
        return phase == Connection::Phase::waiting || phase == Connection::Phase::reading;
    });
    if (connections.empty()) return;
    graceTimer.expires_after(stopGrace);
    graceTimer.async_wait([this](error_code error) {
        if (!error) closeIf([](Connection::Phase) { return true; });
    });
}

Server::Server(Options options, Handler& handler) : state(std::make_unique<State>(std::move(options), handler)) {
    state->listen();
}

Server::~Server() = default;

std::uint16_t Server::port() const { return state->acceptor.local_endpoint().port(); }

void Server::run() {
    state->accept();
    for (bool finished = false; !finished;) {
        try {
            state->io.run();
            finished = true;
        } catch (const std::exception& error) {
            std::cerr << "cimhost: a connection failed: " << error.what() << '\n';
        }
    }
    state->workers.join();
    state->verifier.join();
}

void Server::stop() {
    asio::post(state->io, [server = state.get()] { server->beginStop(); });
}

void Server::stopOnSignals() {
    state->signals.add(SIGINT);
    state->signals.add(SIGTERM);
    state->signals.async_wait([server = state.get()](error_code error, int) {
        if (error) return;
        // The default action is back for whoever cannot wait.
        error_code ignored;
        server->signals.clear(ignored);
        server->beginStop();
    });
}

bool isLoopback(const std::string& address) { return parseAddress(address).is_loopback(); }

} // namespace cimhost::http
