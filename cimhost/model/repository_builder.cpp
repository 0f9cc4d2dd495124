#include "cimhost/model/repository_builder.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <utility>

#include "cimhost/model/date_time.h"
#include "cimhost/model/repository_namespace.h"

namespace cimhost {
namespace {

using mof::Literal;

// Bounds for what a MOF text can make of memory and stack; the full CIM schema stays far below each of them.
constexpr std::uintmax_t largestFile = 64U << 20;
constexpr std::size_t deepestInclude = 16;
constexpr std::size_t mostMembers = 400000;

std::string inQuotes(std::string_view name) { return "\"" + std::string(name) + "\""; }

std::string typeText(CMPIType type) { return std::string(typeName(type)) + (isArrayType(type) ? "[]" : ""); }

std::string integerText(IntegerValue value) {
    return (value.isNegative && value.magnitude != 0 ? "-" : "") + std::to_string(value.magnitude);
}

bool isRealText(std::string_view text) noexcept {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    double value = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    return failure == std::errc() && end == text.data() + text.size() && std::isfinite(value);
}

// The text of a constant in the given type; nothing if it is none of that type.
std::optional<std::string> textInType(const Literal& literal, CMPIType type) {
    const bool isInteger = literal.kind == Literal::Kind::integer;
    if (isIntegerType(type)) {
        if (!isInteger || !fitsInteger(type, literal.number)) return std::nullopt;
        return integerText(literal.number);
    }
    switch (type) {
    case CMPI_boolean:
        if (literal.kind != Literal::Kind::boolean) return std::nullopt;
        return literal.text;
    case CMPI_real32:
    case CMPI_real64:
        if (isInteger) return integerText(literal.number);
        if (literal.kind != Literal::Kind::real || !isRealText(literal.text)) return std::nullopt;
        return literal.text;
    case CMPI_char16:
        if (literal.kind != Literal::Kind::character || literal.text.size() > 3) return std::nullopt;
        return literal.text;
    case CMPI_string:
        if (literal.kind != Literal::Kind::text) return std::nullopt;
        return literal.text;
    case CMPI_dateTime:
        if (literal.kind != Literal::Kind::text || !parseDateTime(literal.text)) return std::nullopt;
        return literal.text;
    default:
        return std::nullopt;
    }
}

DeclaredValue valueInType(const mof::Value& value, CMPIType type, const std::string& user) {
    DeclaredValue declared;
    declared.type = type;
    const bool isNull = !value.isArray && value.elements.front().kind == Literal::Kind::null;
    if (isNull) return declared;
    if (value.isArray != isArrayType(type)) {
        throw MofError(value.position, user + " is " + typeText(type) + ", but its value is " +
                                           (value.isArray ? "an array" : "a single value"));
    }
    declared.isNull = false;
    for (const Literal& literal : value.elements) {
        if (literal.kind == Literal::Kind::null) {
            declared.texts.emplace_back(std::nullopt);
            continue;
        }
        declared.texts.push_back(textInType(literal, elementOf(type)));
        if (!declared.texts.back()) {
            throw MofError(literal.position, "the value of " + user + " is no " + std::string(typeName(type)));
        }
    }
    return declared;
}

void applyFlavor(QualifierFlavor& flavor, const mof::Word& word) {
    const auto is = [&](std::string_view name) { return equalNames(word.text, name); };
    if (is("enableoverride")) {
        flavor.isOverridable = true;
    } else if (is("disableoverride")) {
        flavor.isOverridable = false;
    } else if (is("tosubclass")) {
        flavor.isToSubclass = true;
    } else if (is("restricted")) {
        flavor.isToSubclass = false;
    } else if (is("translatable")) {
        flavor.isTranslatable = true;
    } else if (!is("toinstance")) {
        throw MofError(word.position, "unknown flavor " + inQuotes(word.text));
    }
}

std::string scopeText(const mof::Word& word) {
    constexpr std::string_view scopes[] = {"any",       "association", "class",     "indication", "method",
                                           "parameter", "property",    "qualifier", "reference",  "schema"};
    for (const std::string_view scope : scopes) {
        if (equalNames(scope, word.text)) return std::string(scope);
    }
    throw MofError(word.position, "unknown scope " + inQuotes(word.text));
}

// Associations and indications are classes, and references are properties: what may stand on the one may stand on the
// other.
bool isInScope(const QualifierDeclaration& declaration, std::string_view place) noexcept {
    const auto has = [&](std::string_view scope) {
        return std::find(declaration.scopes.begin(), declaration.scopes.end(), scope) != declaration.scopes.end();
    };
    if (has("any") || declaration.scopes.empty() || has(place)) return true;
    if (place == "class") return has("association") || has("indication");
    return place == "property" && has("reference");
}

// A qualifier that says it cannot be overridden keeps its value down the tree.
void checkOverrides(const std::vector<Qualifier>& own, std::span<const Qualifier> inherited, const std::string& user,
                    const SourcePosition& position) {
    for (const Qualifier& qualifier : inherited) {
        if (qualifier.flavor.isOverridable || !qualifier.flavor.isToSubclass) continue;
        const Qualifier* redeclared = findQualifier(own, qualifier.name);
        if (redeclared && redeclared->value.texts != qualifier.value.texts) {
            throw MofError(position, "qualifier " + inQuotes(qualifier.name) + " of " + user +
                                         " is inherited with another value and cannot be overridden");
        }
    }
}

// `Override ( "Name" )` must name what the class inherits.
template <typename Member>
void checkOverrideName(const std::vector<Qualifier>& qualifiers, const Member* inherited, const std::string& user,
                       const SourcePosition& position) {
    const Qualifier* overriding = findQualifier(qualifiers, "Override");
    if (!overriding || overriding->value.isNull) return;
    std::string_view name = overriding->value.text();
    if (const std::size_t dot = name.rfind('.'); dot != std::string_view::npos) name.remove_prefix(dot + 1);
    if (inherited && equalNames(name, inherited->name)) return;
    throw MofError(position, user + " overrides " + inQuotes(name) + ", which is not what it inherits");
}

std::string readWhole(const std::filesystem::path& file) {
    const SourcePosition start = {file.string(), 1, 1};
    std::error_code failure;
    if (!std::filesystem::is_regular_file(file, failure)) {
        throw MofError(start, failure ? "cannot be read: " + failure.message() : "cannot be read: not a regular file");
    }
    if (std::filesystem::file_size(file, failure) > largestFile || failure) throw MofError(start, "file is too large");
    std::ifstream stream(file, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (!stream.is_open() || stream.bad())
        throw MofError(start, std::string("cannot be read: ") + std::strerror(errno));
    return text;
}

} // namespace

RepositoryBuilder::RepositoryBuilder(ClassRepository& target, std::string_view nameSpace)
    : repository(target), current(&target.makeNamespace(nameSpace)) {}

void RepositoryBuilder::readFile(const std::filesystem::path& file) {
    const std::string text = readWhole(file);
    ClassRepository::Namespace* const outer = current;
    openFiles.push_back(file);
    mof::parse(text, file.string(), *this);
    openFiles.pop_back();
    current = outer;
}

void RepositoryBuilder::readText(std::string_view text, const std::string& fileName) {
    mof::parse(text, fileName, *this);
}

void RepositoryBuilder::finish() const {
    for (const AwaitedClass& reference : awaited) {
        if (reference.nameSpace->find(reference.name.text)) continue;
        throw MofError(reference.name.position,
                       reference.user + " refers to the unknown class " + inQuotes(reference.name.text));
    }
}

void RepositoryBuilder::takePragma(const mof::Word& name, const mof::Word& argument) {
    if (equalNames(name.text, "include")) return include(argument);
    if (!equalNames(name.text, "namespace")) return; // other pragmas speak to other tools
    const std::string_view nameSpace = trimNamespace(argument.text);
    if (nameSpace.empty()) throw MofError(argument.position, "a namespace without a name");
    current = &repository.makeNamespace(nameSpace);
}

void RepositoryBuilder::include(const mof::Word& file) {
    if (openFiles.empty()) throw MofError(file.position, "a text in memory cannot include files");
    if (openFiles.size() >= deepestInclude) {
        throw MofError(file.position, "files include each other more than " + std::to_string(deepestInclude) + " deep");
    }
    const std::filesystem::path path = openFiles.back().parent_path() / file.text;
    std::error_code failure;
    if (!std::filesystem::is_regular_file(path, failure)) {
        throw MofError(file.position, "the included file " + inQuotes(path.string()) + " cannot be read");
    }
    readFile(path);
}

void RepositoryBuilder::takeQualifierType(mof::QualifierType declaration) {
    const mof::Word& name = declaration.declared.name;
    const auto isSame = [&](const QualifierDeclaration& known) { return equalNames(known.name, name.text); };
    if (std::any_of(current->qualifiers.begin(), current->qualifiers.end(), isSame)) {
        throw MofError(name.position, "qualifier " + inQuotes(name.text) + " is declared twice in namespace " +
                                          inQuotes(current->name));
    }
    QualifierDeclaration made;
    made.name = name.text;
    made.defaultValue.type = declaration.declared.type;
    if (declaration.defaultValue) {
        made.defaultValue =
            valueInType(*declaration.defaultValue, declaration.declared.type, "qualifier " + inQuotes(name.text));
    }
    for (const mof::Word& scope : declaration.scopes) {
        made.scopes.push_back(scopeText(scope));
    }
    for (const mof::Word& flavor : declaration.flavors) {
        applyFlavor(made.flavor, flavor);
    }
    current->qualifiers.push_back(std::move(made));
}

std::vector<Qualifier> RepositoryBuilder::resolveQualifiers(const std::vector<mof::QualifierUse>& uses,
                                                            std::string_view place) const {
    std::vector<Qualifier> resolved;
    for (const mof::QualifierUse& use : uses) {
        const std::string user = "qualifier " + inQuotes(use.name.text);
        const auto declaration = std::find_if(current->qualifiers.begin(), current->qualifiers.end(),
                                              [&](const auto& known) { return equalNames(known.name, use.name.text); });
        if (declaration == current->qualifiers.end()) throw MofError(use.name.position, user + " is not declared");
        if (!isInScope(*declaration, place)) {
            throw MofError(use.name.position, user + " may not stand on a " + std::string(place));
        }
        if (findQualifier(resolved, use.name.text)) throw MofError(use.name.position, user + " stands here twice");

        const CMPIType type = declaration->defaultValue.type;
        Qualifier& made = resolved.emplace_back();
        made.name = declaration->name;
        made.flavor = declaration->flavor;
        made.value = use.value ? valueInType(*use.value, type, user) : declaration->defaultValue;
        if (!use.value && type == CMPI_boolean) made.value = {type, false, {"true"}};
        for (const mof::Word& flavor : use.flavors) {
            applyFlavor(made.flavor, flavor);
        }
    }
    return resolved;
}

void RepositoryBuilder::takeClass(mof::Class declaration) {
    const mof::Word& name = declaration.name;
    if (current->find(name.text)) {
        throw MofError(name.position,
                       "class " + inQuotes(name.text) + " is declared twice in namespace " + inQuotes(current->name));
    }
    ClassDeclaration* superclass = nullptr;
    if (!declaration.superclass.text.empty()) {
        superclass = current->find(declaration.superclass.text);
        if (!superclass) {
            throw MofError(declaration.superclass.position, "superclass " + inQuotes(declaration.superclass.text) +
                                                                " of class " + inQuotes(name.text) + " is unknown");
        }
    }
    ClassContent content;
    content.name = name.text;
    content.qualifiers = resolveQualifiers(declaration.qualifiers, "class");
    if (superclass)
        checkOverrides(content.qualifiers, superclass->qualifiers(), "class " + inQuotes(name.text), name.position);
    for (const mof::Feature& feature : declaration.features) {
        addFeature(content, feature, superclass);
    }
    countMembers(content, superclass, name.position);

    current->owned.push_back(std::make_unique<ClassDeclaration>(std::move(content), superclass, current->name));
    const ClassDeclaration* made = current->owned.back().get();
    current->index.add(made->name(), current->classes.size());
    current->classes.push_back(made);
    if (superclass) superclass->children.push_back(made);
}

void RepositoryBuilder::addFeature(ClassContent& content, const mof::Feature& feature,
                                   const ClassDeclaration* superclass) {
    if (feature.isMethod) return addMethod(content, feature, superclass);
    addProperty(content, feature, superclass);
}

void RepositoryBuilder::addProperty(ClassContent& content, const mof::Feature& feature,
                                    const ClassDeclaration* superclass) {
    const mof::Word& name = feature.declared.name;
    const CMPIType type = feature.declared.type;
    const std::string what = type == CMPI_ref ? "reference " : "property ";
    const std::string user = what + inQuotes(name.text) + " of class " + inQuotes(content.name);
    for (const PropertyDeclaration& other : content.properties) {
        if (equalNames(other.name, name.text)) throw MofError(name.position, user + " is declared twice");
    }
    PropertyDeclaration made;
    made.name = name.text;
    made.type = type;
    made.arraySize = feature.declared.arraySize;
    made.qualifiers = resolveQualifiers(feature.qualifiers, type == CMPI_ref ? "reference" : "property");
    awaitClass(feature.declared, what, content.name);
    made.referenceClass = feature.declared.referenceClass.text;
    if (feature.defaultValue) made.defaultValue = valueInType(*feature.defaultValue, type, user);

    const PropertyDeclaration* inherited = superclass ? superclass->property(name.text) : nullptr;
    if (inherited && inherited->type != type) {
        throw MofError(name.position, user + " is " + typeText(type) + ", but its superclass declares it as " +
                                          typeText(inherited->type));
    }
    checkOverrideName(made.qualifiers, inherited, user, name.position);
    if (inherited) checkOverrides(made.qualifiers, inherited->qualifiers, user, name.position);
    const Qualifier* key = findQualifier(made.qualifiers, "Key");
    const bool addsKey = key && key->value.isTrue() && !(inherited && inherited->isKey);
    if (addsKey && superclass && !superclass->keys().empty()) {
        throw MofError(name.position, user + " is a new key, but its superclass " + inQuotes(superclass->name()) +
                                          " has keys already");
    }
    content.properties.push_back(std::move(made));
}

void RepositoryBuilder::addMethod(ClassContent& content, const mof::Feature& feature,
                                  const ClassDeclaration* superclass) {
    const mof::Word& name = feature.declared.name;
    const std::string user = "method " + inQuotes(name.text) + " of class " + inQuotes(content.name);
    for (const MethodDeclaration& other : content.methods) {
        if (equalNames(other.name, name.text)) throw MofError(name.position, user + " is declared twice");
    }
    MethodDeclaration made;
    made.name = name.text;
    made.returnType = feature.declared.type;
    made.qualifiers = resolveQualifiers(feature.qualifiers, "method");
    for (const mof::Parameter& parameter : feature.parameters) {
        const mof::Word& parameterName = parameter.declared.name;
        const std::string what = "parameter " + inQuotes(parameterName.text) + " of " + user;
        if (made.parameter(parameterName.text)) throw MofError(parameterName.position, what + " is declared twice");
        ParameterDeclaration& added = made.parameters.emplace_back();
        added.name = parameterName.text;
        added.type = parameter.declared.type;
        added.arraySize = parameter.declared.arraySize;
        added.referenceClass = parameter.declared.referenceClass.text;
        added.qualifiers = resolveQualifiers(parameter.qualifiers, "parameter");
        const Qualifier* in = findQualifier(added.qualifiers, "In");
        const Qualifier* out = findQualifier(added.qualifiers, "Out");
        added.isIn = !in || in->value.isTrue();
        added.isOut = out && out->value.isTrue();
        awaitClass(parameter.declared, "parameter ", content.name);
    }
    const MethodDeclaration* inherited = superclass ? superclass->method(name.text) : nullptr;
    if (inherited && inherited->returnType != made.returnType) {
        throw MofError(name.position, user + " returns " + typeText(made.returnType) +
                                          ", but its superclass declares it as returning " +
                                          typeText(inherited->returnType));
    }
    checkOverrideName(made.qualifiers, inherited, user, name.position);
    if (inherited) checkOverrides(made.qualifiers, inherited->qualifiers, user, name.position);
    content.methods.push_back(std::move(made));
}

void RepositoryBuilder::awaitClass(const mof::TypedName& declared, std::string_view what, std::string_view className) {
    if (declared.referenceClass.text.empty()) return;
    awaited.push_back({current, declared.referenceClass,
                       std::string(what) + inQuotes(declared.name.text) + " of class " + inQuotes(className)});
}

void RepositoryBuilder::countMembers(const ClassContent& content, const ClassDeclaration* superclass,
                                     const SourcePosition& position) {
    memberCount += content.properties.size() + content.methods.size();
    if (superclass) memberCount += superclass->properties().size() + superclass->methods().size();
    if (memberCount > mostMembers) {
        throw MofError(position, "more than " + std::to_string(mostMembers) + " properties and methods in all");
    }
}

} // namespace cimhost
