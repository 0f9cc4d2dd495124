#include "cimhost/indications/query_lexer.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace cimhost {

namespace {

// Longer signs first: `<=` begins with `<`.
constexpr ComparisonName comparisonNames[] = {
    {"<>", Comparison::unequal, Comparison::unequal},
    {"!=", Comparison::unequal, Comparison::unequal},
    {"<=", Comparison::lessOrEqual, Comparison::greaterOrEqual},
    {">=", Comparison::greaterOrEqual, Comparison::lessOrEqual},
    {"=", Comparison::equal, Comparison::equal},
    {"<", Comparison::less, Comparison::greater},
    {">", Comparison::greater, Comparison::less},
};

bool isWordCharacter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '_';
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

} // namespace

const ComparisonName* findComparison(std::string_view text) {
    const auto* row = std::find_if(std::begin(comparisonNames), std::end(comparisonNames),
                                   [&](const ComparisonName& candidate) { return candidate.text == text; });
    return row == std::end(comparisonNames) ? nullptr : row;
}

QueryToken QueryLexer::next() {
    while (place < whole.size() && std::string_view(" \t\r\n").find(whole[place]) != std::string_view::npos)
        ++place;
    QueryToken token;
    token.position = place + 1;
    if (place == whole.size()) return token;
    const char first = whole[place];
    if (first == '\'' || first == '"') return quoted(token, first);
    const bool isSigned = (first == '-' || first == '+') && place + 1 < whole.size() && isDigit(whole[place + 1]);
    if (isDigit(first) || isSigned) return number(token);
    if (isWordCharacter(first)) return word(token);
    return sign(token);
}

QueryToken QueryLexer::quoted(QueryToken& token, char quote) {
    token.kind = QueryTokenKind::text;
    for (++place; place < whole.size(); ++place) {
        const bool hasNext = place + 1 < whole.size();
        const bool isDoubled = whole[place] == quote && hasNext && whole[place + 1] == quote;
        if (isDoubled || (whole[place] == '\\' && hasNext)) {
            token.text += whole[++place];
        } else if (whole[place] == quote) {
            ++place;
            return std::move(token);
        } else {
            token.text += whole[place];
        }
    }
    throw QueryError("character " + std::to_string(token.position) + ": the quote is not closed");
}

QueryToken QueryLexer::number(QueryToken& token) {
    token.kind = QueryTokenKind::number;
    token.text = whole[place++];
    while (place < whole.size()) {
        const char next = whole[place];
        const char last = token.text.back();
        const bool isExponentSign = (next == '-' || next == '+') && (last == 'e' || last == 'E');
        if (!isWordCharacter(next) && next != '.' && !isExponentSign) break;
        token.text += next;
        ++place;
    }
    return std::move(token);
}

QueryToken QueryLexer::word(QueryToken& token) {
    token.kind = QueryTokenKind::word;
    while (place < whole.size() && (isWordCharacter(whole[place]) || whole[place] == '.'))
        token.text += whole[place++];
    return std::move(token);
}

QueryToken QueryLexer::sign(QueryToken& token) {
    token.kind = QueryTokenKind::sign;
    const std::string_view two = whole.substr(place, 2);
    const std::size_t length = two.size() == 2 && findComparison(two) ? 2 : 1;
    while (token.text.size() < length)
        token.text += whole[place++];
    return std::move(token);
}

} // namespace cimhost
