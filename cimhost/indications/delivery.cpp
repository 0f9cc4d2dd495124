#include "cimhost/indications/delivery.h"

#include "cimhost/byte_buffer.h"
#include "cimhost/cimxml/answer.h"
#include "cimhost/cimxml/encoder.h"
#include "cimhost/cimxml/xml_text.h"
#include "cimhost/model/printable.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace cimhost {

namespace {

constexpr std::size_t longestReason = 200;

const std::vector<http::Field> exportFields = {
    {"Content-Type", "application/xml; charset=\"utf-8\""},
    {"Accept", "application/xml, text/xml"},
    {"CIMProtocolVersion", "1.0"},
    {"CIMExport", "MethodRequest"},
    {"CIMExportMethod", "ExportIndication"},
};

std::string countOf(std::uint64_t count) {
    return std::to_string(count) + (count == 1 ? " indication" : " indications");
}

// A listener's words go to a log that people read, so they are shortened and made printable.
std::string shownReason(std::string_view text) { return printable(text.substr(0, longestReason)); }

} // namespace

Delivery::Delivery(DeliveryLoop& loop, http::Url url, std::string_view name, std::string sequenceContext,
                   DeliveryOptions options, LogSink sink)
    : listener(printable(name)), context(std::move(sequenceContext)), settings(options), log(std::move(sink)),
      shared(loop), client(loop.loop(), std::move(url), options.limits), timer(loop.loop()), stopTimer(loop.loop()),
      pause(options.firstPause) {}

Delivery::~Delivery() = default;

void Delivery::report(LogLevel level, const std::string& text) const {
    if (log) log(level, "listener " + listener + ": " + text);
}

void Delivery::enqueue(OpenInstance indication) {
    std::uint64_t droppedBefore = 0;
    std::uint64_t droppedNow = 0;
    bool wasAwake = false;
    {
        const std::lock_guard lock(mutex);
        if (isStopping) {
            ++totals.givenUp;
            return;
        }
        droppedBefore = totals.dropped;
        queuedBytes += indication->size();
        queue.push_back({std::move(indication), nextNumber++, Clock::now() + settings.patience});
        while (queue.size() > 1 && (queue.size() > settings.queueLength || queuedBytes > settings.queueBytes))
            dropOldest();
        droppedNow = totals.dropped;
        wasAwake = std::exchange(isAwake, true);
    }
    if (!wasAwake) postWake();
    // The first loss is reported at once. Later ones are counted, and reported when the listener answers again.
    if (droppedBefore == 0 && droppedNow > 0) report(LogLevel::warning, "the queue is full, the oldest is dropped");
}

void Delivery::postWake() {
    try {
        shared.loop().post([self = shared_from_this()] { self->tryStep([&] { self->wake(); }); });
    } catch (const std::exception&) {
        noteAsleep();
        throw;
    }
}

void Delivery::dropOldest() {
    queuedBytes -= queue.front().instance->size();
    queue.pop_front();
    ++totals.dropped;
}

void Delivery::giveUpExpired() {
    const Clock::time_point now = Clock::now();
    while (!queue.empty() && queue.front().until <= now) {
        queuedBytes -= queue.front().instance->size();
        queue.pop_front();
        ++totals.givenUp;
    }
}

// Carries out one step on the loop. An exception on this side, as for want of memory, counts as a failed attempt: there
// may be memory again for the next one.
template <class Step>
void Delivery::tryStep(Step step) {
    try {
        step();
    } catch (const std::exception& error) {
        failStep(error.what());
    }
}

void Delivery::failStep(const char* reason) {
    if (stage == Stage::ended) return;
    try {
        settle(Attempt::failed, reason);
        startPause();
    } catch (const std::exception&) {
        // Not even a pause can be made. The next indication wakes the delivery.
        stage = Stage::idle;
        noteAsleep();
    }
}

void Delivery::noteAsleep() {
    const std::lock_guard lock(mutex);
    isAwake = false;
}

void Delivery::wake() {
    if (stage != Stage::idle) return;
    shared.noteBusy(*this);
    takeNext();
}

// Called with the lock.
bool Delivery::isToEnd() const { return isStopping && (queue.empty() || isFailing || Clock::now() >= stopAt); }

// Goes on to the next indication, if there is one. The connection, if there is one, is not in use at this moment.
void Delivery::takeNext() {
    stage = Stage::idle;
    std::unique_lock lock(mutex);
    if (isToEnd()) {
        lock.unlock();
        return end();
    }
    if (queue.empty()) {
        isAwake = false;
        lock.unlock();
        if (hasConnection) shared.noteIdle(*this);
        return;
    }
    lock.unlock();
    stage = Stage::waitingForConnection;
    if (hasConnection || shared.request(shared_from_this())) onGranted();
}

void Delivery::onGranted() {
    if (stage != Stage::waitingForConnection) return shared.release();
    hasConnection = true;
    tryStep([this] { send(); });
}

void Delivery::send() {
    Waiting waiting;
    {
        const std::lock_guard lock(mutex);
        waiting = queue.front();
        ++totals.attempts;
    }
    stage = Stage::sending;
    sentNumber = waiting.number;
    client.post(exportFields, messageFor(waiting), [self = shared_from_this()](const http::ClientResult& result) {
        self->tryStep([&] { self->onResult(result); });
    });
}

void Delivery::onResult(const http::ClientResult& result) {
    if (stage != Stage::sending) return;
    if (!client.isOpen()) closeConnection();
    std::string reason;
    const Attempt judged = judge(result, reason);
    settle(judged, reason);
    if (judged == Attempt::failed) return startPause();
    // Posted, so that other listeners have their turn first.
    shared.loop().post([self = shared_from_this()] {
        if (self->stage == Stage::sending) self->tryStep([&] { self->takeNext(); });
    });
}

void Delivery::settle(Attempt result, const std::string& reason) {
    const std::lock_guard lock(mutex);
    if (result == Attempt::failed) return noteFailure(reason);
    if (!queue.empty() && queue.front().number == sentNumber) {
        queuedBytes -= queue.front().instance->size();
        queue.pop_front();
    } else {
        --totals.dropped; // it was dropped as the oldest while on its way, but it has arrived
    }
    ++(result == Attempt::taken ? totals.delivered : totals.refused);
    noteSuccess();
    if (result == Attempt::refused) report(LogLevel::warning, "refused an indication: " + reason);
}

// After a failure: the next attempt comes after a pause.
void Delivery::startPause() {
    stage = Stage::pausing;
    // Meanwhile other listeners can have the connection.
    client.close();
    closeConnection();
    {
        const std::lock_guard lock(mutex);
        if (isStopping) {
            shared.loop().post([self = shared_from_this()] { self->tryStep([&] { self->onStop(); }); });
            return;
        }
    }
    timer.start(Clock::now() + pause, [self = shared_from_this()] { self->tryStep([&] { self->endPause(); }); });
}

void Delivery::endPause() {
    if (stage != Stage::pausing) return;
    pause = std::min(pause * 2, settings.longestPause);
    {
        const std::lock_guard lock(mutex);
        giveUpExpired();
    }
    takeNext();
}

void Delivery::closeConnection() {
    if (std::exchange(hasConnection, false)) shared.release();
}

void Delivery::giveUpConnection() {
    client.close();
    hasConnection = false;
}

void Delivery::end() {
    if (stage == Stage::ended) return;
    stage = Stage::ended;
    timer.cancel();
    stopTimer.cancel();
    shared.noteBusy(*this);
    client.close();
    closeConnection();
    {
        const std::lock_guard lock(mutex);
        totals.givenUp += queue.size();
        if (!queue.empty()) report(LogLevel::warning, countOf(queue.size()) + " given up at the end");
        queue.clear();
        queuedBytes = 0;
        hasEnded = true;
    }
    changed.notify_all();
}

void Delivery::noteFailure(const std::string& reason) {
    if (isFailing) return;
    isFailing = true;
    pause = settings.firstPause;
    report(LogLevel::warning,
           reason + "; each indication is tried for " +
               std::to_string(std::chrono::duration_cast<std::chrono::seconds>(settings.patience).count()) +
               " seconds");
}

void Delivery::noteSuccess() {
    const std::uint64_t lost = totals.dropped + totals.givenUp;
    const std::uint64_t lostSince = lost - std::exchange(lostAtLastReport, lost);
    if (std::exchange(isFailing, false) || lostSince > 0) {
        report(LogLevel::warning, "answers again; " + countOf(lostSince) + " lost");
    }
}

std::string Delivery::messageFor(const Waiting& waiting) const {
    ByteBuffer message("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
                       "<MESSAGE ID=\"");
    const std::string number = std::to_string(waiting.number);
    message.append(number);
    message.append("\" PROTOCOLVERSION=\"1.0\"><SIMPLEEXPREQ><EXPMETHODCALL NAME=\"ExportIndication\">"
                   "<EXPPARAMVALUE NAME=\"NewIndication\">");
    message.append(*waiting.instance);
    message.append("<PROPERTY NAME=\"SequenceContext\" TYPE=\"string\"><VALUE>");
    cimxml::appendText(message, context);
    message.append("</VALUE></PROPERTY><PROPERTY NAME=\"SequenceNumber\" TYPE=\"sint64\"><VALUE>");
    message.append(number);
    message.append("</VALUE></PROPERTY></INSTANCE></EXPPARAMVALUE></EXPMETHODCALL></SIMPLEEXPREQ></MESSAGE></CIM>\n");
    return std::string(message.view());
}

Delivery::Attempt Delivery::judge(const http::ClientResult& result, std::string& reason) const {
    if (!result.error.empty()) {
        reason = shownReason(result.error);
        return Attempt::failed;
    }
    if (result.answer.status != 200) {
        reason = "answered with HTTP status " + std::to_string(result.answer.status);
        return Attempt::failed;
    }
    const auto decoded = cimxml::decodeAnswer(result.answer.body);
    if (const auto* garbage = std::get_if<cimxml::ProtocolError>(&decoded)) {
        reason = "the answer is no CIM-XML: " + shownReason(garbage->message);
        return Attempt::failed;
    }
    const auto* error = std::get_if<CimError>(&std::get<cimxml::Answer>(decoded));
    if (!error) return Attempt::taken;
    reason = "status " + std::to_string(error->code) + " " + shownReason(error->description);
    return Attempt::refused;
}

void Delivery::stop(Clock::time_point until) {
    {
        const std::lock_guard lock(mutex);
        stopAt = isStopping ? std::min(stopAt, until) : until;
        isStopping = true;
    }
    shared.loop().post([self = shared_from_this()] { self->tryStep([&] { self->onStop(); }); });
}

void Delivery::onStop() {
    if (stage == Stage::ended) return;
    std::unique_lock lock(mutex);
    const Clock::time_point until = stopAt;
    const bool isDue = isToEnd();
    lock.unlock();
    const bool isOver = Clock::now() >= until;
    // The message under way ends with an error, and then the delivery ends.
    if (stage == Stage::sending && isOver) return client.abort();
    if (stage != Stage::sending && (isDue || isOver)) return end();
    stopTimer.start(until, [self = shared_from_this()] { self->tryStep([&] { self->onStop(); }); });
}

void Delivery::waitForEnd() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return hasEnded; });
}

std::size_t Delivery::queued() const {
    const std::lock_guard lock(mutex);
    return queue.size();
}

bool Delivery::isOver() const {
    const std::lock_guard lock(mutex);
    return hasEnded;
}

DeliveryCounts& DeliveryCounts::operator+=(const DeliveryCounts& more) {
    delivered += more.delivered;
    refused += more.refused;
    dropped += more.dropped;
    givenUp += more.givenUp;
    attempts += more.attempts;
    return *this;
}

DeliveryCounts Delivery::counts() const {
    const std::lock_guard lock(mutex);
    return totals;
}

} // namespace cimhost
