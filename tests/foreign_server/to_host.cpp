#include "host.h"

#include "violations.h"

#include <cstring>

namespace foreign_server {

namespace {

std::vector<const char*> pointersTo(const std::vector<std::string>& names) {
    std::vector<const char*> pointers;
    for (const std::string& name : names)
        pointers.push_back(name.c_str());
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

void ToHost::expectTaken(const CMPIStatus& status, const std::string& what) const {
    if (status.rc != CMPI_RC_OK) violate(function, what + " is refused with " + std::to_string(status.rc));
}

CMPIString* ToHost::text(const char* text) const {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    return broker->eft->newString(broker, text, &status);
}

CMPIArray* ToHost::array(const ArrayData& data) const {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    CMPIArray* made = broker->eft->newArray(broker, data.size(), data.elementType, &status);
    const std::size_t size = numberSize(data.elementType);
    for (CMPICount index = 0; index < data.size(); ++index) {
        if (!data.isSet[index]) continue;
        CMPIValue element{};
        if (size != 0) {
            std::memcpy(&element, data.numbers.data() + size * index, size);
        } else if (!data.objects[index].isNull()) {
            element = plain(data.objects[index]);
        } else {
            continue;
        }
        expectTaken(made->ft->setElementAt(made, index, &element, data.elementType), "an array's element");
    }
    return made;
}

CMPIValue ToHost::plain(const Value& value) const {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    CMPIValue converted{};
    if (isArray(value.type)) {
        converted.array = value.array ? array(*value.array) : nullptr;
    } else if (value.text) {
        converted.string = text(value.text->c_str());
    } else if (value.date) {
        const DateTimeData& date = *value.date;
        converted.dateTime =
            date.text.empty() ? broker->eft->newDateTimeFromBinary(broker, date.microseconds, date.isInterval, &status)
                              : broker->eft->newDateTimeFromChars(broker, date.text.c_str(), &status);
    } else if (value.path) {
        converted.ref = path(*value.path);
    } else if (value.instance) {
        converted.inst = instance(*value.instance);
    } else if (numberSize(value.type) != 0) {
        converted = value.number;
    }
    return converted;
}

// The request's own keys may be of any type, as lenient servers pass them on; the provider's must be of the class's.
void ToHost::checkKeys(const PathData& data) const {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    CMPIObjectPath* strict =
        broker->eft->newObjectPath(broker, data.nameSpace.value_or("").c_str(), data.className.c_str(), &status);
    for (const NamedValue& key : data.keys) {
        if (!key.isProviders) continue;
        const CMPIStatus answer = with(key.value, [&](const CMPIValue* value, CMPIType type) {
            return strict->ft->addKey(strict, key.name.c_str(), value, type);
        });
        expectTaken(answer, "key " + data.className + '.' + key.name);
    }
}

CMPIObjectPath* ToHost::path(const PathData& data) const {
    checkKeys(data);
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    CMPIObjectPath* made = broker->eft->newObjectPath(broker, data.nameSpace.value_or("").c_str(), "", &status);
    if (data.host) made->ft->setHostname(made, data.host->c_str());
    for (const NamedValue& key : data.keys) {
        with(key.value, [&](const CMPIValue* value, CMPIType type) {
            return made->ft->addKey(made, key.name.c_str(), value, type);
        });
    }
    made->ft->setClassName(made, data.className.c_str());
    return made;
}

CMPIInstance* ToHost::instance(const InstanceData& data) const {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    CMPIInstance* made = broker->eft->newInstance(broker, path(data.path), &status);
    for (const NamedValue& property : data.properties) {
        const CMPIStatus answer = with(property.value, [&](const CMPIValue* value, CMPIType type) {
            return made->ft->setProperty(made, property.name.c_str(), value, type);
        });
        expectTaken(answer, "property " + data.path.className + '.' + property.name);
    }
    if (data.wanted) {
        std::vector<const char*> wanted = pointersTo(*data.wanted);
        std::vector<const char*> keys = pointersTo(data.keys);
        made->ft->setPropertyFilter(made, wanted.data(), keys.data());
    }
    return made;
}

} // namespace foreign_server
