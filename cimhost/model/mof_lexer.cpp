#include "cimhost/model/mof_lexer.h"

#include <array>
#include <cstdio>
#include <utility>

#include "cimhost/model/utf8.h"

namespace cimhost {
namespace {

bool isDigit(char character) noexcept { return character >= '0' && character <= '9'; }

bool isNameStart(char character) noexcept { return isLegalName(std::string_view(&character, 1)); }

bool isNamePart(char character) noexcept { return isNameStart(character) || isDigit(character); }

std::string describeByte(char character) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte > 0x20 && byte < 0x7f) return std::string("\"") + character + "\"";
    std::array<char, 16> written{};
    std::snprintf(written.data(), written.size(), "byte 0x%02x", static_cast<unsigned>(byte));
    return written.data();
}

constexpr std::size_t longestName = 256;

} // namespace

std::string describe(const Token& token) {
    constexpr std::size_t longest = 60;
    if (token.kind == TokenKind::end) return "the end of the file";
    const bool isQuoted = token.kind == TokenKind::text || token.kind == TokenKind::character;
    if (token.source.size() > longest) {
        return (isQuoted ? "a text of " : "a word of ") + std::to_string(token.source.size()) + " bytes";
    }
    return isQuoted ? std::string(token.source) : "\"" + std::string(token.source) + "\"";
}

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
    if (character == '"' || character == '\'') return readQuoted(std::move(token));
    const bool isSigned = character == '+' || character == '-';
    if (isDigit(character) || ((isSigned || character == '.') && (isDigit(peek(1)) || peek(1) == '.'))) {
        return readNumber(std::move(token));
    }
    if (isNameStart(character) || character == '#') return readName(std::move(token));
    if (std::string_view("[](){},;:=$").find(character) == std::string_view::npos) {
        fail("unexpected " + describeByte(character));
    }
    token.kind = TokenKind::symbol;
    token.source = text.substr(place, 1);
    advance();
    return token;
}

Token MofLexer::readName(Token token) {
    const std::size_t start = place;
    token.kind = peek() == '#' ? TokenKind::pragma : TokenKind::name;
    advance();
    while (isNamePart(peek())) {
        advance();
    }
    token.source = text.substr(start, place - start);
    if (token.source.size() > longestName) {
        throw MofError(positionOf(token), "a name of more than " + std::to_string(longestName) + " bytes");
    }
    if (!isUtf8(token.source)) throw MofError(positionOf(token), "a name that is not UTF-8");
    if (token.kind == TokenKind::pragma && !equalNames(token.source, "#pragma")) {
        throw MofError(positionOf(token), "expected #pragma, found " + describe(token));
    }
    return token;
}

Token MofLexer::readNumber(Token token) {
    const std::size_t start = place;
    if (peek() == '+' || peek() == '-') advance();
    const bool isHexadecimal = peek() == '0' && (peek(1) == 'x' || peek(1) == 'X');
    bool isReal = false;
    char previous = '\0';
    const auto isExponentSign = [&] {
        return isReal && (peek() == '+' || peek() == '-') && (previous == 'e' || previous == 'E');
    };
    while (isNamePart(peek()) || peek() == '.' || isExponentSign()) {
        previous = peek();
        isReal = isReal || previous == '.' || (!isHexadecimal && (previous == 'e' || previous == 'E'));
        advance();
    }
    token.source = text.substr(start, place - start);
    token.kind = isReal ? TokenKind::real : TokenKind::integer;
    if (isReal) return token;
    const auto number = parseInteger(token.source);
    if (!number) throw MofError(positionOf(token), describe(token) + " is no integer of at most 64 bits");
    token.number = *number;
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
    if (token.kind == TokenKind::character && !singleCharacter(token.content)) {
        throw MofError(positionOf(token), "expected one character between single quotes, found " + describe(token));
    }
    return token;
}

void MofLexer::readCharacter(std::string& content) {
    if (peek() == '\\') return readEscape(content);
    const std::size_t length = utf8Length(text.substr(place));
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
