#include "cimhost/model/repository_builder.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <utility>

#include "cimhost/model/memory_use.h"
#include "cimhost/model/mof_values.h"
#include "cimhost/model/repository_namespace.h"

namespace cimhost {
namespace {

// Bounds for what MOF files can make of time, memory and stack; the full CIM schema stays below each of them.
constexpr std::uintmax_t largestFile = 16U << 20;
constexpr std::size_t deepestInclude = 16;
constexpr std::size_t mostFiles = 4096;
constexpr std::size_t mostQualifiers = 1000;
constexpr std::size_t largestRepository = 256U << 20;

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

// Associations and indications are classes, so what may stand on those may stand on a class.
bool isInScope(const QualifierDeclaration& declaration, std::string_view place) noexcept {
    const auto has = [&](std::string_view scope) {
        return std::find(declaration.scopes.begin(), declaration.scopes.end(), scope) != declaration.scopes.end();
    };
    if (declaration.scopes.empty() || has("any") || has(place)) return true;
    return place == "class" && (has("association") || has("indication"));
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

// What holds for properties and methods alike when they are declared again.
template <typename Member>
void checkAgainstInherited(const Member& own, const Member* inherited, const std::string& user,
                           const SourcePosition& position) {
    checkOverrideName(own.qualifiers, inherited, user, position);
    if (inherited) checkOverrides(own.qualifiers, inherited->qualifiers, user, position);
}

// The keys of a class are settled by the first class of its line that has any.
void checkKey(const PropertyDeclaration& own, const PropertyDeclaration* inherited, const ClassDeclaration* superclass,
              const std::string& user, const SourcePosition& position) {
    const Qualifier* key = findQualifier(own.qualifiers, "Key");
    if (!key || !key->value.isTrue() || (inherited && inherited->isKey)) return;
    if (!superclass || superclass->keys().empty()) return;
    throw MofError(position,
                   user + " is a new key, but its superclass " + inQuotes(superclass->name()) + " has keys already");
}

template <typename Member>
void checkIsNew(const std::vector<Member>& members, const mof::Word& name, const std::string& user) {
    const auto isSame = [&](const Member& member) { return equalNames(member.name, name.text); };
    if (std::any_of(members.begin(), members.end(), isSame)) throw MofError(name.position, user + " is declared twice");
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
    if (!stream.is_open() || stream.bad()) throw MofError(start, "cannot be read");
    return text;
}

} // namespace

RepositoryBuilder::RepositoryBuilder(ClassRepository& target, std::string_view nameSpace)
    : repository(target), current(&target.makeNamespace(nameSpace)) {}

void RepositoryBuilder::readFile(const std::filesystem::path& file) {
    if (++fileCount > mostFiles) {
        throw MofError({file.string(), 1, 1}, "more than " + std::to_string(mostFiles) + " files in one load");
    }
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
        const ClassDeclaration* target = reference.nameSpace->find(reference.name.text);
        if (!target) {
            throw MofError(reference.name.position,
                           reference.user + " refers to the unknown class " + inQuotes(reference.name.text));
        }
        if (reference.ancestor.empty() || target->isA(reference.ancestor)) continue;
        throw MofError(reference.name.position, reference.user + " refers to " + inQuotes(reference.name.text) +
                                                    ", but its superclass demands a " + inQuotes(reference.ancestor));
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
    if (current->qualifiers.size() >= mostQualifiers) {
        throw MofError(name.position, "more than " + std::to_string(mostQualifiers) + " qualifiers in namespace " +
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
    if (superclass) {
        checkOverrides(content.qualifiers, superclass->qualifiers(), "class " + inQuotes(name.text), name.position);
    }
    for (const mof::Feature& feature : declaration.features) {
        if (feature.isMethod) {
            addMethod(content, feature, superclass);
        } else {
            addProperty(content, feature, superclass);
        }
    }
    countMemory(content, superclass, name.position);

    current->owned.push_back(std::make_unique<ClassDeclaration>(std::move(content), superclass, current->name));
    const ClassDeclaration* made = current->owned.back().get();
    current->index.add(made->name(), current->classes.size());
    current->classes.push_back(made);
    if (superclass) superclass->children.push_back(made);
}

void RepositoryBuilder::addProperty(ClassContent& content, const mof::Feature& feature,
                                    const ClassDeclaration* superclass) {
    const mof::Word& name = feature.declared.name;
    const CMPIType type = feature.declared.type;
    const std::string kind = elementOf(type) == CMPI_ref ? "reference" : "property";
    const std::string user = kind + " " + inQuotes(name.text) + " of class " + inQuotes(content.name);
    checkIsNew(content.properties, name, user);
    if (type == CMPI_refA) throw MofError(name.position, user + " is an array: only parameters can be that");
    PropertyDeclaration made;
    made.name = name.text;
    made.type = type;
    made.arraySize = feature.declared.arraySize;
    made.referenceClass = feature.declared.referenceClass.text;
    made.qualifiers = resolveQualifiers(feature.qualifiers, kind);
    if (feature.defaultValue) made.defaultValue = valueInType(*feature.defaultValue, type, user);

    const PropertyDeclaration* inherited = superclass ? superclass->property(name.text) : nullptr;
    if (inherited && inherited->type != type) {
        throw MofError(name.position, user + " is " + typeText(type) + ", but its superclass declares it as " +
                                          typeText(inherited->type));
    }
    checkAgainstInherited(made, inherited, user, name.position);
    checkKey(made, inherited, superclass, user, name.position);
    awaitClass(feature.declared, user, inherited ? inherited->referenceClass : std::string());
    content.properties.push_back(std::move(made));
}

void RepositoryBuilder::addMethod(ClassContent& content, const mof::Feature& feature,
                                  const ClassDeclaration* superclass) {
    const mof::Word& name = feature.declared.name;
    const std::string user = "method " + inQuotes(name.text) + " of class " + inQuotes(content.name);
    checkIsNew(content.methods, name, user);
    MethodDeclaration made;
    made.name = name.text;
    made.returnType = feature.declared.type;
    made.qualifiers = resolveQualifiers(feature.qualifiers, "method");
    for (const mof::Parameter& parameter : feature.parameters) {
        addParameter(made, parameter, user);
    }
    const MethodDeclaration* inherited = superclass ? superclass->method(name.text) : nullptr;
    if (inherited && inherited->returnType != made.returnType) {
        throw MofError(name.position, user + " returns " + typeText(made.returnType) +
                                          ", but its superclass declares it as returning " +
                                          typeText(inherited->returnType));
    }
    checkAgainstInherited(made, inherited, user, name.position);
    content.methods.push_back(std::move(made));
}

void RepositoryBuilder::addParameter(MethodDeclaration& method, const mof::Parameter& parameter,
                                     const std::string& owner) {
    const mof::Word& name = parameter.declared.name;
    const std::string user = "parameter " + inQuotes(name.text) + " of " + owner;
    checkIsNew(method.parameters, name, user);
    ParameterDeclaration made;
    made.name = name.text;
    made.type = parameter.declared.type;
    made.arraySize = parameter.declared.arraySize;
    made.referenceClass = parameter.declared.referenceClass.text;
    made.qualifiers = resolveQualifiers(parameter.qualifiers, "parameter");
    const Qualifier* in = findQualifier(made.qualifiers, "In");
    const Qualifier* out = findQualifier(made.qualifiers, "Out");
    made.isIn = !in || in->value.isTrue();
    made.isOut = out && out->value.isTrue();
    awaitClass(parameter.declared, user, {});
    method.parameters.push_back(std::move(made));
}

void RepositoryBuilder::awaitClass(const mof::TypedName& declared, const std::string& user,
                                   const std::string& ancestor) {
    if (declared.referenceClass.text.empty()) return;
    awaited.push_back({current, declared.referenceClass, user, ancestor});
}

void RepositoryBuilder::countMemory(const ClassContent& content, const ClassDeclaration* superclass,
                                    const SourcePosition& position) {
    memory += memoryUse(content) + (superclass ? memoryUse(superclass->content) : 0);
    if (memory <= largestRepository) return;
    throw MofError(position, "the classes take more than " + std::to_string(largestRepository >> 20) + " MiB");
}

} // namespace cimhost
