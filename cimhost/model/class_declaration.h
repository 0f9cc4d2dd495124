// A class as its MOF declares it, with everything it inherits. Declarations never change once their repository is
// loaded, so any number of threads may read them.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cimhost/model/names.h"
#include "cmpidt.h"

namespace cimhost {

/// A value written in MOF: a qualifier's value or a property's default, as CIM-XML would write it ("true", "17",
/// "20260131120000.000000+000"). One text for a scalar; an element without text is NULL.
struct DeclaredValue {
    CMPIType type = CMPI_null; ///< with CMPI_ARRAY for an array
    bool isNull = true;
    std::vector<std::optional<std::string>> texts;

    [[nodiscard]] bool isArray() const noexcept { return (type & CMPI_ARRAY) != 0; }
    /// The text of a scalar that is not NULL, otherwise empty.
    [[nodiscard]] std::string_view text() const noexcept;
    /// True for a boolean scalar TRUE.
    [[nodiscard]] bool isTrue() const noexcept;
};

struct QualifierFlavor {
    bool isOverridable = true;
    bool isToSubclass = true;
    bool isTranslatable = false;
};

/// `Qualifier Name : type = default, Scope(...), Flavor(...);`
struct QualifierDeclaration {
    std::string name;
    DeclaredValue defaultValue; ///< its type is the qualifier's, also if it is NULL
    QualifierFlavor flavor;
    std::vector<std::string> scopes; ///< lower case; "any" stands alone
};

/// A qualifier on a class, property, method or parameter.
struct Qualifier {
    std::string name; ///< spelt as the qualifier declaration spells it
    DeclaredValue value;
    QualifierFlavor flavor;
    bool isPropagated = false; ///< inherited, not written here
};

/// Null if there is none of that name.
const Qualifier* findQualifier(std::span<const Qualifier> qualifiers, std::string_view name) noexcept;

struct PropertyDeclaration {
    std::string name;
    CMPIType type = CMPI_null; ///< with CMPI_ARRAY for an array; CMPI_ref for a reference
    bool isKey = false;
    bool isPropagated = false;              ///< inherited, not redeclared by the class at hand
    std::string referenceClass;             ///< the target of a reference, else empty
    std::string classOrigin;                ///< the class that introduced the property
    std::optional<std::uint32_t> arraySize; ///< only for `name[n]`
    DeclaredValue defaultValue;
    std::vector<Qualifier> qualifiers; ///< effective ones

    [[nodiscard]] bool isArray() const noexcept { return (type & CMPI_ARRAY) != 0; }
    [[nodiscard]] bool isReference() const noexcept { return (type & ~CMPI_ARRAY) == CMPI_ref; }
};

struct ParameterDeclaration {
    std::string name;
    CMPIType type = CMPI_null;
    bool isIn = true;
    bool isOut = false;
    std::string referenceClass;
    std::optional<std::uint32_t> arraySize;
    std::vector<Qualifier> qualifiers;

    [[nodiscard]] bool isArray() const noexcept { return (type & CMPI_ARRAY) != 0; }
    [[nodiscard]] bool isReference() const noexcept { return (type & ~CMPI_ARRAY) == CMPI_ref; }
};

struct MethodDeclaration {
    std::string name;
    CMPIType returnType = CMPI_null;
    bool isPropagated = false;
    std::string classOrigin;
    std::vector<ParameterDeclaration> parameters;
    std::vector<Qualifier> qualifiers;

    /// Null if there is none of that name.
    [[nodiscard]] const ParameterDeclaration* parameter(std::string_view parameterName) const noexcept;
};

/// What a parser hands over to become a class: only what the class itself writes.
struct ClassContent {
    std::string name;
    std::vector<Qualifier> qualifiers;
    std::vector<PropertyDeclaration> properties;
    std::vector<MethodDeclaration> methods;
};

class ClassDeclaration {
public:
    static constexpr std::size_t notFound = NameIndex::notFound;

    /// Takes what the class itself declares and adds what it inherits. The caller has checked that the two fit, and
    /// keeps superclass (null for a root class) and the namespace's text alive. Made by ClassRepository.
    ClassDeclaration(ClassContent content, const ClassDeclaration* superclass, std::string_view nameSpace);
    ClassDeclaration(const ClassDeclaration&) = delete;
    ClassDeclaration& operator=(const ClassDeclaration&) = delete;

    [[nodiscard]] const std::string& name() const noexcept { return content.name; }
    /// Without leading and trailing slashes.
    [[nodiscard]] std::string_view nameSpace() const noexcept { return nameSpaceText; }
    /// Null for a root class.
    [[nodiscard]] const ClassDeclaration* superclass() const noexcept { return parent; }
    /// Direct subclasses, in the order of their declaration.
    [[nodiscard]] std::span<const ClassDeclaration* const> subclasses() const noexcept { return children; }
    /// All subclasses down the tree, a class before its own subclasses; not the class itself.
    [[nodiscard]] std::vector<const ClassDeclaration*> allSubclasses() const;

    /// Effective members: inherited first, in the superclass's order (a redeclared one keeps its place), then new ones.
    [[nodiscard]] std::span<const PropertyDeclaration> properties() const noexcept { return content.properties; }
    [[nodiscard]] std::span<const MethodDeclaration> methods() const noexcept { return content.methods; }
    [[nodiscard]] std::span<const Qualifier> qualifiers() const noexcept { return content.qualifiers; }
    /// Positions in properties().
    [[nodiscard]] std::span<const std::size_t> keys() const noexcept { return keyPositions; }

    /// Position in properties(), or notFound. Does not allocate.
    [[nodiscard]] std::size_t findProperty(std::string_view propertyName) const noexcept {
        return propertyIndex.find(propertyName);
    }
    /// Null if there is none of that name.
    [[nodiscard]] const PropertyDeclaration* property(std::string_view propertyName) const noexcept;
    [[nodiscard]] const MethodDeclaration* method(std::string_view methodName) const noexcept;

    [[nodiscard]] bool isAbstract() const noexcept { return abstractClass; }
    [[nodiscard]] bool isAssociation() const noexcept { return associationClass; }
    [[nodiscard]] bool isIndication() const noexcept { return indicationClass; }
    /// True if some property has a default other than NULL.
    [[nodiscard]] bool hasDefaults() const noexcept { return anyDefault; }
    /// True for the class's own name and for that of any ancestor.
    [[nodiscard]] bool isA(std::string_view className) const noexcept;
    [[nodiscard]] bool isA(const ClassDeclaration& other) const noexcept;

private:
    friend class RepositoryBuilder;

    ClassContent content;
    const ClassDeclaration* parent;
    std::string_view nameSpaceText;
    std::vector<const ClassDeclaration*> children;
    std::vector<std::size_t> keyPositions;
    NameIndex propertyIndex;
    NameIndex methodIndex;
    bool abstractClass = false;
    bool associationClass = false;
    bool indicationClass = false;
    bool anyDefault = false;
};

} // namespace cimhost
