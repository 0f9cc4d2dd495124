#include "cimhost/service/request_values.h"

#include "cimhost/broker/broker.h"
#include "cimhost/model/cim_type.h"
#include "cimhost/service/cim_failure.h"
#include "cimhost/service/path_text.h"

#include <algorithm>
#include <optional>
#include <string>

namespace cimhost {

namespace {

constexpr std::string_view blanks = " \t\r\n"; // of XML

std::string shown(std::string_view text) { return "\"" + std::string(text.substr(0, 64)) + "\""; }

[[noreturn]] void refuseText(std::string_view text, CMPIType type) {
    throw CimFailure(CMPI_RC_ERR_INVALID_PARAMETER, shown(text) + " is no " + std::string(typeName(type)));
}

// The type that a key has by its kind and its text, whatever its class says.
CMPIType ownType(const cimxml::KeyBinding& key) {
    if (key.type == cimxml::KeyType::text) return CMPI_string;
    if (key.type == cimxml::KeyType::boolean) return CMPI_boolean;
    const std::optional<IntegerValue> number = parseInteger(key.text);
    if (!number) return CMPI_real64;
    return fitsInteger(CMPI_sint64, *number) ? CMPI_sint64 : CMPI_uint64;
}

cimxml::KeyType kindOf(CMPIType type) {
    if (type == CMPI_boolean) return cimxml::KeyType::boolean;
    if (type == CMPI_ref) return cimxml::KeyType::reference;
    const bool isNumber = isIntegerType(type) || type == CMPI_real32 || type == CMPI_real64;
    return isNumber ? cimxml::KeyType::numeric : cimxml::KeyType::text;
}

std::string_view trimmedNumber(const cimxml::KeyBinding& key) {
    std::string_view text = key.text;
    if (key.type == cimxml::KeyType::text) return text;
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

// A reference without a namespace is in the namespace of the path that holds it.
CMPIData makeReference(RequestScope& scope, std::string_view nameSpace, const cimxml::ObjectPath& reference) {
    return ObjectMaker::value(
        makePath(scope, reference.nameSpace.empty() ? nameSpace : std::string_view(reference.nameSpace), reference));
}

// Some clients write a reference as the text of its path. Any other text stays a text.
std::optional<CMPIData> referenceFromText(RequestScope& scope, const ObjectPathObject& path,
                                          const cimxml::KeyBinding& key, const PropertyDeclaration* declared) {
    if (!declared || declared->type != CMPI_ref || key.type != cimxml::KeyType::text) return std::nullopt;
    try {
        return makeReference(scope, path.nameSpace(),
                             parsePath(key.text, path.nameSpace(), scope.broker().repository()));
    } catch (const PathTextError&) {
        return std::nullopt;
    }
}

CMPIData keyData(RequestScope& scope, const ObjectPathObject& path, const cimxml::KeyBinding& key,
                 const PropertyDeclaration* declared) {
    if (key.type == cimxml::KeyType::reference) return makeReference(scope, path.nameSpace(), *key.reference);
    if (const std::optional<CMPIData> reference = referenceFromText(scope, path, key, declared)) return *reference;
    const CMPIType type = declared && kindOf(declared->type) == key.type ? declared->type : ownType(key);
    const std::string_view text = trimmedNumber(key);
    const std::optional<CMPIData> data = scope.make().value(type, text);
    if (!data) refuseText(text, type);
    return *data;
}

// The declaration of a key. One that the client leaves unnamed is the class's only key.
const PropertyDeclaration* declaredKey(const ObjectPathObject& path, const cimxml::KeyBinding& key) {
    const ClassDeclaration* declaration = path.declaration();
    if (!declaration) return nullptr;
    if (!key.name.empty()) {
        const PropertyDeclaration* property = declaration->property(key.name);
        return property && property->isKey ? property : nullptr;
    }
    if (declaration->keys().size() == 1) return &declaration->properties()[declaration->keys().front()];
    throw CimFailure(CMPI_RC_ERR_INVALID_PARAMETER, "a key without a name, but class " + declaration->name() + " has " +
                                                        std::to_string(declaration->keys().size()));
}

CMPIData makeScalar(RequestScope& scope, CMPIType type, std::string_view text) {
    const std::optional<CMPIData> data = scope.make().value(type, text);
    if (!data) refuseText(text, type);
    return *data;
}

// An entry can be short in the request, but each becomes an element or even an object.
constexpr std::size_t mostEntries = 65536;

bool isByteType(CMPIType type) { return type == CMPI_uint8 || type == CMPI_sint8; }

CMPIData makeArray(RequestScope& scope, std::string_view nameSpace, CMPIType elementType, const cimxml::Value& value) {
    requireEntries(elementType, value);
    const std::size_t size = elementType == CMPI_ref ? value.references.size() : value.texts.size();
    ArrayObject* array = ArrayObject::make(scope.arena(), static_cast<CMPICount>(size), elementType);
    if (!array) throw CimFailure(CMPI_RC_ERR_INVALID_PARAMETER, "there are no arrays of this type");
    for (std::size_t index = 0; index < size; ++index) {
        if (elementType != CMPI_ref && value.texts.isNull(index)) continue;
        array->store(static_cast<CMPICount>(index), elementType == CMPI_ref
                                                        ? makeReference(scope, nameSpace, value.references[index])
                                                        : makeScalar(scope, elementType, value.texts[index]));
    }
    CMPIData data{};
    data.type = arrayOf(elementType);
    data.value.array = array;
    return data;
}

void setProperty(RequestScope& scope, InstanceObject& instance, const cimxml::Property& property) {
    const PropertyDeclaration* declared = instance.declaration()->property(property.name);
    if (!declared) {
        throw CimFailure(CMPI_RC_ERR_NO_SUCH_PROPERTY,
                         "class " + instance.declaration()->name() + " has no property " + shown(property.name));
    }
    if (property.value.isArray != declared->isArray() || property.value.type != elementOf(declared->type)) {
        throw CimFailure(CMPI_RC_ERR_TYPE_MISMATCH,
                         "property " + declared->name + " of class " + instance.declaration()->name() + " is " +
                             std::string(typeName(declared->type)) + (declared->isArray() ? "[]" : ""));
    }
    if (declared->isArray()) requireEntries(elementOf(declared->type), property.value, "property " + declared->name);
    const CMPIData data = makeValue(scope, instance.nameSpace(), declared->type, property.value);
    if (instance.setProperty(declared->name, data) != CMPI_RC_OK) {
        throw CimFailure(CMPI_RC_ERR_TYPE_MISMATCH, "property " + declared->name);
    }
}

} // namespace

ObjectPathObject& makePath(RequestScope& scope, std::string_view nameSpace, const cimxml::ObjectPath& path) {
    const NamespaceAlias* alias = scope.broker().repository().findAlias(nameSpace);
    ObjectPathObject& made =
        *scope.make().path(alias ? std::string_view(alias->nameSpace) : trimNamespace(nameSpace), path.className);
    if (!path.host.empty()) made.setHost(path.host);
    for (const cimxml::KeyBinding& key : path.keys) {
        const PropertyDeclaration* declared = declaredKey(made, key);
        const CMPIData data = keyData(scope, made, key, declared);
        const std::string_view name = declared ? std::string_view(declared->name) : scope.arena().copyText(key.name);
        // Set without the path's own check of types: the provider decides whether a number will do for a text.
        made.keyBindings.set(scope.arena(), name, data);
    }
    return made;
}

void requireEntries(CMPIType elementType, const cimxml::Value& value, std::string_view whose) {
    const std::size_t count = std::max(value.texts.size(), value.references.size());
    if (isByteType(elementType) || count <= mostEntries) return;
    throw CimFailure(CMPI_RC_ERR_INVALID_PARAMETER, std::string(whose) + (whose.empty() ? "" : ": ") + "an array of " +
                                                        std::string(typeName(elementType)) + " has at most " +
                                                        std::to_string(mostEntries) + " entries");
}

CMPIData makeValue(RequestScope& scope, std::string_view nameSpace, CMPIType type, const cimxml::Value& value) {
    if (value.isNull) return ObjectMaker::null(type);
    if (isArrayType(type)) return makeArray(scope, nameSpace, elementOf(type), value);
    if (type == CMPI_ref) return makeReference(scope, nameSpace, value.references.front());
    return makeScalar(scope, type, value.texts[0]);
}

InstanceObject& makeInstance(RequestScope& scope, const ObjectPathObject& path, const cimxml::Instance& instance) {
    InstanceObject& made = *scope.make().instance(path);
    for (const cimxml::Property& property : instance.properties)
        setProperty(scope, made, property);
    return made;
}

} // namespace cimhost
