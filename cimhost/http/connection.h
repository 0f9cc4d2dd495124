// One client's connection, from when it is accepted until it ends. Private to the HTTP server. It belongs to the
// network thread; a worker uses nothing of it but its body reader, while that reads a piece of a body.
#pragma once

#include "cimhost/http/connection_host.h"
#include "cimhost/http/reply.h"
#include "cimhost/http/stream.h"
#include "cimhost/http/wire.h"

#include <boost/beast/core/flat_buffer.hpp>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::http {

class Connection final : public Addressee, public Standing, public std::enable_shared_from_this<Connection> {
public:
    /// @param to the address of this server that the client connected to
    Connection(ConnectionHost& server, const Source& from, std::string to, std::unique_ptr<Stream> through);
    ~Connection() override;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void start();
    void close();

    // While a request is answered: if the client has closed its side, tells so to whoever works on the answer.
    void noteIfLeft();
    // Between two requests: notes whether some of the last answer still lies in the system's buffers.
    void noteUntaken();
    void takeAnswer(Response finished) override;
    void beginAnswer(Response started, std::shared_ptr<Backlog> untaken) override;
    void takePiece(ByteBuffer piece) override;
    void endAnswer(std::vector<Field> trailers) override;
    void breakOff() override;
    void onLogin(std::string user);
    void onWrongLogin(Response refusal);

private:
    using error_code = boost::system::error_code;

    void enter(Phase next);
    // Calls next once there is room for one more known client. If there is none within Limits::room, answers with 503.
    void becomeKnown(void (Connection::*next)());
    void waitForRoom(void (Connection::*next)(), Clock::time_point begin);
    bool isOwnName(const Authority& authority) const;
    // Notes how many bytes of its body the request holds now. Where a body is read in pieces, these are the piece and
    // what its reader keeps. False if all requests together now hold more than they may.
    bool holdBytes(std::size_t held);
    const Limits& limits() const { return host.options.limits; }
    Traffic& traffic() const { return *host.options.traffic; }
    WorkGuard keepRunning() { return boost::asio::make_work_guard(host.io); }
    std::string clientName();

    void waitForNext();
    void readFirstBytes();
    void readHead();
    void onHead(error_code error, std::size_t headBytes);
    void onReadError(error_code error);
    void authenticate();
    void tellRefusedLogin();

    void readBodyOfKnown();
    void readBody();
    void readMoreBody();
    std::chrono::steady_clock::time_point bodyDeadline() const;
    void onBodyBytes();
    void passPiece();
    std::optional<Response> readNow(std::string_view piece);
    void onPieceRead(std::optional<Response> refusal, std::size_t held, std::string piece);

    void answer();
    void answerKnown();
    void endWaiting();

    void refuse(Response refusal);
    void write(Response answerToWrite, bool closes);
    void writeSlice(std::string_view slice);
    void writeNext();
    void writePieces();
    void writeParts(const Stream::Parts& parts);
    void onPartsWritten(error_code error, std::size_t bytes);
    void onWritten();
    void endWriting();
    // After an answer to a client that had closed its side: waits until the client's system has taken the answer.
    void awaitReceipt(Clock::time_point end);
    void discardRest();

    ConnectionHost& host;
    Room::Place place;
    const std::string localAddress;
    std::size_t heldBytes = 0;
    const std::unique_ptr<Stream> stream;
    boost::beast::flat_buffer buffer;
    boost::optional<Parser> parser;
    std::chrono::steady_clock::time_point bodyStart;
    std::size_t receivedBytes = 0; // of the body, with its framing
    Request request;
    std::unique_ptr<BodyReader> bodyReader; // used by a worker while it reads a piece; goes along with the request
    std::size_t readerBytes = 0;
    // These three are set while the request is answered.
    std::shared_ptr<std::atomic<bool>> awaited; // whether the client is still there
    std::shared_ptr<Connection> waiting;        // itself: no read or write keeps it alive meanwhile
    std::optional<WorkGuard> running;
    bool closesBehindAnswer = false;
    std::string head; // of the answer, and the first slice of its body
    Response response;
    std::size_t writtenBytes = 0; // of the response's body
    Clock::time_point writeEnd;
    bool closing = false;    // behind the answer the connection ends
    bool unread = false;     // nobody reads the rest of the request
    bool isDoubtful = false; // the client had closed its side before its answer came

    // For an answer that leaves in pieces; empty at all other times.
    std::shared_ptr<Backlog> backlog;
    std::deque<ByteBuffer> pieces; // the first one is being written if isWriting
    std::optional<std::string> ending;
    bool isWriting = false;
};

} // namespace cimhost::http
