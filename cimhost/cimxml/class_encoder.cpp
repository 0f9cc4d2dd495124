#include "cimhost/cimxml/class_encoder.h"

#include "cimhost/cimxml/encoder.h"
#include "cimhost/cimxml/xml_text.h"
#include "cimhost/model/cim_type.h"

#include <algorithm>

namespace cimhost::cimxml {

namespace {

// The scopes of a qualifier, as MOF and as DSP0201 call them.
struct ScopeRow {
    std::string_view mof;
    std::string_view xml;
};

constexpr ScopeRow scopeRows[] = {
    {"class", "CLASS"},   {"association", "ASSOCIATION"}, {"reference", "REFERENCE"},   {"property", "PROPERTY"},
    {"method", "METHOD"}, {"parameter", "PARAMETER"},     {"indication", "INDICATION"},
};

void appendFlavor(ByteBuffer& out, const QualifierFlavor& flavor) {
    if (!flavor.isOverridable) out.append(" OVERRIDABLE=\"false\"");
    if (!flavor.isToSubclass) out.append(" TOSUBCLASS=\"false\"");
    if (flavor.isTranslatable) out.append(" TRANSLATABLE=\"true\"");
}

void appendDeclaredValue(ByteBuffer& out, const DeclaredValue& declared) {
    if (declared.isNull) return;
    if (declared.isArray()) out.append("<VALUE.ARRAY>");
    for (const std::optional<std::string>& text : declared.texts) {
        if (!text) {
            out.append("<VALUE.NULL/>");
            continue;
        }
        out.append("<VALUE>");
        appendText(out, *text);
        out.append("</VALUE>");
    }
    if (declared.isArray()) out.append("</VALUE.ARRAY>");
}

class ClassWriter {
public:
    ClassWriter(ByteBuffer& target, const ClassOptions& wanted) : out(target), options(wanted) {}

    void write(const ClassDeclaration& declaration) {
        out.append("<CLASS");
        appendAttribute(out, "NAME", declaration.name());
        if (declaration.superclass()) appendAttribute(out, "SUPERCLASS", declaration.superclass()->name());
        out.append(">");
        qualifiers(declaration.qualifiers());
        for (const PropertyDeclaration& property : declaration.properties()) {
            if (options.localOnly && property.isPropagated) continue;
            if (options.wantsProperty && !options.wantsProperty(property.name)) continue;
            write(property);
        }
        for (const MethodDeclaration& method : declaration.methods()) {
            if (!options.localOnly || !method.isPropagated) write(method);
        }
        out.append("</CLASS>");
    }

private:
    void write(const PropertyDeclaration& property) {
        const std::string_view element = property.isReference() ? "PROPERTY.REFERENCE"
                                         : property.isArray()   ? "PROPERTY.ARRAY"
                                                                : "PROPERTY";
        open(element, property.name);
        typeAttributes(property.type, property.referenceClass);
        arraySize(property.arraySize);
        origin(property.classOrigin, property.isPropagated);
        out.append(">");
        qualifiers(property.qualifiers);
        appendDeclaredValue(out, property.defaultValue);
        close(element);
    }

    void write(const MethodDeclaration& method) {
        open("METHOD", method.name);
        appendAttribute(out, "TYPE", typeName(method.returnType));
        origin(method.classOrigin, method.isPropagated);
        out.append(">");
        qualifiers(method.qualifiers);
        for (const ParameterDeclaration& parameter : method.parameters)
            write(parameter);
        close("METHOD");
    }

    void write(const ParameterDeclaration& parameter) {
        const std::string_view element = parameter.isReference() && parameter.isArray() ? "PARAMETER.REFARRAY"
                                         : parameter.isReference()                      ? "PARAMETER.REFERENCE"
                                         : parameter.isArray()                          ? "PARAMETER.ARRAY"
                                                                                        : "PARAMETER";
        open(element, parameter.name);
        typeAttributes(parameter.type, parameter.referenceClass);
        arraySize(parameter.arraySize);
        out.append(">");
        qualifiers(parameter.qualifiers);
        close(element);
    }

    void write(const Qualifier& qualifier) {
        open("QUALIFIER", qualifier.name);
        appendAttribute(out, "TYPE", typeName(qualifier.value.type));
        if (qualifier.isPropagated) out.append(" PROPAGATED=\"true\"");
        appendFlavor(out, qualifier.flavor);
        out.append(">");
        appendDeclaredValue(out, qualifier.value);
        close("QUALIFIER");
    }

    void qualifiers(std::span<const Qualifier> list) {
        if (!options.includeQualifiers) return;
        for (const Qualifier& qualifier : list)
            write(qualifier);
    }

    void open(std::string_view element, std::string_view name) {
        out.append("<");
        out.append(element);
        appendAttribute(out, "NAME", name);
    }

    void close(std::string_view element) {
        out.append("</");
        out.append(element);
        out.append(">");
    }

    void typeAttributes(CMPIType type, std::string_view referenceClass) {
        if (elementOf(type) != CMPI_ref) return appendAttribute(out, "TYPE", typeName(type));
        if (!referenceClass.empty()) appendAttribute(out, "REFERENCECLASS", referenceClass);
    }

    void arraySize(std::optional<std::uint32_t> size) {
        if (size) appendAttribute(out, "ARRAYSIZE", std::to_string(*size));
    }

    void origin(std::string_view declaringClass, bool isPropagated) {
        if (options.includeClassOrigin) appendAttribute(out, "CLASSORIGIN", declaringClass);
        if (isPropagated) out.append(" PROPAGATED=\"true\"");
    }

    ByteBuffer& out;
    const ClassOptions& options;
};

} // namespace

void appendClass(ByteBuffer& out, const ClassDeclaration& declaration, const ClassOptions& options) {
    ClassWriter(out, options).write(declaration);
}

void appendQualifierDeclaration(ByteBuffer& out, const QualifierDeclaration& declaration) {
    out.append("<QUALIFIER.DECLARATION");
    appendAttribute(out, "NAME", declaration.name);
    appendAttribute(out, "TYPE", typeName(declaration.defaultValue.type));
    appendAttribute(out, "ISARRAY", declaration.defaultValue.isArray() ? "true" : "false");
    appendFlavor(out, declaration.flavor);
    out.append("><SCOPE");
    for (const ScopeRow& row : scopeRows) {
        const auto& scopes = declaration.scopes;
        const bool isIn = scopes.empty() || std::any_of(scopes.begin(), scopes.end(), [&](const std::string& scope) {
                              return scope == "any" || scope == row.mof;
                          });
        if (isIn) appendAttribute(out, row.xml, "true");
    }
    out.append("/>");
    appendDeclaredValue(out, declaration.defaultValue);
    out.append("</QUALIFIER.DECLARATION>");
}

void appendClassName(ByteBuffer& out, std::string_view name) {
    out.append("<CLASSNAME");
    appendAttribute(out, "NAME", name);
    out.append("/>");
}

} // namespace cimhost::cimxml
