#include "values.h"

#include "objects.h"
#include "paths.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <strings.h>

namespace foreign_server {

bool sameName(std::string_view left, std::string_view right) {
    return left.size() == right.size() && strncasecmp(left.data(), right.data(), left.size()) == 0;
}

const NamedValue* find(const NamedValues& values, std::string_view name) {
    for (const NamedValue& value : values) {
        if (sameName(value.name, name)) return &value;
    }
    return nullptr;
}

void set(NamedValues& values, std::string_view name, Value value, bool isProviders) {
    for (NamedValue& known : values) {
        if (!sameName(known.name, name)) continue;
        known.value = std::move(value);
        known.isProviders = isProviders;
        return;
    }
    values.push_back({std::string(name), std::move(value), isProviders});
}

std::vector<std::size_t> sortedPlaces(const NamedValues& values) {
    std::vector<std::size_t> places(values.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    std::sort(places.begin(), places.end(),
              [&](std::size_t left, std::size_t right) { return values[left].name < values[right].name; });
    return places;
}

std::size_t numberSize(CMPIType type) {
    switch (type) {
    case CMPI_boolean:
    case CMPI_uint8:
    case CMPI_sint8:
        return 1;
    case CMPI_char16:
    case CMPI_uint16:
    case CMPI_sint16:
        return 2;
    case CMPI_uint32:
    case CMPI_sint32:
    case CMPI_real32:
        return 4;
    case CMPI_uint64:
    case CMPI_sint64:
    case CMPI_real64:
        return 8;
    default:
        return 0;
    }
}

CMPIType inwardType(CMPIType type) {
    const CMPIType element = elementOf(type);
    if (element != CMPI_chars && element != CMPI_charsptr) return type;
    return isArray(type) ? CMPI_stringA : CMPI_string;
}

namespace {

CMPIrc takeText(const char* text, Value& taken) {
    if (text) {
        taken.text = text;
    } else {
        taken.state = CMPI_nullValue;
    }
    return CMPI_RC_OK;
}

CMPIrc takeString(const CMPIString* string, Value& taken, const char* function) {
    const StringObject* object = use<StringObject>(string, function);
    return object ? takeText(object->text.get(), taken) : CMPI_RC_ERR_INVALID_HANDLE;
}

CMPIrc takeArray(const CMPIArray* array, Value& taken, const char* function) {
    const ArrayObject* object = use<ArrayObject>(array, function);
    if (!object) return CMPI_RC_ERR_INVALID_HANDLE;
    auto data = std::make_shared<ArrayData>();
    data->elementType = object->elementType;
    data->numbers = object->numbers;
    data->isSet = object->isSet;
    taken.type = static_cast<CMPIType>(object->elementType | CMPI_ARRAY);
    for (std::size_t index = 0; index < object->objects.size(); ++index) {
        Value element;
        element.type = object->elementType;
        element.state = CMPI_nullValue;
        if (object->isSet[index]) {
            CMPIValue value{};
            value.string = static_cast<CMPIString*>(object->objects[index]);
            const CMPIrc code = take(&value, object->elementType, element, function);
            if (code != CMPI_RC_OK) return code;
        }
        data->objects.push_back(std::move(element));
    }
    taken.array = std::move(data);
    return CMPI_RC_OK;
}

CMPIrc takeObject(const CMPIValue& value, Value& taken, const char* function) {
    // All these members of the union are pointers, and lie in the same place.
    if (!value.string) {
        taken.state = CMPI_nullValue;
        return CMPI_RC_OK;
    }
    if (isArray(taken.type)) return takeArray(value.array, taken, function);
    switch (taken.type) {
    case CMPI_string:
        return takeString(value.string, taken, function);
    case CMPI_dateTime:
        if (const auto* date = use<DateTimeObject>(value.dateTime, function)) {
            taken.date = std::make_shared<DateTimeData>(date->data);
            return CMPI_RC_OK;
        }
        return CMPI_RC_ERR_INVALID_HANDLE;
    case CMPI_ref:
        if (const auto* path = use<PathObject>(value.ref, function)) {
            taken.path = std::make_shared<PathData>(contentOf(*path));
            return CMPI_RC_OK;
        }
        return CMPI_RC_ERR_INVALID_HANDLE;
    case CMPI_instance:
        if (const auto* instance = use<InstanceObject>(value.inst, function)) {
            taken.instance = std::make_shared<InstanceData>(instance->data);
            return CMPI_RC_OK;
        }
        return CMPI_RC_ERR_INVALID_HANDLE;
    default:
        return CMPI_RC_ERR_INVALID_DATA_TYPE;
    }
}

void* handOutObject(const Value& value, const char* function) {
    switch (value.type) {
    case CMPI_string:
        return value.text ? make<StringObject>(function, *value.text)->shown() : make<StringObject>(function)->shown();
    case CMPI_dateTime: {
        auto* made = make<DateTimeObject>(function);
        made->data = *value.date;
        return made->shown();
    }
    case CMPI_ref: {
        auto* made = make<PathObject>(function);
        if (value.path) made->data = *value.path;
        made->played = value.played;
        return made->shown();
    }
    case CMPI_instance: {
        auto* made = make<InstanceObject>(function);
        made->data = *value.instance;
        return made->shown();
    }
    default:
        return nullptr;
    }
}

CMPIArray* handOutArray(const ArrayData& data, const char* function) {
    auto* made = make<ArrayObject>(function);
    made->elementType = data.elementType;
    made->numbers = data.numbers;
    made->isSet = data.isSet;
    for (const Value& element : data.objects)
        made->objects.push_back(element.isNull() ? nullptr : handOutObject(element, function));
    return made->shown();
}

} // namespace

CMPIrc take(const CMPIValue* value, CMPIType type, Value& taken, const char* function) {
    taken = Value{};
    taken.type = inwardType(type);
    const std::size_t size = isArray(type) ? 0 : numberSize(type);
    if (!value) {
        taken.state = CMPI_nullValue;
        return CMPI_RC_OK;
    }
    if (size != 0) {
        // Callers pass the address of a plain variable as well as that of a whole CMPIValue.
        std::memcpy(&taken.number, value, size);
        return CMPI_RC_OK;
    }
    if (type == CMPI_chars) return takeText(reinterpret_cast<const char*>(value), taken);
    if (type == CMPI_charsptr) return takeText(*reinterpret_cast<const char* const*>(value), taken);
    return takeObject(*value, taken, function);
}

CMPIData handOut(const Value& value, const char* function) {
    CMPIData data{};
    data.type = value.type;
    data.state = value.state;
    if (value.isNull()) return data;
    if (isArray(value.type)) {
        data.value.array = value.array ? handOutArray(*value.array, function) : nullptr;
    } else if (numberSize(value.type) != 0) {
        data.value = value.number;
    } else if (value.text || value.date || value.path || value.instance || value.played) {
        data.value.string = static_cast<CMPIString*>(handOutObject(value, function));
    }
    return data;
}

CMPIData absent() {
    CMPIData data{};
    data.state = CMPI_notFound;
    return data;
}

} // namespace foreign_server
