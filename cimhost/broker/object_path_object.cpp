#include "cimhost/broker/broker.h"
#include "cimhost/broker/table_support.h"
#include "cimhost/broker/values.h"
#include "cimhost/broker/visit_value.h"
#include "cimhost/model/date_time.h"

#include <concepts>

namespace cimhost {
namespace {

// Reads an integer of any width.
IntegerValue integerOf(const CMPIData& data) {
    return visitValue(data, Overloaded{
                                [](const std::unsigned_integral auto& number) {
                                    return IntegerValue{false, number};
                                },
                                [](const std::signed_integral auto& number) {
                                    const auto bits = static_cast<std::uint64_t>(number);
                                    return IntegerValue{number < 0, number < 0 ? 0 - bits : bits};
                                },
                                [](const auto&) { return IntegerValue(); },
                            });
}

// Whether a value fits a key that the class declares: it has the declared type, or the type that a getter gives for it.
bool fitsKey(const CMPIData& data, CMPIType declared) {
    if (data.type == declared) return true;
    if (isIntegerType(declared)) {
        const bool isWide = data.type == CMPI_sint64 || data.type == CMPI_uint64;
        return isWide && fitsInteger(declared, integerOf(data));
    }
    return declared == CMPI_dateTime && data.type == CMPI_string &&
           parseDateTime(StringObject::from(data.value.string)->text());
}

bool isKeyType(CMPIType type) noexcept {
    return isIntegerType(type) || type == CMPI_boolean || type == CMPI_string || type == CMPI_dateTime ||
           type == CMPI_ref || type == CMPI_char16 || type == CMPI_real32 || type == CMPI_real64;
}

// The value as keys hold it: they have texts, numbers, booleans and references only.
CMPIData asKey(Arena& arena, const CMPIData& data) {
    CMPIData key = data;
    key.state = CMPI_goodValue;
    if (isIntegerType(data.type)) {
        const IntegerValue number = integerOf(data);
        const bool isTooLarge = data.type == CMPI_uint64 && data.value.sint64 < 0;
        key.type = isTooLarge ? CMPI_uint64 : CMPI_sint64;
        key.value.uint64 = number.isNegative ? 0 - number.magnitude : number.magnitude;
        return key;
    }
    if (data.type == CMPI_dateTime) {
        key.type = CMPI_string;
        key.value.string = StringObject::make(arena, DateTimeObject::from(data.value.dateTime)->text());
        return key;
    }
    return copyData(arena, key);
}

// A text that lies in the repository already needs no copy.
std::string_view keepText(Arena& arena, std::string_view text, std::string_view known) {
    return text == known ? known : arena.copyText(text);
}

} // namespace

ObjectPathObject::ObjectPathObject(Broker& owner, Arena& home)
    : CMPIObjectPath{this, tablePointer(tables::objectPath)}, broker(&owner), arena(&home) {}

const ObjectPathObject* ObjectPathObject::from(const CMPIObjectPath* object) noexcept {
    return checkedObject<const ObjectPathObject>(object, tables::objectPath);
}

ObjectPathObject* ObjectPathObject::from(CMPIObjectPath* object) noexcept {
    return checkedObject<ObjectPathObject>(object, tables::objectPath);
}

void ObjectPathObject::lookUpClass() noexcept { declared = broker->repository().find(nameSpaceText, classText); }

void ObjectPathObject::setHost(std::string_view host) { hostText = arena->copyText(host); }

void ObjectPathObject::setNameSpace(std::string_view nameSpace) {
    nameSpaceText = arena->copyText(nameSpace);
    lookUpClass();
}

void ObjectPathObject::setClassName(std::string_view className) {
    declared = broker->repository().find(nameSpaceText, className);
    classText = keepText(*arena, className, declared ? std::string_view(declared->name()) : std::string_view());
}

void ObjectPathObject::setLocation(std::string_view nameSpace, std::string_view className) {
    nameSpaceText = arena->copyText(nameSpace);
    setClassName(className);
}

CMPIrc ObjectPathObject::addKey(std::string_view name, const CMPIValue* value, CMPIType type) {
    if (type == CMPI_null || isArrayType(type) || !isKeyType(inwardType(type))) return CMPI_RC_ERR_INVALID_DATA_TYPE;
    CMPIData data;
    const CMPIrc code = takeValue(*arena, value, type, data);
    return code == CMPI_RC_OK ? addKey(name, data) : code;
}

CMPIrc ObjectPathObject::addKey(std::string_view name, const CMPIData& data) {
    if (!isKeyType(data.type)) return CMPI_RC_ERR_INVALID_DATA_TYPE;
    if ((data.state & CMPI_nullValue) != 0) return CMPI_RC_ERR_FAILED;
    const PropertyDeclaration* property = declared ? declared->property(name) : nullptr;
    if (property && property->isKey && !fitsKey(data, property->type)) return CMPI_RC_ERR_INVALID_DATA_TYPE;
    const CMPIData key = asKey(*arena, data);
    if (property && property->name == name) {
        keyBindings.setNamed(*arena, property->name, key);
    } else {
        keyBindings.set(*arena, name, key);
    }
    return CMPI_RC_OK;
}

ObjectPathObject* ObjectPathObject::copyTo(Arena& target) const {
    auto* copy = target.make<ObjectPathObject>(*broker, target);
    const bool isSameArena = &target == arena;
    const auto keep = [&](std::string_view text) { return isSameArena ? text : target.copyText(text); };
    copy->declared = declared;
    copy->hostText = keep(hostText);
    copy->nameSpaceText = keep(nameSpaceText);
    copy->classText = keep(classText);
    copy->keyBindings = isSameArena ? keyBindings.share() : keyBindings.copyTo(target);
    return copy;
}

void ObjectPathObject::appendText(std::string& out) const {
    if (!hostText.empty()) {
        out += "//";
        out += hostText;
        out += '/';
    }
    out += nameSpaceText;
    if (!nameSpaceText.empty()) out += ':';
    out += classText;
    char separator = '.';
    for (const NamedData& key : keys()) {
        out += separator;
        separator = ',';
        out += key.name;
        out += '=';
        const bool isQuoted = key.data.type == CMPI_string || key.data.type == CMPI_ref || key.data.type == CMPI_char16;
        std::string value;
        appendValueText(value, key.data);
        if (!isQuoted) {
            out += value;
            continue;
        }
        out += '"';
        for (const char character : value) {
            if (character == '"' || character == '\\') out += '\\';
            out += character;
        }
        out += '"';
    }
}

} // namespace cimhost
