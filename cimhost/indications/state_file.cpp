#include "cimhost/indications/state_file.h"

#include "cimhost/model/class_repository.h"
#include "cimhost/model/printable.h"
#include "cimhost/service/path_text.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace cimhost {

namespace {

using Json = nlohmann::ordered_json;
using SortedJson = nlohmann::json;

constexpr std::string_view format = "cimhost subscriptions 1";
constexpr int deepestValue = 4;

Json jsonOf(const OwnedInstance& owned) {
    const InstanceObject& instance = *owned.instance;
    Json object;
    object["class"] = std::string(instance.className());
    if (owned.owner) object["owner"] = *owned.owner;
    Json& properties = object["properties"] = Json::object();
    instance.forEachSetProperty([&](std::string_view name, const PropertyDeclaration*, const CMPIData& data) {
        if ((data.state & CMPI_nullValue) != 0) return;
        std::string text;
        appendValueText(text, data);
        properties[std::string(name)] = std::move(text);
    });
    return object;
}

const SortedJson& member(const SortedJson& object, const char* name, Json::value_t kind, std::string_view kindName) {
    const auto place = object.is_object() ? object.find(name) : object.end();
    if (!object.is_object() || place == object.end() || place->type() != kind) {
        throw std::runtime_error("\"" + std::string(name) + "\": " + std::string(kindName) + " is expected");
    }
    return *place;
}

Owner ownerOf(const SortedJson& object) {
    if (!object.contains("owner")) return std::nullopt;
    return member(object, "owner", Json::value_t::string, "a text").get<std::string>();
}

cimxml::Property propertyOf(const PropertyDeclaration& declared, const SortedJson& text, std::string_view nameSpace,
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

cimxml::Instance instanceOf(const SortedJson& object, std::string_view nameSpace, const ClassRepository& repository) {
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

// Checks the nesting alone, before anything is built.
struct DepthTest {
    int depth = 0;

    bool enter() {
        if (++depth > deepestValue) throw std::runtime_error("values are nested too deeply");
        return true;
    }
    bool leave() { return --depth >= 0; }

    bool null() { return true; }
    bool boolean(bool) { return true; }
    bool number_integer(Json::number_integer_t) { return true; }
    bool number_unsigned(Json::number_unsigned_t) { return true; }
    bool number_float(Json::number_float_t, const std::string&) { return true; }
    bool string(std::string&) { return true; }
    bool binary(Json::binary_t&) { return true; }
    bool key(std::string&) { return true; }
    bool start_object(std::size_t) { return enter(); }
    bool start_array(std::size_t) { return enter(); }
    bool end_object() { return leave(); }
    bool end_array() { return leave(); }
    bool parse_error(std::size_t, const std::string&, const std::exception&) { return false; } // parse() tells it
};

// Takes time in proportion to the length of the text. With a callback, or with objects that keep their order, the time
// would grow with the square of the length.
SortedJson parse(std::string_view text) {
    DepthTest depth;
    SortedJson::sax_parse(text, &depth);
    return SortedJson::parse(text);
}

} // namespace

std::string stateText(const std::vector<OwnedInstance>& instances) {
    Json document;
    document["format"] = format;
    Json& list = document["instances"] = Json::array();
    for (const OwnedInstance& instance : instances)
        list.push_back(jsonOf(instance));
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void readState(const std::filesystem::path& file, std::string_view text, const ClassRepository& repository,
               std::string_view nameSpace, const TakeInstance& take) {
    std::string place;
    try {
        const SortedJson document = parse(text);
        if (member(document, "format", Json::value_t::string, "a text") != format) {
            throw std::runtime_error("\"format\": \"" + std::string(format) + "\" is expected");
        }
        std::size_t index = 0;
        for (const SortedJson& object : member(document, "instances", Json::value_t::array, "a list")) {
            place = "/instances/" + std::to_string(index++) + ": ";
            take(instanceOf(object, nameSpace, repository), ownerOf(object));
        }
    } catch (const std::exception& error) {
        throw std::runtime_error(file.string() + ": " + place + printable(error.what()) +
                                 "; mend or remove the file, or name another one with --state");
    }
}

} // namespace cimhost
