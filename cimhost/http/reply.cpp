#include "cimhost/http/reply.h"

#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <utility>

namespace cimhost::http {

ConnectionReply::~ConnectionReply() { ConnectionReply::send(textResponse(500, "the request was not answered")); }

void ConnectionReply::send(Response answer) {
    if (isSent.exchange(true)) return;
    mailbox->post([to = addressee, answer = std::move(answer)]() mutable {
        if (const std::shared_ptr<Addressee> waiting = to.lock()) waiting->takeAnswer(std::move(answer));
    });
}

bool hasUntakenBytes(int socket) {
    int bytes = 0;
    return ::ioctl(socket, SIOCOUTQ, &bytes) == 0 && bytes > 0;
}

bool isClosedByPeer(int socket) {
    pollfd asked{socket, POLLRDHUP, 0};
    return ::poll(&asked, 1, 0) > 0 && (asked.revents & (POLLRDHUP | POLLHUP | POLLERR | POLLNVAL)) != 0;
}

} // namespace cimhost::http
