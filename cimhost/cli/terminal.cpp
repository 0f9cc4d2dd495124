#include "cimhost/cli/terminal.h"

#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>

namespace cimhost::cli {

namespace {

/// Where a terminal does not tell its own.
constexpr std::size_t usualWidth = 80;

std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::size_t widthOf(int descriptor) {
    winsize size{};
    return ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usualWidth;
}

/// Parameters of "select graphic rendition" (ECMA-48, 8.3.117).
std::string_view renditionOf(Colour colour) {
    switch (colour) {
    case Colour::red:
        return "31";
    case Colour::green:
        return "32";
    case Colour::yellow:
        return "33";
    case Colour::bold:
        break;
    }
    return "1";
}

} // namespace

bool isTerminal(int descriptor) { return ::isatty(descriptor) == 1; }

Layout layoutOf(int descriptor) {
    if (!isTerminal(descriptor)) return {};
    return {widthOf(descriptor), environment("NO_COLOR").empty() && environment("TERM") != "dumb"};
}

std::string coloured(const Layout& layout, Colour colour, std::string_view text) {
    if (!layout.hasColours) return std::string(text);
    return std::string("\033[").append(renditionOf(colour)).append("m").append(text).append("\033[0m");
}

} // namespace cimhost::cli
