#include "cimhost/service/audit.h"

#include "cimhost/model/printable.h"
#include "cimhost/model/utf8.h"

#include <algorithm>

namespace cimhost {

namespace {

constexpr std::size_t longestName = 128;
constexpr std::size_t longestObject = 512;

bool isPlain(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte > 0x20 && byte != 0x7f && byte != '"' && byte != '\\' && byte != '=';
}

// Bytes that are no UTF-8 become question marks: a log might hide a line that holds them.
std::string asUtf8(std::string_view text) {
    std::string clean;
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        clean.append(length == 0 ? std::string_view("?") : text.substr(0, length));
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return clean;
}

// Cut between two characters of UTF-8.
std::string_view cut(std::string_view text, std::size_t longest) {
    if (text.size() <= longest) return text;
    while (longest > 0 && (static_cast<unsigned char>(text[longest]) & 0xC0) == 0x80)
        --longest;
    return text.substr(0, longest);
}

void appendQuoted(std::string& line, std::string_view text) {
    line += '"';
    for (const char character : text) {
        if (character == '"' || character == '\\') line += '\\';
        line += character;
    }
    line += '"';
}

void append(std::string& line, std::string_view name, std::string_view value, std::size_t longest) {
    std::string shown = printable(asUtf8(cut(value, longest)));
    if (value.size() > longest) shown += "...";
    line.append(" ").append(name).append("=");
    if (!shown.empty() && std::all_of(shown.begin(), shown.end(), isPlain)) {
        line += shown;
    } else {
        appendQuoted(line, shown);
    }
}

std::string lineOf(const AuditLog::Change& change) {
    std::string line = "audit:";
    append(line, "client", change.client, longestName);
    append(line, "user", change.user, longestName);
    append(line, "operation", change.operation, longestName);
    if (!change.object.empty()) append(line, "object", change.object, longestObject);
    append(line, "result", change.result, longestName);
    return line;
}

} // namespace

AuditLog::AuditLog(Sink lines, AuditOptions bounds)
    : sink(std::move(lines)), options(bounds), counter([this] { countUntilStopped(); }) {}

AuditLog::~AuditLog() {
    {
        const std::lock_guard lock(mutex);
        stopping = true;
    }
    changes.notify_all();
    counter.join();
    tellCount();
}

void AuditLog::changed(const Change& change) {
    const std::string line = lineOf(change);
    const std::lock_guard lock(mutex);
    sink(line);
}

void AuditLog::refused(const Change& change) { tellRefusal(lineOf(change)); }

void AuditLog::refusedLogin(std::string_view client, std::string_view user) {
    tellRefusal(lineOf({client, user, "login", {}, "refused"}));
}

void AuditLog::tellRefusal(std::string_view line) {
    const std::lock_guard lock(mutex);
    const auto now = std::chrono::steady_clock::now();
    if (now >= spanEnd) {
        tellCount();
        spanEnd = now + options.span;
        toldInSpan = 0;
    }
    if (toldInSpan < options.refusals) {
        ++toldInSpan;
        return sink(line);
    }
    if (untold++ == 0) changes.notify_all();
}

void AuditLog::tellCount() {
    if (untold == 0) return;
    sink("audit: " + std::to_string(untold) + " more refused logins and changes, not told one by one");
    untold = 0;
}

// Tells a count at the end of its span, even if no further refusal follows.
void AuditLog::countUntilStopped() {
    std::unique_lock lock(mutex);
    while (!stopping) {
        changes.wait(lock, [this] { return stopping || untold > 0; });
        changes.wait_until(lock, spanEnd, [this] { return stopping; });
        if (!stopping && std::chrono::steady_clock::now() >= spanEnd) tellCount();
    }
}

} // namespace cimhost
