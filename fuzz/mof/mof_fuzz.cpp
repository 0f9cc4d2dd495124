// Any bytes as a MOF text: it is read or refused with its place, and what was read holds together.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "cimhost/broker/broker.h"
#include "cimhost/model/class_repository.h"
#include "cimhost/model/utf8.h"

using namespace cimhost;

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

void checkError(const MofError& error, std::string_view text) {
    const SourcePosition& place = error.position();
    const std::string message = error.what();
    const std::string expected = "fuzz:" + std::to_string(place.line) + ":" + std::to_string(place.column) + ": ";
    require(message.rfind(expected, 0) == 0 && message.size() > expected.size());
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    require(place.line >= 1 && place.line <= lines && place.column >= 1 && place.column <= text.size() + 1);
}

// A value that the text may declare is one that an instance can hold.
void checkValue(const ObjectMaker& maker, const DeclaredValue& value) {
    for (const auto& text : value.texts) {
        require(!text || isUtf8(*text));
    }
    require(value.isNull || maker.value(value).has_value());
}

void checkQualifiers(const ObjectMaker& maker, std::span<const Qualifier> qualifiers) {
    for (const Qualifier& qualifier : qualifiers) {
        checkValue(maker, qualifier.value);
        require(findQualifier(qualifiers, qualifier.name) == &qualifier);
    }
}

void checkClass(const ObjectMaker& maker, const ClassDeclaration& declaration) {
    require(isLegalName(declaration.name()) && isUtf8(declaration.name()));
    checkQualifiers(maker, declaration.qualifiers());
    for (const PropertyDeclaration& property : declaration.properties()) {
        require(declaration.property(property.name) == &property);
        require(property.isReference() == !property.referenceClass.empty());
        checkQualifiers(maker, property.qualifiers);
        checkValue(maker, property.defaultValue);
    }
    for (const MethodDeclaration& method : declaration.methods()) {
        require(declaration.method(method.name) == &method);
        checkQualifiers(maker, method.qualifiers);
    }
    const ClassDeclaration* superclass = declaration.superclass();
    if (!superclass) return;
    require(declaration.isA(*superclass) && !superclass->isA(declaration));
    require(declaration.properties().size() >= superclass->properties().size());
    require(superclass->keys().empty() || superclass->keys().size() >= declaration.keys().size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    ClassRepository repository;
    try {
        repository.loadText("root/fuzz", text, "fuzz");
    } catch (const MofError& error) {
        checkError(error, text);
        return 0;
    }
    Broker broker(repository);
    for (const std::string_view nameSpace : repository.namespaces()) {
        for (const ClassDeclaration* declaration : repository.classes(nameSpace)) {
            require(repository.find(nameSpace, declaration->name()) == declaration);
            RequestScope scope(broker);
            checkClass(scope.make(), *declaration);
            const InstanceObject& instance = *scope.make().instance(*scope.make().path(nameSpace, declaration->name()));
            require(instance.declaration() == declaration);
        }
    }
    return 0;
}
