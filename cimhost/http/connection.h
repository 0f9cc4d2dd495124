// One client's connection, from its acceptance to its end. Private to the HTTP server: lives on the network thread,
// and leaves it only to be answered on a worker.
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

    // While it is answered: tells whoever works on the answer if nobody waits for it any more.
    void noteIfLeft();
    // While nothing is asked: whether the last answer still lies in the system's buffers.
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
    // What is next comes when there is room for one more client; after a while that is refused.
    void becomeKnown(void (Connection::*next)());
    void waitForRoom(void (Connection::*next)(), Clock::time_point begin);
    bool isOwnName(const Authority& authority) const;
    // False if all requests together now hold more than they may. Of a body that is read in pieces, that is the piece
    // and what its reader keeps.
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
    // Of a client that has closed his side: has his system taken the answer?
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
    std::unique_ptr<BodyReader> bodyReader; // a worker's while a piece or the request is on it
    std::size_t readerBytes = 0;
    std::shared_ptr<std::atomic<bool>> awaited; // set while the request is answered, as are the next two
    std::shared_ptr<Connection> waiting;        // itself: nothing is read or written meanwhile
    std::optional<WorkGuard> running;
    bool closesBehindAnswer = false;
    std::string head; // and the first slice of the body
    Response response;
    std::size_t writtenBytes = 0; // of the response's body
    Clock::time_point writeEnd;
    bool closing = false;
    bool unread = false;
    bool isDoubtful = false; // whether the client is there to take the answer

    // An answer that leaves in pieces; these are empty at all other times.
    std::shared_ptr<Backlog> backlog;
    std::deque<ByteBuffer> pieces; // the first one is being written if isWriting
    std::optional<std::string> ending;
    bool isWriting = false;
};

} // namespace cimhost::http
