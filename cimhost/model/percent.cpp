#include "cimhost/model/percent.h"

#include <cstddef>
#include <optional>

namespace cimhost {

namespace {

std::optional<unsigned> hexDigit(char digit) {
    if (digit >= '0' && digit <= '9') return static_cast<unsigned>(digit - '0');
    if (digit >= 'a' && digit <= 'f') return static_cast<unsigned>(digit - 'a') + 10;
    if (digit >= 'A' && digit <= 'F') return static_cast<unsigned>(digit - 'A') + 10;
    return std::nullopt;
}

} // namespace

std::string escapePercent(std::string_view text, std::string_view alsoPlain) {
    constexpr const char* digits = "0123456789ABCDEF";
    std::string escaped;
    for (const char character : text) {
        const bool isVisible = character > ' ' && character < 0x7f && character != '%';
        if (isVisible || alsoPlain.find(character) != std::string_view::npos) {
            escaped += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        escaped.append("%").append(1, digits[byte / 16]).append(1, digits[byte % 16]);
    }
    return escaped;
}

std::string decodePercent(std::string_view text) {
    std::string decoded;
    for (std::size_t position = 0; position < text.size(); ++position) {
        if (text[position] == '%' && position + 2 < text.size()) {
            const std::optional<unsigned> high = hexDigit(text[position + 1]);
            const std::optional<unsigned> low = hexDigit(text[position + 2]);
            if (high && low) {
                decoded += static_cast<char>(*high * 16 + *low);
                position += 2;
                continue;
            }
        }
        decoded += text[position];
    }
    return decoded;
}

} // namespace cimhost
