#include "tavik/log.h"

#include <atomic>
#include <cstdio>

namespace tavik {

namespace {

std::atomic<bool> logging{false};

} // namespace

void setLogging(bool on) { logging = on; }

bool isLogging() { return logging; }

void log(const std::string& text) {
    if (isLogging()) report(text);
}

void report(const std::string& text) {
    // One call a line, so that lines of several threads do not mix.
    const auto line = "tavik: " + text + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace tavik
