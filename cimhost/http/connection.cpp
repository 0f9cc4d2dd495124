#include "cimhost/http/connection.h"

#include <boost/asio/post.hpp>
#include <boost/beast/http/read.hpp>

#include <algorithm>
#include <exception>
#include <utility>

namespace cimhost::http {

namespace asio = boost::asio;
namespace beast_http = boost::beast::http;

namespace {

constexpr std::size_t firstRead = 4096;
constexpr std::size_t readSize = std::size_t{64} << 10;
constexpr std::size_t pieceSize = std::size_t{64} << 10; // of a body, for its reader
constexpr std::size_t sliceSize = std::size_t{64} << 10; // of an answer

Response noRoom() { return textResponse(503, "too many clients wait for answers at this moment"); }

// A request on its way to a worker. It holds no share of the connection, which may end before the answer comes. If the
// work is dropped, the reply ends with it and tells the client so.
struct Answering {
    Handler& handler;
    std::unique_ptr<BodyReader> reader;
    Request given;
    std::shared_ptr<Reply> to;

    void now() {
        try {
            if (!reader) return handler.answerTo(std::move(given), to);
            reader->finish(std::move(given), to);
        } catch (const std::exception&) {
            to->send(textResponse(500, "the request could not be answered"));
        }
    }
};

} // namespace

Connection::Connection(ConnectionHost& server, const Source& from, std::string to, std::unique_ptr<Stream> through)
    : host(server), localAddress(std::move(to)), stream(std::move(through)),
      buffer(server.options.limits.headerBytes + readSize) {
    source = from;
    place = host.room.enter(*this);
    ++traffic().connections;
}

Connection::~Connection() {
    ++traffic().disconnections;
    host.bodyBytes -= heldBytes;
    host.room.leave(place);
    if (host.room.all().empty() && host.onLastConnectionGone) host.onLastConnectionGone();
}

void Connection::start() {
    enter(Phase::reading);
    stream->expireAfter(limits().header);
    if (!stream->isSecure()) return readFirstBytes();
    stream->handshake([self = shared_from_this()](error_code error, std::size_t) {
        if (!error) self->readHead();
    });
}

void Connection::close() {
    isClosed = true;
    stream->close();
    if (backlog) backlog->abandon();
    if (!awaited) return;
    *awaited = false;
    // Posted, not called: the caller may be going through the list of connections, and this one leaves the list when
    // its last share goes.
    asio::post(host.io, [self = shared_from_this()] { self->endWaiting(); });
}

void Connection::enter(Phase next) {
    phase = next;
    since = Clock::now();
    moved = 0;
}

void Connection::becomeKnown(void (Connection::*next)()) {
    if (isKnown || isGuest) return (this->*next)();
    enter(Phase::answering);
    waitForRoom(next, Clock::now());
}

// When many clients ask at once, places soon become free: some clients have their answer, others turn out not to take
// it. A client that finds no place becomes a guest, whose one request is answered all the same, as long as guests are
// few.
void Connection::waitForRoom(void (Connection::*next)(), Clock::time_point begin) {
    constexpr std::chrono::milliseconds untilNextLook{10};
    if (!stream->socket().is_open()) return;
    isKnown = host.makeRoomForKnown(source);
    isGuest = !isKnown && host.makeRoomForGuest();
    if (isKnown || isGuest) return (this->*next)();
    if (host.stopping || Clock::now() - begin >= limits().room) return refuse(noRoom());
    auto timer = std::make_shared<asio::steady_timer>(host.io, untilNextLook);
    timer->async_wait([self = shared_from_this(), timer, next, begin](error_code) { self->waitForRoom(next, begin); });
}

bool Connection::isOwnName(const Authority& authority) const {
    if (host.options.host == HostField::anything) return true;
    return host.names.contains(authority, localAddress) || (host.isCertified && host.isCertified(authority));
}

bool Connection::holdBytes(std::size_t held) {
    host.bodyBytes += held - heldBytes;
    heldBytes = held;
    return host.bodyBytes <= host.options.limits.allBodyBytes;
}

std::string Connection::clientName() {
    error_code error;
    const auto client = stream->socket().remote_endpoint(error);
    if (error) return "unknown";
    const std::string address = client.address().to_string();
    return (client.address().is_v6() ? "[" + address + "]" : address) + ":" + std::to_string(client.port());
}

void Connection::waitForNext() {
    if (host.stopping) return close();
    if (buffer.size() > 0) return readHead();
    enter(Phase::waiting);
    stream->expireAfter(limits().idle);
    readFirstBytes();
}

// Between two requests a client may be silent for longer than within a header. So the first bytes are read by
// themselves, with the deadline that is set already.
void Connection::readFirstBytes() {
    stream->readSome(buffer.prepare(firstRead), [self = shared_from_this()](error_code error, std::size_t bytes) {
        if (error) return;
        self->buffer.commit(bytes);
        self->readHead();
    });
}

void Connection::readHead() {
    enter(Phase::reading);
    parser.emplace();
    parser->header_limit(static_cast<std::uint32_t>(limits().headerBytes));
    parser->body_limit(limits().bodyBytes);
    parser->eager(true);
    stream->expireAfter(limits().header);
    beast_http::async_read_header(
        *stream, buffer, *parser,
        [self = shared_from_this()](error_code error, std::size_t bytes) { self->onHead(error, bytes); });
}

void Connection::onHead(error_code error, std::size_t headBytes) {
    if (error) return onReadError(error);
    if (isClosed) return;
    moved += headBytes;
    traffic().receivedBytes += headBytes;
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

void Connection::onReadError(error_code error) {
    if (std::optional<Response> refusal = answerToReadError(error)) refuse(std::move(*refusal));
}

void Connection::authenticate() {
    if (!host.options.credentials) return readBody();
    const std::string* authorization = request.field("Authorization");
    if (!authorization) return refuse(unauthorized());
    std::optional<std::string> claimed = Credentials::claimedUser(*authorization);
    if (!claimed) return refuse(unauthorized());
    if (std::optional<std::string> user = host.options.credentials->recall(*authorization)) {
        return onLogin(std::move(*user));
    }
    enter(Phase::verifying);
    host.verify({shared_from_this(), *authorization, std::move(*claimed), keepRunning()});
}

void Connection::onLogin(std::string user) {
    if (!stream->socket().is_open()) return;
    request.user = std::move(user);
    becomeKnown(&Connection::readBodyOfKnown);
}

void Connection::readBodyOfKnown() {
    enter(Phase::reading);
    readBody();
}

void Connection::onWrongLogin(Response refusal) {
    tellRefusedLogin();
    refuse(std::move(refusal));
}

void Connection::tellRefusedLogin() {
    if (!host.options.onRefusedLogin) return;
    host.options.onRefusedLogin(request.client, Credentials::claimedUser(*request.field("Authorization")).value_or(""));
}

void Connection::readBody() {
    bodyStart = std::chrono::steady_clock::now();
    const std::string* expect = request.field("Expect");
    if (!expect || parser->is_done() || buffer.size() > 0) return readMoreBody();
    stream->expireAfter(limits().write);
    stream->write("HTTP/1.1 100 Continue\r\n\r\n", [self = shared_from_this()](error_code error, std::size_t) {
        if (!error) self->readMoreBody();
    });
}

void Connection::readMoreBody() {
    if (parser->is_done()) return answer();
    stream->expireAt(std::min(bodyDeadline(), std::chrono::steady_clock::now() + limits().bodyProgress));
    beast_http::async_read_some(*stream, buffer, *parser,
                                [self = shared_from_this()](error_code error, std::size_t bytes) {
                                    if (error) return self->onReadError(error);
                                    self->receivedBytes += bytes;
                                    self->moved += bytes;
                                    self->traffic().receivedBytes += bytes;
                                    self->onBodyBytes();
                                });
}

// A large body takes its time, but no client holds a connection by sending little now and then.
std::chrono::steady_clock::time_point Connection::bodyDeadline() const {
    return bodyStart + limits().body + std::chrono::seconds(receivedBytes / limits().bodyBytesPerSecond);
}

void Connection::onBodyBytes() {
    const std::string& body = parser->get().body();
    // A request that holds no more than a piece did not use up the room, and is not refused because others did.
    if (!holdBytes(readerBytes + body.capacity()) && readerBytes + body.size() > pieceSize) {
        return refuse(textResponse(503, "too many large requests at this moment"));
    }
    if (body.size() < pieceSize || parser->is_done()) return readMoreBody();
    if (!bodyReader) bodyReader = host.handler.readerOfLargeBody(request);
    if (!bodyReader) return readMoreBody();
    passPiece();
}

// When the worker is done, it hands its share of the connection back to the network thread. The connection must end
// there, since its end touches what belongs to that thread.
void Connection::passPiece() {
    enter(Phase::answering);
    asio::post(host.workers,
               [self = shared_from_this(), keep = keepRunning(), piece = std::move(parser->get().body())]() mutable {
                   std::optional<Response> refusal = self->readNow(piece);
                   const std::size_t held = self->bodyReader->heldBytes();
                   ConnectionHost& server = self->host;
                   asio::post(server.io, [self = std::move(self), refusal = std::move(refusal), held,
                                          piece = std::move(piece)]() mutable {
                       self->onPieceRead(std::move(refusal), held, std::move(piece));
                   });
               });
}

// On a worker.
std::optional<Response> Connection::readNow(std::string_view piece) {
    try {
        return bodyReader->read(piece);
    } catch (const std::exception&) {
        return textResponse(500, "the request could not be read");
    }
}

void Connection::onPieceRead(std::optional<Response> refusal, std::size_t held, std::string piece) {
    if (refusal) return refuse(std::move(*refusal));
    if (host.stopping) return close();
    enter(Phase::reading);
    readerBytes = held;
    piece.clear();
    parser->get().body() = std::move(piece);
    onBodyBytes();
}

void Connection::answer() { becomeKnown(&Connection::answerKnown); }

void Connection::answerKnown() {
    enter(Phase::answering);
    closesBehindAnswer = isGuest || !parser->keep_alive();
    request.body = std::move(parser->get().body());
    awaited = std::make_shared<std::atomic<bool>>(true);
    waiting = shared_from_this();
    running.emplace(keepRunning());
    host.watchForLeaving();
    auto reply = std::make_shared<ConnectionReply>(host.mailbox, weak_from_this(), awaited, takesPieces(*parser));
    auto answering = std::make_shared<Answering>(
        Answering{host.handler, std::move(bodyReader), std::move(request), std::move(reply)});
    host.work([answering = std::move(answering)] { answering->now(); });
}

void Connection::noteIfLeft() {
    if (!awaited || !isClosedByPeer(stream->socket().native_handle())) return;
    *awaited = false;
    hasLeft = true;
}

void Connection::noteUntaken() {
    if (phase == Phase::waiting && !isClosed) hasUntaken = hasUntakenBytes(stream->socket().native_handle());
}

void Connection::takeAnswer(Response finished) {
    if (finished.receipt) noteIfLeft();
    if (!awaited) return;
    isDoubtful = !*awaited;
    endWaiting();
    write(std::move(finished), closesBehindAnswer || isDoubtful);
}

void Connection::beginAnswer(Response started, std::shared_ptr<Backlog> untaken) {
    if (!awaited || !stream->socket().is_open()) return;
    traffic().answered(started.status);
    holdBytes(0);
    enter(Phase::answering);
    closing = closesBehindAnswer || !*awaited || host.stopping;
    head = serializeHeadOfPieces(started, closing);
    backlog = std::move(untaken);
    writeEnd = Clock::now() + limits().write;
}

void Connection::takePiece(ByteBuffer piece) {
    if (!backlog) return;
    pieces.push_back(std::move(piece));
    writePieces();
}

void Connection::endAnswer(std::vector<Field> trailers) {
    if (!backlog) return;
    endWaiting();
    ending = lastChunk(trailers);
    writePieces();
}

// The client sees that its answer is not whole: the last chunk is missing.
void Connection::breakOff() {
    if (backlog) backlog->abandon();
    if (awaited) *awaited = false;
    endWaiting();
    stream->close();
}

// The answer has come, or nobody waits for it any more.
void Connection::endWaiting() {
    awaited.reset();
    running.reset();
    waiting.reset();
}

// Answers a request whose rest nobody will read.
void Connection::refuse(Response refusal) {
    unread = true;
    write(std::move(refusal), true);
}

void Connection::write(Response answerToWrite, bool closes) {
    if (!stream->socket().is_open()) return;
    enter(Phase::writing);
    traffic().answered(answerToWrite.status);
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

// Writes slice by slice, each with a deadline of its own: a client that takes an answer slowly is not one that takes
// nothing.
void Connection::writeSlice(std::string_view slice) {
    stream->expireAt(std::min(writeEnd, Clock::now() + limits().writeProgress));
    stream->write(slice, [self = shared_from_this()](error_code error, std::size_t bytes) {
        if (error) return;
        self->moved += bytes;
        self->traffic().sentBytes += bytes;
        self->writeNext();
    });
}

void Connection::writeNext() {
    const std::string_view slice = response.body.view().substr(writtenBytes, sliceSize);
    if (slice.empty()) return onWritten();
    writtenBytes += slice.size();
    writeSlice(slice);
}

// Writes one chunk after the other. While there is none, the server is at work on the next one; that time does not
// count against the client.
void Connection::writePieces() {
    if (isWriting) return;
    if (pieces.empty() && !ending) {
        enter(Phase::answering);
        return host.watchForLeaving();
    }
    if (phase == Phase::answering) {
        writeEnd += Clock::now() - since;
        enter(Phase::writing);
    }
    isWriting = true;
    if (pieces.empty()) {
        head.append(*ending);
        return writeParts({head});
    }
    head.append(chunkBegin(pieces.front().size()));
    writeParts({head, pieces.front().view(), chunkEnd});
}

void Connection::writeParts(const Stream::Parts& parts) {
    stream->expireAt(std::min(writeEnd, Clock::now() + limits().writeProgress));
    stream->write(parts, [self = shared_from_this()](error_code error, std::size_t bytes) {
        self->onPartsWritten(error, bytes);
    });
}

void Connection::onPartsWritten(error_code error, std::size_t bytes) {
    if (error) return breakOff();
    moved += bytes;
    traffic().sentBytes += bytes;
    isWriting = false;
    head.clear();
    if (!pieces.empty()) {
        backlog->taken(pieces.front().size());
        pieces.pop_front();
        return writePieces();
    }
    backlog.reset();
    ending.reset();
    onWritten();
}

void Connection::onWritten() {
    if (isDoubtful && response.receipt) return awaitReceipt(Clock::now() + limits().linger);
    response.receipt.confirm();
    endWriting();
}

// A client that has closed its side may still read. If it does not, its system answers the bytes with a reset.
void Connection::awaitReceipt(Clock::time_point end) {
    constexpr std::chrono::milliseconds untilNextLook{10};
    const int handle = stream->socket().native_handle();
    if (isClosed || isBroken(handle) || Clock::now() >= end) return close();
    if (!hasUntakenBytes(handle)) {
        response.receipt.confirm();
        return endWriting();
    }
    auto timer = std::make_shared<asio::steady_timer>(host.io, untilNextLook);
    timer->async_wait([self = shared_from_this(), timer, end](error_code) { self->awaitReceipt(end); });
}

void Connection::endWriting() {
    response = {};
    if (!closing) return waitForNext();
    enter(Phase::writing);
    stream->expireAfter(limits().linger);
    if (stream->isSecure()) {
        return stream->shutDown([self = shared_from_this()](error_code, std::size_t) { self->close(); });
    }
    error_code ignored;
    stream->socket().shutdown(asio::ip::tcp::socket::shutdown_send, ignored);
    if (unread) return discardRest();
    close();
}

// Reads what the client still sends, and drops it. To close the connection while such bytes are under way would reset
// it, and the client would see the reset instead of the answer.
void Connection::discardRest() {
    buffer.clear();
    stream->readSome(buffer.prepare(readSize), [self = shared_from_this()](error_code error, std::size_t) {
        if (error) return self->close();
        self->discardRest();
    });
}

} // namespace cimhost::http
