#include "cimhost/cli/values_text.h"

#include "cimhost/model/cim_type.h"
#include "cimhost/model/names.h"
#include "cimhost/model/printable.h"

#include <algorithm>
#include <optional>

namespace cimhost::cli {

namespace {

struct Meaning {
    std::string_view property;
    std::uint64_t value;
    std::string_view text;
};

constexpr Meaning meanings[] = {
    {"OperationalStatus", 0, "Unknown"},
    {"OperationalStatus", 1, "Other"},
    {"OperationalStatus", 2, "OK"},
    {"OperationalStatus", 3, "Degraded"},
    {"OperationalStatus", 4, "Stressed"},
    {"OperationalStatus", 5, "Predictive Failure"},
    {"OperationalStatus", 6, "Error"},
    {"OperationalStatus", 7, "Non-Recoverable Error"},
    {"OperationalStatus", 8, "Starting"},
    {"OperationalStatus", 9, "Stopping"},
    {"OperationalStatus", 10, "Stopped"},
    {"OperationalStatus", 11, "In Service"},
    {"OperationalStatus", 12, "No Contact"},
    {"OperationalStatus", 13, "Lost Communication"},
    {"OperationalStatus", 14, "Aborted"},
    {"OperationalStatus", 15, "Dormant"},
    {"EnabledState", 2, "Enabled"},
    {"EnabledState", 3, "Disabled"},
    {"EnabledState", 5, "Not Applicable"},
    {"PortType", 0, "Unknown"},
    {"PortType", 10, "N"},
    {"PortType", 11, "NL"},
    {"PortType", 12, "F/NL"},
    {"PortType", 13, "Nx"},
    {"PortType", 14, "E"},
    {"PortType", 15, "F"},
    {"PortType", 16, "FL"},
    {"PortType", 17, "B"},
    {"LinkTechnology", 2, "Ethernet"},
    {"LinkTechnology", 4, "FC"},
};

struct Unit {
    std::uint64_t factor;
    std::string_view name;
};

constexpr Unit speedUnits[] = {
    {1'000'000'000, " Gbit/s"},
    {1'000'000, " Mbit/s"},
    {1'000, " kbit/s"},
};

std::uint64_t unsignedOf(const CMPIData& data) {
    switch (data.type) {
    case CMPI_uint8:
        return data.value.uint8;
    case CMPI_uint16:
        return data.value.uint16;
    case CMPI_uint32:
        return data.value.uint32;
    default:
        return data.value.uint64;
    }
}

bool isUnsigned(CMPIType type) {
    return type == CMPI_uint8 || type == CMPI_uint16 || type == CMPI_uint32 || type == CMPI_uint64;
}

// "10.625 Gbit/s": in the largest unit that fits, cut behind the third digit.
std::string speedText(std::uint64_t bits) {
    for (const Unit& unit : speedUnits) {
        if (bits < unit.factor) continue;
        std::string text = std::to_string(bits / unit.factor);
        std::string fraction = std::to_string(1000 + bits % unit.factor / (unit.factor / 1000));
        fraction.erase(fraction.find_last_not_of('0') + 1);
        if (fraction.size() > 1) text.append(".").append(fraction, 1);
        return text.append(unit.name);
    }
    return std::to_string(bits) + " bit/s";
}

std::optional<std::string> meaningOf(std::string_view property, const CMPIData& data) {
    if (!isUnsigned(data.type)) return std::nullopt;
    const std::uint64_t number = unsignedOf(data);
    if (equalNames(property, "Speed") || equalNames(property, "MaxSpeed")) return speedText(number);
    for (const Meaning& row : meanings) {
        if (row.value == number && equalNames(row.property, property)) return std::string(row.text);
    }
    return std::nullopt;
}

std::string shortReference(const CMPIData& data) {
    const ObjectPathObject* path = ObjectPathObject::from(static_cast<const CMPIObjectPath*>(data.value.ref));
    if (!path) return {};
    std::string text(path->className());
    text.erase(0, text.find('_') + 1);
    if (!path->keys().empty()) text.append(" ").append(plainText(path->keys().back().data));
    return text;
}

template <typename ElementText>
std::string joined(const CMPIData& data, ElementText elementText) {
    const ArrayObject* array = ArrayObject::from(data.value.array);
    std::string text;
    for (CMPICount index = 0; array && index < array->size(); ++index) {
        if (index > 0) text += ", ";
        text += elementText(array->element(index));
    }
    return text;
}

bool isNull(const CMPIData& data) { return (data.state & CMPI_nullValue) != 0; }

} // namespace

std::string plainText(const CMPIData& data) {
    if (isNull(data)) return {};
    if (isArrayType(data.type)) return joined(data, plainText);
    std::string text;
    appendValueText(text, data);
    return printable(text);
}

std::string shortText(std::string_view property, const CMPIData& data) {
    if (isNull(data)) return {};
    if (isArrayType(data.type)) {
        return joined(data, [&](const CMPIData& element) { return shortText(property, element); });
    }
    if (data.type == CMPI_ref) return shortReference(data);
    return meaningOf(property, data).value_or(plainText(data));
}

std::string fullText(std::string_view property, const CMPIData& data) {
    if (isNull(data)) return {};
    if (isArrayType(data.type)) {
        return joined(data, [&](const CMPIData& element) { return fullText(property, element); });
    }
    const std::optional<std::string> meaning = meaningOf(property, data);
    return meaning ? plainText(data) + " (" + *meaning + ")" : plainText(data);
}

} // namespace cimhost::cli
