#include "cimhost/cli/output_stream.h"

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <mutex>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <unistd.h>
#include <utility>

namespace cimhost::cli {

namespace {

// What a process prints, line by line to a sink. Any of its threads may print at any time.
class Lines final : public std::streambuf {
public:
    /// Behind what has no end yet.
    void tellTo(LogSink next) {
        const std::lock_guard guard(mutex);
        if (!line.empty()) tell();
        sink = std::move(next);
    }

protected:
    int_type overflow(int_type character) override {
        const char printed = traits_type::to_char_type(character);
        if (!traits_type::eq_int_type(character, traits_type::eof())) xsputn(&printed, 1);
        return traits_type::not_eof(character);
    }
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        const std::lock_guard guard(mutex);
        for (const char character : std::string_view(text, static_cast<std::size_t>(count))) {
            if (character == '\n') {
                tell();
            } else {
                line += character;
            }
        }
        return count;
    }

private:
    void tell() {
        if (sink) sink(LogLevel::trace, line);
        line.clear();
    }

    std::mutex mutex;
    std::string line;
    LogSink sink;
};

// A thread of a provider may still print while the process ends.
Lines& errorLines() {
    static auto* const kept = new Lines;
    return *kept;
}

} // namespace

CleanOutput::CleanOutput(const LogSink& messages) : realOutput(::dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    if (realOutput < 0 || ::dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        throw std::runtime_error("standard output is closed");
    }
    errorLines().tellTo(messages);
    realErrors = std::cerr.rdbuf(&errorLines());
}

CleanOutput::~CleanOutput() {
    std::cerr.rdbuf(realErrors);
    errorLines().tellTo(nullptr);
    std::fflush(stdout);
    ::dup2(realOutput, STDOUT_FILENO);
    ::close(realOutput);
}

void CleanOutput::write(std::string_view text) const {
    while (!text.empty()) {
        const ssize_t written = ::write(realOutput, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace cimhost::cli
