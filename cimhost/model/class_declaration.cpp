#include "cimhost/model/class_declaration.h"

#include <algorithm>
#include <utility>

namespace cimhost {
namespace {

// Own qualifiers first, then those that the inherited element passes on.
void inheritQualifiers(std::vector<Qualifier>& own, std::span<const Qualifier> inherited) {
    const std::size_t ownCount = own.size();
    for (const Qualifier& qualifier : inherited) {
        const auto ownEnd = own.begin() + static_cast<std::ptrdiff_t>(ownCount);
        const bool isRepeated =
            std::any_of(own.begin(), ownEnd, [&](const Qualifier& q) { return equalNames(q.name, qualifier.name); });
        if (isRepeated || !qualifier.flavor.isToSubclass) continue;
        own.push_back(qualifier);
        own.back().isPropagated = true;
    }
}

bool isMarked(std::span<const Qualifier> qualifiers, std::string_view name) noexcept {
    const Qualifier* qualifier = findQualifier(qualifiers, name);
    return qualifier && qualifier->value.isTrue();
}

template <typename Member>
const Member* findMember(const NameIndex& index, const std::vector<Member>& members, std::string_view name) noexcept {
    const std::size_t position = index.find(name);
    return position == NameIndex::notFound ? nullptr : &members[position];
}

// A redeclaration that says nothing of a default keeps the inherited one; `= NULL` takes it away.
void inheritDefault(PropertyDeclaration& own, const PropertyDeclaration& inherited) {
    if (own.defaultValue.type == CMPI_null) own.defaultValue = inherited.defaultValue;
}
void inheritDefault(MethodDeclaration& /*own*/, const MethodDeclaration& /*inherited*/) {}

// Inherited members first, in their places; a redeclared one replaces what it inherits.
template <typename Member>
std::vector<Member> mergeMembers(std::vector<Member> own, std::span<const Member> inherited,
                                 const NameIndex* inheritedIndex, const std::string& className) {
    std::vector<Member> all(inherited.begin(), inherited.end());
    for (Member& member : all) {
        member.isPropagated = true;
        std::erase_if(member.qualifiers, [](const Qualifier& qualifier) { return !qualifier.flavor.isToSubclass; });
        for (Qualifier& qualifier : member.qualifiers) {
            qualifier.isPropagated = true;
        }
    }
    for (Member& member : own) {
        const std::size_t position = inheritedIndex ? inheritedIndex->find(member.name) : NameIndex::notFound;
        if (position == NameIndex::notFound) {
            member.classOrigin = className;
            all.push_back(std::move(member));
            continue;
        }
        Member& redeclared = all[position];
        member.classOrigin = redeclared.classOrigin;
        inheritDefault(member, redeclared);
        inheritQualifiers(member.qualifiers, redeclared.qualifiers);
        redeclared = std::move(member);
    }
    return all;
}

} // namespace

std::string_view DeclaredValue::text() const noexcept {
    return isNull || isArray() || texts.empty() || !texts.front() ? std::string_view() : *texts.front();
}

bool DeclaredValue::isTrue() const noexcept { return type == CMPI_boolean && text() == "true"; }

const Qualifier* findQualifier(std::span<const Qualifier> qualifiers, std::string_view name) noexcept {
    const auto place = std::find_if(qualifiers.begin(), qualifiers.end(),
                                    [name](const Qualifier& qualifier) { return equalNames(qualifier.name, name); });
    return place == qualifiers.end() ? nullptr : &*place;
}

const ParameterDeclaration* MethodDeclaration::parameter(std::string_view parameterName) const noexcept {
    const auto place = std::find_if(parameters.begin(), parameters.end(),
                                    [&](const ParameterDeclaration& p) { return equalNames(p.name, parameterName); });
    return place == parameters.end() ? nullptr : &*place;
}

ClassDeclaration::ClassDeclaration(ClassContent own, const ClassDeclaration* superclass, std::string_view nameSpace)
    : content(std::move(own)), parent(superclass), nameSpaceText(nameSpace) {
    const auto inherited = parent ? parent->properties() : std::span<const PropertyDeclaration>();
    const auto inheritedMethods = parent ? parent->methods() : std::span<const MethodDeclaration>();
    content.properties =
        mergeMembers(std::move(content.properties), inherited, parent ? &parent->propertyIndex : nullptr, content.name);
    content.methods = mergeMembers(std::move(content.methods), inheritedMethods,
                                   parent ? &parent->methodIndex : nullptr, content.name);
    if (parent) inheritQualifiers(content.qualifiers, parent->qualifiers());
    abstractClass = isMarked(content.qualifiers, "Abstract");
    associationClass = isMarked(content.qualifiers, "Association");
    indicationClass = isMarked(content.qualifiers, "Indication");

    for (std::size_t position = 0; position < content.properties.size(); ++position) {
        PropertyDeclaration& property = content.properties[position];
        property.isKey = isMarked(property.qualifiers, "Key");
        if (property.isKey) keyPositions.push_back(position);
        anyDefault = anyDefault || !property.defaultValue.isNull;
        propertyIndex.add(property.name, position);
    }
    for (std::size_t position = 0; position < content.methods.size(); ++position) {
        methodIndex.add(content.methods[position].name, position);
    }
}

std::vector<const ClassDeclaration*> ClassDeclaration::allSubclasses() const {
    std::vector<const ClassDeclaration*> found;
    std::vector<const ClassDeclaration*> open(children.rbegin(), children.rend());
    while (!open.empty()) {
        const ClassDeclaration* next = open.back();
        open.pop_back();
        found.push_back(next);
        open.insert(open.end(), next->children.rbegin(), next->children.rend());
    }
    return found;
}

const PropertyDeclaration* ClassDeclaration::property(std::string_view propertyName) const noexcept {
    return findMember(propertyIndex, content.properties, propertyName);
}

const MethodDeclaration* ClassDeclaration::method(std::string_view methodName) const noexcept {
    return findMember(methodIndex, content.methods, methodName);
}

bool ClassDeclaration::isA(std::string_view className) const noexcept {
    for (const ClassDeclaration* type = this; type; type = type->parent) {
        if (equalNames(type->name(), className)) return true;
    }
    return false;
}

bool ClassDeclaration::isA(const ClassDeclaration& other) const noexcept {
    for (const ClassDeclaration* type = this; type; type = type->parent) {
        if (type == &other) return true;
    }
    return false;
}

} // namespace cimhost
