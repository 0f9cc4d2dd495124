#include "cimhost/broker/broker.h"
#include "cimhost/broker/table_support.h"
#include "cimhost/broker/values.h"
#include "cimhost/model/utf8.h"

namespace cimhost {
namespace {

CMPIData typedData(CMPIType type) noexcept {
    CMPIData data{};
    data.type = type;
    return data;
}

std::optional<CMPIData> integerData(CMPIType type, std::string_view text) noexcept {
    const auto number = parseInteger(text);
    if (!number || !fitsInteger(type, *number)) return std::nullopt;
    CMPIData data = typedData(type);
    data.value.uint64 = number->isNegative ? 0 - number->magnitude : number->magnitude;
    return data;
}

std::optional<CMPIData> booleanData(std::string_view text) noexcept {
    CMPIData data = typedData(CMPI_boolean);
    data.value.boolean = equalNames(text, "true") ? 1 : 0;
    if (data.value.boolean == 0 && !equalNames(text, "false")) return std::nullopt;
    return data;
}

template <typename Real>
std::optional<CMPIData> realData(CMPIType type, std::string_view text, Real CMPIValue::*member) noexcept {
    const auto number = parseReal<Real>(text);
    if (!number) return std::nullopt;
    CMPIData data = typedData(type);
    data.value.*member = *number;
    return data;
}

std::optional<CMPIData> characterData(std::string_view text) noexcept {
    const auto code = singleCharacter(text);
    if (!code || *code > 0xffff) return std::nullopt;
    CMPIData data = typedData(CMPI_char16);
    data.value.char16 = static_cast<CMPIChar16>(*code);
    return data;
}

// The type in which a key's text is read: the one that the class declares, or that of its kind if the class lacks the
// key.
CMPIType keyType(const ObjectPathObject& path, std::string_view name, KeyKind kind, std::string_view text) noexcept {
    const PropertyDeclaration* property = path.declaration() ? path.declaration()->property(name) : nullptr;
    if (property && property->isKey) return property->type;
    if (kind == KeyKind::string) return CMPI_string;
    if (kind == KeyKind::boolean) return CMPI_boolean;
    const auto number = parseInteger(text);
    if (!number) return CMPI_real64;
    return fitsInteger(CMPI_sint64, *number) ? CMPI_sint64 : CMPI_uint64;
}

bool isKindOf(CMPIType type, KeyKind kind) noexcept {
    if (type == CMPI_boolean) return kind == KeyKind::boolean;
    if (isIntegerType(type) || type == CMPI_real32 || type == CMPI_real64) return kind == KeyKind::numeric;
    return kind == KeyKind::string;
}

} // namespace

ObjectPathObject* ObjectMaker::path(std::string_view nameSpace, std::string_view className) const {
    auto* made = target->make<ObjectPathObject>(*owner, *target);
    made->setLocation(nameSpace, className);
    return made;
}

InstanceObject* ObjectMaker::instance(const ObjectPathObject& path) const {
    auto* made = target->make<InstanceObject>(*owner, *target, *path.copyTo(*target));
    const ClassDeclaration* declared = path.declaration();
    if (!declared || !declared->hasDefaults()) return made;
    for (std::size_t position = 0; position < declared->properties().size(); ++position) {
        const DeclaredValue& standard = declared->properties()[position].defaultValue;
        if (standard.isNull) continue;
        if (const auto data = value(standard)) made->slots[position] = *data;
    }
    return made;
}

std::optional<CMPIData> ObjectMaker::value(CMPIType type, std::string_view text) const {
    if (isIntegerType(type)) return integerData(type, text);
    CMPIData data = typedData(type);
    switch (type) {
    case CMPI_boolean:
        return booleanData(text);
    case CMPI_real32:
        return realData(type, text, &CMPIValue::real32);
    case CMPI_real64:
        return realData(type, text, &CMPIValue::real64);
    case CMPI_char16:
        return characterData(text);
    case CMPI_string:
        data.value.string = string(text);
        return data;
    case CMPI_dateTime:
        data.value.dateTime = DateTimeObject::make(*target, text);
        if (!data.value.dateTime) return std::nullopt;
        return data;
    default:
        return std::nullopt;
    }
}

std::optional<CMPIData> ObjectMaker::arrayValue(CMPIType elementType,
                                                std::span<const std::optional<std::string>> texts) const {
    ArrayObject* array = ArrayObject::make(*target, static_cast<CMPICount>(texts.size()), elementType);
    if (!array) return std::nullopt;
    for (std::size_t place = 0; place < texts.size(); ++place) {
        if (!texts[place]) continue;
        const auto element = value(elementType, *texts[place]);
        if (!element) return std::nullopt;
        array->store(static_cast<CMPICount>(place), *element);
    }
    CMPIData data = typedData(arrayOf(elementType));
    data.value.array = array;
    return data;
}

std::optional<CMPIData> ObjectMaker::value(const DeclaredValue& declared) const {
    if (declared.isNull) return null(declared.type);
    if (declared.isArray()) return arrayValue(elementOf(declared.type), declared.texts);
    return value(declared.type, declared.text());
}

CMPIData ObjectMaker::null(CMPIType type) noexcept {
    CMPIData data = typedData(type);
    data.state = CMPI_nullValue;
    return data;
}

CMPIData ObjectMaker::value(const ObjectPathObject& path) noexcept {
    CMPIData data = typedData(CMPI_ref);
    data.value.ref = const_cast<ObjectPathObject*>(&path);
    return data;
}

CMPIData ObjectMaker::value(const InstanceObject& instance) noexcept {
    CMPIData data = typedData(CMPI_instance);
    data.value.inst = const_cast<InstanceObject*>(&instance);
    return data;
}

std::optional<CimError> ObjectMaker::addKey(ObjectPathObject& path, std::string_view name, KeyKind kind,
                                            std::string_view text) const {
    const CMPIType type = keyType(path, name, kind, text);
    const auto data = isKindOf(type, kind) ? value(type, text) : std::nullopt;
    if (data && path.addKey(name, *data) == CMPI_RC_OK) return std::nullopt;
    return CimError{CMPI_RC_ERR_INVALID_PARAMETER, "key \"" + std::string(name) + "\" of class \"" +
                                                       std::string(path.className()) + "\" is no " +
                                                       std::string(typeName(type))};
}

} // namespace cimhost
