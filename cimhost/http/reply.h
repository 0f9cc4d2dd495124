// Carries an answer from the thread that gives it to the connection that waits for it, if the connection and the server
// are still there. Private to the HTTP server.
#pragma once

#include "cimhost/http/mailbox.h"
#include "cimhost/http/server.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace cimhost::http {

/// Counts the bytes of an answer that its client has not taken yet. Safe on all threads.
class Backlog {
public:
    /// Adds so many bytes. False if nobody takes bytes any more; then none are added.
    bool add(std::size_t bytes);
    /// The client has taken so many.
    void taken(std::size_t bytes);
    /// From now on nobody takes bytes.
    void abandon();

    [[nodiscard]] std::size_t bytes() const;
    /// Returns when no more than `most` bytes wait, when nobody takes bytes any more, or after that time.
    void waitUntil(std::size_t most, std::chrono::steady_clock::duration longest) const;

private:
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    std::size_t waiting = 0;
    bool isAbandoned = false;
};

/// Waits for an answer. Called on the network thread only.
class Addressee {
public:
    virtual ~Addressee() = default;

    virtual void takeAnswer(Response answer) = 0;

    // An answer in pieces: first its head, then its pieces, at last its end, or breakOff() if it never comes to its
    // end.
    virtual void beginAnswer(Response head, std::shared_ptr<Backlog> backlog) = 0;
    virtual void takePiece(ByteBuffer piece) = 0;
    virtual void endAnswer(std::vector<Field> trailers) = 0;
    virtual void breakOff() = 0;
};

class ConnectionReply final : public Reply {
public:
    /// @param awaited shared with the connection, which makes it false once nobody waits for the answer
    /// @param takesPieces whether the client takes an answer in pieces
    ConnectionReply(std::shared_ptr<Mailbox> box, std::weak_ptr<Addressee> waiting,
                    std::shared_ptr<const std::atomic<bool>> awaited, bool takesPieces);
    /// Answers with 500 if no answer has been given or begun: no client is left waiting.
    ~ConnectionReply() override;

    void send(Response answer) override;
    [[nodiscard]] std::unique_ptr<PiecewiseAnswer> begin(Response head) override;
    [[nodiscard]] bool isAwaited() const override { return *way->isWaiting; }

private:
    class Pieces;
    enum class Stage { unanswered, inPieces, answered };

    // Shared with the pieces, which may outlive the reply.
    struct Way {
        std::shared_ptr<Mailbox> mailbox;
        std::weak_ptr<Addressee> addressee;
        std::shared_ptr<const std::atomic<bool>> isWaiting;
        std::mutex mutex; // held while a step is posted, so that all arrive in their order
        Stage stage = Stage::unanswered;

        template <typename Step>
        void post(Step step) {
            mailbox->post([to = addressee, step = std::move(step)]() mutable {
                if (const std::shared_ptr<Addressee> waiting = to.lock()) step(*waiting);
            });
        }
    };

    const std::shared_ptr<Way> way;
    const bool mayBegin;
};

/// True if the other end of a connection has closed its side, even if bytes that it sent before are still unread, or if
/// the connection is broken.
bool isClosedByPeer(int socket);

/// True if the connection is broken, as after the other end has answered with a reset that it takes no bytes.
bool isBroken(int socket);

/// Whether bytes that were sent lie in this system's buffers because the other system has not confirmed them yet. They
/// are on their way, or its buffers are full.
bool hasUntakenBytes(int socket);

} // namespace cimhost::http
