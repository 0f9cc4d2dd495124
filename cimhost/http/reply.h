// How an answer finds its way from whatever thread gives it back to the connection that waits for it, if that and the
// server are still there. Private to the HTTP server.
#pragma once

#include "cimhost/http/mailbox.h"
#include "cimhost/http/server.h"

#include <atomic>
#include <memory>
#include <utility>

namespace cimhost::http {

/// Who waits for an answer; lives on the network thread.
class Addressee {
public:
    virtual ~Addressee() = default;

    virtual void takeAnswer(Response answer) = 0;
};

class ConnectionReply final : public Reply {
public:
    /// awaited is the connection's word on whether somebody still waits.
    ConnectionReply(std::shared_ptr<Mailbox> box, std::weak_ptr<Addressee> waiting,
                    std::shared_ptr<const std::atomic<bool>> awaited)
        : mailbox(std::move(box)), addressee(std::move(waiting)), isWaiting(std::move(awaited)) {}
    /// A handler that forgets to answer leaves no client waiting.
    ~ConnectionReply() override;

    void send(Response answer) override;
    [[nodiscard]] bool isAwaited() const override { return *isWaiting; }

private:
    std::shared_ptr<Mailbox> mailbox;
    std::weak_ptr<Addressee> addressee;
    std::shared_ptr<const std::atomic<bool>> isWaiting;
    std::atomic<bool> isSent = false;
};

/// True if the other end of a connection has closed its side or the connection is broken, whatever it sent before.
bool isClosedByPeer(int socket);

/// Whether bytes that were sent have not arrived at the other side, or lie there until somebody reads others first.
bool hasUntakenBytes(int socket);

} // namespace cimhost::http
