#include "cimhost/http/server.h"

#include "cimhost/http/connection.h"
#include "cimhost/http/stop_signals.h"
#include "cimhost/http/tls_files.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <fcntl.h>
#include <openssl/x509v3.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <mutex>
#include <stdexcept>

namespace cimhost::http {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

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
    loadServerFiles(context.native_handle(), files);
    return context;
}

Source v6Bytes(const asio::ip::address& address) {
    if (address.is_v6()) return address.to_v6().to_bytes();
    return asio::ip::make_address_v6(asio::ip::v4_mapped, address.to_v4()).to_bytes();
}

int openSpare() { return ::open("/dev/null", O_RDONLY | O_CLOEXEC); }

bool isOutOfDescriptors(error_code error) { return error.value() == EMFILE || error.value() == ENFILE; }

bool isReadable(int socket) {
    pollfd asked{socket, POLLIN, 0};
    return ::poll(&asked, 1, 0) > 0;
}

// Each connection takes a descriptor. A shell usually allows fewer of them than the system does.
void raiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == limit.rlim_max) return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

bool isCertifiedBy(SSL_CTX* context, const Authority& authority) {
    X509* certificate = SSL_CTX_get0_certificate(context);
    if (!certificate) return false;
    if (authority.isAddress) return X509_check_ip_asc(certificate, authority.host.c_str(), 0) == 1;
    return X509_check_host(certificate, authority.host.data(), authority.host.size(), 0, nullptr) == 1;
}

} // namespace

struct Server::State : ConnectionHost {
    State(Options settings, Handler& requestHandler)
        : ConnectionHost(std::move(settings), requestHandler), acceptor(io), retryTimer(io), graceTimer(io) {
        if (options.tls) {
            tls = makeTlsContext(*options.tls);
            isCertified = [this](const Authority& authority) { return isCertifiedBy(tls->native_handle(), authority); };
        }
        onLastConnectionGone = [this] { graceTimer.cancel(); };
    }
    ~State() {
        onLastConnectionGone = nullptr;
        ::close(spareDescriptor);
    }

    void listen();
    void accept();
    void acceptWhenSomebodyComes();
    void acceptLater();
    void admit(tcp::socket socket);
    void refuseOne();
    bool makeRoomForDescriptor();
    void stop();
    void closeAcceptor();
    void beginStop();
    void closeIf(bool (*condition)(Standing::Phase));

    std::optional<asio::ssl::context> tls;
    tcp::acceptor acceptor;
    asio::steady_timer retryTimer;
    asio::steady_timer graceTimer;
    int spareDescriptor = openSpare();
    std::once_flag told;                    // that it is to stop
    std::mutex closing;                     // of the acceptor
    std::optional<StopSignals> stopSignals; // last: its thread uses the above
};

void Server::State::listen() {
    const tcp::endpoint endpoint(parseAddress(options.address), options.port);
    if (options.host == HostField::thisServer && !endpoint.address().is_loopback()) names.addQualifiedName();
    raiseDescriptorLimit();
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
        if (!isOutOfDescriptors(error)) return acceptLater();
        // Where no descriptor is left, the system answers so even if no client has come.
        if (!isReadable(acceptor.native_handle())) return acceptWhenSomebodyComes();
        // A connection that would give way to a new client can give its descriptor, too.
        if (makeRoomForDescriptor()) return accept();
        refuseOne();
        acceptLater();
    });
}

void Server::State::acceptWhenSomebodyComes() {
    acceptor.async_wait(tcp::acceptor::wait_read, [this](error_code error) {
        if (!error) accept();
    });
}

// Trying again at once would only burn the processor.
void Server::State::acceptLater() {
    retryTimer.expires_after(acceptRetry);
    retryTimer.async_wait([this](error_code error) {
        if (!error) accept();
    });
}

bool Server::State::makeRoomForDescriptor() {
    const auto now = Standing::Clock::now();
    return giveWay(room.newcomerToGiveWay(now)) || giveWay(room.knownToGiveWay(now, Source{}));
}

// Accepts one client with the spare descriptor, and cuts it off. A client that is told nothing would wait for long; one
// that is cut off can try again.
void Server::State::refuseOne() {
    ::close(spareDescriptor);
    const int refused = ::accept4(acceptor.native_handle(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (refused >= 0) ::close(refused);
    spareDescriptor = openSpare();
}

void Server::State::admit(tcp::socket socket) {
    error_code ignored;
    const tcp::endpoint remote = socket.remote_endpoint(ignored);
    const tcp::endpoint local = socket.local_endpoint(ignored);
    socket.set_option(tcp::no_delay(true), ignored);
    if (room.isFullOfNewcomers()) giveWay(room.newcomerToGiveWay(Standing::Clock::now()));
    const Source source = sourceOf(v6Bytes(remote.address()));
    std::string address = local.address().to_string(ignored);
    std::make_shared<Connection>(*this, source, std::move(address),
                                 acceptedStream(std::move(socket), tls ? &*tls : nullptr))
        ->start();
}

void Server::State::closeIf(bool (*condition)(Standing::Phase)) {
    for (Standing* standing : room.all()) {
        if (condition(standing->phase)) closeIfAny(standing);
    }
}

// From any thread. The listening socket is shut down as well: that wakes the loop even if the message did not.
void Server::State::stop() {
    std::call_once(told, [this] {
        if (options.onStop) options.onStop();
    });
    asio::post(io, [this] { beginStop(); });
    const std::lock_guard lock(closing);
    if (acceptor.is_open()) ::shutdown(acceptor.native_handle(), SHUT_RDWR);
}

void Server::State::closeAcceptor() {
    const std::lock_guard lock(closing);
    error_code ignored;
    acceptor.close(ignored);
}

void Server::State::beginStop() {
    if (stopping) return;
    stopping = true;
    closeAcceptor();
    retryTimer.cancel();
    closeIf(
        [](Standing::Phase phase) { return phase != Standing::Phase::answering && phase != Standing::Phase::writing; });
    if (room.all().empty()) return;
    graceTimer.expires_after(stopGrace);
    graceTimer.async_wait([this](error_code error) {
        if (!error) closeIf([](Standing::Phase) { return true; });
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

void Server::stop() { state->stop(); }

void Server::useTls(const Tls& files) {
    // A connection keeps its share of the context that it began with.
    asio::post(state->io,
               [server = state.get(), context = makeTlsContext(files)]() mutable { server->tls = std::move(context); });
}

void Server::stopOnSignals() {
    state->stopSignals.emplace([server = state.get()] { server->stop(); });
}

bool isLoopback(const std::string& address) { return parseAddress(address).is_loopback(); }

} // namespace cimhost::http
