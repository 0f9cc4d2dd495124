#include "cimhost/cimxml/elements.h"

#include "cimhost/model/cim_type.h"
#include "cimhost/model/names.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace cimhost::cimxml {

void refuse(std::string message, ErrorKind kind) { throw Refusal{{kind, std::move(message)}}; }

std::string shown(const XmlElement& element) { return "<" + std::string(element.name) + ">"; }

const XmlElement& onlyChild(const XmlElement& element) {
    if (element.children.size() != 1) {
        refuse(shown(element) + " holds " + std::to_string(element.children.size()) + " elements in place of one");
    }
    return element.children.front();
}

XmlElement& onlyChild(XmlElement& element) { return const_cast<XmlElement&>(onlyChild(std::as_const(element))); }

void refuseChildren(const XmlElement& element) {
    if (!element.children.empty()) refuse(shown(element) + " takes no element inside");
}

namespace {

std::string text(const XmlElement& element) {
    refuseChildren(element);
    return element.text;
}

} // namespace

// Names are compared and looked up, so white space around them would only hide them.
std::string requiredName(const XmlElement& element, std::string_view attribute) {
    const std::string& name = *element.attribute(attribute);
    if (name.empty()) refuse(shown(element) + " has an empty " + std::string(attribute));
    return name;
}

CMPIType typeAttribute(const XmlElement& element, std::string_view attribute) {
    const std::string* name = element.attribute(attribute);
    if (!name) return CMPI_null;
    const CMPIType type = *name == "reference" ? static_cast<CMPIType>(CMPI_ref) : typeFromName(*name);
    if (type == CMPI_null) refuse(shown(element) + ": " + name->substr(0, 64) + " is no type");
    return type;
}

std::string localNamespacePath(const XmlElement& element) {
    std::string path;
    for (const XmlElement& part : element.children) {
        if (part.name != "NAMESPACE") refuse(shown(part) + " inside <LOCALNAMESPACEPATH>");
        refuseChildren(part);
        if (!path.empty()) path += '/';
        path += requiredName(part, "NAME");
    }
    if (path.empty()) refuse("<LOCALNAMESPACEPATH> names no namespace");
    return path;
}

namespace {

ObjectPath classNameOf(const XmlElement& element) {
    refuseChildren(element);
    ObjectPath path;
    path.className = requiredName(element, "NAME");
    return path;
}

struct KeyTypeName {
    std::string_view name;
    KeyType type;
};

constexpr std::array keyTypeNames = {
    KeyTypeName{"string", KeyType::text},
    KeyTypeName{"boolean", KeyType::boolean},
    KeyTypeName{"numeric", KeyType::numeric},
};

KeyBinding keyValue(const XmlElement& element) {
    KeyBinding key;
    if (element.name == "VALUE.REFERENCE") {
        key.type = KeyType::reference;
        key.reference = std::make_shared<ObjectPath>(objectPath(onlyChild(element)));
        return key;
    }
    if (element.name != "KEYVALUE") refuse(shown(element) + " where a key's value stands");
    key.declaredType = typeAttribute(element, "TYPE");
    if (const std::string* name = element.attribute("VALUETYPE")) {
        const auto* row = std::find_if(keyTypeNames.begin(), keyTypeNames.end(),
                                       [&](const KeyTypeName& candidate) { return candidate.name == *name; });
        if (row == keyTypeNames.end()) refuse("<KEYVALUE>: " + name->substr(0, 64) + " is no VALUETYPE");
        key.type = row->type;
    }
    key.text = text(element);
    return key;
}

ObjectPath instanceName(const XmlElement& element) {
    ObjectPath path;
    path.namesInstance = true;
    path.className = requiredName(element, "CLASSNAME");
    if (element.children.size() == 1 && element.children.front().name != "KEYBINDING") {
        path.keys.push_back(keyValue(element.children.front()));
        return path;
    }
    if (element.children.size() > maximumNames) refuse("<INSTANCENAME> has too many keys");
    for (const XmlElement& binding : element.children) {
        if (binding.name != "KEYBINDING") refuse(shown(binding) + " inside <INSTANCENAME>");
        KeyBinding key = keyValue(onlyChild(binding));
        key.name = requiredName(binding, "NAME");
        const auto isSame = [&](const KeyBinding& other) { return equalNames(other.name, key.name); };
        if (std::any_of(path.keys.begin(), path.keys.end(), isSame)) {
            refuse("<INSTANCENAME> binds its key " + key.name.substr(0, 64) + " twice");
        }
        path.keys.push_back(std::move(key));
    }
    return path;
}

// The elements that wrap a class or an instance name in a place: each holds the place, then the name.
struct PathRule {
    std::string_view element;
    std::string_view place;
    std::string_view inner;
};

constexpr PathRule pathRules[] = {
    {"CLASSPATH", "NAMESPACEPATH", "CLASSNAME"},
    {"LOCALCLASSPATH", "LOCALNAMESPACEPATH", "CLASSNAME"},
    {"INSTANCEPATH", "NAMESPACEPATH", "INSTANCENAME"},
    {"LOCALINSTANCEPATH", "LOCALNAMESPACEPATH", "INSTANCENAME"},
};

void readPlace(const XmlElement& element, ObjectPath& path) {
    if (element.name == "LOCALNAMESPACEPATH") {
        path.nameSpace = localNamespacePath(element);
        return;
    }
    if (element.children.size() != 2 || element.children[0].name != "HOST" ||
        element.children[1].name != "LOCALNAMESPACEPATH") {
        refuse("<NAMESPACEPATH> holds other than <HOST> and <LOCALNAMESPACEPATH>");
    }
    path.host = text(element.children[0]);
    path.nameSpace = localNamespacePath(element.children[1]);
}

} // namespace

ObjectPath objectPath(const XmlElement& element) {
    if (element.name == "CLASSNAME") return classNameOf(element);
    if (element.name == "INSTANCENAME") return instanceName(element);
    if (element.name == "OBJECTPATH") return objectPath(onlyChild(element));
    for (const PathRule& rule : pathRules) {
        if (rule.element != element.name) continue;
        if (element.children.size() != 2 || element.children[0].name != rule.place ||
            element.children[1].name != rule.inner) {
            refuse(shown(element) + " holds other than <" + std::string(rule.place) + "> and <" +
                   std::string(rule.inner) + ">");
        }
        ObjectPath path = objectPath(element.children[1]);
        readPlace(element.children[0], path);
        return path;
    }
    refuse(shown(element) + " where a class or an instance is to be named");
}

namespace {

TextList arrayTexts(XmlElement& element) {
    refuseChildren(element);
    return std::move(element.values);
}

} // namespace

Value readValue(XmlElement& element) {
    Value value;
    value.isNull = false;
    if (element.name == "VALUE") {
        value.texts.append(text(element));
    } else if (element.name == "VALUE.ARRAY") {
        value.isArray = true;
        value.texts = arrayTexts(element);
    } else if (element.name == "VALUE.REFERENCE") {
        value.type = CMPI_ref;
        value.references.push_back(objectPath(onlyChild(element)));
    } else if (element.name == "VALUE.REFARRAY") {
        value.type = CMPI_ref;
        value.isArray = true;
        for (const XmlElement& reference : element.children) {
            if (reference.name != "VALUE.REFERENCE") refuse(shown(reference) + " inside <VALUE.REFARRAY>");
            value.references.push_back(objectPath(onlyChild(reference)));
        }
    } else {
        refuse(shown(element) + " where a value stands");
    }
    return value;
}

bool isEmbedded(const XmlElement& element) {
    return element.attribute("EmbeddedObject") || element.attribute("EMBEDDEDOBJECT");
}

namespace {

// Which element may hold the value of which kind of property.
struct PropertyRule {
    std::string_view element;
    std::string_view value;
    bool isArray;
};

constexpr PropertyRule propertyRules[] = {
    {"PROPERTY", "VALUE", false},
    {"PROPERTY.ARRAY", "VALUE.ARRAY", true},
    {"PROPERTY.REFERENCE", "VALUE.REFERENCE", false},
};

std::optional<Property> readProperty(XmlElement& element) {
    const auto* rule = std::find_if(std::begin(propertyRules), std::end(propertyRules),
                                    [&](const PropertyRule& row) { return row.element == element.name; });
    if (rule == std::end(propertyRules)) return std::nullopt;
    Property property;
    property.name = requiredName(element, "NAME");
    for (XmlElement& child : element.children) {
        if (child.name == "QUALIFIER") continue;
        if (child.name != rule->value || !property.value.isNull) {
            refuse(shown(child) + " inside " + shown(element) + " " + property.name.substr(0, 64));
        }
        property.value = readValue(child);
    }
    property.value.isArray = rule->isArray;
    property.value.type = rule->value == "VALUE.REFERENCE" ? CMPI_ref : typeAttribute(element, "TYPE");
    if (isEmbedded(element)) property.value.type = CMPI_instance;
    return property;
}

} // namespace

Instance readInstance(XmlElement& element) {
    Instance instance;
    instance.className = requiredName(element, "CLASSNAME");
    for (XmlElement& child : element.children) {
        if (child.name == "QUALIFIER") continue;
        std::optional<Property> property = readProperty(child);
        if (!property) refuse(shown(child) + " inside <INSTANCE>");
        instance.properties.push_back(std::move(*property));
    }
    return instance;
}

namespace {

// An optional path, then the instance; the element's name says which path.
struct NamedInstanceRule {
    std::string_view element;
    std::string_view path;
};

constexpr NamedInstanceRule namedInstanceRules[] = {
    {"VALUE.NAMEDINSTANCE", "INSTANCENAME"},
    {"VALUE.INSTANCEWITHPATH", "INSTANCEPATH"},
};

} // namespace

std::optional<NamedInstance> namedInstance(XmlElement& element) {
    if (element.name == "INSTANCE") return NamedInstance{std::nullopt, readInstance(element)};
    for (const NamedInstanceRule& rule : namedInstanceRules) {
        if (rule.element != element.name) continue;
        if (element.children.size() != 2 || element.children[0].name != rule.path ||
            element.children[1].name != "INSTANCE") {
            refuse(shown(element) + " holds other than <" + std::string(rule.path) + "> and <INSTANCE>");
        }
        return NamedInstance{objectPath(element.children[0]), readInstance(element.children[1])};
    }
    return std::nullopt;
}

bool namesObject(std::string_view element) {
    return element == "CLASSNAME" || element == "INSTANCENAME" ||
           std::any_of(std::begin(pathRules), std::end(pathRules),
                       [&](const PathRule& rule) { return rule.element == element; });
}

Value parameterValue(XmlElement& element) {
    Value value;
    if (!element.children.empty()) {
        XmlElement& child = onlyChild(element);
        // Some programs name an object where DSP0201 asks for <VALUE.REFERENCE> around the name.
        if (namesObject(child.name)) {
            value.isNull = false;
            value.type = CMPI_ref;
            value.references.push_back(objectPath(child));
        } else {
            value = readValue(child);
        }
    }
    if (value.type == CMPI_null) value.type = typeAttribute(element, "PARAMTYPE");
    if (isEmbedded(element)) value.type = CMPI_instance;
    return value;
}

namespace {

// Versions read "2.0": what counts is the number before the dot.
void checkVersion(const XmlElement& element, std::string_view attribute, char major, ErrorKind kind) {
    const std::string& version = *element.attribute(attribute);
    if (version.size() >= 2 && version[0] == major && version[1] == '.') return;
    refuse(std::string(attribute) + " " + version.substr(0, 64) + " is not supported, " + major + ".x is", kind);
}

} // namespace

XmlElement& readMessage(XmlElement& root) {
    if (root.name != "CIM") refuse("the document is a " + shown(root) + " and no <CIM>");
    checkVersion(root, "CIMVERSION", '2', ErrorKind::unsupportedCimVersion);
    checkVersion(root, "DTDVERSION", '2', ErrorKind::unsupportedDtdVersion);
    XmlElement& message = onlyChild(root);
    if (message.name != "MESSAGE") refuse("<CIM> holds a " + shown(message) + " and no <MESSAGE>");
    checkVersion(message, "PROTOCOLVERSION", '1', ErrorKind::unsupportedProtocolVersion);
    return message;
}

} // namespace cimhost::cimxml
