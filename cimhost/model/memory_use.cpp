#include "cimhost/model/memory_use.h"

namespace cimhost {
namespace {

std::size_t memoryUse(const DeclaredValue& value) noexcept {
    std::size_t bytes = 0;
    for (const auto& text : value.texts) {
        bytes += sizeof text + (text ? text->size() : 0);
    }
    return bytes;
}

std::size_t memoryUse(const std::vector<Qualifier>& qualifiers) noexcept {
    std::size_t bytes = 0;
    for (const Qualifier& qualifier : qualifiers) {
        bytes += sizeof qualifier + qualifier.name.size() + memoryUse(qualifier.value);
    }
    return bytes;
}

std::size_t memoryUse(const ParameterDeclaration& parameter) noexcept {
    return sizeof parameter + parameter.name.size() + memoryUse(parameter.qualifiers);
}

} // namespace

std::size_t memoryUse(const ClassContent& content) noexcept {
    std::size_t bytes = sizeof(ClassDeclaration) + content.name.size() + memoryUse(content.qualifiers);
    for (const PropertyDeclaration& property : content.properties) {
        bytes += sizeof property + property.name.size() + memoryUse(property.defaultValue);
        bytes += memoryUse(property.qualifiers);
    }
    for (const MethodDeclaration& method : content.methods) {
        bytes += sizeof method + method.name.size() + memoryUse(method.qualifiers);
        for (const ParameterDeclaration& parameter : method.parameters) {
            bytes += memoryUse(parameter);
        }
    }
    return bytes;
}

} // namespace cimhost
