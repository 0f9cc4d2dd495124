#include "cimhost/cli/output_stream.h"

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <streambuf>
#include <unistd.h>

namespace cimhost::cli {

namespace {

// Without a state of its own, so that threads of a provider may use it at any time.
class Nowhere final : public std::streambuf {
protected:
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

// A thread of a provider may still print while the process ends.
std::streambuf* nowhere() {
    static auto* const kept = new Nowhere;
    return kept;
}

} // namespace

CleanOutput::CleanOutput() : realOutput(::dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    if (realOutput < 0 || ::dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        throw std::runtime_error("standard output is closed");
    }
    realErrors = std::cerr.rdbuf(nowhere());
}

CleanOutput::~CleanOutput() {
    std::cerr.rdbuf(realErrors);
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
