#include "cimhost/cli/output_stream.h"

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <unistd.h>

namespace cimhost::cli {

CleanOutput::CleanOutput() : realOutput(::dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    if (realOutput < 0 || ::dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        throw std::runtime_error("standard output is closed");
    }
}

CleanOutput::~CleanOutput() {
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
