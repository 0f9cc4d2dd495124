#include "cimhost/http/reply.h"

#include <boost/asio/post.hpp>

#include <poll.h>
#include <utility>

namespace cimhost::http {

void Mailbox::deliver(const std::weak_ptr<Addressee>& to, Response answer) {
    const std::lock_guard lock(mutex);
    if (!io) return;
    boost::asio::post(*io, [to, answer = std::move(answer)]() mutable {
        if (const std::shared_ptr<Addressee> addressee = to.lock()) addressee->takeAnswer(std::move(answer));
    });
}

void Mailbox::close() {
    const std::lock_guard lock(mutex);
    io = nullptr;
}

ConnectionReply::~ConnectionReply() { ConnectionReply::send(textResponse(500, "the request was not answered")); }

void ConnectionReply::send(Response answer) {
    if (!isSent.exchange(true)) mailbox->deliver(addressee, std::move(answer));
}

bool isClosedByPeer(int socket) {
    pollfd asked{socket, POLLRDHUP, 0};
    return ::poll(&asked, 1, 0) > 0 && (asked.revents & (POLLRDHUP | POLLHUP | POLLERR | POLLNVAL)) != 0;
}

} // namespace cimhost::http
