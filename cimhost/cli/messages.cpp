#include "cimhost/cli/messages.h"

#include "cimhost/cli/terminal.h"
#include "cimhost/model/printable.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <iostream>
#include <unistd.h>
#include <utility>

namespace cimhost::cli {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* clearLine = "\r\033[K";

// Not to std::cerr, which is the provider's while a command asks it.
void write(const std::string& line) { std::clog << line << '\n' << std::flush; }

std::string jsonLine(const char* kind, Json content) {
    const Json object = {{kind, std::move(content)}};
    return object.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string name() { return coloured(layoutOf(STDERR_FILENO), Colour::bold, "cimhost:") + " "; }

struct Kind {
    LogLevel level;
    const char* name;
    Colour colour;
};

constexpr Kind kinds[] = {
    {LogLevel::error, "error", Colour::red},
    {LogLevel::warning, "warning", Colour::yellow},
};

const Kind* kindOf(LogLevel level) {
    for (const Kind& kind : kinds) {
        if (kind.level == level) return &kind;
    }
    return nullptr;
}

LogLevel lowestShown(Verbosity verbosity) {
    if (verbosity == Verbosity::quiet) return LogLevel::error;
    return verbosity == Verbosity::verbose ? LogLevel::trace : LogLevel::warning;
}

} // namespace

void say(const MessageOptions& options, LogLevel level, std::string_view text) {
    if (level < lowestShown(options.verbosity)) return;
    const Kind* kind = kindOf(level);
    if (options.json) return write(jsonLine(kind ? kind->name : "note", {{"message", text}}));
    const std::string mark = kind ? coloured(layoutOf(STDERR_FILENO), kind->colour, kind->name) + ": " : "";
    write(name() + mark + std::string(text));
}

void sayError(const MessageOptions& options, std::string_view reason) {
    if (options.json) return write(jsonLine("error", {{"message", reason}}));
    write(name() + std::string(reason));
}

void sayError(const MessageOptions& options, const CimFailure& failure) {
    const CMPIrc code = failure.error().code;
    if (!options.json) {
        return write(name() + std::string(statusName(code)) + " (" + std::to_string(code) + "): " + failure.what());
    }
    write(
        jsonLine("error", {{"code", static_cast<int>(code)}, {"name", statusName(code)}, {"message", failure.what()}}));
}

void sayServerError(const MessageOptions& options, std::string_view server, const CimError* status,
                    std::string_view reason) {
    if (!options.json) {
        const std::string front =
            status ? std::string(statusName(status->code)) + " (" + std::to_string(status->code) + "): " : "";
        return write(name() + printable(server) + ": " + front + printable(reason));
    }
    Json error = {{"server", server}};
    if (status) {
        error["code"] = static_cast<int>(status->code);
        error["name"] = statusName(status->code);
    }
    error["message"] = reason;
    write(jsonLine("error", std::move(error)));
}

Progress::Progress(const MessageOptions& options, std::string waitedFor)
    : Progress(options, [waitedFor = std::move(waitedFor)] { return waitedFor; }) {}

Progress::Progress(const MessageOptions& options, std::function<std::string()> waitedFor) : what(std::move(waitedFor)) {
    if (options.json || options.verbosity == Verbosity::quiet || !isTerminal(STDERR_FILENO)) return;
    thread = std::thread([this] { run(); });
}

Progress::~Progress() {
    if (!thread.joinable()) return;
    {
        const std::lock_guard guard(mutex);
        isOver = true;
    }
    changed.notify_one();
    thread.join();
}

void Progress::clear() {
    const std::lock_guard guard(mutex);
    if (std::exchange(isShown, false)) std::clog << clearLine << std::flush;
}

void Progress::run() {
    std::unique_lock guard(mutex);
    int seconds = 0;
    while (!changed.wait_for(guard, std::chrono::seconds(1), [this] { return isOver; })) {
        std::clog << clearLine << "cimhost: " << what() << ", " << ++seconds << " s" << std::flush;
        isShown = true;
    }
    if (isShown) std::clog << clearLine << std::flush;
}

} // namespace cimhost::cli
