#include <algorithm>
#include <cstring>

#include "cimhost/broker/broker.h"
#include "cimhost/broker/table_support.h"
#include "cimhost/broker/values.h"

namespace cimhost {
namespace {

bool isListed(const char* const* names, std::string_view name) noexcept {
    for (; names && *names; ++names) {
        if (equalNames(*names, name)) return true;
    }
    return false;
}

std::size_t lengthOf(const char* const* names) noexcept {
    std::size_t length = 0;
    while (names && names[length]) {
        ++length;
    }
    return length;
}

// MOF declares a property that holds an instance as a string with the qualifier EmbeddedInstance or EmbeddedObject.
bool fitsDeclaration(CMPIType given, const PropertyDeclaration& property) noexcept {
    if (given == property.type) return true;
    const bool isEmbedded = elementOf(given) == CMPI_instance && elementOf(property.type) == CMPI_string &&
                            isArrayType(given) == property.isArray();
    return isEmbedded && (findQualifier(property.qualifiers, "EmbeddedInstance") ||
                          findQualifier(property.qualifiers, "EmbeddedObject"));
}

} // namespace

InstanceObject::InstanceObject(Broker& owner, Arena& home, const ObjectPathObject& path)
    : CMPIInstance{this, tablePointer(tables::instance)}, broker(&owner), arena(&home), origin(&path) {
    if (!path.declared) return;
    const std::size_t count = path.declared->properties().size();
    slots = home.allocateArray<CMPIData>(count);
    std::fill_n(slots, count, CMPIData{});
}

const InstanceObject* InstanceObject::from(const CMPIInstance* object) noexcept {
    return checkedObject<const InstanceObject>(object, tables::instance);
}

InstanceObject* InstanceObject::from(CMPIInstance* object) noexcept {
    return checkedObject<InstanceObject>(object, tables::instance);
}

const CMPIData* InstanceObject::value(std::string_view name) const noexcept {
    if (const ClassDeclaration* type = declaration()) {
        const std::size_t position = type->findProperty(name);
        return position == ClassDeclaration::notFound ? nullptr : valueAt(position);
    }
    const NamedData* property = extra.find(name);
    return property ? &property->data : nullptr;
}

CMPIrc InstanceObject::setProperty(std::string_view name, const CMPIValue* value, CMPIType type) {
    const ClassDeclaration* declared = declaration();
    if (!declared) {
        if (wantedNames && !isListed(wantedNames, name)) return CMPI_RC_OK;
        return extra.take(*arena, name, value, type);
    }
    const std::size_t position = declared->findProperty(name);
    if (position == ClassDeclaration::notFound) {
        broker->noteDroppedProperty(*declared, name);
        return CMPI_RC_OK;
    }
    const PropertyDeclaration& property = declared->properties()[position];
    if (!fitsDeclaration(inwardType(type), property)) return CMPI_RC_ERR_INVALID_DATA_TYPE;
    if (!isWanted(position)) return CMPI_RC_OK;
    CMPIData data;
    if (const CMPIrc code = takeValue(*arena, value, type, data); code != CMPI_RC_OK) return code;
    ownSlots();
    slots[position] = data;
    return CMPI_RC_OK;
}

CMPIrc InstanceObject::setProperty(std::string_view name, const CMPIData& data) {
    return setProperty(name, (data.state & CMPI_nullValue) != 0 ? nullptr : &data.value, data.type);
}

void InstanceObject::setPropertyFilter(const char* const* properties, const char* const* keys) {
    wanted = nullptr;
    wantedNames = nullptr;
    if (!properties) return;
    if (const ClassDeclaration* declared = declaration()) {
        filterSlots(*declared, properties, keys);
    } else {
        filterFreeProperties(properties, keys);
    }
}

void InstanceObject::filterSlots(const ClassDeclaration& declared, const char* const* properties,
                                 const char* const* keys) {
    const std::size_t count = declared.properties().size();
    const std::size_t words = (count + 63) / 64;
    wanted = arena->allocateArray<std::uint64_t>(words);
    std::fill_n(wanted, words, 0);
    const auto want = [&](std::size_t position) {
        if (position != ClassDeclaration::notFound) wanted[position / 64] |= std::uint64_t{1} << (position % 64);
    };
    for (const char* const* list : {properties, keys}) {
        for (; list && *list; ++list) {
            want(declared.findProperty(*list));
        }
    }
    for (const std::size_t position : declared.keys()) {
        want(position);
    }
    ownSlots();
    for (std::size_t position = 0; position < count; ++position) {
        if (!isWanted(position)) slots[position] = CMPIData{};
    }
}

void InstanceObject::filterFreeProperties(const char* const* properties, const char* const* keys) {
    auto* names = arena->allocateArray<const char*>(lengthOf(properties) + lengthOf(keys) + 1);
    wantedNames = names;
    for (const char* const* list : {properties, keys}) {
        for (; list && *list; ++list) {
            *names++ = arena->copyText(*list).data();
        }
    }
    *names = nullptr;
    NamedDataList kept;
    for (const NamedData& property : extra.items()) {
        if (isListed(wantedNames, property.name)) kept.setNamed(*arena, property.name, property.data);
    }
    extra = kept;
}

void InstanceObject::ownSlots() {
    if (!slotsShared) return;
    const std::size_t count = declaration()->properties().size();
    auto* copies = arena->allocateArray<CMPIData>(count);
    std::copy_n(slots, count, copies);
    slots = copies;
    slotsShared = false;
}

ObjectPathObject* InstanceObject::path(Arena& target) const {
    ObjectPathObject* made = origin->copyTo(target);
    const ClassDeclaration* declared = declaration();
    if (!declared) return made;
    for (const std::size_t position : declared->keys()) {
        const CMPIData* data = valueAt(position);
        if (!data || (data->state & CMPI_nullValue) != 0) continue;
        made->addKey(declared->properties()[position].name, *data);
    }
    return made;
}

CMPIrc InstanceObject::setPath(const ObjectPathObject& path) {
    if (!equalNames(path.classText, origin->classText)) return CMPI_RC_ERR_FAILED;
    ObjectPathObject* copy = path.copyTo(*arena);
    // The slots are those of the class that the instance was made with.
    copy->declared = origin->declared;
    origin = copy;
    return CMPI_RC_OK;
}

InstanceObject* InstanceObject::copyTo(Arena& target) const {
    if (&target == arena) return shareInOwnArena();
    auto* copy = target.make<InstanceObject>(*broker, target, *origin->copyTo(target));
    const ClassDeclaration* declared = declaration();
    const std::size_t count = declared ? declared->properties().size() : 0;
    for (std::size_t position = 0; position < count; ++position) {
        if (const CMPIData* data = valueAt(position)) copy->slots[position] = copyData(target, *data);
    }
    if (wanted) {
        const std::size_t words = (count + 63) / 64;
        copy->wanted = target.allocateArray<std::uint64_t>(words);
        std::copy_n(wanted, words, copy->wanted);
    }
    copy->extra = extra.copyTo(target);
    if (wantedNames) copy->filterFreeProperties(wantedNames, nullptr);
    return copy;
}

InstanceObject* InstanceObject::shareInOwnArena() const {
    slotsShared = slots != nullptr;
    auto* copy = arena->make<InstanceObject>(*this);
    copy->hdl = copy;
    copy->ownsArena = false;
    copy->extra = extra.share();
    return copy;
}

} // namespace cimhost
