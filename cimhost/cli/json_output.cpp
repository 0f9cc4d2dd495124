#include "cimhost/cli/json_output.h"

#include "cimhost/broker/visit_value.h"
#include "cimhost/cli/instance_json.h"
#include "cimhost/model/mapped_property.h"

#include <concepts>
#include <utility>

namespace cimhost::cli {

namespace {

Json textJson(const CMPIData& data) {
    std::string text;
    appendValueText(text, data);
    return text;
}

Json embeddedJson(const InstanceObject& instance);

Json valueJson(const CMPIData& data) {
    return visitValue(data, Overloaded{
                                [](NoValue) { return Json(nullptr); },
                                [](bool truth) { return Json(truth); },
                                [&data](char16_t) { return textJson(data); },
                                [](const std::integral auto& number) { return Json(number); },
                                [](const std::floating_point auto& number) { return Json(number); },
                                [](const ArrayObject& array) {
                                    Json list = Json::array();
                                    for (CMPICount index = 0; index < array.size(); ++index)
                                        list.push_back(valueJson(array.element(index)));
                                    return list;
                                },
                                [](const InstanceObject& inner) { return embeddedJson(inner); },
                                [&data](const auto&) { return textJson(data); },
                            });
}

Json valueAt(const InstanceObject& instance, std::size_t position) {
    const CMPIData* data = instance.valueAt(position);
    return data ? valueJson(*data) : Json(nullptr);
}

Json propertiesJson(const InstanceObject& instance) {
    Json properties = Json::object();
    if (const ClassDeclaration* declaration = instance.declaration()) {
        for (std::size_t position = 0; position < declaration->properties().size(); ++position) {
            if (!instance.isWanted(position)) continue;
            const PropertyDeclaration& property = declaration->properties()[position];
            Json value = valueAt(instance, position);
            if (value.is_null() && isLeftOutWithoutValue(property)) continue;
            properties[property.name] = std::move(value);
        }
    }
    for (const NamedData& property : instance.freeProperties())
        properties[std::string(property.name)] = valueJson(property.data);
    return properties;
}

/// An instance in a property is a value and has no path.
Json embeddedJson(const InstanceObject& instance) {
    Json object;
    object["class"] = std::string(instance.className());
    object["properties"] = propertiesJson(instance);
    return object;
}

std::string pathText(const ObjectPathObject& path) {
    std::string text;
    path.appendText(text);
    return text;
}

} // namespace

Json instanceJson(const InstanceObject& instance) {
    Arena arena;
    Json object;
    object["class"] = std::string(instance.className());
    object["path"] = pathText(*instance.path(arena));
    object["properties"] = propertiesJson(instance);
    return object;
}

std::string dump(const Json& json) { return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n"; }

std::string jsonOf(const std::vector<const InstanceObject*>& instances) {
    Json list = Json::array();
    for (const InstanceObject* instance : instances)
        list.push_back(instanceJson(*instance));
    return dump(list);
}

std::string jsonOf(const InstanceObject& instance) { return dump(instanceJson(instance)); }

std::string jsonOf(const std::vector<const ObjectPathObject*>& paths) {
    Json list = Json::array();
    for (const ObjectPathObject* path : paths) {
        Json object;
        object["class"] = std::string(path->className());
        object["path"] = pathText(*path);
        Json& keys = object["keys"] = Json::object();
        for (const NamedData& key : path->keys())
            keys[std::string(key.name)] = valueJson(key.data);
        list.push_back(std::move(object));
    }
    return dump(list);
}

std::string jsonOf(const std::vector<ListedClass>& classes, const Registration& registration) {
    Json list = Json::array();
    for (const ListedClass& listed : classes) {
        const ClassDeclaration* declaration = listed.declaration;
        const auto told = [declaration](bool fact) { return declaration ? Json(fact) : Json(nullptr); };
        Json object;
        object["class"] = listed.name;
        object["superclass"] = listed.superclass.empty() ? Json(nullptr) : Json(listed.superclass);
        object["abstract"] = told(declaration && declaration->isAbstract());
        object["association"] = told(declaration && declaration->isAssociation());
        object["indication"] = told(declaration && declaration->isIndication());
        object["served"] = told(declaration && registration.serves(*declaration, ProviderKind::instance));
        list.push_back(std::move(object));
    }
    return dump(list);
}

} // namespace cimhost::cli
