#include "cimhost/model/mof_lexer.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace cimhost {
namespace {

bool isDigit(char character) noexcept { return character >= '0' && character <= '9'; }

bool isNameStart(char character) noexcept { return isLegalName(std::string_view(&character, 1)); }

bool isNamePart(char character) noexcept { return isNameStart(character) || isDigit(character); }

// Length of the UTF-8 sequence at the text's start, 0 if that is none. Overlong forms, surrogates and what lies beyond
// U+10FFFF are none.
std::size_t sequenceLength(std::string_view text) noexcept {
    const auto byte = [&](std::size_t place) {
        return place < text.size() ? static_cast<unsigned char>(text[place]) : static_cast<unsigned char>(0);
    };
    const auto continues = [&](std::size_t place) { return (byte(place) & 0xc0) == 0x80; };
    const unsigned first = byte(0);
    const unsigned second = byte(1);
    if (first < 0x80) return 1;
    if (first < 0xc2 || first > 0xf4 || !continues(1)) return 0;
    if (first < 0xe0) return 2;
    if (first < 0xf0) {
        const bool isOverlong = first == 0xe0 && second < 0xa0;
        const bool isSurrogate = first == 0xed && second > 0x9f;
        return continues(2) && !isOverlong && !isSurrogate ? 3 : 0;
    }
    const bool isOverlong = first == 0xf0 && second < 0x90;
    const bool isTooLarge = first == 0xf4 && second > 0x8f;
    return continues(2) && continues(3) && !isOverlong && !isTooLarge ? 4 : 0;
}

void appendUtf8(std::string& out, unsigned code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xc0 | code >> 6);
        out += static_cast<char>(0x80 | (code & 0x3f));
    } else {
        out += static_cast<char>(0xe0 | code >> 12);
        out += static_cast<char>(0x80 | (code >> 6 & 0x3f));
        out += static_cast<char>(0x80 | (code & 0x3f));
    }
}

std::string describeByte(char character) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte > 0x20 && byte < 0x7f) return std::string("\"") + character + "\"";
    std::array<char, 16> written{};
    std::snprintf(written.data(), written.size(), "byte 0x%02x", static_cast<unsigned>(byte));
    return written.data();
}

} // namespace

MofLexer::MofLexer(std::string_view mofText, std::string fileName) : text(mofText), file(std::move(fileName)) {
    constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark) text.remove_prefix(byteOrderMark.size());
}

char MofLexer::peek(std::size_t ahead) const noexcept {
    return place + ahead < text.size() ? text[place + ahead] : '\0';
}

void MofLexer::advance(std::size_t bytes) noexcept {
    for (; bytes > 0 && place < text.size(); --bytes) {
        if (text[place++] != '\n') continue;
        ++line;
        lineStart = place;
    }
}

void MofLexer::fail(const std::string& message) const { throw MofError({file, line, place - lineStart + 1}, message); }

void MofLexer::skipSpaceAndComments() {
    while (place < text.size()) {
        const char character = peek();
        if (character == ' ' || character == '\t' || character == '\r' || character == '\n') {
            advance();
        } else if (character == '/' && peek(1) == '/') {
            const std::size_t lineEnd = text.find('\n', place);
            place = lineEnd == std::string_view::npos ? text.size() : lineEnd;
        } else if (character == '/' && peek(1) == '*') {
            skipBlockComment();
        } else {
            return;
        }
    }
}

void MofLexer::skipBlockComment() {
    const std::size_t close = text.find("*/", place + 2);
    if (close == std::string_view::npos) fail("comment without its closing \"*/\"");
    advance(close + 2 - place);
}

Token MofLexer::next() {
    skipSpaceAndComments();
    Token token;
    token.line = line;
    token.column = place - lineStart + 1;
    if (place >= text.size()) return token;

    const char character = peek();
    const std::size_t start = place;
    if (character == '"' || character == '\'') return readQuoted(std::move(token));
    const bool isSigned = character == '+' || character == '-';
    if (isDigit(character) || ((isSigned || character == '.') && (isDigit(peek(1)) || peek(1) == '.'))) {
        return readNumber(std::move(token));
    }
    if (isNameStart(character) || character == '#') {
        advance();
        while (isNamePart(peek())) {
            advance();
        }
        token.source = text.substr(start, place - start);
        token.kind = character == '#' ? TokenKind::pragma : TokenKind::name;
        if (token.kind == TokenKind::pragma && !equalNames(token.source, "#pragma")) {
            throw MofError(positionOf(token), "expected #pragma, found \"" + std::string(token.source) + "\"");
        }
        return token;
    }
    if (std::string_view("[](){},;:=$").find(character) == std::string_view::npos) {
        fail("unexpected " + describeByte(character));
    }
    advance();
    token.kind = TokenKind::symbol;
    token.source = text.substr(start, 1);
    return token;
}

Token MofLexer::readNumber(Token token) {
    const std::size_t start = place;
    bool isReal = false;
    const bool isHexadecimal = [&] {
        const std::size_t digits = peek() == '+' || peek() == '-' ? 1 : 0;
        return peek(digits) == '0' && (peek(digits + 1) == 'x' || peek(digits + 1) == 'X');
    }();
    advance();
    while (isNamePart(peek()) || peek() == '.' || (isReal && (peek() == '+' || peek() == '-'))) {
        const char character = peek();
        const bool isExponent = !isHexadecimal && (character == 'e' || character == 'E');
        isReal = isReal || character == '.' || isExponent;
        if ((character == '+' || character == '-') && text[place - 1] != 'e' && text[place - 1] != 'E') break;
        advance();
    }
    token.source = text.substr(start, place - start);
    if (text[start] == '.') isReal = true;
    if (!isReal) {
        const auto number = parseInteger(token.source);
        if (!number) {
            throw MofError(positionOf(token), "\"" + std::string(token.source) + "\" is no integer of at most 64 bits");
        }
        token.kind = TokenKind::integer;
        token.number = *number;
        return token;
    }
    token.kind = TokenKind::real;
    return token;
}

Token MofLexer::readQuoted(Token token) {
    const std::size_t start = place;
    const char quote = peek();
    token.kind = quote == '"' ? TokenKind::text : TokenKind::character;
    advance();
    while (peek() != quote) {
        if (place >= text.size() || peek() == '\n' || peek() == '\r') {
            throw MofError(positionOf(token), "text without its closing quote on the same line");
        }
        readCharacter(token.content);
    }
    advance();
    token.source = text.substr(start, place - start);
    if (token.kind == TokenKind::character && sequenceLength(token.content) != token.content.size()) {
        throw MofError(positionOf(token),
                       "expected one character between single quotes, found " + std::string(token.source));
    }
    return token;
}

void MofLexer::readCharacter(std::string& content) {
    if (peek() == '\\') return readEscape(content);
    const std::size_t length = sequenceLength(text.substr(place));
    if (length == 0) fail("text that is not UTF-8");
    if (peek() == '\0') fail("a NUL in a text");
    content.append(text.substr(place, length));
    advance(length);
}

void MofLexer::readEscape(std::string& content) {
    constexpr std::string_view letters = "btnfr\"'\\";
    constexpr std::string_view meanings = "\b\t\n\f\r\"'\\";
    const char letter = peek(1);
    if (letter == 'x' || letter == 'X') return readHexEscape(content);
    const std::size_t position = letter == '\0' ? std::string_view::npos : letters.find(letter);
    if (position == std::string_view::npos) fail("unknown escape in a text");
    content += meanings[position];
    advance(2);
}

void MofLexer::readHexEscape(std::string& content) {
    constexpr std::string_view digits = "0123456789abcdef";
    unsigned code = 0;
    std::size_t count = 0;
    for (; count < 4; ++count) {
        const char lower = static_cast<char>(peek(2 + count) | 0x20);
        const std::size_t value = peek(2 + count) == '\0' ? std::string_view::npos : digits.find(lower);
        if (value == std::string_view::npos) break;
        code = code * 16 + static_cast<unsigned>(value);
    }
    if (count == 0) fail("\\x without hexadecimal digits");
    if (code == 0 || (code >= 0xd800 && code <= 0xdfff)) fail("\\x with a code that is no character");
    appendUtf8(content, code);
    advance(2 + count);
}

} // namespace cimhost
