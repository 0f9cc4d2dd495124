#include "cimhost/cimxml/encoder.h"

#include "cimhost/broker/visit_value.h"
#include "cimhost/cimxml/xml_text.h"
#include "cimhost/model/cim_type.h"
#include "cimhost/model/mapped_property.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <concepts>

namespace cimhost::cimxml {

namespace {

// The elements of the three kinds of property. A property without a value has an end tag all the same: clients in the
// field do not take "/>" there.
struct PropertyShape {
    std::string_view element;
    std::string_view toValue;
    std::string_view close;
    std::string_view empty;
};

constexpr PropertyShape scalarShape = {"<PROPERTY", "><VALUE>", "</VALUE></PROPERTY>", "></PROPERTY>"};
constexpr PropertyShape arrayShape = {"<PROPERTY.ARRAY", "><VALUE.ARRAY>", "</VALUE.ARRAY></PROPERTY.ARRAY>",
                                      "></PROPERTY.ARRAY>"};
constexpr PropertyShape referenceShape = {"<PROPERTY.REFERENCE", "><VALUE.REFERENCE>",
                                          "</VALUE.REFERENCE></PROPERTY.REFERENCE>", "></PROPERTY.REFERENCE>"};

const PropertyShape& shapeOf(CMPIType type) {
    if (elementOf(type) == CMPI_ref) return referenceShape;
    return isArrayType(type) ? arrayShape : scalarShape;
}

std::string_view wireType(CMPIType type) { return elementOf(type) == CMPI_instance ? "string" : typeName(type); }

PropertyTags makeTags(const PropertyDeclaration& property) {
    const PropertyShape& shape = shapeOf(property.type);
    PropertyTags tags;
    ByteBuffer opening(shape.element);
    appendAttribute(opening, "NAME", property.name);
    if (property.isReference()) {
        appendAttribute(opening, "REFERENCECLASS", property.referenceClass);
    } else {
        appendAttribute(opening, "TYPE", wireType(property.type));
    }
    if (findQualifier(property.qualifiers, "EmbeddedInstance")) {
        appendAttribute(opening, "EmbeddedObject", "instance");
    } else if (findQualifier(property.qualifiers, "EmbeddedObject")) {
        appendAttribute(opening, "EmbeddedObject", "object");
    }
    tags.opening = opening.view();
    tags.toValue = tags.opening;
    tags.toValue += shape.toValue;
    tags.close = shape.close;
    tags.empty = shape.empty;
    ByteBuffer origin;
    appendAttribute(origin, "CLASSORIGIN", property.classOrigin);
    tags.origin = origin.view();
    if (isLeftOutWithoutValue(property)) tags.empty = {};
    return tags;
}

std::string tagWithName(std::string_view element, std::string_view attribute, std::string_view name) {
    ByteBuffer tag(element);
    appendAttribute(tag, attribute, name);
    tag.append(">");
    return std::string(tag.view());
}

template <typename Number>
void appendNumber(ByteBuffer& out, Number number) {
    constexpr std::size_t longestNumber = 32;
    char* const digits = out.prepare(longestNumber);
    const auto result = std::to_chars(digits, digits + longestNumber, number);
    out.commit(static_cast<std::size_t>(result.ptr - digits));
}

template <typename Real>
void appendReal(ByteBuffer& out, Real number) {
    if (std::isnan(number)) {
        out.append("NaN");
    } else if (std::isinf(number)) {
        out.append(number < 0 ? "-INF" : "INF");
    } else {
        appendNumber(out, number);
    }
}

std::string_view keyValueType(CMPIType type) {
    if (type == CMPI_boolean) return "boolean";
    const bool isReal = type == CMPI_real32 || type == CMPI_real64;
    return isReal || isIntegerType(type) ? "numeric" : "string";
}

std::string keyTag(std::string_view name, CMPIType type) {
    std::string tag = tagWithName("<KEYBINDING", "NAME", name);
    return tag.append("<KEYVALUE VALUETYPE=\"").append(keyValueType(type)).append("\">");
}

ClassTags makeTags(const ClassDeclaration& declaration) {
    ClassTags tags;
    tags.instance = tagWithName("<INSTANCE", "CLASSNAME", declaration.name());
    tags.name = tagWithName("<INSTANCENAME", "CLASSNAME", declaration.name());
    for (const PropertyDeclaration& property : declaration.properties())
        tags.properties.push_back(makeTags(property));
    for (const std::size_t position : declaration.keys()) {
        const PropertyDeclaration& key = declaration.properties()[position];
        if (key.isReference()) {
            tags.keys.clear();
            break;
        }
        tags.keys.push_back({position, keyTag(key.name, key.type)});
    }
    return tags;
}

bool isNull(const CMPIData& data) { return (data.state & CMPI_nullValue) != 0; }

} // namespace

void appendAttribute(ByteBuffer& out, std::string_view name, std::string_view text) {
    out.append(" ");
    out.append(name);
    out.append("=\"");
    appendAttributeText(out, text);
    out.append("\"");
}

TagTable::TagTable(const ClassRepository& repository) {
    for (const std::string_view nameSpace : repository.namespaces()) {
        for (const ClassDeclaration* declaration : repository.classes(nameSpace)) {
            tags.emplace(declaration, makeTags(*declaration));
        }
    }
}

void Encoder::instance(const InstanceObject& instance, const InstanceOptions& options) {
    const ClassDeclaration* declaration = instance.declaration();
    if (!declaration) {
        raw("<INSTANCE");
        appendAttribute(document, "CLASSNAME", instance.className());
        raw(">");
    } else {
        const ClassTags& tags = tagTable.of(*declaration);
        const std::vector<PropertyTags>& rows = tags.properties;
        raw(tags.instance);
        for (std::size_t position = 0; position < rows.size(); ++position) {
            if (options.selected && !(*options.selected)[position]) continue;
            if (!instance.isWanted(position)) continue;
            const CMPIData* data = instance.valueAt(position);
            const bool isLeftOut = rows[position].empty.empty() && (!data || isNull(*data));
            if (isLeftOut) continue;
            property(rows[position], data, options.includeClassOrigin);
        }
    }
    for (const NamedData& free : instance.freeProperties())
        freeProperty(free.name, free.data);
    raw("</INSTANCE>");
}

void Encoder::property(const PropertyTags& tags, const CMPIData* data, bool includeClassOrigin) {
    const bool hasValue = data && !isNull(*data);
    if (hasValue && !includeClassOrigin) {
        raw(tags.toValue);
    } else {
        raw(tags.opening);
        if (includeClassOrigin) raw(tags.origin);
        if (!hasValue) return raw(tags.empty);
        raw(std::string_view(tags.toValue).substr(tags.opening.size()));
    }
    content(*data);
    raw(tags.close);
}

void Encoder::freeProperty(std::string_view name, const CMPIData& data) {
    const PropertyShape& shape = shapeOf(data.type);
    raw(shape.element);
    appendAttribute(document, "NAME", name);
    if (&shape != &referenceShape) appendAttribute(document, "TYPE", wireType(data.type));
    if (elementOf(data.type) == CMPI_instance) appendAttribute(document, "EmbeddedObject", "instance");
    if (isNull(data)) return raw(shape.empty);
    raw(shape.toValue);
    content(data);
    raw(shape.close);
}

void Encoder::value(const CMPIData& data) {
    if (isNull(data)) return;
    const bool isReference = elementOf(data.type) == CMPI_ref;
    const std::string_view tag = isArrayType(data.type) ? (isReference ? "VALUE.REFARRAY>" : "VALUE.ARRAY>")
                                                        : (isReference ? "VALUE.REFERENCE>" : "VALUE>");
    raw("<");
    raw(tag);
    content(data);
    raw("</");
    raw(tag);
}

// What stands between the tags of a value; nothing for null.
void Encoder::content(const CMPIData& data) {
    visitValue(data, Overloaded{
                         [](NoValue) {},
                         [this](bool truth) { raw(truth ? "true" : "false"); },
                         [this](char16_t character) { appendCharacter(document, character); },
                         [this](const std::integral auto& number) { appendNumber(document, +number); },
                         [this](const std::floating_point auto& number) { appendReal(document, number); },
                         [this](const StringObject& text) { appendText(document, text.text()); },
                         [this](const DateTimeObject& time) { raw(time.text()); },
                         [this](const ObjectPathObject& path) { fullestPath(path); },
                         [this](const InstanceObject& inner) { embedded(inner); },
                         [this](const ArrayObject& elements) { array(elements); },
                     });
}

// An instance inside a property travels as text.
void Encoder::embedded(const InstanceObject& inner) {
    ByteBuffer text;
    Encoder(text, tagTable).instance(inner, {});
    appendText(document, text.view());
}

void Encoder::array(const ArrayObject& array) {
    const bool isReference = array.elementType() == CMPI_ref;
    const std::string_view open = isReference ? "<VALUE.REFERENCE>" : "<VALUE>";
    const std::string_view close = isReference ? "</VALUE.REFERENCE>" : "</VALUE>";
    for (CMPICount index = 0; index < array.size(); ++index) {
        const CMPIData element = array.element(index);
        if (isNull(element)) {
            raw("<VALUE.NULL/>");
            continue;
        }
        raw(open);
        content(element);
        raw(close);
    }
}

void Encoder::keyBinding(const NamedData& key) {
    raw("<KEYBINDING");
    appendAttribute(document, "NAME", key.name);
    if (key.data.type == CMPI_ref) {
        raw("><VALUE.REFERENCE>");
        content(key.data);
        raw("</VALUE.REFERENCE></KEYBINDING>");
        return;
    }
    raw("><KEYVALUE VALUETYPE=\"");
    raw(keyValueType(key.data.type));
    raw("\">");
    content(key.data);
    raw("</KEYVALUE></KEYBINDING>");
}

void Encoder::instanceName(const ObjectPathObject& path) {
    raw("<INSTANCENAME");
    appendAttribute(document, "CLASSNAME", path.className());
    raw(">");
    for (const NamedData& key : path.keys())
        keyBinding(key);
    raw("</INSTANCENAME>");
}

void Encoder::instanceName(const InstanceObject& instance) {
    const ClassDeclaration* declaration = instance.declaration();
    const ClassTags* tags = declaration ? &tagTable.of(*declaration) : nullptr;
    const auto isMissing = [&](const KeyTags& key) {
        const CMPIData* data = instance.valueAt(key.position);
        return !data || isNull(*data);
    };
    if (!tags || tags->keys.empty() || std::any_of(tags->keys.begin(), tags->keys.end(), isMissing)) {
        Arena arena;
        return instanceName(*instance.path(arena));
    }
    raw(tags->name);
    for (const KeyTags& key : tags->keys) {
        raw(key.toValue);
        content(*instance.valueAt(key.position));
        raw("</KEYVALUE></KEYBINDING>");
    }
    raw("</INSTANCENAME>");
}

void Encoder::localNamespacePath(std::string_view nameSpace) {
    raw("<LOCALNAMESPACEPATH>");
    nameSpace = trimNamespace(nameSpace);
    if (!renamed.empty() && equalNames(nameSpace, renamed)) nameSpace = shown;
    while (!nameSpace.empty()) {
        const std::string_view part = nameSpace.substr(0, nameSpace.find('/'));
        raw("<NAMESPACE");
        appendAttribute(document, "NAME", part);
        raw("/>");
        nameSpace.remove_prefix(std::min(nameSpace.size(), part.size() + 1));
    }
    raw("</LOCALNAMESPACEPATH>");
}

void Encoder::namespacePath(std::string_view host, std::string_view nameSpace) {
    raw("<NAMESPACEPATH><HOST>");
    appendText(document, host);
    raw("</HOST>");
    localNamespacePath(nameSpace);
    raw("</NAMESPACEPATH>");
}

void Encoder::instancePath(const ObjectPathObject& path, const Place& place) {
    raw("<INSTANCEPATH>");
    namespacePath(path.host().empty() ? place.host : path.host(),
                  path.nameSpace().empty() ? place.nameSpace : path.nameSpace());
    instanceName(path);
    raw("</INSTANCEPATH>");
}

void Encoder::instancePath(const InstanceObject& instance, const Place& place) {
    raw("<INSTANCEPATH>");
    namespacePath(place.host, instance.nameSpace().empty() ? place.nameSpace : instance.nameSpace());
    instanceName(instance);
    raw("</INSTANCEPATH>");
}

void Encoder::classPath(const ClassDeclaration& declaration, std::string_view host) {
    raw("<CLASSPATH>");
    namespacePath(host, declaration.nameSpace());
    raw("<CLASSNAME");
    appendAttribute(document, "NAME", declaration.name());
    raw("/></CLASSPATH>");
}

void Encoder::fullestPath(const ObjectPathObject& path) {
    if (path.nameSpace().empty()) return instanceName(path);
    if (!path.host().empty()) return instancePath(path, {});
    raw("<LOCALINSTANCEPATH>");
    localNamespacePath(path.nameSpace());
    instanceName(path);
    raw("</LOCALINSTANCEPATH>");
}

void Encoder::error(const CimError& error) {
    raw("<ERROR");
    appendAttribute(document, "CODE", std::to_string(static_cast<int>(error.code)));
    if (!error.description.empty()) appendAttribute(document, "DESCRIPTION", error.description);
    raw("/>");
}

} // namespace cimhost::cimxml
