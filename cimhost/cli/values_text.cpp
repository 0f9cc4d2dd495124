#include "cimhost/cli/values_text.h"

#include "cimhost/cli/units.h"
#include "cimhost/model/cim_type.h"
#include "cimhost/model/printable.h"

#include <algorithm>
#include <optional>

namespace cimhost::cli {

namespace {

/// What tells of a value beside itself.
struct Known {
    const PropertyDeclaration* property;
    std::string_view unit; ///< empty: the declaration tells
    const Presentation& presentation;
};

Known knownOf(const InstanceObject& instance, std::string_view name, const Presentation& presentation) {
    const ClassDeclaration* declaration = instance.declaration();
    return {declaration ? declaration->property(name) : nullptr, presentation.unitOf(instance.className(), name),
            presentation};
}

std::string_view unitOf(const Known& known) {
    if (!known.unit.empty()) return known.unit;
    const Qualifier* unit = findQualifier(known.property->qualifiers, "PUnit");
    return unit ? unit->value.text() : std::string_view();
}

// The qualifiers are those of DSP0004, 5.6.3: PUnit, ValueMap and Values.
std::string wordsOf(const Known& known, const CMPIData& data) {
    if (!known.property || !isIntegerType(data.type)) return {};
    const std::string text = data.type == CMPI_uint64 ? textWithUnit(data.value.uint64, unitOf(known)) : std::string();
    return text.empty() ? meaningOf(known.property->qualifiers, plainText(data)) : text;
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

const Presentation& nothingChosen() {
    static const Presentation none;
    return none;
}

bool isNull(const CMPIData& data) { return (data.state & CMPI_nullValue) != 0; }

/// "T_Limits {Low: 5, High: 70}"; properties without a value are left out.
template <typename ValueText>
std::string embeddedText(const CMPIData& data, ValueText valueText) {
    const InstanceObject* inner = InstanceObject::from(static_cast<const CMPIInstance*>(data.value.inst));
    if (!inner) return {};
    std::string text = printable(inner->className()) + " {";
    std::string_view separator;
    inner->forEachSetProperty([&](std::string_view name, const PropertyDeclaration*, const CMPIData& value) {
        if (isNull(value)) return;
        text.append(separator).append(printable(name)).append(": ").append(valueText(*inner, name, value));
        separator = ", ";
    });
    return text + "}";
}

std::string shortText(const Known& known, const CMPIData& data) {
    if (isNull(data)) return {};
    if (isArrayType(data.type)) {
        return joined(data, [&](const CMPIData& element) { return shortText(known, element); });
    }
    if (data.type == CMPI_ref) return shortReference(data);
    if (data.type == CMPI_instance) {
        return embeddedText(data, [&](const InstanceObject& inner, std::string_view name, const CMPIData& value) {
            return shortText(knownOf(inner, name, known.presentation), value);
        });
    }
    const std::string meaning = wordsOf(known, data);
    return meaning.empty() ? plainText(data) : meaning;
}

std::string fullText(const Known& known, const CMPIData& data) {
    if (isNull(data)) return {};
    if (isArrayType(data.type)) {
        return joined(data, [&](const CMPIData& element) { return fullText(known, element); });
    }
    if (data.type == CMPI_instance) {
        return embeddedText(data, [&](const InstanceObject& inner, std::string_view name, const CMPIData& value) {
            return fullText(knownOf(inner, name, known.presentation), value);
        });
    }
    const std::string meaning = wordsOf(known, data);
    return meaning.empty() ? plainText(data) : plainText(data) + " (" + meaning + ")";
}

/// True if a table shows one of the values of the property.
bool isShown(const InstanceObject& instance, std::string_view property, const std::vector<std::string>& values,
             const Presentation& presentation) {
    const std::string text = cli::shortText(instance, property, presentation);
    return std::find(values.begin(), values.end(), text) != values.end();
}

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
    if (data.type == CMPI_instance) {
        return embeddedText(
            data, [](const InstanceObject&, std::string_view, const CMPIData& value) { return plainText(value); });
    }
    std::string text;
    appendValueText(text, data);
    return printable(text);
}

std::string shortText(const PropertyDeclaration* property, const CMPIData& data) {
    return shortText(Known{property, {}, nothingChosen()}, data);
}

std::string shortText(const InstanceObject& instance, std::string_view property, const Presentation& presentation) {
    const CMPIData* data = instance.value(property);
    if (!data) return {};
    const ShownZero* zero = presentation.zeroOf(instance.className(), property);
    const bool isZero = zero && isIntegerType(data->type) && plainText(*data) == "0";
    if (isZero && !isShown(instance, zero->otherProperty, zero->values, presentation)) return zero->words;
    return shortText(knownOf(instance, property, presentation), *data);
}

std::string fullText(const PropertyDeclaration* property, const CMPIData& data) {
    return fullText(Known{property, {}, nothingChosen()}, data);
}

std::string fullText(const InstanceObject& instance, std::string_view property, const Presentation& presentation) {
    const CMPIData* data = instance.value(property);
    return data ? fullText(knownOf(instance, property, presentation), *data) : std::string();
}

} // namespace cimhost::cli
