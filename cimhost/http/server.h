// The HTTP/1.1 server: connections, limits, deadlines, TLS and authentication. What a request means is its handler's
// affair.
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

/// What one client may take. Whoever exceeds a deadline is cut off; the other limits are answered first.
struct Limits {
    std::size_t headerBytes = std::size_t{16} << 10;   // then 431
    std::size_t bodyBytes = std::size_t{32} << 20;     // then 413
    std::size_t allBodyBytes = std::size_t{128} << 20; // of all requests at the moment; then a large one gets 503
    // Of clients that have asked a whole request or proved who they are; beyond that a late or idle one is closed, and
    // where all wait for their answers, one request each of a quarter as many new ones is answered. Beyond these a new
    // one gets 503 unless that changes in time.
    std::size_t connections = 64;
    std::chrono::milliseconds room{5'000};    // in which it may change
    std::size_t newcomers = 256;              // of all others; beyond that the one that is furthest behind is closed
    std::chrono::milliseconds header{10'000}; // from the first byte to the last of a header; TLS handshake
    std::chrono::milliseconds bodyProgress{10'000};          // without any byte
    std::chrono::milliseconds body{30'000};                  // the whole body, and a second more for each
    std::size_t bodyBytesPerSecond = std::size_t{256} << 10; // of it that came; who is slower gives way to others
    std::chrono::milliseconds idle{30'000};                  // between two requests
    std::chrono::milliseconds write{60'000};                 // the whole answer
    std::chrono::milliseconds writeProgress{10'000};         // each 64 KiB of it
    std::chrono::milliseconds linger{2'000};                 // for a client to take the answer that refuses its request
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
    std::shared_ptr<Credentials> credentials; // null: everybody who can connect
    std::size_t workers = 4;                  // requests answered at the same moment
    HostField host = HostField::thisServer;
    std::vector<std::string> names; // more that clients call the server by
    Limits limits;
    std::shared_ptr<Traffic> traffic = std::make_shared<Traffic>(); // never null
    /// Called on the network thread with a client's address and the name that he gave with a wrong password.
    std::function<void(std::string_view client, std::string_view user)> onRefusedLogin;
    /// Where requests are answered, if not on the workers: called on the network thread with the work, which is done on
    /// another one, or dropped, before the handler goes. Never waits. Returns false where it has no thread: then the
    /// workers answer.
    std::function<bool(std::function<void()> work)> answers;
    /// Called once, when the server is to stop, on the thread that says so; again if it throws and that is said again.
    std::function<void()> onStop;
};

/// An answer that leaves as it is made. Used by one thread at a time; never waits. Goes with an unfinished answer: then
/// the connection is cut, and the client sees that the answer is not whole.
class PiecewiseAnswer {
public:
    virtual ~PiecewiseAnswer() = default;

    /// The next bytes, which are kept until the client takes them. False once they go nowhere: the client has left, or
    /// somebody else has ended the answer.
    virtual bool write(ByteBuffer piece) = 0;

    /// Bytes that the client has not taken yet.
    [[nodiscard]] virtual std::size_t waitingBytes() const = 0;

    /// Returns when no more than that many bytes wait, when they go nowhere, or after that time.
    virtual void waitUntilTaken(std::size_t most, std::chrono::steady_clock::duration longest) = 0;

    /// The end. Trailers tell of an error, if the answer has one.
    virtual void end(std::vector<Field> trailers) = 0;
};

/// The way back to the client of one request. Any thread may keep and use it for as long as it likes.
class Reply {
public:
    virtual ~Reply() = default;

    /// The first answer is sent to the client, later ones are dropped. One that comes while another leaves in pieces
    /// ends that with its trailers, if it has some.
    virtual void send(Response answer) = 0;

    /// Begins an answer that leaves in pieces: chunks of HTTP/1.1 (RFC 9112, 7.1). Null if the client does not take
    /// such or has not said that it reads trailers, or if there is another answer; then nothing has happened. The
    /// response is without a body, and names the trailers that there may be in its field Trailer.
    [[nodiscard]] virtual std::unique_ptr<PiecewiseAnswer> begin(Response) { return nullptr; }

    /// False once nobody waits for the answer: the client has closed its side, or the server has ended.
    [[nodiscard]] virtual bool isAwaited() const = 0;
};

/// Takes a request's body piece by piece, so that nobody holds it as a whole. Called on workers, one call at a time,
/// each of which may block. An exception becomes a 500.
class BodyReader {
public:
    virtual ~BodyReader() = default;

    /// The next bytes; tens of KiB unless they are the last. An answer refuses the request, whose rest is not read.
    [[nodiscard]] virtual std::optional<Response> read(std::string_view bytes) = 0;

    /// What it keeps of what it was given.
    [[nodiscard]] virtual std::size_t heldBytes() const = 0;

    /// Behind the last bytes. The request is without its body. Answers at once, or later from another thread.
    virtual void answerTo(Request request, const std::shared_ptr<Reply>& reply) = 0;

    /// The same where the last bytes are the request's body.
    void finish(Request request, const std::shared_ptr<Reply>& reply) {
        const std::string rest = std::exchange(request.body, {});
        if (std::optional<Response> refusal = read(rest)) return reply->send(std::move(*refusal));
        answerTo(std::move(request), reply);
    }
};

class Handler {
public:
    virtual ~Handler() = default;

    /// Called on the network thread before any body is read: an answer refuses the request.
    [[nodiscard]] virtual std::optional<Response> refuse(const Request& head) const = 0;

    /// Called on a worker, with the body. May block. An exception becomes a 500.
    [[nodiscard]] virtual Response answer(Request request) = 0;

    /// The same for whoever answers later, from another thread, so that a worker is not held until then.
    virtual void answerTo(Request request, const std::shared_ptr<Reply>& reply) {
        reply->send(answer(std::move(request)));
    }

    /// Called on the network thread for a body of more than a piece. Null: the body is held and given to answer().
    [[nodiscard]] virtual std::unique_ptr<BodyReader> readerOfLargeBody(const Request&) { return nullptr; }
};

class Server {
public:
    /// Binds and listens at once. The handler outlives the server. Throws std::runtime_error naming address or file.
    Server(Options options, Handler& handler);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    [[nodiscard]] std::uint16_t port() const;

    /// Serves until stop(). Requests under way are answered if that takes no longer than seven seconds, idle
    /// connections closed. Answers that come later go nowhere.
    void run();

    /// From any thread; may be called before run().
    void stop();

    /// Certificate and key for connections from now on; those that are open keep theirs. From any thread. Throws
    /// std::runtime_error naming the file; then nothing changes. Only for a server that has had some from the start.
    void useTls(const Tls& files);

    /// SIGINT and SIGTERM call stop() from now on; a second one ends the process at once.
    void stopOnSignals();

private:
    struct State;
    std::unique_ptr<State> state;
};

/// True for 127.0.0.0/8 and ::1. Throws std::runtime_error if the text is no numeric address.
bool isLoopback(const std::string& address);

} // namespace cimhost::http
