#include "cimhost/model/utf8.h"

#include <array>

namespace cimhost {
namespace {

// What a sequence may begin with, and between which bounds its second byte lies.
struct LeadRule {
    unsigned char first, last;
    unsigned char secondFirst, secondLast;
    std::size_t length;
};

constexpr std::array<LeadRule, 8> leadRules = {{
    {0xc2, 0xdf, 0x80, 0xbf, 2},
    {0xe0, 0xe0, 0xa0, 0xbf, 3},
    {0xe1, 0xec, 0x80, 0xbf, 3},
    {0xed, 0xed, 0x80, 0x9f, 3},
    {0xee, 0xef, 0x80, 0xbf, 3},
    {0xf0, 0xf0, 0x90, 0xbf, 4},
    {0xf1, 0xf3, 0x80, 0xbf, 4},
    {0xf4, 0xf4, 0x80, 0x8f, 4},
}};

constexpr char32_t replacement = 0xfffd;

unsigned char byteAt(std::string_view text, std::size_t place) noexcept {
    return place < text.size() ? static_cast<unsigned char>(text[place]) : static_cast<unsigned char>(0);
}

bool isContinuation(unsigned char byte) noexcept { return (byte & 0xc0) == 0x80; }

bool isSurrogate(char32_t code) noexcept { return code >= 0xd800 && code <= 0xdfff; }

} // namespace

std::size_t utf8Length(std::string_view text) noexcept {
    if (text.empty()) return 0;
    const unsigned char first = byteAt(text, 0);
    if (first < 0x80) return 1;
    for (const LeadRule& rule : leadRules) {
        if (first < rule.first || first > rule.last) continue;
        const unsigned char second = byteAt(text, 1);
        if (second < rule.secondFirst || second > rule.secondLast) return 0;
        for (std::size_t place = 2; place < rule.length; ++place) {
            if (!isContinuation(byteAt(text, place))) return 0;
        }
        return rule.length;
    }
    return 0;
}

bool isUtf8(std::string_view text) noexcept {
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

std::optional<char32_t> singleCharacter(std::string_view text) noexcept {
    constexpr std::array<unsigned char, 5> leadBits = {0, 0x7f, 0x1f, 0x0f, 0x07};
    const std::size_t length = utf8Length(text);
    if (length == 0 || length != text.size()) return std::nullopt;
    char32_t code = byteAt(text, 0) & leadBits[length];
    for (std::size_t place = 1; place < length; ++place) {
        code = code << 6 | (byteAt(text, place) & 0x3fU);
    }
    return code;
}

void appendUtf8(std::string& out, char32_t code) {
    if (isSurrogate(code) || code > 0x10ffff) code = replacement;
    const auto append = [&](char32_t byte) { out += static_cast<char>(byte); };
    if (code < 0x80) return append(code);
    if (code < 0x800) {
        append(0xc0 | code >> 6);
    } else if (code < 0x10000) {
        append(0xe0 | code >> 12);
        append(0x80 | (code >> 6 & 0x3f));
    } else {
        append(0xf0 | code >> 18);
        append(0x80 | (code >> 12 & 0x3f));
        append(0x80 | (code >> 6 & 0x3f));
    }
    append(0x80 | (code & 0x3f));
}

} // namespace cimhost
