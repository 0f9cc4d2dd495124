#include "log/printable.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace merolt {

namespace {

/// Length of the text that a format ends in; all of it if there is no conversion.
std::size_t literalTail(const char* format) {
    std::size_t tail = 0;
    for (; *format; ++format) {
        ++tail;
        if (*format != '%') continue;
        ++format;
        if (*format == '%') continue;
        format += std::strspn(format, "-+ #0123456789.*hlzjtLq");
        if (!*format) return 0;
        tail = 0;
    }
    return tail;
}

bool isAsciiControl(unsigned char byte) { return byte < 0x20 || byte == 0x7F; }

/// A control character of C1, U+0080 to U+009F, in UTF-8.
bool isC1(const unsigned char* bytes) { return bytes[0] == 0xC2 && bytes[1] >= 0x80 && bytes[1] <= 0x9F; }

/// A short text in place of a byte.
class Escape {
public:
    explicit Escape(unsigned char byte) {
        switch (byte) {
        case '\n':
            std::strcpy(text, "\\n");
            break;
        case '\r':
            std::strcpy(text, "\\r");
            break;
        case '\t':
            std::strcpy(text, "\\t");
            break;
        default:
            std::snprintf(text, sizeof(text), "\\x%02X", static_cast<unsigned>(byte));
        }
    }
    const char* characters() const { return text; }
    std::size_t length() const { return std::strlen(text); }

private:
    char text[8];
};

} // namespace

void copyPrintable(const char* message, std::size_t outsideEnd, char* out) {
    std::size_t used = 0;
    const auto append = [&](const char* text, std::size_t length) {
        const std::size_t taken = std::min(length, logMessageSize - 1 - used);
        std::memcpy(out + used, text, taken);
        used += taken;
    };
    const std::size_t size = std::strlen(message);
    const auto* bytes = reinterpret_cast<const unsigned char*>(message);
    std::size_t at = 0;
    while (at < std::min(size, outsideEnd)) {
        const std::size_t controls = isC1(bytes + at) ? 2 : isAsciiControl(bytes[at]) ? 1 : 0;
        for (std::size_t index = 0; index < controls; ++index) {
            const Escape escape(bytes[at + index]);
            append(escape.characters(), escape.length());
        }
        if (controls == 0) append(message + at, 1);
        at += std::max<std::size_t>(controls, 1);
    }
    append(message + at, size - at);
    out[used] = '\0';
}

std::size_t outsideLength(const char* format, const char* message, std::size_t length) {
    if (std::strcmp(format, "%s") != 0) return length - std::min(length, literalTail(format));
    std::size_t end = std::strlen(message);
    while (end > 0 && message[end - 1] == '\n')
        --end;
    return end;
}

} // namespace merolt
