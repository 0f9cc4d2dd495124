#include "cimhost/broker/values.h"

#include <array>
#include <charconv>
#include <cstring>

#include "cimhost/broker/table_support.h"
#include "cimhost/model/utf8.h"

namespace cimhost {
namespace {

CMPIrc takeText(Arena& arena, const char* text, CMPIData& data) {
    if (text) {
        data.value.string = StringObject::make(arena, text);
    } else {
        data.state = CMPI_nullValue;
    }
    return CMPI_RC_OK;
}

// True for a whole object of ours, of the data's type.
bool isWhole(const CMPIData& data) noexcept {
    if (isArrayType(data.type)) return ArrayObject::from(data.value.array);
    switch (data.type) {
    case CMPI_string:
        return StringObject::from(data.value.string);
    case CMPI_dateTime:
        return DateTimeObject::from(data.value.dateTime);
    case CMPI_ref:
        return ObjectPathObject::from(data.value.ref);
    case CMPI_instance:
        return InstanceObject::from(data.value.inst);
    default:
        return false;
    }
}

// An object or an array: data has its inward type.
CMPIrc takeObject(Arena& arena, const CMPIValue& value, CMPIData& data) {
    // All these members of the union are pointers, and lie in the same place.
    data.value.string = value.string;
    if (!data.value.string) {
        data.state = CMPI_nullValue;
        return CMPI_RC_OK;
    }
    if (!isWhole(data)) return CMPI_RC_ERR_INVALID_HANDLE;
    if (isArrayType(data.type)) {
        const CMPIType actual = arrayOf(inwardType(ArrayObject::from(data.value.array)->elementType()));
        // The bare array flag names no element type, so it takes every array.
        if (data.type != CMPI_ARRAY && data.type != actual) return CMPI_RC_ERR_INVALID_DATA_TYPE;
        data.type = actual;
    }
    data = copyData(arena, data);
    return CMPI_RC_OK;
}

template <typename Number>
void appendNumber(std::string& out, Number number) {
    std::array<char, 40> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    out.append(digits.data(), written.ptr);
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
    const CMPIType element = elementOf(data.type);
    const std::size_t size = scalarSize(element);
    const bool isBareArray = type == CMPI_ARRAY && value && value->array;
    if (size == 0 && !isObjectType(element) && !isBareArray) return CMPI_RC_ERR_INVALID_DATA_TYPE;
    if (!value) {
        data.state = CMPI_nullValue;
        return CMPI_RC_OK;
    }
    // Callers pass the address of a plain variable as well as that of a whole CMPIValue: no byte too many is read.
    if (size != 0 && !isArrayType(type)) {
        std::memcpy(&data.value, value, size);
        return CMPI_RC_OK;
    }
    if (type == CMPI_chars) return takeText(arena, reinterpret_cast<const char*>(value), data);
    if (type == CMPI_charsptr) return takeText(arena, *reinterpret_cast<const char* const*>(value), data);
    return takeObject(arena, *value, data);
}

CMPIData copyData(Arena& arena, const CMPIData& data) {
    CMPIData copy = data;
    if ((data.state & CMPI_nullValue) != 0) return copy;
    if (isArrayType(data.type)) {
        copy.value.array = ArrayObject::from(data.value.array)->copyTo(arena);
        return copy;
    }
    switch (data.type) {
    case CMPI_string: {
        const StringObject* object = StringObject::from(data.value.string);
        if (object->arena != &arena) copy.value.string = object->copyTo(arena);
        break;
    }
    case CMPI_dateTime: {
        const DateTimeObject* object = DateTimeObject::from(data.value.dateTime);
        if (object->arena != &arena) copy.value.dateTime = object->copyTo(arena);
        break;
    }
    case CMPI_ref:
        copy.value.ref = ObjectPathObject::from(data.value.ref)->copyTo(arena);
        break;
    case CMPI_instance:
        copy.value.inst = InstanceObject::from(data.value.inst)->copyTo(arena);
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
        appendUtf8(out, data.value.char16);
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
        ObjectPathObject::from(data.value.ref)->appendText(out);
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
