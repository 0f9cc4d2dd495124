#include "cimhost/model/mof_parser.h"

#include <limits>
#include <utility>

#include "cimhost/model/mof_lexer.h"

namespace cimhost::mof {
namespace {

// What one declaration may be made of: members, parameters, qualifiers and values together. Far above what the full CIM
// schema needs, and low enough that no text makes the server slow or its memory large.
constexpr std::size_t mostParts = 20000;

class Parser {
public:
    Parser(std::string_view text, const std::string& fileName, Sink& target)
        : lexer(text, fileName), sink(target), token(lexer.next()) {}

    void run() {
        while (token.kind != TokenKind::end) {
            production();
        }
    }

private:
    void production() {
        partCount = 0;
        if (token.kind == TokenKind::pragma) return pragma();
        if (token.isWord("qualifier")) return qualifierType();
        std::vector<QualifierUse> qualifiers;
        if (token.isSymbol('[')) qualifiers = qualifierList();
        if (token.isWord("instance")) fail("instances are not supported here");
        if (!token.isWord("class")) {
            expected(qualifiers.empty() ? "a class, a qualifier declaration or #pragma" : "\"class\"");
        }
        classDeclaration(std::move(qualifiers));
    }

    void pragma() {
        take();
        const Word name = word("a pragma's name");
        symbol('(');
        if (token.kind != TokenKind::text) expected("a text");
        const Word argument = {token.content, here()};
        take();
        symbol(')');
        sink.takePragma(name, argument);
    }

    void qualifierType() {
        take();
        QualifierType declaration;
        declaration.declared.name = word("a qualifier's name");
        symbol(':');
        declaration.declared.type = simpleType();
        arrayMark(declaration.declared);
        if (token.isSymbol('=')) declaration.defaultValue = initializer();
        while (token.isSymbol(',')) {
            take();
            if (token.isWord("scope")) {
                wordList(declaration.scopes);
            } else if (token.isWord("flavor")) {
                wordList(declaration.flavors);
            } else {
                expected("\"Scope\" or \"Flavor\"");
            }
        }
        symbol(';');
        sink.takeQualifierType(std::move(declaration));
    }

    // `Scope ( class, property )`
    void wordList(std::vector<Word>& words) {
        take();
        symbol('(');
        while (true) {
            countPart();
            words.push_back(word("a name"));
            if (!token.isSymbol(',')) break;
            take();
        }
        symbol(')');
    }

    std::vector<QualifierUse> qualifierList() {
        std::vector<QualifierUse> qualifiers;
        do {
            take();
            countPart();
            qualifiers.push_back(qualifierUse());
        } while (token.isSymbol(','));
        symbol(']');
        return qualifiers;
    }

    QualifierUse qualifierUse() {
        QualifierUse use;
        use.name = word("a qualifier's name");
        if (token.isSymbol('(')) {
            take();
            use.value = token.isSymbol('{') ? arrayValue() : scalarValue();
            symbol(')');
        } else if (token.isSymbol('{')) {
            use.value = arrayValue();
        }
        if (token.isSymbol(':')) {
            take();
            do {
                countPart();
                use.flavors.push_back(word("a flavor"));
            } while (token.kind == TokenKind::name);
        }
        return use;
    }

    void classDeclaration(std::vector<QualifierUse> qualifiers) {
        take();
        Class declaration;
        declaration.qualifiers = std::move(qualifiers);
        declaration.name = word("a class name");
        if (token.isWord("as")) fail("aliases are not supported here");
        if (token.isSymbol(':')) {
            take();
            declaration.superclass = word("a superclass");
        }
        symbol('{');
        while (!token.isSymbol('}')) {
            declaration.features.push_back(feature());
        }
        take();
        symbol(';');
        sink.takeClass(std::move(declaration));
    }

    Feature feature() {
        countPart();
        Feature read;
        if (token.isSymbol('[')) read.qualifiers = qualifierList();
        typeAndName(read.declared, "a property, a reference, a method or \"}\"");
        if (token.isSymbol('(')) {
            if (read.declared.type == CMPI_ref) fail("a method cannot return a reference");
            read.isMethod = true;
            read.parameters = parameterList();
        } else {
            arrayMark(read.declared);
            if (token.isSymbol('=')) read.defaultValue = initializer();
        }
        symbol(';');
        return read;
    }

    std::vector<Parameter> parameterList() {
        std::vector<Parameter> parameters;
        take();
        if (token.isSymbol(')')) {
            take();
            return parameters;
        }
        while (true) {
            countPart();
            Parameter& parameter = parameters.emplace_back();
            if (token.isSymbol('[')) parameter.qualifiers = qualifierList();
            typeAndName(parameter.declared, "a parameter");
            arrayMark(parameter.declared);
            if (!token.isSymbol(',')) break;
            take();
        }
        symbol(')');
        return parameters;
    }

    // `uint16 Name` or `CIM_Class REF Name`
    void typeAndName(TypedName& declared, std::string_view what) {
        const Word first = word(what);
        declared.type = typeFromName(first.text);
        if (declared.type == CMPI_null) {
            if (!token.isWord("ref")) {
                throw MofError(first.position,
                               "expected a type or a class before \"REF\", found \"" + first.text + "\"");
            }
            take();
            declared.type = CMPI_ref;
            declared.referenceClass = first;
        }
        declared.name = word("a name");
    }

    CMPIType simpleType() {
        const CMPIType type = token.kind == TokenKind::name ? typeFromName(token.source) : CMPIType(CMPI_null);
        if (type == CMPI_null) expected("a type");
        take();
        return type;
    }

    // `[]` or `[8]`, if it is there
    void arrayMark(TypedName& declared) {
        if (!token.isSymbol('[')) return;
        take();
        declared.type = arrayOf(declared.type);
        if (token.kind == TokenKind::integer) {
            const IntegerValue size = token.number;
            if (size.isNegative || size.magnitude == 0 || size.magnitude > std::numeric_limits<std::uint32_t>::max()) {
                expected("an array size from 1 on");
            }
            declared.arraySize = static_cast<std::uint32_t>(size.magnitude);
            take();
        }
        symbol(']');
    }

    Value initializer() {
        take();
        return token.isSymbol('{') ? arrayValue() : scalarValue();
    }

    Value scalarValue() {
        Value value;
        value.position = here();
        value.elements.push_back(literal());
        return value;
    }

    Value arrayValue() {
        Value value;
        value.isArray = true;
        value.position = here();
        take();
        if (token.isSymbol('}')) {
            take();
            return value;
        }
        value.elements.push_back(literal());
        while (token.isSymbol(',')) {
            take();
            value.elements.push_back(literal());
        }
        symbol('}');
        return value;
    }

    Literal literal() {
        countPart();
        Literal read;
        read.position = here();
        switch (token.kind) {
        case TokenKind::text:
            read.kind = Literal::Kind::text;
            for (; token.kind == TokenKind::text; take()) {
                read.text += token.content;
            }
            return read;
        case TokenKind::integer:
            read.kind = Literal::Kind::integer;
            read.number = token.number;
            break;
        case TokenKind::real:
            read.kind = Literal::Kind::real;
            read.text = token.source;
            break;
        case TokenKind::character:
            read.kind = Literal::Kind::character;
            read.text = token.content;
            break;
        default:
            wordLiteral(read);
        }
        take();
        return read;
    }

    void wordLiteral(Literal& read) {
        if (token.isSymbol('$')) fail("aliases are not supported here");
        if (token.isWord("null")) return;
        const bool isTrue = token.isWord("true");
        if (!isTrue && !token.isWord("false")) expected("a value");
        read.kind = Literal::Kind::boolean;
        read.text = isTrue ? "true" : "false";
    }

    Word word(std::string_view what) {
        if (token.kind != TokenKind::name) expected(what);
        Word read = {std::string(token.source), here()};
        take();
        return read;
    }

    void symbol(char wanted) {
        if (!token.isSymbol(wanted)) expected(std::string("\"") + wanted + "\"");
        take();
    }

    void countPart() {
        if (++partCount > mostParts) fail("a declaration of more than " + std::to_string(mostParts) + " parts");
    }

    void take() { token = lexer.next(); }
    [[nodiscard]] SourcePosition here() const { return lexer.positionOf(token); }
    [[noreturn]] void fail(const std::string& message) const { throw MofError(here(), message); }
    [[noreturn]] void expected(std::string_view what) const {
        fail("expected " + std::string(what) + ", found " + describe(token));
    }

    MofLexer lexer;
    Sink& sink;
    Token token;
    std::size_t partCount = 0;
};

} // namespace

void parse(std::string_view text, const std::string& fileName, Sink& sink) { Parser(text, fileName, sink).run(); }

} // namespace cimhost::mof
