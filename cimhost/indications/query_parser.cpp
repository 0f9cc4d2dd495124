#include "cimhost/indications/query_parser.h"

#include "cimhost/indications/query_lexer.h"
#include "cimhost/model/names.h"

#include <charconv>
#include <optional>
#include <utility>

namespace cimhost {

namespace {

constexpr int deepestNesting = 32;

using NodePointer = std::unique_ptr<const Query::Node>;

class Parser {
public:
    explicit Parser(std::string_view text) : lexer(text), token(lexer.next()) {}

    ParsedQuery parse() {
        expectWord("SELECT");
        if (!isSign("*")) fail("* is expected: filters here select whole indications");
        advance();
        expectWord("FROM");
        if (token.kind != QueryTokenKind::word || !isLegalName(token.text)) fail("the name of a class is expected");
        className = token.text;
        advance();
        if (token.kind == QueryTokenKind::end) return {className, nullptr};
        expectWord("WHERE");
        NodePointer where = anyOf(0);
        if (token.kind != QueryTokenKind::end) fail("AND, OR or the end is expected");
        return {className, std::move(where)};
    }

private:
    [[noreturn]] void fail(const std::string& expected) const {
        const std::string found =
            token.kind == QueryTokenKind::end ? "the end" : "\"" + token.text.substr(0, 64) + "\"";
        throw QueryError("character " + std::to_string(token.position) + ": " + expected + ", found " + found);
    }

    void advance() { token = lexer.next(); }
    [[nodiscard]] bool isSign(std::string_view sign) const {
        return token.kind == QueryTokenKind::sign && token.text == sign;
    }
    [[nodiscard]] bool isWord(std::string_view word) const {
        return token.kind == QueryTokenKind::word && equalNames(token.text, word);
    }
    bool takeWord(std::string_view word) {
        if (!isWord(word)) return false;
        advance();
        return true;
    }
    void expectWord(std::string_view word) {
        if (!takeWord(word)) fail(std::string(word) + " is expected");
    }

    // Operands that are joined by one word. A single operand needs no node of its own.
    template <typename Operand>
    NodePointer joined(Query::Node::Kind kind, std::string_view word, Operand operand) {
        auto node = std::make_unique<Query::Node>();
        node->kind = kind;
        do {
            node->parts.push_back(operand());
        } while (takeWord(word));
        if (node->parts.size() == 1) return std::move(node->parts.front());
        return node;
    }

    NodePointer anyOf(int depth) {
        if (depth > deepestNesting) fail("conditions are nested too deeply");
        return joined(Query::Node::Kind::any, "OR", [&] { return allOf(depth); });
    }

    NodePointer allOf(int depth) {
        return joined(Query::Node::Kind::all, "AND", [&] { return operand(depth); });
    }

    NodePointer operand(int depth) {
        if (depth > deepestNesting) fail("conditions are nested too deeply");
        if (takeWord("NOT")) {
            auto node = std::make_unique<Query::Node>();
            node->kind = Query::Node::Kind::no;
            node->parts.push_back(operand(depth + 1));
            return node;
        }
        if (!isSign("(")) return comparison();
        advance();
        NodePointer inner = anyOf(depth + 1);
        if (!isSign(")")) fail(") is expected");
        advance();
        return inner;
    }

    [[nodiscard]] bool isLiteral() const {
        return token.kind == QueryTokenKind::text || token.kind == QueryTokenKind::number || isWord("TRUE") ||
               isWord("FALSE");
    }

    NodePointer comparison() {
        auto node = std::make_unique<Query::Node>();
        if (isLiteral()) {
            node->literal = takeLiteral();
            node->comparison = takeComparison().mirrored;
            node->property = takeProperty();
            return node;
        }
        node->property = takeProperty();
        if (takeWord("IS")) {
            node->comparison = takeWord("NOT") ? Comparison::isNotNull : Comparison::isNull;
            expectWord("NULL");
            return node;
        }
        node->comparison = takeComparison().comparison;
        if (!isLiteral()) fail("a text, a number, TRUE or FALSE is expected");
        node->literal = takeLiteral();
        return node;
    }

    const ComparisonName& takeComparison() {
        const ComparisonName* row = token.kind == QueryTokenKind::sign ? findComparison(token.text) : nullptr;
        if (!row) fail("a comparison such as = or <> is expected");
        advance();
        return *row;
    }

    // CQL writes Class.Property.
    std::string takeProperty() {
        std::string_view name = token.text;
        const std::size_t dot = name.find('.');
        const bool isQualified = dot != std::string_view::npos && equalNames(name.substr(0, dot), className);
        if (isQualified) name.remove_prefix(dot + 1);
        if (token.kind != QueryTokenKind::word || !isLegalName(name)) fail("the name of a property is expected");
        std::string taken(name);
        advance();
        return taken;
    }

    Literal takeLiteral() {
        const QueryToken taken = std::exchange(token, {});
        const auto literal = literalOf(taken);
        if (!literal) {
            token = taken;
            fail("a number is expected");
        }
        advance();
        return *literal;
    }

    static std::optional<Literal> literalOf(const QueryToken& taken) {
        if (taken.kind == QueryTokenKind::text) return taken.text;
        if (taken.kind == QueryTokenKind::word) return equalNames(taken.text, "TRUE");
        std::string_view digits = taken.text;
        if (digits.front() == '+') digits.remove_prefix(1);
        return whole<std::int64_t>(digits, whole<std::uint64_t>(digits, whole<double>(digits, std::nullopt)));
    }

    template <typename Number>
    static std::optional<Literal> whole(std::string_view digits, std::optional<Literal> otherwise) {
        Number number{};
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (error == std::errc() && end == digits.data() + digits.size()) return number;
        return otherwise;
    }

    std::string className;
    QueryLexer lexer;
    QueryToken token;
};

} // namespace

ParsedQuery parseQuery(std::string_view text) { return Parser(text).parse(); }

} // namespace cimhost
