#include "cimhost/indications/delivery.h"

#include "cimhost/byte_buffer.h"
#include "cimhost/cimxml/answer.h"
#include "cimhost/cimxml/encoder.h"
#include "cimhost/cimxml/xml_text.h"
#include "cimhost/model/printable.h"

#include <algorithm>
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

// What a listener sends goes to a log that people read.
std::string shownReason(std::string_view text) { return printable(text.substr(0, longestReason)); }

} // namespace

Delivery::Delivery(http::Url url, std::string_view name, std::string sequenceContext, DeliveryOptions options,
                   LogSink sink)
    : listener(printable(name)), context(std::move(sequenceContext)), settings(options), log(std::move(sink)),
      client(std::move(url), options.limits), pause(options.firstPause), thread([this] { run(); }) {}

Delivery::~Delivery() {
    stop(std::chrono::milliseconds::zero());
    if (thread.joinable()) thread.join();
}

void Delivery::report(LogLevel level, const std::string& text) const {
    if (log) log(level, "listener " + listener + ": " + text);
}

void Delivery::enqueue(OpenInstance indication) {
    std::uint64_t droppedBefore = 0;
    std::uint64_t droppedNow = 0;
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
    }
    changed.notify_one();
    // The first one is told at once; the rest is counted, and told when the listener answers again or is given up.
    if (droppedBefore == 0 && droppedNow > 0) report(LogLevel::warning, "the queue is full, the oldest is dropped");
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

// False when the thread is to end. While the listener fails, work is what is left after a pause.
bool Delivery::waitForWork(std::unique_lock<std::mutex>& lock) {
    if (isFailing && !isStopping) {
        changed.wait_for(lock, pause, [this] { return isStopping; });
        pause = std::min(pause * 2, settings.longestPause);
        giveUpExpired();
    }
    if (!isStopping) changed.wait(lock, [this] { return isStopping || !queue.empty(); });
    return !isStopping || (!queue.empty() && !isFailing && Clock::now() < stopAt);
}

void Delivery::run() {
    std::unique_lock lock(mutex);
    while (waitForWork(lock)) {
        const Waiting waiting = queue.front();
        ++totals.attempts;
        lock.unlock();
        std::string reason;
        const Attempt result = attempt(waiting, reason);
        lock.lock();
        if (result == Attempt::failed) {
            noteFailure(reason);
            continue;
        }
        if (!queue.empty() && queue.front().number == waiting.number) {
            queuedBytes -= waiting.instance->size();
            queue.pop_front();
        } else {
            --totals.dropped; // on its way it was the oldest, but it has arrived
        }
        ++(result == Attempt::taken ? totals.delivered : totals.refused);
        noteSuccess();
        if (result == Attempt::refused) report(LogLevel::warning, "refused an indication: " + reason);
    }
    totals.givenUp += queue.size();
    if (!queue.empty()) report(LogLevel::warning, countOf(queue.size()) + " given up at the end");
    queue.clear();
    queuedBytes = 0;
    hasEnded = true;
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

Delivery::Attempt Delivery::attempt(const Waiting& waiting, std::string& reason) {
    try {
        const http::ClientAnswer answer = client.post(exportFields, messageFor(waiting));
        if (answer.status != 200) {
            reason = "answered with HTTP status " + std::to_string(answer.status);
            return Attempt::failed;
        }
        const auto decoded = cimxml::decodeAnswer(answer.body);
        if (const auto* garbage = std::get_if<cimxml::ProtocolError>(&decoded)) {
            reason = "the answer is no CIM-XML: " + shownReason(garbage->message);
            return Attempt::failed;
        }
        const auto* error = std::get_if<CimError>(&std::get<cimxml::Answer>(decoded));
        if (!error) return Attempt::taken;
        reason = "status " + std::to_string(error->code) + " " + shownReason(error->description);
        return Attempt::refused;
    } catch (const std::exception& error) {
        reason = shownReason(error.what());
        return Attempt::failed;
    }
}

bool Delivery::abandon() {
    bool ended = false;
    {
        const std::lock_guard lock(mutex);
        isStopping = true;
        stopAt = Clock::now();
        ended = hasEnded;
    }
    client.abort();
    changed.notify_all();
    return ended;
}

void Delivery::stop(std::chrono::milliseconds grace) {
    if (grace > std::chrono::milliseconds::zero()) {
        std::unique_lock lock(mutex);
        isStopping = true;
        stopAt = Clock::now() + grace;
        changed.notify_all();
        changed.wait_until(lock, stopAt, [this] { return hasEnded; });
    }
    abandon();
    if (thread.joinable()) thread.join();
}

DeliveryCounts Delivery::counts() const {
    const std::lock_guard lock(mutex);
    return totals;
}

} // namespace cimhost
