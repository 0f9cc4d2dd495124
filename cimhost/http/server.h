// The HTTP/1.1 server: connections, limits, deadlines, TLS and authentication. Its handler knows what a request means.
#pragma once

#include "cimhost/http/credentials.h"
#include "cimhost/http/message.h"
#include "cimhost/http/traffic.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cimhost::http {

/// What clients may take. A client that exceeds a deadline is cut off; one that exceeds another limit gets an answer
/// first.
struct Limits {
    std::size_t headerBytes = std::size_t{16} << 10;   // then 431
    std::size_t bodyBytes = std::size_t{32} << 20;     // then 413
    std::size_t allBodyBytes = std::size_t{128} << 20; // of all requests together; then a large one gets 503
    // Known clients: those that have sent a whole request or proved who they are. If one more comes, a connection that
    // is late or idle is closed for it. If all of them wait for their answers, the new client is a guest: its one
    // request is answered. There may be a quarter as many guests. Beyond these a new client waits for a place, and then
    // gets 503.
    std::size_t connections = 64;
    std::chrono::milliseconds room{5'000};    // the wait for a place
    std::size_t newcomers = 256;              // all other clients; if one more comes, the one furthest behind is closed
    std::chrono::milliseconds header{10'000}; // a header from its first byte to its last; TLS handshake; the first byte
    std::chrono::milliseconds bodyProgress{10'000};          // the time without any byte of a body
    std::chrono::milliseconds body{30'000};                  // the whole body; and a second more for each so many bytes
    std::size_t bodyBytesPerSecond = std::size_t{256} << 10; // that came. A slower client gives way to others
    std::chrono::milliseconds idle{30'000};                  // between two requests
    std::chrono::milliseconds write{60'000};                 // the whole answer, without the time in which it is made
    std::chrono::milliseconds writeProgress{10'000};         // each 64 KiB of it
    std::chrono::milliseconds linger{2'000};                 // for a client to take the last answer of its connection
};

/// Both are PEM files.
struct Tls {
    std::filesystem::path certificate; // with its chain
    std::filesystem::path key;
};

/// What the field Host of a request has to name.
enum class HostField {
    thisServer, // its address, localhost, the machine's name, a name of its certificate, or one of Options::names
    anything,
};

struct Options {
    std::string address = "127.0.0.1"; // numeric
    std::uint16_t port = 5988;         // 0: any free one
    std::optional<Tls> tls;
    std::shared_ptr<Credentials> credentials; // null: everybody who can connect is served
    std::size_t workers = 4;                  // requests answered at the same moment
    HostField host = HostField::thisServer;
    std::vector<std::string> names; // further names by which clients call the server
    Limits limits;
    std::shared_ptr<Traffic> traffic = std::make_shared<Traffic>(); // never null
    /// Called on the network thread after a wrong password, with the client's address and port and the user's name that
    /// came with the password.
    std::function<void(std::string_view client, std::string_view user)> onRefusedLogin;
    /// Has the work of answering a request done on a thread other than the workers; empty: the workers do it. Called on
    /// the network thread, and never waits. The work is done, or dropped, before the handler ends. Returns false if it
    /// has no thread for the work: then a worker does it.
    std::function<bool(std::function<void()> work)> answers;
    /// Called by the first Server::stop(), on the thread that calls that. If it throws, the next stop() calls it again.
    std::function<void()> onStop;
};

/// An answer that leaves while it is made. Used by one thread at a time. Only waitUntilTaken() waits. If this ends
/// before the answer's end, the connection is cut, and the client sees that the answer is not whole.
class PiecewiseAnswer {
public:
    virtual ~PiecewiseAnswer() = default;

    /// Sends the next bytes, which are kept until the client takes them. False if they are dropped: the client has
    /// left, or somebody else has ended the answer.
    virtual bool write(ByteBuffer piece) = 0;

    /// Bytes that the client has not taken yet.
    [[nodiscard]] virtual std::size_t waitingBytes() const = 0;

    /// Returns when no more than `most` bytes wait, when the client has left, or after that time.
    virtual void waitUntilTaken(std::size_t most, std::chrono::steady_clock::duration longest) = 0;

    /// Ends the answer. If an error came up, the trailers tell of it.
    virtual void end(std::vector<Field> trailers) = 0;
};

/// The way back to the client of one request. Any thread may keep and use it for as long as it likes.
class Reply {
public:
    virtual ~Reply() = default;

    /// Sends an answer to the client. Only the first one is sent. While an answer leaves in pieces, another one ends it
    /// with its trailers, if it has some. All others are dropped.
    virtual void send(Response answer) = 0;

    /// Begins an answer that leaves in pieces, as chunks of HTTP/1.1 (RFC 9112, 7.1). Null if the client does not take
    /// chunks, has not said that it reads trailers, or has another answer; then nothing has happened. The response has
    /// no body; its field Trailer names the trailers that may come.
    [[nodiscard]] virtual std::unique_ptr<PiecewiseAnswer> begin(Response) { return nullptr; }

    /// False once nobody waits for the answer: the client has closed its side, or the server has ended.
    [[nodiscard]] virtual bool isAwaited() const = 0;
};

/// Takes a request's body piece by piece, so that nobody holds the whole body. Called where requests are answered, one
/// call at a time. Each call may block. An exception becomes a 500.
class BodyReader {
public:
    virtual ~BodyReader() = default;

    /// Takes the next bytes, tens of KiB unless they are the last ones.
    /// @return an answer if the request is refused; then its rest is not read
    [[nodiscard]] virtual std::optional<Response> read(std::string_view bytes) = 0;

    /// How many bytes it keeps of those that it was given.
    [[nodiscard]] virtual std::size_t heldBytes() const = 0;

    /// Called after the last bytes, with the request without its body. Answers at once, or later from another thread.
    virtual void answerTo(Request request, const std::shared_ptr<Reply>& reply) = 0;

    /// The same for a request whose body is the last bytes.
    void finish(Request request, const std::shared_ptr<Reply>& reply) {
        const std::string rest = std::exchange(request.body, {});
        if (std::optional<Response> refusal = read(rest)) return reply->send(std::move(*refusal));
        answerTo(std::move(request), reply);
    }
};

class Handler {
public:
    virtual ~Handler() = default;

    /// Called on the network thread before any body is read.
    /// @return an answer if the request is refused
    [[nodiscard]] virtual std::optional<Response> refuse(const Request& head) const = 0;

    /// Called where requests are answered (a worker, or Options::answers), with the body. May block. An exception
    /// becomes a 500.
    [[nodiscard]] virtual Response answer(Request request) = 0;

    /// Called in place of answer(). A handler that answers later, from another thread, overrides this, so that no
    /// worker is held until then.
    virtual void answerTo(Request request, const std::shared_ptr<Reply>& reply) {
        reply->send(answer(std::move(request)));
    }

    /// Called on the network thread for a body of 64 KiB and more. Null: the whole body is kept, and goes to
    /// answerTo().
    [[nodiscard]] virtual std::unique_ptr<BodyReader> readerOfLargeBody(const Request&) { return nullptr; }
};

class Server {
public:
    /// Listens at once. The handler outlives the server. Throws std::runtime_error, which names the address or the
    /// file, if it cannot listen there or cannot use the TLS files; std::system_error if the system gives no thread.
    Server(Options options, Handler& handler);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    [[nodiscard]] std::uint16_t port() const;

    /// Serves until stop(). Then idle connections are closed, and requests under way are answered if that takes no
    /// longer than seven seconds. Answers that come later are dropped.
    void run();

    /// Ends run(). From any thread; may be called before run(). Throws what Options::onStop throws.
    void stop();

    /// Uses this certificate and key for connections from now on; open ones keep theirs. From any thread. Only for a
    /// server that was made with TLS. Throws std::runtime_error, which names the file, if one cannot be used; then
    /// nothing changes.
    void useTls(const Tls& files);

    /// From now on SIGINT and SIGTERM call stop(); a second signal ends the process at once. Throws std::system_error
    /// if the system has no thread or descriptor left.
    void stopOnSignals();

private:
    struct State;
    std::unique_ptr<State> state;
};

/// True for 127.0.0.0/8 and ::1. Throws std::runtime_error if the text is no numeric address.
bool isLoopback(const std::string& address);

} // namespace cimhost::http
