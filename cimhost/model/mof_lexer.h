// Cuts a MOF text into tokens and knows where each stands.
#pragma once

#include <string>
#include <string_view>

#include "cimhost/model/cim_type.h"
#include "cimhost/model/class_repository.h"

namespace cimhost {

enum class TokenKind { name, integer, real, text, character, pragma, symbol, end };

struct Token {
    TokenKind kind = TokenKind::end;
    std::string_view source; ///< as it stands in the MOF text
    std::string content;     ///< of a text or character: without quotes and escapes, UTF-8
    IntegerValue number;     ///< of an integer
    std::size_t line = 1;
    std::size_t column = 1;

    [[nodiscard]] bool isSymbol(char symbol) const noexcept {
        return kind == TokenKind::symbol && source.front() == symbol;
    }
    /// Keywords are names, and compare without regard to case.
    [[nodiscard]] bool isWord(std::string_view word) const noexcept {
        return kind == TokenKind::name && equalNames(source, word);
    }
};

/// The token as a message shows it: in quotes, or its length alone if that is great.
std::string describe(const Token& token);

class MofLexer {
public:
    /// The text outlives the lexer and its tokens; fileName is for messages.
    MofLexer(std::string_view text, std::string fileName);

    /// The next token, `end` at the end as often as asked. Throws MofError.
    Token next();

    [[nodiscard]] SourcePosition positionOf(const Token& token) const { return {file, token.line, token.column}; }

private:
    [[nodiscard]] char peek(std::size_t ahead = 0) const noexcept;
    void advance(std::size_t bytes = 1) noexcept;
    [[noreturn]] void fail(const std::string& message) const;
    void skipSpaceAndComments();
    void skipBlockComment();
    Token readName(Token token);
    Token readNumber(Token token);
    Token readQuoted(Token token);
    void readEscape(std::string& content);
    void readHexEscape(std::string& content);
    void readCharacter(std::string& content);

    std::string_view text;
    std::string file;
    std::size_t place = 0;
    std::size_t line = 1;
    std::size_t lineStart = 0;
};

} // namespace cimhost
