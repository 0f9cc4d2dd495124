#include "cimhost/http/reply.h"

#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>

namespace cimhost::http {

bool Backlog::add(std::size_t bytes) {
    const std::lock_guard lock(mutex);
    if (!isAbandoned) waiting += bytes;
    return !isAbandoned;
}

void Backlog::taken(std::size_t bytes) {
    {
        const std::lock_guard lock(mutex);
        waiting -= bytes;
    }
    changed.notify_all();
}

void Backlog::abandon() {
    {
        const std::lock_guard lock(mutex);
        isAbandoned = true;
    }
    changed.notify_all();
}

std::size_t Backlog::bytes() const {
    const std::lock_guard lock(mutex);
    return waiting;
}

void Backlog::waitUntil(std::size_t most, std::chrono::steady_clock::duration longest) const {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, longest, [&] { return isAbandoned || waiting <= most; });
}

class ConnectionReply::Pieces final : public PiecewiseAnswer {
public:
    Pieces(std::shared_ptr<Way> back, std::shared_ptr<Backlog> untaken)
        : way(std::move(back)), backlog(std::move(untaken)) {}

    ~Pieces() override {
        const std::lock_guard lock(way->mutex);
        if (way->stage != Stage::inPieces) return;
        way->stage = Stage::answered;
        way->post([](Addressee& waiting) { waiting.breakOff(); });
    }

    bool write(ByteBuffer piece) override {
        const std::lock_guard lock(way->mutex);
        if (way->stage != Stage::inPieces || !backlog->add(piece.size())) return false;
        if (piece.empty()) return true; // a chunk without bytes would be the last one
        way->post([piece = std::move(piece)](Addressee& waiting) mutable { waiting.takePiece(std::move(piece)); });
        return true;
    }

    std::size_t waitingBytes() const override { return backlog->bytes(); }

    void waitUntilTaken(std::size_t most, std::chrono::steady_clock::duration longest) override {
        backlog->waitUntil(most, longest);
    }

    void end(std::vector<Field> trailers) override {
        const std::lock_guard lock(way->mutex);
        if (way->stage != Stage::inPieces) return;
        way->stage = Stage::answered;
        way->post([given = std::move(trailers)](Addressee& waiting) mutable { waiting.endAnswer(std::move(given)); });
    }

private:
    const std::shared_ptr<Way> way;
    const std::shared_ptr<Backlog> backlog;
};

ConnectionReply::ConnectionReply(std::shared_ptr<Mailbox> box, std::weak_ptr<Addressee> waiting,
                                 std::shared_ptr<const std::atomic<bool>> awaited, bool takesPieces)
    : way(std::make_shared<Way>()), mayBegin(takesPieces) {
    way->mailbox = std::move(box);
    way->addressee = std::move(waiting);
    way->isWaiting = std::move(awaited);
}

ConnectionReply::~ConnectionReply() { ConnectionReply::send(textResponse(500, "the request was not answered")); }

void ConnectionReply::send(Response answer) {
    const std::lock_guard lock(way->mutex);
    if (way->stage == Stage::answered || (way->stage == Stage::inPieces && answer.trailers.empty())) return;
    const Stage before = std::exchange(way->stage, Stage::answered);
    if (before == Stage::inPieces) {
        way->post(
            [given = std::move(answer.trailers)](Addressee& waiting) mutable { waiting.endAnswer(std::move(given)); });
    } else {
        way->post([given = std::move(answer)](Addressee& waiting) mutable { waiting.takeAnswer(std::move(given)); });
    }
}

std::unique_ptr<PiecewiseAnswer> ConnectionReply::begin(Response head) {
    if (!mayBegin) return nullptr;
    const auto backlog = std::make_shared<Backlog>();
    const std::lock_guard lock(way->mutex);
    if (way->stage != Stage::unanswered) return nullptr;
    way->stage = Stage::inPieces;
    way->post([given = std::move(head), backlog](Addressee& waiting) mutable {
        waiting.beginAnswer(std::move(given), std::move(backlog));
    });
    return std::make_unique<Pieces>(way, backlog);
}

bool hasUntakenBytes(int socket) {
    int bytes = 0;
    return ::ioctl(socket, SIOCOUTQ, &bytes) == 0 && bytes > 0;
}

namespace {

bool tells(int socket, short events) {
    pollfd asked{socket, events, 0};
    return ::poll(&asked, 1, 0) > 0 && (asked.revents & (events | POLLHUP | POLLERR | POLLNVAL)) != 0;
}

} // namespace

bool isClosedByPeer(int socket) { return tells(socket, POLLRDHUP); }

bool isBroken(int socket) { return tells(socket, 0); }

} // namespace cimhost::http
