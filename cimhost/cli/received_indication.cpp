#include "cimhost/cli/received_indication.h"

#include "cimhost/cli/instance_json.h"
#include "cimhost/model/cim_type.h"
#include "cimhost/model/names.h"
#include "cimhost/model/printable.h"

#include <algorithm>
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
    std::string text = printable(indication.className);
    if (const auto number = singleText(indication, "SequenceNumber")) text += " #" + printable(*number);
    text += '\n';
    for (const cimxml::Property& property : indication.properties) {
        if (property.value.isNull || property.value.texts.empty()) continue;
        text += "  " + printable(property.name) + std::string(width - property.name.size() + 2, ' ') +
                listed(property.value) + "\n";
    }
    return text;
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
