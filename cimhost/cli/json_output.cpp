#include "cimhost/cli/json_output.h"

#include "cimhost/cli/instance_json.h"
#include "cimhost/model/cim_type.h"

namespace cimhost::cli {

namespace {

Json scalarJson(const CMPIData& data) {
    switch (data.type) {
    case CMPI_boolean:
        return data.value.boolean != 0;
    case CMPI_uint8:
        return data.value.uint8;
    case CMPI_uint16:
        return data.value.uint16;
    case CMPI_uint32:
        return data.value.uint32;
    case CMPI_uint64:
        return data.value.uint64;
    case CMPI_sint8:
        return data.value.sint8;
    case CMPI_sint16:
        return data.value.sint16;
    case CMPI_sint32:
        return data.value.sint32;
    case CMPI_sint64:
        return data.value.sint64;
    case CMPI_real32:
        return data.value.real32;
    case CMPI_real64:
        return data.value.real64;
    default:
        break;
    }
    std::string text;
    appendValueText(text, data);
    return text;
}

Json valueJson(const CMPIData* data) {
    if (!data || (data->state & CMPI_nullValue) != 0) return nullptr;
    if (!isArrayType(data->type)) return scalarJson(*data);
    Json list = Json::array();
    const ArrayObject* array = ArrayObject::from(data->value.array);
    for (CMPICount index = 0; array && index < array->size(); ++index) {
        const CMPIData element = array->element(index);
        list.push_back(valueJson(&element));
    }
    return list;
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
    Json& properties = object["properties"] = Json::object();
    if (const ClassDeclaration* declaration = instance.declaration()) {
        for (std::size_t position = 0; position < declaration->properties().size(); ++position) {
            if (!instance.isWanted(position)) continue;
            properties[declaration->properties()[position].name] = valueJson(instance.valueAt(position));
        }
    }
    for (const NamedData& property : instance.freeProperties()) {
        properties[std::string(property.name)] = valueJson(&property.data);
    }
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
            keys[std::string(key.name)] = valueJson(&key.data);
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
