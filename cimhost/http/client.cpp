#include "cimhost/http/client.h"

#include "cimhost/http/mailbox.h"
#include "cimhost/http/name_lookup.h"
#include "cimhost/http/stream.h"
#include "cimhost/http/tls_files.h"
#include "cimhost/http/wire.h"
#include "cimhost/model/names.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/read.hpp>

#include <algorithm>
#include <exception>
#include <iostream>
#include <utility>

namespace cimhost::http {

namespace asio = boost::asio;
namespace beast = boost::beast;
using asio::ip::tcp;
using boost::system::error_code;

namespace {

constexpr std::size_t longestUrl = 2048;
constexpr std::uint32_t largestHead = 16U << 10;
constexpr std::chrono::seconds longestTrust{60};

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

// Takes the host from the beginning of the text, and leaves what follows it. False if there is no valid host.
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

std::string messageOf(const Url& url, const std::vector<Field>& fields, std::string_view body) {
    std::string message = "POST " + url.path + " HTTP/1.1\r\nHost: " + url.authority() + "\r\n";
    for (const Field& field : fields)
        message.append(field.name).append(": ").append(field.value).append("\r\n");
    return message.append("Content-Length: ").append(std::to_string(body.size())).append("\r\n\r\n").append(body);
}

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

struct ClientLoop::State {
    explicit State(std::filesystem::path trustedFile) : authorities(std::move(trustedFile)) {
        if (authorities.empty()) return;
        tls = std::make_shared<asio::ssl::context>(asio::ssl::context::tls_client);
        loadAuthorities(tls->native_handle(), authorities);
        tls->set_verify_mode(asio::ssl::verify_peer);
    }

    // The system's certificates are read anew from time to time, since they change while servers run.
    std::shared_ptr<asio::ssl::context> trusted() {
        const auto now = std::chrono::steady_clock::now();
        if (tls && (!authorities.empty() || now - tlsRead < longestTrust)) return tls;
        tls = std::make_shared<asio::ssl::context>(asio::ssl::context::tls_client);
        tls->set_default_verify_paths();
        tls->set_verify_mode(asio::ssl::verify_peer);
        tlsRead = now;
        return tls;
    }

    const std::filesystem::path authorities;
    asio::io_context io;
    asio::executor_work_guard<asio::io_context::executor_type> guard{io.get_executor()};
    std::shared_ptr<Mailbox> mailbox = std::make_shared<Mailbox>(io);
    std::shared_ptr<asio::ssl::context> tls;
    std::chrono::steady_clock::time_point tlsRead;
};

ClientLoop::ClientLoop(const std::filesystem::path& authorities) : state(std::make_unique<State>(authorities)) {}

ClientLoop::~ClientLoop() { state->mailbox->close(); }

void ClientLoop::run() { state->io.run(); }

void ClientLoop::stop() { state->io.stop(); }

void ClientLoop::post(std::function<void()> work) { state->mailbox->post(std::move(work)); }

struct Timer::State {
    asio::steady_timer timer;
};

Timer::Timer(ClientLoop& loop) : state(new State{asio::steady_timer(loop.state->io)}) {}

Timer::~Timer() = default;

void Timer::start(std::chrono::steady_clock::time_point when, std::function<void()> work) {
    state->timer.expires_at(when);
    state->timer.async_wait([work = std::move(work)](error_code error) {
        if (!error) work();
    });
}

void Timer::cancel() { state->timer.cancel(); }

struct AsyncClient::State : std::enable_shared_from_this<AsyncClient::State> {
    using Incoming = beast::http::response_parser<GrowingBody>;

    State(ClientLoop::State& shared, Url target, ClientLimits bounds)
        : loop(shared), url(std::move(target)), limits(bounds), lookupTimer(shared.io) {}

    [[nodiscard]] bool isOpen() const { return stream != nullptr; }
    void close() { stream.reset(); }

    class Step;
    using Next = void (State::*)();
    // The handler of an operation: what to do next, and a name for the operation in the text of an error.
    Stream::Done step(const char* name, Next next);

    // An exception on this side, as for want of memory, ends the message and nothing else.
    template <typename Work>
    void tryTo(Work work) noexcept {
        try {
            work();
        } catch (const std::exception&) {
            lookup.reset();
            close();
            finish({{}, "out of memory"}); // a text that needs none
        }
    }

    void begin();
    void resolve();
    void onPlaces(error_code error, Places found);
    void connect();
    void handshake();
    void send();
    void readHead();
    void readBody();
    void succeedLater();
    void succeed();
    void fail(const std::string& name, error_code error);
    void finish(ClientResult result);
    void abort();

    ClientLoop::State& loop;
    const Url url;
    const ClientLimits limits;
    bool isAborted = false;
    bool isKept = false;    // the connection that is tried had been kept
    bool hasAnswer = false; // some byte of one has come
    Done done;
    std::string request;
    std::optional<Incoming> parser;
    beast::flat_buffer buffer;
    std::shared_ptr<int> lookup; // set while a name is looked up
    asio::steady_timer lookupTimer;
    Places places;
    std::shared_ptr<asio::ssl::context> tls;
    std::unique_ptr<Stream> stream; // null: there is no connection
};

// The handler of one step: it goes on with the next step or ends the message. The end destroys the stream. So it is
// posted to the loop: the stream's operation is done only when its handler has returned. If an operation throws, its
// handler is destroyed without having been called; that ends the message, too.
class AsyncClient::State::Step {
public:
    Step(std::shared_ptr<State> owner, const char* stepName, Next nextStep)
        : self(std::move(owner)), name(stepName), next(nextStep) {}
    ~Step() {
        if (self) endLater(std::move(self), name, boost::system::errc::make_error_code(shortage));
    }
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;

    void take(error_code error) {
        const std::shared_ptr<State> owner = std::move(self);
        if (owner->isAborted) error = asio::error::operation_aborted;
        if (error) return endLater(owner, name, error);
        try {
            (*owner.*next)();
        } catch (const std::exception&) {
            endLater(owner, name, boost::system::errc::make_error_code(shortage));
        }
    }

private:
    static constexpr auto shortage = boost::system::errc::not_enough_memory;

    // Once the loop has ended, nobody waits for the message any more.
    static void endLater(std::shared_ptr<State> owner, const char* name, error_code error) noexcept {
        try {
            const std::shared_ptr<Mailbox> box = owner->loop.mailbox;
            box->post([kept = std::move(owner), name, error] { kept->tryTo([&] { kept->fail(name, error); }); });
        } catch (const std::exception& failure) {
            std::cerr << "cimhost: " << name << ": " << failure.what() << '\n';
        }
    }

    std::shared_ptr<State> self; // null once it has been called
    const char* name;
    Next next;
};

Stream::Done AsyncClient::State::step(const char* name, Next next) {
    return [kept = std::make_shared<Step>(shared_from_this(), name, next)](error_code error, std::size_t) {
        kept->take(error);
    };
}

void AsyncClient::State::begin() {
    hasAnswer = false;
    parser.emplace();
    parser->header_limit(largestHead);
    parser->body_limit(limits.answerBytes);
    if (isAborted) return fail("sending", asio::error::operation_aborted);
    if (isOpen()) return send();
    resolve();
}

void AsyncClient::State::resolve() {
    lookup = std::make_shared<int>();
    // Holds no share of this: a lookup that hangs may outlive the loop.
    const auto onFound = [weak = weak_from_this(), mine = std::weak_ptr<int>(lookup)](error_code error,
                                                                                      const Places& found) {
        const std::shared_ptr<State> self = weak.lock();
        if (!self || !self->lookup || mine.lock() != self->lookup) return;
        self->tryTo([&] { self->onPlaces(error, found); });
    };
    lookupTimer.expires_after(limits.connect);
    lookupTimer.async_wait([onFound](error_code error) {
        if (!error) onFound(beast::error::timeout, {});
    });
    lookUp(url.host, url.port, lookup, loop.mailbox, onFound);
}

void AsyncClient::State::onPlaces(error_code error, Places found) {
    lookup.reset();
    lookupTimer.cancel();
    if (error) return fail("looking up " + url.host, error);
    places = std::move(found);
    connect();
}

void AsyncClient::State::connect() {
    buffer.clear();
    tls = url.isSecure ? loop.trusted() : nullptr;
    stream = clientStream(loop.io, tls.get(), url.host);
    stream->expireAfter(limits.connect);
    stream->connect(places, step("connecting", &State::handshake));
}

void AsyncClient::State::handshake() {
    error_code ignored;
    stream->socket().set_option(tcp::no_delay(true), ignored);
    if (!stream->isSecure()) return send();
    stream->handshake(step("TLS", &State::send));
}

void AsyncClient::State::send() {
    stream->expireAfter(limits.answer);
    stream->write(request, step("sending", &State::readHead));
}

void AsyncClient::State::readHead() {
    beast::http::async_read_header(*stream, buffer, *parser, step("waiting for the answer", &State::readBody));
}

void AsyncClient::State::readBody() {
    hasAnswer = true;
    beast::http::async_read(*stream, buffer, *parser, step("reading the answer", &State::succeedLater));
}

// Posted, so that the operation that has read the answer ends first.
void AsyncClient::State::succeedLater() {
    asio::post(loop.io, [kept = shared_from_this()] { kept->tryTo([&] { kept->succeed(); }); });
}

void AsyncClient::State::succeed() {
    stream->expireNever();
    if (!parser->keep_alive()) close();
    finish({{parser->get().result_int(), std::move(parser->get().body())}, {}});
}

void AsyncClient::State::fail(const std::string& name, error_code error) {
    close();
    const bool isOutOfTime = error == beast::error::timeout;
    if (std::exchange(isKept, false) && !hasAnswer && !isOutOfTime && !isAborted) return begin();
    ClientResult result; // by name: GCC 12 takes an unnamed one's text for one that was never made, from -O3 on
    result.error = name + ": " + (isOutOfTime ? "no answer in time" : error.message());
    finish(std::move(result));
}

void AsyncClient::State::finish(ClientResult result) {
    request.clear();
    parser.reset();
    const Done told = std::exchange(done, nullptr);
    if (told) told(std::move(result));
}

void AsyncClient::State::abort() {
    isAborted = true;
    if (lookup) return onPlaces(asio::error::operation_aborted, {});
    // The step under way ends with an error, and its handler closes the rest.
    if (isOpen()) stream->close();
}

AsyncClient::AsyncClient(ClientLoop& loop, Url url, ClientLimits limits)
    : state(std::make_shared<State>(*loop.state, std::move(url), limits)) {}

AsyncClient::~AsyncClient() = default;

void AsyncClient::post(const std::vector<Field>& fields, std::string body, Done done) {
    state->request = messageOf(state->url, fields, body);
    state->isKept = state->isOpen();
    state->done = std::move(done);
    state->tryTo([this] { state->begin(); });
}

void AsyncClient::abort() { state->abort(); }

bool AsyncClient::isOpen() const { return state->isOpen(); }

void AsyncClient::close() { state->close(); }

} // namespace cimhost::http
