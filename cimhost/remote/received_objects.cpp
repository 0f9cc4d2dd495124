#include "cimhost/remote/received_objects.h"

#include "cimhost/broker/broker.h"
#include "cimhost/broker/request_limit.h"
#include "cimhost/cimxml/response.h"
#include "cimhost/model/cim_type.h"
#include "cimhost/service/cim_failure.h"
#include "cimhost/service/request_values.h"

#include <optional>
#include <utility>

namespace cimhost::remote {

namespace {

constexpr int deepestEmbedding = 8;

// A value that a class declares otherwise stands beside its properties, as the server sent it.
const PropertyDeclaration* declaredFor(const InstanceObject& instance, const cimxml::Property& property) {
    const ClassDeclaration* declaration = instance.declaration();
    const PropertyDeclaration* declared = declaration ? declaration->property(property.name) : nullptr;
    if (!declared || declared->isArray() != property.value.isArray) return nullptr;
    return elementOf(declared->type) == property.value.type ? declared : nullptr;
}

} // namespace

const ObjectPathObject& ReceivedObjects::path(cimxml::ObjectPath given) const {
    if (isFull(scope.arena())) {
        throw ReceivedObjectError("its objects take more than " + std::to_string(mostRequestMebibytes) + " MiB");
    }
    given.host.clear();
    const std::string nameSpace = given.nameSpace;
    try {
        return makePath(scope, nameSpace.empty() ? home : std::string_view(nameSpace), given);
    } catch (const CimFailure& failure) {
        throw ReceivedObjectError(given.className.substr(0, 64) + ": " + failure.what());
    }
}

const InstanceObject& ReceivedObjects::instance(cimxml::NamedInstance& given, const ObjectPathObject* knownPath) const {
    if (given.path) return make(path(std::move(*given.path)), given.instance, 0);
    if (knownPath) return make(*knownPath->copyTo(scope.arena()), given.instance, 0);
    cimxml::ObjectPath keyless;
    keyless.className = given.instance.className;
    return make(path(std::move(keyless)), given.instance, 0);
}

InstanceObject& ReceivedObjects::make(const ObjectPathObject& path, cimxml::Instance& given, int depth) const {
    // Not by the maker, which sets default values: a property that the server left out is unknown.
    auto& made = *scope.arena().make<InstanceObject>(scope.broker(), scope.arena(), path);
    for (cimxml::Property& property : given.properties)
        setProperty(made, property, depth);
    return made;
}

void ReceivedObjects::setProperty(InstanceObject& instance, cimxml::Property& property, int depth) const {
    try {
        const CMPIData data = valueAt(property.value, CMPI_null, depth);
        if (const PropertyDeclaration* declared = declaredFor(instance, property)) {
            const auto position = static_cast<std::size_t>(declared - instance.declaration()->properties().data());
            instance.slots[position] = data;
        } else {
            instance.extra.set(scope.arena(), property.name, data);
        }
    } catch (const CimFailure& failure) {
        throw ReceivedObjectError(std::string(instance.className()) + "." + property.name.substr(0, 64) + ": " +
                                  failure.what());
    }
}

CMPIData ReceivedObjects::value(cimxml::Value& given, CMPIType declared) const {
    try {
        return valueAt(given, declared, 0);
    } catch (const CimFailure& failure) {
        throw ReceivedObjectError(failure.what());
    }
}

CMPIData ReceivedObjects::valueAt(cimxml::Value& given, CMPIType declared, int depth) const {
    CMPIType element = given.type != CMPI_null ? given.type : elementOf(declared);
    if (element == CMPI_null) element = CMPI_string;
    if (element == CMPI_instance && !given.isNull) {
        return given.isArray ? embeddedArray(given, depth) : embedded(given.texts[0], depth);
    }
    return makeValue(scope, home, given.isArray ? arrayOf(element) : element, given);
}

// A class, or what is too deep to be read on, stays the text that it is.
CMPIData ReceivedObjects::embedded(std::string_view text, int depth) const {
    std::optional<cimxml::Instance> inner;
    if (depth < deepestEmbedding) inner = cimxml::decodeEmbeddedInstance(text);
    if (!inner) return *scope.make().value(CMPI_string, text);
    return ObjectMaker::value(make(*scope.make().path(home, inner->className), *inner, depth + 1));
}

CMPIData ReceivedObjects::embeddedArray(const cimxml::Value& given, int depth) const {
    requireEntries(CMPI_instance, given);
    std::vector<CMPIData> elements;
    bool areInstances = true;
    for (std::size_t index = 0; index < given.texts.size(); ++index) {
        elements.push_back(given.texts.isNull(index) ? ObjectMaker::null(CMPI_instance)
                                                     : embedded(given.texts[index], depth));
        areInstances = areInstances && elements.back().type == CMPI_instance;
    }
    if (!areInstances) return makeValue(scope, home, CMPI_stringA, given);
    ArrayObject* array = ArrayObject::make(scope.arena(), static_cast<CMPICount>(elements.size()), CMPI_instance);
    for (std::size_t index = 0; index < elements.size(); ++index) {
        if (!given.texts.isNull(index)) array->store(static_cast<CMPICount>(index), elements[index]);
    }
    CMPIData data{};
    data.type = arrayOf(CMPI_instance);
    data.value.array = array;
    return data;
}

} // namespace cimhost::remote
