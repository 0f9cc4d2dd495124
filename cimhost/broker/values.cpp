#include "cimhost/broker/values.h"

#include <array>
#include <charconv>
#include <cstring>

#include "cimhost/broker/table_support.h"

namespace cimhost {
namespace {

bool isShareable(const CMPIString* string, const Arena& arena) noexcept {
    const StringObject* object = StringObject::from(string);
    return object && object->arena == &arena;
}

CMPIrc takeText(Arena& arena, const char* text, CMPIData& data) {
    if (text) {
        data.value.string = StringObject::make(arena, text);
    } else {
        data.state = CMPI_nullValue;
    }
    return CMPI_RC_OK;
}

// data.value.* is what a getter will give, source what the caller gave.
template <typename Object, typename Base, typename Copy>
CMPIrc takeObject(const Base* source, Base*& place, CMPIData& data, Copy&& copy) {
    if (!source) {
        data.state = CMPI_nullValue;
        return CMPI_RC_OK;
    }
    const Object* object = Object::from(source);
    if (!object) return CMPI_RC_ERR_INVALID_HANDLE;
    place = copy(*object);
    return CMPI_RC_OK;
}

CMPIrc takeArray(Arena& arena, const CMPIArray* source, CMPIType type, CMPIData& data) {
    const ArrayObject* array = ArrayObject::from(source);
    const CMPIType element = elementOf(data.type);
    // The bare array flag names no element type, so it takes every array.
    if (array && element != CMPI_null && inwardType(array->elementType()) != element) {
        return CMPI_RC_ERR_INVALID_DATA_TYPE;
    }
    if (element == CMPI_null && type != CMPI_ARRAY) return CMPI_RC_ERR_INVALID_DATA_TYPE;
    return takeObject<ArrayObject>(source, data.value.array, data,
                                   [&](const ArrayObject& object) { return object.copyTo(arena); });
}

CMPIrc takeEncapsulated(Arena& arena, const CMPIValue& value, CMPIData& data) {
    switch (data.type) {
    case CMPI_string:
        return takeObject<StringObject>(value.string, data.value.string, data, [&](const StringObject& object) {
            return object.arena == &arena ? const_cast<StringObject*>(&object)
                                          : StringObject::make(arena, object.text());
        });
    case CMPI_dateTime:
        return takeObject<DateTimeObject>(value.dateTime, data.value.dateTime, data,
                                          [&](const DateTimeObject& object) { return object.copyTo(arena); });
    case CMPI_ref:
        return takeObject<ObjectPathObject>(value.ref, data.value.ref, data,
                                            [&](const ObjectPathObject& object) { return object.copyTo(arena); });
    case CMPI_instance:
        return takeObject<InstanceObject>(value.inst, data.value.inst, data,
                                          [&](const InstanceObject& object) { return object.copyTo(arena); });
    case CMPI_ptr:
        data.value.dataPtr = value.dataPtr;
        return CMPI_RC_OK;
    default:
        return CMPI_RC_ERR_INVALID_DATA_TYPE;
    }
}

template <typename Number>
void appendNumber(std::string& out, Number number) {
    std::array<char, 40> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    out.append(digits.data(), written.ptr);
}

void appendCharacter(std::string& out, unsigned code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xc0 | code >> 6);
        out += static_cast<char>(0x80 | (code & 0x3f));
    } else {
        out += static_cast<char>(0xe0 | code >> 12);
        out += static_cast<char>(0x80 | (code >> 6 & 0x3f));
        out += static_cast<char>(0x80 | (code & 0x3f));
    }
}

} // namespace

std::size_t scalarSize(CMPIType type) noexcept {
    if (isIntegerType(type)) return std::size_t{1} << ((type >> 4) & 3);
    switch (type) {
    case CMPI_boolean:
        return sizeof(CMPIBoolean);
    case CMPI_char16:
        return sizeof(CMPIChar16);
    case CMPI_real32:
        return sizeof(CMPIReal32);
    case CMPI_real64:
        return sizeof(CMPIReal64);
    default:
        return 0;
    }
}

CMPIrc takeValue(Arena& arena, const CMPIValue* value, CMPIType type, CMPIData& data) {
    data = CMPIData{};
    data.type = inwardType(type);
    if (type == CMPI_null || !value) {
        data.state = CMPI_nullValue;
        return CMPI_RC_OK;
    }
    // Callers pass the address of a plain variable as well as that of a whole CMPIValue: no byte too many is read.
    if (const std::size_t size = scalarSize(type)) {
        std::memcpy(&data.value, value, size);
        return CMPI_RC_OK;
    }
    if (type == CMPI_chars) return takeText(arena, reinterpret_cast<const char*>(value), data);
    if (type == CMPI_charsptr) return takeText(arena, *reinterpret_cast<const char* const*>(value), data);
    if (isArrayType(type)) return takeArray(arena, value->array, type, data);
    return takeEncapsulated(arena, *value, data);
}

CMPIData copyData(Arena& arena, const CMPIData& data) {
    CMPIData copy = data;
    if ((data.state & CMPI_nullValue) != 0) return copy;
    if (isArrayType(data.type)) {
        copy.value.array = ArrayObject::from(data.value.array)->copyTo(arena);
        return copy;
    }
    switch (data.type) {
    case CMPI_string:
        if (!isShareable(data.value.string, arena)) {
            copy.value.string = StringObject::make(arena, StringObject::from(data.value.string)->text());
        }
        break;
    case CMPI_dateTime: {
        const DateTimeObject* object = DateTimeObject::from(data.value.dateTime);
        if (object->arena != &arena) copy.value.dateTime = object->copyTo(arena);
        break;
    }
    case CMPI_ref:
        copy.value.ref = ObjectPathObject::from(static_cast<const CMPIObjectPath*>(data.value.ref))->copyTo(arena);
        break;
    case CMPI_instance:
        copy.value.inst = InstanceObject::from(static_cast<const CMPIInstance*>(data.value.inst))->copyTo(arena);
        break;
    default:
        break;
    }
    return copy;
}

CMPIData handOut(const CMPIData& data) { return copyData(workArena(), data); }

void appendValueText(std::string& out, const CMPIData& data) {
    if ((data.state & CMPI_nullValue) != 0) return;
    if (isUnsignedInteger(data.type)) {
        std::uint64_t number = 0;
        std::memcpy(&number, &data.value, scalarSize(data.type));
        return appendNumber(out, number);
    }
    switch (data.type) {
    case CMPI_boolean:
        out += data.value.boolean ? "true" : "false";
        break;
    case CMPI_char16:
        appendCharacter(out, data.value.char16);
        break;
    case CMPI_sint8:
        appendNumber(out, int{data.value.sint8});
        break;
    case CMPI_sint16:
        appendNumber(out, data.value.sint16);
        break;
    case CMPI_sint32:
        appendNumber(out, data.value.sint32);
        break;
    case CMPI_sint64:
        appendNumber(out, data.value.sint64);
        break;
    case CMPI_real32:
        appendNumber(out, data.value.real32);
        break;
    case CMPI_real64:
        appendNumber(out, data.value.real64);
        break;
    case CMPI_string:
        out += StringObject::from(data.value.string)->text();
        break;
    case CMPI_dateTime:
        out += DateTimeObject::from(data.value.dateTime)->text();
        break;
    case CMPI_ref:
        ObjectPathObject::from(static_cast<const CMPIObjectPath*>(data.value.ref))->appendText(out);
        break;
    default:
        break;
    }
}

CMPIData namedDataAt(std::span<const NamedData> items, CMPICount position, CMPIString** name, CMPIStatus* status) {
    if (position >= items.size()) {
        setStatus(status, CMPI_RC_ERR_NO_SUCH_PROPERTY);
        return absentData();
    }
    setStatus(status, CMPI_RC_OK);
    if (name) *name = StringObject::make(workArena(), items[position].name);
    return handOut(items[position].data);
}

} // namespace cimhost
