#include "tavik/log.h"

#include <atomic>
#include <cstdio>

namespace tavik {

namespace {

std::atomic<bool> logging{false};

/** The text without what would end the line or steer a terminal. Bytes of UTF-8 stay. */
std::string printable(const std::string& text) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string shown;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0x20 && byte != 0x7F) {
            shown += character;
        } else {
            shown += {'\\', 'x', digits[byte >> 4], digits[byte & 0xF]};
        }
    }
    return shown;
}

} // namespace

void setLogging(bool on) { logging = on; }

bool isLogging() { return logging; }

void log(const std::string& text) {
    if (isLogging()) report(text);
}

void report(const std::string& text) {
    // One call a line, so that lines of several threads do not mix.
    const auto line = "tavik: " + printable(text) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace tavik
