#include "host.h"

#include <cstring>

namespace foreign_server {

namespace {

/// One item of a list that is read by position: its name and its data.
template <class Object, class GetAt>
void readAll(const Object* object, CMPICount count, GetAt getAt, const FromHost& from, NamedValues& values) {
    for (CMPICount index = 0; index < count; ++index) {
        CMPIString* name = nullptr;
        CMPIStatus status = {CMPI_RC_OK, nullptr};
        const CMPIData data = getAt(object, index, &name, &status);
        if (status.rc == CMPI_RC_OK) set(values, from.text(name).value_or(""), from.value(data), false);
    }
}

} // namespace

FromHost::FromHost(const Host& host) {
    const CMPIContext* context = nullptr;
    const std::shared_ptr<void> scope = host.enter(context);
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    pathTable = host.broker->eft->newObjectPath(host.broker, "", "", &status)->ft;
    argsTable = host.broker->eft->newArgs(host.broker, &status)->ft;
}

std::optional<std::string> FromHost::text(const CMPIString* string) const {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    const char* characters = string ? string->ft->getCharPtr(string, &status) : nullptr;
    return characters ? std::optional<std::string>(characters) : std::nullopt;
}

PathData FromHost::path(const CMPIObjectPath* path) const {
    PathData data;
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    const CMPIObjectPathFT& table = *path->ft;
    if (table.getNameSpace) data.nameSpace = text(table.getNameSpace(path, &status));
    if (table.getHostname) data.host = text(table.getHostname(path, &status));
    if (table.getClassName) data.className = text(table.getClassName(path, &status)).value_or("");
    // Here nothing and the empty text are the same, and what is not there is told by a null pointer.
    if (data.nameSpace == "") data.nameSpace.reset();
    if (data.host == "") data.host.reset();
    if (table.getKeyCount) readAll(path, table.getKeyCount(path, &status), table.getKeyAt, *this, data.keys);
    return data;
}

InstanceData FromHost::instance(const CMPIInstance* instance) const {
    InstanceData data;
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    data.path = path(instance->ft->getObjectPath(instance, &status));
    readAll(instance, instance->ft->getPropertyCount(instance, &status), instance->ft->getPropertyAt, *this,
            data.properties);
    return data;
}

NamedValues FromHost::arguments(const CMPIArgs* args) const {
    NamedValues values;
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    readAll(args, args->ft->getArgCount(args, &status), args->ft->getArgAt, *this, values);
    return values;
}

NamedValues FromHost::entries(const CMPIContext* context) const {
    NamedValues values;
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    readAll(context, context->ft->getEntryCount(context, &status), context->ft->getEntryAt, *this, values);
    return values;
}

Value FromHost::value(const CMPIData& data) const {
    Value value;
    value.type = data.type;
    value.state = static_cast<CMPIValueState>(data.state & ~CMPI_keyValue);
    if (value.isNull()) return value;
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    if (isArray(data.type)) {
        const CMPIArray* array = data.value.array;
        if (!array) return value;
        auto copy = std::make_shared<ArrayData>();
        copy->elementType = inwardType(array->ft->getSimpleType(array, &status));
        const CMPICount count = array->ft->getSize(array, &status);
        const std::size_t size = numberSize(copy->elementType);
        copy->numbers.resize(size * count);
        for (CMPICount index = 0; index < count; ++index) {
            const CMPIData element = array->ft->getElementAt(array, index, &status);
            copy->isSet.push_back((element.state & CMPI_nullValue) == 0);
            if (size != 0) {
                std::memcpy(copy->numbers.data() + size * index, &element.value, size);
            } else {
                copy->objects.push_back(this->value(element));
            }
        }
        value.array = std::move(copy);
    } else if (data.type == CMPI_string) {
        value.text = text(data.value.string);
    } else if (data.type == CMPI_dateTime && data.value.dateTime) {
        DateTimeData date;
        date.text = text(data.value.dateTime->ft->getStringFormat(data.value.dateTime, &status)).value_or("");
        value.date = std::make_shared<DateTimeData>(std::move(date));
    } else if (data.type == CMPI_ref && data.value.ref) {
        if (isPlayed(data.value.ref)) {
            value.played = data.value.ref;
        } else {
            value.path = std::make_shared<PathData>(path(data.value.ref));
        }
    } else if (data.type == CMPI_instance && data.value.inst) {
        value.instance = std::make_shared<InstanceData>(instance(data.value.inst));
    } else {
        value.number = data.value;
    }
    return value;
}

} // namespace foreign_server
