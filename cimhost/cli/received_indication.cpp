#include "cimhost/cli/received_indication.h"

#include "cimhost/cli/instance_json.h"
#include "cimhost/model/cim_type.h"
#include "cimhost/model/names.h"
#include "cimhost/model/printable.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace cimhost::cli {

namespace {

const cimxml::Value* find(const cimxml::Instance& indication, std::string_view name) {
    for (const cimxml::Property& property : indication.properties) {
        if (equalNames(property.name, name)) return property.value.isNull ? nullptr : &property.value;
    }
    return nullptr;
}

std::optional<std::string> singleText(const cimxml::Instance& indication, std::string_view name) {
    const cimxml::Value* value = find(indication, name);
    if (!value || value->isArray || value->texts.empty()) return std::nullopt;
    return std::string(value->texts[0]);
}

std::string listed(const cimxml::Value& value) {
    std::string text;
    for (std::size_t index = 0; index < value.texts.size(); ++index) {
        if (index > 0) text += ", ";
        text += printable(value.texts[index]);
    }
    return text;
}

// As DMTF's CIM_AlertIndication names them; no more than a line needs.
struct Coded {
    const char* property;
    std::array<const char*, 9> words;
};

constexpr Coded codedProperties[] = {
    {"PerceivedSeverity",
     {"Unknown", "Other", "Information", "Warning", "Minor", "Major", "Critical", "Fatal", nullptr}},
    {"AlertType",
     {nullptr, "Other", "Communications alert", "Quality of service alert", "Processing error", "Device alert",
      "Environmental alert", "Model change", "Security alert"}},
};

/// Class and number.
std::string titleOf(const cimxml::Instance& indication) {
    std::string text = printable(indication.className);
    if (const auto number = singleText(indication, "SequenceNumber")) text += " #" + printable(*number);
    return text;
}

/// The word for the number that stands there; the number where there is none, empty where nothing is.
std::string wordOf(const cimxml::Instance& indication, const Coded& property) {
    const auto text = singleText(indication, property.property);
    if (!text) return {};
    const auto number = parseInteger(*text);
    const bool isKnown = number && !number->isNegative && number->magnitude < property.words.size();
    const char* word = isKnown ? property.words[number->magnitude] : nullptr;
    return word ? word : std::string(property.property) + " " + printable(*text);
}

/// "2026-11-22 03:25:01" of IndicationTime (DSP0004, 5.2.4); empty for anything else.
std::string timeOf(const cimxml::Instance& indication) {
    constexpr std::size_t withoutFraction = 14;
    const std::string text = singleText(indication, "IndicationTime").value_or("");
    const bool isTime = text.size() == 25 && text.find_first_not_of("0123456789") == withoutFraction;
    if (!isTime) return {};
    const auto part = [&](std::size_t begin, std::size_t count) { return text.substr(begin, count); };
    return part(0, 4) + "-" + part(4, 2) + "-" + part(6, 2) + " " + part(8, 2) + ":" + part(10, 2) + ":" + part(12, 2);
}

// What is no value of its type stays the text that was sent.
Json jsonOf(CMPIType type, std::string_view text) {
    if (type == CMPI_boolean && equalNames(text, "true")) return true;
    if (type == CMPI_boolean && equalNames(text, "false")) return false;
    const std::optional<IntegerValue> number = isIntegerType(type) ? parseInteger(text) : std::nullopt;
    if (!number || !fitsInteger(type, *number)) return std::string(text);
    // Negated as unsigned: the smallest sint64 has no positive counterpart.
    if (number->isNegative) return static_cast<std::int64_t>(0 - number->magnitude);
    return number->magnitude;
}

Json jsonOf(const cimxml::Value& value) {
    if (value.isNull) return nullptr;
    Json list = Json::array();
    for (std::size_t index = 0; index < value.texts.size(); ++index)
        list.push_back(value.texts.isNull(index) ? Json(nullptr) : jsonOf(value.type, value.texts[index]));
    if (value.isArray) return list;
    return list.empty() ? Json(nullptr) : list.front();
}

} // namespace

std::string textOf(const cimxml::Instance& indication) {
    std::size_t width = 0;
    for (const cimxml::Property& property : indication.properties)
        width = std::max(width, property.name.size());
    std::string text = titleOf(indication) + '\n';
    for (const cimxml::Property& property : indication.properties) {
        if (property.value.isNull || property.value.texts.empty()) continue;
        text += "  " + printable(property.name) + std::string(width - property.name.size() + 2, ' ') +
                listed(property.value) + "\n";
    }
    return text;
}

std::string lineOf(const cimxml::Instance& indication) {
    std::string line = timeOf(indication);
    for (const Coded& property : codedProperties) {
        const std::string word = wordOf(indication, property);
        if (!word.empty()) line += (line.empty() ? "" : "  ") + word;
    }
    line += (line.empty() ? "" : "  ") + titleOf(indication);
    for (const char* name : {"Message", "Description", "EventID"}) {
        const auto text = singleText(indication, name);
        if (text) return line + ": " + printable(*text) + "\n";
    }
    return line + "\n";
}

std::string jsonLineOf(const cimxml::Instance& indication) {
    Json object;
    object["class"] = indication.className;
    Json& properties = object["properties"] = Json::object();
    for (const cimxml::Property& property : indication.properties)
        properties[property.name] = jsonOf(property.value);
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string SequenceWatch::judge(const cimxml::Instance& indication) {
    const auto context = singleText(indication, "SequenceContext");
    const auto text = singleText(indication, "SequenceNumber");
    const auto number = text ? parseInteger(*text) : std::nullopt;
    if (!context || !number || number->isNegative || !fitsInteger(CMPI_sint64, *number)) return {};
    const auto current = static_cast<std::int64_t>(number->magnitude);
    if (last.size() >= mostContexts && last.count(*context) == 0) last.clear();
    const auto [place, isNew] = last.try_emplace(*context, current);
    if (isNew) return {};
    const std::int64_t before = place->second;
    place->second = std::max(before, current);
    if (current == before + 1) return {};
    if (current <= before) return "#" + *text + " came late or twice, after #" + std::to_string(before);
    return std::to_string(current - before - 1) + " missing between #" + std::to_string(before) + " and #" + *text;
}

} // namespace cimhost::cli
