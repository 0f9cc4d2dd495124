// How an answer finds its way from whatever thread gives it back to the connection that waits for it, if that and the
// server are still there. Private to the HTTP server.
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

/// Counts the bytes of an answer that its client has not taken yet.
class Backlog {
public:
    /// False if nobody takes any more.
    bool add(std::size_t bytes);
    void taken(std::size_t bytes);
    /// Nobody takes any more.
    void abandon();

    [[nodiscard]] std::size_t bytes() const;
    void waitUntil(std::size_t most, std::chrono::steady_clock::duration longest) const;

private:
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    std::size_t waiting = 0;
    bool isAbandoned = false;
};

/// Who waits for an answer; lives on the network thread.
class Addressee {
public:
    virtual ~Addressee() = default;

    virtual void takeAnswer(Response answer) = 0;

    // An answer in pieces: its head, its pieces, and its end or, if it has none, that it breaks off.
    virtual void beginAnswer(Response head, std::shared_ptr<Backlog> backlog) = 0;
    virtual void takePiece(ByteBuffer piece) = 0;
    virtual void endAnswer(std::vector<Field> trailers) = 0;
    virtual void breakOff() = 0;
};

class ConnectionReply final : public Reply {
public:
    /// awaited is the connection's word on whether somebody still waits.
    ConnectionReply(std::shared_ptr<Mailbox> box, std::weak_ptr<Addressee> waiting,
                    std::shared_ptr<const std::atomic<bool>> awaited, bool takesPieces);
    /// A handler that forgets to answer leaves no client waiting.
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
        std::mutex mutex; // held over each step, so that they arrive in their order
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

/// True if the other end of a connection has closed its side or the connection is broken, whatever it sent before.
bool isClosedByPeer(int socket);

/// True once the other end has answered that it takes no bytes.
bool isBroken(int socket);

/// Whether bytes that were sent have not arrived at the other side, or lie there until somebody reads others first.
bool hasUntakenBytes(int socket);

} // namespace cimhost::http
