#include "cimhost/broker/values.h"

#include <array>
#include <charconv>
#include <concepts>
#include <cstring>

#include "cimhost/broker/table_support.h"
#include "cimhost/broker/visit_value.h"
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

// True if the value is an object of the data's type that is not broken.
bool isWhole(const CMPIData& data) {
    return visitValue(data, Overloaded{[](NoValue) { return false; }, [](const auto&) { return true; }});
}

// Takes an object or an array. data has its inward type already.
CMPIrc takeObject(Arena& arena, const CMPIValue& value, CMPIData& data) {
    // The members of the union for these types are all pointers, at the same place.
    data.value.string = value.string;
    if (!data.value.string) {
        data.state = CMPI_nullValue;
        return CMPI_RC_OK;
    }
    if (!isWhole(data)) return CMPI_RC_ERR_INVALID_HANDLE;
    if (isArrayType(data.type)) {
        const CMPIType actual = arrayOf(inwardType(ArrayObject::from(data.value.array)->elementType()));
        // CMPI_ARRAY alone names no element type, so it takes every array.
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
    // A caller may pass the address of a plain variable instead of a whole CMPIValue, so only its own bytes are read.
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
    visitValue(data, Overloaded{
                         [&](const StringObject& text) {
                             if (text.arena != &arena) copy.value.string = text.copyTo(arena);
                         },
                         [&](const DateTimeObject& time) {
                             if (time.arena != &arena) copy.value.dateTime = time.copyTo(arena);
                         },
                         [&](const ObjectPathObject& path) { copy.value.ref = path.copyTo(arena); },
                         [&](const InstanceObject& instance) { copy.value.inst = instance.copyTo(arena); },
                         [&](const ArrayObject& array) { copy.value.array = array.copyTo(arena); },
                         [](const auto&) {},
                     });
    return copy;
}

CMPIData handOut(const CMPIData& data) { return copyData(workArena(), data); }

void appendValueText(std::string& out, const CMPIData& data) {
    visitValue(data, Overloaded{
                         [](NoValue) {},
                         [&](bool truth) { out += truth ? "true" : "false"; },
                         [&](char16_t character) { appendUtf8(out, character); },
                         [&](const std::integral auto& number) { appendNumber(out, +number); },
                         [&](const std::floating_point auto& number) { appendNumber(out, number); },
                         [&](const StringObject& text) { out += text.text(); },
                         [&](const DateTimeObject& time) { out += time.text(); },
                         [&](const ObjectPathObject& path) { path.appendText(out); },
                         [](const InstanceObject&) {},
                         [](const ArrayObject&) {},
                     });
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
