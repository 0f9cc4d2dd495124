#include "cimhost/indications/state_file.h"

#include "cimhost/model/class_repository.h"
#include "cimhost/service/path_text.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace cimhost {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view format = "cimhost subscriptions 1";
constexpr int deepestValue = 4;

Json jsonOf(const InstanceObject& instance) {
    Json object;
    object["class"] = std::string(instance.className());
    Json& properties = object["properties"] = Json::object();
    instance.forEachSetProperty([&](std::string_view name, const PropertyDeclaration*, const CMPIData& data) {
        if ((data.state & CMPI_nullValue) != 0) return;
        std::string text;
        appendValueText(text, data);
        properties[std::string(name)] = std::move(text);
    });
    return object;
}

const Json& member(const Json& object, const char* name, Json::value_t kind, std::string_view kindName) {
    const auto place = object.is_object() ? object.find(name) : object.end();
    if (!object.is_object() || place == object.end() || place->type() != kind) {
        throw std::runtime_error("\"" + std::string(name) + "\": " + std::string(kindName) + " is expected");
    }
    return *place;
}

cimxml::Property propertyOf(const PropertyDeclaration& declared, const Json& text, std::string_view nameSpace,
                            const ClassRepository& repository) {
    if (!text.is_string()) throw std::runtime_error("\"" + declared.name + "\": a text is expected");
    cimxml::Property property{declared.name, {}};
    property.value.type = declared.type;
    property.value.isNull = false;
    if (declared.isReference()) {
        property.value.references.push_back(parsePath(text.get<std::string>(), nameSpace, repository));
    } else {
        property.value.texts.append(text.get<std::string>());
    }
    return property;
}

cimxml::Instance instanceOf(const Json& object, std::string_view nameSpace, const ClassRepository& repository) {
    cimxml::Instance instance;
    instance.className = member(object, "class", Json::value_t::string, "a text").get<std::string>();
    const ClassDeclaration* declaration = repository.find(nameSpace, instance.className);
    if (!declaration) throw std::runtime_error("\"class\": there is no class " + instance.className);
    for (const auto& [name, text] : member(object, "properties", Json::value_t::object, "an object").items()) {
        const PropertyDeclaration* declared = declaration->property(name);
        if (!declared) throw std::runtime_error("class " + instance.className + " has no property \"" + name + "\"");
        instance.properties.push_back(propertyOf(*declared, text, nameSpace, repository));
    }
    return instance;
}

Json parse(std::string_view text) {
    return Json::parse(text, [](int depth, Json::parse_event_t, const Json&) {
        if (depth > deepestValue) throw std::runtime_error("values are nested too deeply");
        return true;
    });
}

} // namespace

std::string stateText(const std::vector<const InstanceObject*>& instances) {
    Json document;
    document["format"] = format;
    Json& list = document["instances"] = Json::array();
    for (const InstanceObject* instance : instances)
        list.push_back(jsonOf(*instance));
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void readState(const std::filesystem::path& file, std::string_view text, const ClassRepository& repository,
               std::string_view nameSpace, const std::function<void(const cimxml::Instance&)>& take) {
    std::string place;
    try {
        const Json document = parse(text);
        if (member(document, "format", Json::value_t::string, "a text") != format) {
            throw std::runtime_error("\"format\": \"" + std::string(format) + "\" is expected");
        }
        std::size_t index = 0;
        for (const Json& object : member(document, "instances", Json::value_t::array, "a list")) {
            place = "/instances/" + std::to_string(index++) + ": ";
            take(instanceOf(object, nameSpace, repository));
        }
    } catch (const std::exception& error) {
        throw std::runtime_error(file.string() + ": " + place + error.what() +
                                 "; mend or remove the file, or name another one with --state");
    }
}

} // namespace cimhost
