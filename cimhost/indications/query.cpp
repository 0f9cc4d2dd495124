#include "cimhost/indications/query.h"

#include "cimhost/model/cim_type.h"
#include "cimhost/model/date_time.h"
#include "cimhost/model/names.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <compare>
#include <cstdint>
#include <utility>
#include <variant>
#include <vector>

namespace cimhost {

namespace {

constexpr std::size_t longestQuery = 8192;
constexpr int deepestNesting = 32;

enum class Comparison { equal, unequal, less, lessOrEqual, greater, greaterOrEqual, isNull, isNotNull };

struct ComparisonName {
    std::string_view text;
    Comparison comparison;
    Comparison mirrored; // with its sides exchanged
};

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

const ComparisonName* findComparison(std::string_view text) {
    const auto* row = std::find_if(std::begin(comparisonNames), std::end(comparisonNames),
                                   [&](const ComparisonName& candidate) { return candidate.text == text; });
    return row == std::end(comparisonNames) ? nullptr : row;
}

using Literal = std::variant<std::string, bool, std::int64_t, std::uint64_t, double>;

enum class TokenKind { word, text, number, sign, end };

struct Token {
    TokenKind kind = TokenKind::end;
    std::string text;
    std::size_t position = 0; // from 1
};

bool isWordCharacter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '_';
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

class Lexer {
public:
    explicit Lexer(std::string_view text) : whole(text) {}

    Token next() {
        while (place < whole.size() && std::string_view(" \t\r\n").find(whole[place]) != std::string_view::npos)
            ++place;
        Token token;
        token.position = place + 1;
        if (place == whole.size()) return token;
        const char first = whole[place];
        if (first == '\'' || first == '"') return quoted(token, first);
        const bool isSigned = (first == '-' || first == '+') && place + 1 < whole.size() && isDigit(whole[place + 1]);
        if (isDigit(first) || isSigned) return number(token);
        if (isWordCharacter(first)) return word(token);
        return sign(token);
    }

private:
    Token quoted(Token& token, char quote) {
        token.kind = TokenKind::text;
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

    Token number(Token& token) {
        token.kind = TokenKind::number;
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

    Token word(Token& token) {
        token.kind = TokenKind::word;
        while (place < whole.size() && (isWordCharacter(whole[place]) || whole[place] == '.'))
            token.text += whole[place++];
        return std::move(token);
    }

    Token sign(Token& token) {
        token.kind = TokenKind::sign;
        const std::string_view two = whole.substr(place, 2);
        const std::size_t length = two.size() == 2 && findComparison(two) ? 2 : 1;
        while (token.text.size() < length)
            token.text += whole[place++];
        return std::move(token);
    }

    std::string_view whole;
    std::size_t place = 0;
};

} // namespace

struct Query::Node {
    enum class Kind { all, any, no, comparison };
    Kind kind = Kind::comparison;
    std::vector<std::unique_ptr<const Node>> parts;
    std::string property;
    Comparison comparison = Comparison::equal;
    Literal literal;
};

namespace {

using NodePointer = std::unique_ptr<const Query::Node>;

class Parser {
public:
    explicit Parser(std::string_view text) : lexer(text), token(lexer.next()) {}

    std::string className;
    NodePointer where;

    void parse() {
        expectWord("SELECT");
        if (!isSign("*")) fail("* is expected: filters here select whole indications");
        advance();
        expectWord("FROM");
        if (token.kind != TokenKind::word || !isLegalName(token.text)) fail("the name of a class is expected");
        className = token.text;
        advance();
        if (token.kind == TokenKind::end) return;
        expectWord("WHERE");
        where = anyOf(0);
        if (token.kind != TokenKind::end) fail("AND, OR or the end is expected");
    }

private:
    [[noreturn]] void fail(const std::string& expected) const {
        const std::string found = token.kind == TokenKind::end ? "the end" : "\"" + token.text.substr(0, 64) + "\"";
        throw QueryError("character " + std::to_string(token.position) + ": " + expected + ", found " + found);
    }

    void advance() { token = lexer.next(); }
    [[nodiscard]] bool isSign(std::string_view sign) const {
        return token.kind == TokenKind::sign && token.text == sign;
    }
    [[nodiscard]] bool isWord(std::string_view word) const {
        return token.kind == TokenKind::word && equalNames(token.text, word);
    }
    bool takeWord(std::string_view word) {
        if (!isWord(word)) return false;
        advance();
        return true;
    }
    void expectWord(std::string_view word) {
        if (!takeWord(word)) fail(std::string(word) + " is expected");
    }

    // Operands joined by one word; a single one stands for itself.
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
        return token.kind == TokenKind::text || token.kind == TokenKind::number || isWord("TRUE") || isWord("FALSE");
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
        const ComparisonName* row = token.kind == TokenKind::sign ? findComparison(token.text) : nullptr;
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
        if (token.kind != TokenKind::word || !isLegalName(name)) fail("the name of a property is expected");
        std::string taken(name);
        advance();
        return taken;
    }

    Literal takeLiteral() {
        const Token taken = std::exchange(token, {});
        const auto literal = literalOf(taken);
        if (!literal) {
            token = taken;
            fail("a number is expected");
        }
        advance();
        return *literal;
    }

    static std::optional<Literal> literalOf(const Token& taken) {
        if (taken.kind == TokenKind::text) return taken.text;
        if (taken.kind == TokenKind::word) return equalNames(taken.text, "TRUE");
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

    Lexer lexer;
    Token token;
};

// What a property's value is compared as.
enum class ValueKind { text, boolean, number, dateTime, none };

ValueKind kindOf(CMPIType type) {
    if (type == CMPI_string || type == CMPI_char16) return ValueKind::text;
    if (type == CMPI_boolean) return ValueKind::boolean;
    if (type == CMPI_dateTime) return ValueKind::dateTime;
    if (isIntegerType(type) || type == CMPI_real32 || type == CMPI_real64) return ValueKind::number;
    return ValueKind::none;
}

bool fits(ValueKind kind, const Literal& literal) {
    switch (kind) {
    case ValueKind::text:
        return std::holds_alternative<std::string>(literal);
    case ValueKind::boolean:
        return std::holds_alternative<bool>(literal);
    case ValueKind::dateTime:
        return std::holds_alternative<std::string>(literal) && parseDateTime(std::get<std::string>(literal));
    case ValueKind::number:
        return !std::holds_alternative<std::string>(literal) && !std::holds_alternative<bool>(literal);
    case ValueKind::none:
        return false;
    }
    return false;
}

void check(const Query::Node& node, const ClassDeclaration& declaration) {
    for (const auto& part : node.parts)
        check(*part, declaration);
    if (node.kind != Query::Node::Kind::comparison) return;
    const PropertyDeclaration* property = declaration.property(node.property);
    if (!property) throw QueryError("class " + declaration.name() + " has no property " + node.property);
    if (node.comparison == Comparison::isNull || node.comparison == Comparison::isNotNull) return;
    if (fits(kindOf(property->type), node.literal)) return;
    throw QueryError("property " + property->name + " is " + std::string(typeName(elementOf(property->type))) +
                     (property->isArray() ? "[]" : "") + ", which is not compared with such a value");
}

std::partial_ordering compareNumbers(const Literal& left, const Literal& right) {
    return std::visit(
        [](const auto& first, const auto& second) -> std::partial_ordering {
            using First = std::decay_t<decltype(first)>;
            using Second = std::decay_t<decltype(second)>;
            constexpr bool areNumbers = std::is_arithmetic_v<First> && std::is_arithmetic_v<Second>;
            if constexpr (!areNumbers || std::is_same_v<First, bool> || std::is_same_v<Second, bool>) {
                return std::partial_ordering::unordered;
            } else if constexpr (std::is_same_v<First, double> || std::is_same_v<Second, double>) {
                return static_cast<double>(first) <=> static_cast<double>(second);
            } else {
                if (std::cmp_less(first, second)) return std::partial_ordering::less;
                return std::cmp_equal(first, second) ? std::partial_ordering::equivalent
                                                     : std::partial_ordering::greater;
            }
        },
        left, right);
}

std::optional<Literal> numberOf(const CMPIData& data) {
    switch (data.type) {
    case CMPI_real32:
        return static_cast<double>(data.value.real32);
    case CMPI_real64:
        return data.value.real64;
    case CMPI_uint8:
        return std::uint64_t{data.value.uint8};
    case CMPI_uint16:
        return std::uint64_t{data.value.uint16};
    case CMPI_uint32:
        return std::uint64_t{data.value.uint32};
    case CMPI_uint64:
        return std::uint64_t{data.value.uint64};
    case CMPI_sint8:
        return std::int64_t{data.value.sint8};
    case CMPI_sint16:
        return std::int64_t{data.value.sint16};
    case CMPI_sint32:
        return std::int64_t{data.value.sint32};
    case CMPI_sint64:
        return std::int64_t{data.value.sint64};
    default:
        return std::nullopt;
    }
}

std::partial_ordering compare(const CMPIData& data, const Literal& literal) {
    const ValueKind kind = kindOf(data.type);
    if (!fits(kind, literal)) return std::partial_ordering::unordered;
    if (kind == ValueKind::boolean) return int{data.value.boolean != 0} <=> int{std::get<bool>(literal)};
    if (kind == ValueKind::number) return compareNumbers(*numberOf(data), literal);
    std::string text;
    appendValueText(text, data);
    if (kind == ValueKind::text) return std::string_view(text) <=> std::string_view(std::get<std::string>(literal));
    const auto time = parseDateTime(text);
    const auto wanted = parseDateTime(std::get<std::string>(literal));
    if (!time || !wanted || time->isInterval != wanted->isInterval) return std::partial_ordering::unordered;
    return time->microseconds <=> wanted->microseconds;
}

std::optional<bool> judge(Comparison comparison, std::partial_ordering order) {
    if (order == std::partial_ordering::unordered) return std::nullopt;
    switch (comparison) {
    case Comparison::equal:
        return std::is_eq(order);
    case Comparison::unequal:
        return std::is_neq(order);
    case Comparison::less:
        return std::is_lt(order);
    case Comparison::lessOrEqual:
        return std::is_lteq(order);
    case Comparison::greater:
        return std::is_gt(order);
    case Comparison::greaterOrEqual:
        return std::is_gteq(order);
    case Comparison::isNull:
    case Comparison::isNotNull:
        break;
    }
    return std::nullopt;
}

// Nothing stands for unknown.
std::optional<bool> evaluate(const Query::Node& node, const InstanceObject& indication) {
    using Kind = Query::Node::Kind;
    if (node.kind == Kind::comparison) {
        const CMPIData* data = indication.value(node.property);
        const bool isNull = !data || (data->state & CMPI_nullValue) != 0;
        if (node.comparison == Comparison::isNull) return isNull;
        if (node.comparison == Comparison::isNotNull) return !isNull;
        if (isNull) return std::nullopt;
        return judge(node.comparison, compare(*data, node.literal));
    }
    if (node.kind == Kind::no) {
        const std::optional<bool> part = evaluate(*node.parts.front(), indication);
        return part ? std::optional(!*part) : std::nullopt;
    }
    const bool decisive = node.kind == Kind::any;
    std::optional<bool> result = !decisive;
    for (const auto& part : node.parts) {
        const std::optional<bool> value = evaluate(*part, indication);
        if (value == decisive) return decisive;
        if (!value) result = std::nullopt;
    }
    return result;
}

} // namespace

bool isQueryLanguage(std::string_view name) noexcept {
    constexpr std::array known = {std::string_view("WQL"), std::string_view("CIM:CQL"), std::string_view("DMTF:CQL")};
    return std::any_of(known.begin(), known.end(), [&](std::string_view one) { return equalNames(one, name); });
}

Query::Query(std::string className, std::unique_ptr<const Node> condition)
    : from(std::move(className)), where(std::move(condition)) {}
Query::~Query() = default;
Query::Query(Query&&) noexcept = default;
Query& Query::operator=(Query&&) noexcept = default;

Query Query::parse(std::string_view text) {
    if (text.size() > longestQuery) throw QueryError("it is longer than " + std::to_string(longestQuery) + " bytes");
    Parser parser(text);
    parser.parse();
    return {std::move(parser.className), std::move(parser.where)};
}

void Query::checkAgainst(const ClassDeclaration& declaration) const {
    if (where) check(*where, declaration);
}

bool Query::selects(const InstanceObject& indication) const {
    return !where || evaluate(*where, indication).value_or(false);
}

} // namespace cimhost
