// How an answer finds its way from whatever thread gives it back to the connection that waits for it, if that and the
// server are still there. Private to the HTTP server.
#pragma once

#include "cimhost/http/server.h"

#include <boost/asio/io_context.hpp>

#include <atomic>
#include <memory>
#include <mutex>

namespace cimhost::http {

/// Who waits for an answer; lives on the network thread.
class Addressee {
public:
    virtual ~Addressee() = default;

    virtual void takeAnswer(Response answer) = 0;
};

/// Outlives the server, so that an answer may come after its end.
class Mailbox {
public:
    explicit Mailbox(boost::asio::io_context& target) : io(&target) {}

    /// Dropped if the addressee or the server is gone.
    void deliver(const std::weak_ptr<Addressee>& to, Response answer);

    /// From now on everything is dropped.
    void close();

private:
    std::mutex mutex;
    boost::asio::io_context* io;
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

} // namespace cimhost::http
