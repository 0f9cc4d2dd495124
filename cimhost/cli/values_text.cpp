#include "cimhost/cli/values_text.h"

#include "cimhost/model/cim_type.h"
#include "cimhost/model/printable.h"

#include <algorithm>
#include <optional>

namespace cimhost::cli {

namespace {

struct Unit {
    std::uint64_t factor;
    std::string_view name;
};

constexpr Unit speedUnits[] = {
    {1'000'000'000, " Gbit/s"},
    {1'000'000, " Mbit/s"},
    {1'000, " kbit/s"},
};

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

// The qualifiers are those of DSP0004, 5.6.3: PUnit, ValueMap and Values.
std::string wordsOf(const PropertyDeclaration* property, const CMPIData& data) {
    if (!property || !isIntegerType(data.type)) return {};
    const Qualifier* unit = findQualifier(property->qualifiers, "PUnit");
    const bool isSpeed = data.type == CMPI_uint64 && unit && unit->value.text() == "bit / second";
    return isSpeed ? speedText(data.value.uint64) : meaningOf(property->qualifiers, plainText(data));
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

std::string meaningOf(std::span<const Qualifier> qualifiers, std::string_view value) {
    const Qualifier* numbers = findQualifier(qualifiers, "ValueMap");
    const Qualifier* names = findQualifier(qualifiers, "Values");
    if (!numbers || !names) return {};
    const std::vector<std::optional<std::string>>& known = numbers->value.texts;
    const auto found = std::find(known.begin(), known.end(), value);
    const auto place = static_cast<std::size_t>(found - known.begin());
    return place < names->value.texts.size() ? names->value.texts[place].value_or("") : "";
}

std::string plainText(const CMPIData& data) {
    if (isNull(data)) return {};
    if (isArrayType(data.type)) return joined(data, plainText);
    std::string text;
    appendValueText(text, data);
    return printable(text);
}

std::string shortText(const PropertyDeclaration* property, const CMPIData& data) {
    if (isNull(data)) return {};
    if (isArrayType(data.type)) {
        return joined(data, [&](const CMPIData& element) { return shortText(property, element); });
    }
    if (data.type == CMPI_ref) return shortReference(data);
    const std::string meaning = wordsOf(property, data);
    return meaning.empty() ? plainText(data) : meaning;
}

std::string shortText(const InstanceObject& instance, std::string_view property) {
    const CMPIData* data = instance.value(property);
    const ClassDeclaration* declaration = instance.declaration();
    return data ? shortText(declaration ? declaration->property(property) : nullptr, *data) : std::string();
}

std::string fullText(const PropertyDeclaration* property, const CMPIData& data) {
    if (isNull(data)) return {};
    if (isArrayType(data.type)) {
        return joined(data, [&](const CMPIData& element) { return fullText(property, element); });
    }
    const std::string meaning = wordsOf(property, data);
    return meaning.empty() ? plainText(data) : plainText(data) + " (" + meaning + ")";
}

} // namespace cimhost::cli
