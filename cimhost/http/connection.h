// One client's connection, from its acceptance to its end. Private to the HTTP server: lives on the network thread,
// and leaves it only to be answered on a worker.
#pragma once

#include "cimhost/http/guess_queue.h"
#include "cimhost/http/host_names.h"
#include "cimhost/http/login_gate.h"
#include "cimhost/http/reply.h"
#include "cimhost/http/room.h"
#include "cimhost/http/server.h"
#include "cimhost/http/wire.h"
#include "cimhost/http/worker_pool.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <memory>
#include <type_traits>
#include <utility>

namespace cimhost::http {

class Connection;

// Somebody's name and password, until they are found right or wrong.
struct Guess {
    std::shared_ptr<Connection> connection;
    std::string authorization;
    std::string user;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> keepRunning;
};

// What connections share with the server that accepted them.
struct ConnectionHost {
    ConnectionHost(Options settings, Handler& requestHandler)
        : options(std::move(settings)), handler(requestHandler), names(options.names),
          room({options.limits.newcomers, options.limits.connections, options.limits.bodyBytesPerSecond}),
          mailbox(std::make_shared<Mailbox>(io)), watch(io), workers(options.workers), verifier(1) {}
    ~ConnectionHost() { mailbox->close(); }
    ConnectionHost(const ConnectionHost&) = delete;
    ConnectionHost& operator=(const ConnectionHost&) = delete;

    // Closes a late or idle one where that is needed; false if all wait for their answers.
    bool makeRoomForKnown();
    void verify(Guess guess);
    // Nothing is read from a client whose request is being answered, so that it has left is looked for now and then.
    void watchForLeaving();

    Options options;
    Handler& handler;
    HostNames names;
    std::function<bool(const Authority&)> isCertified; // by the name in the certificate
    Room room;                                         // outlives the io_context, with which the last connections go
    std::size_t bodyBytes = 0;                         // held by all connections
    bool stopping = false;
    std::function<void()> onLastConnectionGone;
    boost::asio::io_context io;
    std::shared_ptr<Mailbox> mailbox;
    boost::asio::steady_timer watch;
    bool isWatching = false;
    WorkerPool workers;
    // Guessing passwords costs whoever guesses: one at a time, and never a worker's time.
    WorkerPool verifier;

private:
    void verifyNext();
    void onVerified(const Guess& guess, const std::optional<std::string>& user);

    LoginGate gate;
    GuessQueue<Guess> guesses;
    bool isVerifying = false;
};

class Connection : public Addressee, public Standing {
public:
    Connection(ConnectionHost& server, const Source& from, std::string to) : host(server), localAddress(std::move(to)) {
        source = from;
        place = host.room.enter(*this);
    }
    ~Connection() override {
        host.bodyBytes -= heldBytes;
        host.room.leave(place);
        if (host.room.all().empty() && host.onLastConnectionGone) host.onLastConnectionGone();
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void close() {
        isClosed = true;
        closeSocket();
    }

    // While it is answered: tells whoever works on the answer if nobody waits for it any more.
    virtual void noteIfLeft() = 0;
    virtual void onLogin(std::string user) = 0;
    virtual void onWrongLogin(Response refusal) = 0;

protected:
    virtual void closeSocket() = 0;

    void enter(Phase next) {
        phase = next;
        since = Clock::now();
        moved = 0;
    }

    // False if there is no room for one more client.
    bool becomeKnown() {
        if (!isKnown) isKnown = host.makeRoomForKnown();
        return isKnown;
    }

    bool isOwnName(const Authority& authority) const {
        if (host.options.host == HostField::anything) return true;
        return host.names.contains(authority, localAddress) || (host.isCertified && host.isCertified(authority));
    }

    // False if all requests together now hold more than they may. Of a body that is read in pieces, that is the piece
    // and what its reader keeps.
    bool holdBytes(std::size_t held) {
        host.bodyBytes += held - heldBytes;
        heldBytes = held;
        return host.bodyBytes <= host.options.limits.allBodyBytes;
    }

    ConnectionHost& host;

private:
    Room::Place place;
    std::string localAddress;
    std::size_t heldBytes = 0;
};

inline void ConnectionHost::watchForLeaving() {
    if (isWatching) return;
    isWatching = true;
    watch.expires_after(std::chrono::milliseconds(100));
    watch.async_wait([this](boost::system::error_code) {
        isWatching = false;
        bool isAnswering = false;
        for (Standing* standing : room.all()) {
            if (standing->phase != Standing::Phase::answering || standing->isClosed) continue;
            isAnswering = true;
            static_cast<Connection*>(standing)->noteIfLeft();
        }
        if (isAnswering) watchForLeaving();
    });
}

template <class Stream>
class Session final : public Connection, public std::enable_shared_from_this<Session<Stream>> {
public:
    using error_code = boost::system::error_code;
    static constexpr bool isTls = !std::is_same_v<Stream, boost::beast::tcp_stream>;

    template <typename... StreamArguments>
    explicit Session(ConnectionHost& server, const Source& from, std::string to, StreamArguments&&... arguments)
        : Connection(server, from, std::move(to)), stream(std::forward<StreamArguments>(arguments)...),
          buffer(server.options.limits.headerBytes + readSize) {}

    void start() {
        enter(Phase::reading);
        expiresAfter(limits().header);
        if constexpr (isTls) {
            stream.async_handshake(boost::asio::ssl::stream_base::server,
                                   [self = this->shared_from_this()](error_code error) {
                                       if (!error) self->readHead();
                                   });
        } else {
            readFirstBytes();
        }
    }

    void noteIfLeft() override {
        if (!awaited || !isClosedByPeer(socket().native_handle())) return;
        *awaited = false;
        hasLeft = true;
    }

    void takeAnswer(Response finished) override {
        if (!awaited) return;
        const bool isLost = !*awaited;
        endWaiting();
        write(std::move(finished), closesBehindAnswer || isLost);
    }

    void onLogin(std::string user) override {
        if (!socket().is_open()) return;
        if (!becomeKnown()) return refuse(noRoom());
        enter(Phase::reading);
        request.user = std::move(user);
        readBody();
    }

    void onWrongLogin(Response refusal) override {
        tellRefusedLogin();
        refuse(std::move(refusal));
    }

private:
    static constexpr std::size_t readSize = std::size_t{64} << 10;
    static constexpr std::size_t pieceSize = std::size_t{64} << 10; // of a body, for its reader

    static constexpr std::size_t sliceSize = std::size_t{64} << 10; // of an answer

    void closeSocket() override {
        error_code ignored;
        socket().close(ignored);
        if (!awaited) return;
        *awaited = false;
        // Whoever closes all connections goes through a list of them, which the last share of this one leaves.
        boost::asio::post(host.io, [self = this->shared_from_this()] { self->endWaiting(); });
    }

    static Response noRoom() { return textResponse(503, "too many clients wait for answers at this moment"); }

    const Limits& limits() const { return host.options.limits; }
    auto& lowest() { return boost::beast::get_lowest_layer(stream); }
    auto& socket() { return lowest().socket(); }
    void expiresAfter(std::chrono::milliseconds duration) { lowest().expires_after(duration); }

    void waitForNext() {
        if (host.stopping) return close();
        if (buffer.size() > 0) return readHead();
        enter(Phase::waiting);
        expiresAfter(limits().idle);
        readFirstBytes();
    }

    // Between two requests a client may be silent for long, within a header it may not: the two deadlines part here.
    void readFirstBytes() {
        stream.async_read_some(buffer.prepare(4096),
                               [self = this->shared_from_this()](error_code error, std::size_t bytes) {
                                   if (error) return;
                                   self->buffer.commit(bytes);
                                   self->readHead();
                               });
    }

    void readHead() {
        enter(Phase::reading);
        parser.emplace();
        parser->header_limit(static_cast<std::uint32_t>(limits().headerBytes));
        parser->body_limit(limits().bodyBytes);
        parser->eager(true);
        expiresAfter(limits().header);
        boost::beast::http::async_read_header(
            stream, buffer, *parser,
            [self = this->shared_from_this()](error_code error, std::size_t bytes) { self->onHead(error, bytes); });
    }

    void onHead(error_code error, std::size_t headBytes) {
        if (error) return onReadError(error);
        if (isClosed) return;
        this->moved += headBytes;
        request = headOf(*parser);
        request.client = clientName();
        bodyReader.reset();
        readerBytes = 0;
        receivedBytes = 0;
        const auto isOwn = [this](const Authority& authority) { return isOwnName(authority); };
        if (std::optional<Response> refusal = refuseSender(*parser, isOwn)) return refuse(std::move(*refusal));
        if (std::optional<Response> refusal = host.handler.refuse(request)) return refuse(std::move(*refusal));
        if (std::optional<Response> refusal = refuseFraming(*parser)) return refuse(std::move(*refusal));
        authenticate();
    }

    std::string clientName() {
        error_code error;
        const auto client = socket().remote_endpoint(error);
        if (error) return "unknown";
        const std::string address = client.address().to_string();
        return (client.address().is_v6() ? "[" + address + "]" : address) + ":" + std::to_string(client.port());
    }

    void onReadError(error_code error) {
        if (std::optional<Response> answer = answerToReadError(error)) refuse(std::move(*answer));
    }

    void authenticate() {
        if (!host.options.credentials) return readBody();
        const std::string* authorization = request.field("Authorization");
        if (!authorization) return refuse(unauthorized());
        std::optional<std::string> claimed = Credentials::claimedUser(*authorization);
        if (!claimed) return refuse(unauthorized());
        if (std::optional<std::string> user = host.options.credentials->recall(*authorization)) {
            return onLogin(std::move(*user));
        }
        enter(Phase::verifying);
        host.verify({this->shared_from_this(), *authorization, std::move(*claimed), keepRunning()});
    }

    void tellRefusedLogin() {
        if (!host.options.onRefusedLogin) return;
        host.options.onRefusedLogin(request.client,
                                    Credentials::claimedUser(*request.field("Authorization")).value_or(""));
    }

    void readBody() {
        bodyStart = std::chrono::steady_clock::now();
        const std::string* expect = request.field("Expect");
        if (!expect || parser->is_done() || buffer.size() > 0) return readMoreBody();
        static constexpr std::string_view goOn = "HTTP/1.1 100 Continue\r\n\r\n";
        expiresAfter(limits().write);
        boost::asio::async_write(stream, boost::asio::buffer(goOn.data(), goOn.size()),
                                 [self = this->shared_from_this()](error_code error, std::size_t) {
                                     if (!error) self->readMoreBody();
                                 });
    }

    void readMoreBody() {
        if (parser->is_done()) return answer();
        lowest().expires_at(std::min(bodyDeadline(), std::chrono::steady_clock::now() + limits().bodyProgress));
        boost::beast::http::async_read_some(stream, buffer, *parser,
                                            [self = this->shared_from_this()](error_code error, std::size_t bytes) {
                                                if (error) return self->onReadError(error);
                                                self->receivedBytes += bytes;
                                                self->moved += bytes;
                                                self->onBodyBytes();
                                            });
    }

    // A large body takes its time, but no client holds a connection by sending little now and then.
    std::chrono::steady_clock::time_point bodyDeadline() const {
        return bodyStart + limits().body + std::chrono::seconds(receivedBytes / limits().bodyBytesPerSecond);
    }

    void onBodyBytes() {
        const std::string& body = parser->get().body();
        // Whoever holds no more than a piece is not to blame, and need not wait for whoever is.
        if (!holdBytes(readerBytes + body.capacity()) && readerBytes + body.size() > pieceSize) {
            return refuse(textResponse(503, "too many large requests at this moment"));
        }
        if (body.size() < pieceSize || parser->is_done()) return readMoreBody();
        if (!bodyReader) bodyReader = host.handler.readerOfLargeBody(request);
        if (!bodyReader) return readMoreBody();
        passPiece();
    }

    void passPiece() {
        enter(Phase::answering);
        boost::asio::post(host.workers, [self = this->shared_from_this(), keep = keepRunning(),
                                         piece = std::move(parser->get().body())]() mutable {
            std::optional<Response> refusal = self->readNow(piece);
            const std::size_t held = self->bodyReader->heldBytes();
            handBack(std::move(self),
                     [refusal = std::move(refusal), held, piece = std::move(piece)](Session& session) mutable {
                         session.onPieceRead(std::move(refusal), held, std::move(piece));
                     });
        });
    }

    // On a worker.
    std::optional<Response> readNow(std::string_view piece) {
        try {
            return bodyReader->read(piece);
        } catch (const std::exception&) {
            return textResponse(500, "the request could not be read");
        }
    }

    void onPieceRead(std::optional<Response> refusal, std::size_t held, std::string piece) {
        if (refusal) return refuse(std::move(*refusal));
        if (host.stopping) return close();
        enter(Phase::reading);
        readerBytes = held;
        piece.clear();
        parser->get().body() = std::move(piece);
        onBodyBytes();
    }

    void answer() {
        if (!becomeKnown()) return refuse(noRoom());
        enter(Phase::answering);
        closesBehindAnswer = !parser->keep_alive();
        request.body = std::move(parser->get().body());
        awaited = std::make_shared<std::atomic<bool>>(true);
        waiting = this->shared_from_this();
        running.emplace(keepRunning());
        host.watchForLeaving();
        auto reply = std::make_shared<ConnectionReply>(host.mailbox, this->weak_from_this(), awaited);
        boost::asio::post(host.workers, [&handler = host.handler, reader = std::move(bodyReader),
                                         given = std::move(request), to = std::move(reply)]() mutable {
            answerNow(handler, std::move(reader), std::move(given), to);
        });
    }

    // The answer has come, or nobody waits for it any more.
    void endWaiting() {
        awaited.reset();
        running.reset();
        waiting.reset();
    }

    // From a worker to the server's own thread. The worker keeps no share of the connection: its end touches what
    // belongs to that thread.
    template <class Continue>
    static void handBack(std::shared_ptr<Session> session, Continue&& next) {
        ConnectionHost& server = session->host;
        boost::asio::post(server.io,
                          [self = std::move(session), next = std::forward<Continue>(next)]() mutable { next(*self); });
    }

    // On a worker, which knows nothing of the connection: that may end before the answer comes.
    static void answerNow(Handler& handler, std::unique_ptr<BodyReader> reader, Request given,
                          const std::shared_ptr<Reply>& to) {
        try {
            if (!reader) return handler.answerTo(std::move(given), to);
            reader->finish(std::move(given), to);
        } catch (const std::exception&) {
            to->send(textResponse(500, "the request could not be answered"));
        }
    }

    using WorkGuard = boost::asio::executor_work_guard<boost::asio::io_context::executor_type>;

    WorkGuard keepRunning() { return boost::asio::make_work_guard(host.io); }

    // Answers a request whose rest nobody will read.
    void refuse(Response refusal) {
        unread = true;
        write(std::move(refusal), true);
    }

    void write(Response answerToWrite, bool closes) {
        if (!socket().is_open()) return;
        enter(Phase::writing);
        holdBytes(0);
        response = std::move(answerToWrite);
        closing = closes || host.stopping;
        head = serializeHead(response, closing);
        const std::string_view slice = response.body.view().substr(0, sliceSize);
        head.append(slice);
        writtenBytes = slice.size();
        writeEnd = Clock::now() + limits().write;
        writeSlice(head);
    }

    // Slice by slice, for who takes an answer slowly is to be told from who takes it at all.
    void writeSlice(std::string_view slice) {
        lowest().expires_at(std::min(writeEnd, Clock::now() + limits().writeProgress));
        boost::asio::async_write(stream, boost::asio::buffer(slice.data(), slice.size()),
                                 [self = this->shared_from_this()](error_code error, std::size_t bytes) {
                                     if (error) return;
                                     self->moved += bytes;
                                     self->writeNext();
                                 });
    }

    void writeNext() {
        const std::string_view slice = response.body.view().substr(writtenBytes, sliceSize);
        if (slice.empty()) return onWritten();
        writtenBytes += slice.size();
        writeSlice(slice);
    }

    void onWritten() {
        response = {};
        if (!closing) return waitForNext();
        enter(Phase::writing);
        expiresAfter(limits().linger);
        if constexpr (isTls) {
            stream.async_shutdown([self = this->shared_from_this()](error_code) { self->close(); });
        } else {
            error_code ignored;
            socket().shutdown(boost::asio::ip::tcp::socket::shutdown_send, ignored);
            if (unread) return discardRest();
            close();
        }
    }

    // To close while bytes of the client are under way would reset the connection, and the client would see that in
    // place of the answer.
    void discardRest() {
        buffer.clear();
        stream.async_read_some(buffer.prepare(readSize),
                               [self = this->shared_from_this()](error_code error, std::size_t) {
                                   if (error) return self->close();
                                   self->discardRest();
                               });
    }

    Stream stream;
    boost::beast::flat_buffer buffer;
    boost::optional<Parser> parser;
    std::chrono::steady_clock::time_point bodyStart;
    std::size_t receivedBytes = 0; // of the body, with its framing
    Request request;
    std::unique_ptr<BodyReader> bodyReader; // a worker's while a piece or the request is on it
    std::size_t readerBytes = 0;
    std::shared_ptr<std::atomic<bool>> awaited; // set while the request is answered, as are the next two
    std::shared_ptr<Session> waiting;           // itself: nothing is read or written meanwhile
    std::optional<WorkGuard> running;
    bool closesBehindAnswer = false;
    std::string head; // and the first slice of the body
    Response response;
    std::size_t writtenBytes = 0; // of the response's body
    Clock::time_point writeEnd;
    bool closing = false;
    bool unread = false;
};

} // namespace cimhost::http
