#include "fake_broker.h"

#include <algorithm>

namespace {

constexpr CMPIValueState absent = CMPI_nullValue | CMPI_notFound;

template <typename Fake, typename Plain>
Fake* as(const Plain* object) {
    return static_cast<Fake*>(const_cast<Plain*>(object));
}

FakeBroker* as(const CMPIBroker* broker) { return as<FakeBroker>(broker); }

bool leave(CMPIStatus outcome, CMPIStatus* status) {
    if (status) *status = outcome;
    return outcome.rc == CMPI_RC_OK;
}

template <typename Fake, typename Plain>
CMPIStatus release(Plain* object) {
    return as<Fake>(object)->broker->enter("release");
}

template <typename Fake, typename Plain>
Plain* clone(const Plain* object, CMPIStatus* status) {
    leave(as<Fake>(object)->broker->enter("clone"), status);
    return nullptr;
}

template <typename Fake, typename Table, typename Plain>
Table tableOf() {
    Table table = {};
    table.ftVersion = CMPICurrentVersion;
    table.release = release<Fake, Plain>;
    table.clone = clone<Fake, Plain>;
    return table;
}

StoredValue store(const CMPIValue* value, CMPIType type) {
    StoredValue stored;
    stored.type = type;
    if (type == CMPI_chars)
        stored.text = value ? reinterpret_cast<const char*>(value) : "(null)";
    else if (value)
        stored.value = *value;
    return stored;
}

using Items = std::vector<std::pair<std::string, StoredValue>>;

CMPIStatus put(FakeBroker* broker, const char* function, Items& items, const char* name, const CMPIValue* value,
               CMPIType type) {
    CMPIStatus outcome = broker->enter(function);
    if (outcome.rc == CMPI_RC_OK) items.emplace_back(name, store(value, type));
    return outcome;
}

CMPIData get(FakeBroker* broker, const char* function, const Items& items, const char* name, CMPIrc absentRc,
             CMPIStatus* status) {
    if (!leave(broker->enter(function), status)) return dataOf(CMPI_null, {}, absent);
    auto found = std::find_if(items.begin(), items.end(), [&](const auto& item) { return item.first == name; });
    if (found != items.end()) return dataOf(found->second.type, found->second.value);
    *status = {absentRc, nullptr};
    return dataOf(CMPI_null, {}, absent);
}

CMPIData getAt(FakeBroker* broker, const char* function, const Items& items, CMPICount index, CMPIString** name,
               CMPIStatus* status) {
    if (index < items.size() && name) *name = broker->string(items[index].first.c_str());
    if (!leave(broker->enter(function), status)) return dataOf(CMPI_null, {}, absent);
    if (index < items.size()) return dataOf(items[index].second.type, items[index].second.value);
    *status = {broker->absentRc, nullptr};
    return dataOf(CMPI_null, {}, absent);
}

CMPIStringFT* stringTable() {
    static CMPIStringFT table = [] {
        auto made = tableOf<FakeString, CMPIStringFT, CMPIString>();
        made.getCharPtr = [](const CMPIString* string, CMPIStatus* status) -> const char* {
            leave({CMPI_RC_OK, nullptr}, status);
            return static_cast<const char*>(string->hdl);
        };
        return made;
    }();
    return &table;
}

CMPIDateTimeFT* dateTimeTable() {
    static CMPIDateTimeFT table = [] {
        auto made = tableOf<FakeDateTime, CMPIDateTimeFT, CMPIDateTime>();
        made.getBinaryFormat = [](const CMPIDateTime* date, CMPIStatus* status) {
            leave(as<FakeDateTime>(date)->broker->enter("getBinaryFormat"), status);
            return as<FakeDateTime>(date)->microseconds;
        };
        made.isInterval = [](const CMPIDateTime* date, CMPIStatus* status) {
            leave(as<FakeDateTime>(date)->broker->enter("isInterval"), status);
            return as<FakeDateTime>(date)->interval;
        };
        return made;
    }();
    return &table;
}

CMPIArrayFT* arrayTable() {
    static CMPIArrayFT table = [] {
        auto made = tableOf<FakeArray, CMPIArrayFT, CMPIArray>();
        made.getSize = [](const CMPIArray* array, CMPIStatus* status) {
            leave(as<FakeArray>(array)->broker->enter("getSize"), status);
            return static_cast<CMPICount>(as<FakeArray>(array)->elements.size());
        };
        made.getSimpleType = [](const CMPIArray* array, CMPIStatus* status) {
            leave(as<FakeArray>(array)->broker->enter("getSimpleType"), status);
            return as<FakeArray>(array)->type;
        };
        made.getElementAt = [](const CMPIArray* array, CMPICount index, CMPIStatus* status) {
            const StoredValue& element = as<FakeArray>(array)->elements.at(index);
            leave(as<FakeArray>(array)->broker->enter("getElementAt"), status);
            CMPIData data = dataOf(element.type, element.value);
            if (element.type == CMPI_chars) data.value.chars = const_cast<char*>(element.text.c_str());
            return data;
        };
        made.setElementAt = [](CMPIArray* array, CMPICount index, const CMPIValue* value, CMPIType type) {
            CMPIStatus outcome = as<FakeArray>(array)->broker->enter("setElementAt");
            if (outcome.rc == CMPI_RC_OK) as<FakeArray>(array)->elements.at(index) = store(value, type);
            return outcome;
        };
        return made;
    }();
    return &table;
}

template <std::string FakePath::*Text>
CMPIString* pathText(const CMPIObjectPath* path, CMPIStatus* status) {
    FakePath* fake = as<FakePath>(path);
    return leave(fake->broker->enter("getPathText"), status) ? fake->broker->string((fake->*Text).c_str()) : nullptr;
}

template <std::string FakePath::*Text>
CMPIStatus setPathText(CMPIObjectPath* path, const char* text) {
    FakePath* fake = as<FakePath>(path);
    CMPIStatus outcome = fake->broker->enter("setPathText");
    if (outcome.rc == CMPI_RC_OK) fake->*Text = text;
    return outcome;
}

CMPIObjectPathFT* pathTable() {
    static CMPIObjectPathFT table = [] {
        auto made = tableOf<FakePath, CMPIObjectPathFT, CMPIObjectPath>();
        made.getHostname = pathText<&FakePath::host>;
        made.getNameSpace = pathText<&FakePath::nameSpace>;
        made.getClassName = pathText<&FakePath::className>;
        made.setHostname = setPathText<&FakePath::host>;
        made.setNameSpace = setPathText<&FakePath::nameSpace>;
        made.setClassName = setPathText<&FakePath::className>;
        made.getKeyCount = [](const CMPIObjectPath* path, CMPIStatus* status) {
            leave(as<FakePath>(path)->broker->enter("getKeyCount"), status);
            return static_cast<CMPICount>(as<FakePath>(path)->keys.size());
        };
        made.addKey = [](CMPIObjectPath* path, const char* name, const CMPIValue* value, const CMPIType type) {
            FakePath* fake = as<FakePath>(path);
            return put(fake->broker, "addKey", fake->keys, name, value, type);
        };
        made.getKey = [](const CMPIObjectPath* path, const char* name, CMPIStatus* status) {
            FakePath* fake = as<FakePath>(path);
            return get(fake->broker, "getKey", fake->keys, name, CMPI_RC_ERR_NOT_FOUND, status);
        };
        made.getKeyAt = [](const CMPIObjectPath* path, CMPICount index, CMPIString** name, CMPIStatus* status) {
            FakePath* fake = as<FakePath>(path);
            return getAt(fake->broker, "getKeyAt", fake->keys, index, name, status);
        };
        return made;
    }();
    return &table;
}

CMPIInstanceFT* instanceTable() {
    static CMPIInstanceFT table = [] {
        auto made = tableOf<FakeInstance, CMPIInstanceFT, CMPIInstance>();
        made.getPropertyCount = [](const CMPIInstance* instance, CMPIStatus* status) {
            leave(as<FakeInstance>(instance)->broker->enter("getPropertyCount"), status);
            return static_cast<CMPICount>(as<FakeInstance>(instance)->properties.size());
        };
        made.setProperty = [](const CMPIInstance* instance, const char* name, const CMPIValue* value, CMPIType type) {
            FakeInstance* fake = as<FakeInstance>(instance);
            return put(fake->broker, "setProperty", fake->properties, name, value, type);
        };
        made.getProperty = [](const CMPIInstance* instance, const char* name, CMPIStatus* status) {
            FakeInstance* fake = as<FakeInstance>(instance);
            return get(fake->broker, "getProperty", fake->properties, name, fake->broker->absentRc, status);
        };
        made.getPropertyAt = [](const CMPIInstance* instance, CMPICount index, CMPIString** name, CMPIStatus* status) {
            FakeInstance* fake = as<FakeInstance>(instance);
            return getAt(fake->broker, "getPropertyAt", fake->properties, index, name, status);
        };
        made.getObjectPath = [](const CMPIInstance* instance, CMPIStatus* status) {
            leave(as<FakeInstance>(instance)->broker->enter("getObjectPath"), status);
            return as<FakeInstance>(instance)->path;
        };
        made.setPropertyFilter = [](CMPIInstance* instance, const char** properties, const char** keys) {
            FakeInstance* fake = as<FakeInstance>(instance);
            fake->filter = properties;
            fake->filterKeysGiven = keys != nullptr;
            for (; keys && *keys; ++keys)
                fake->filterKeys.emplace_back(*keys);
            return fake->broker->enter("setPropertyFilter");
        };
        return made;
    }();
    return &table;
}

CMPIArgsFT* argsTable() {
    static CMPIArgsFT table = [] {
        auto made = tableOf<FakeArgs, CMPIArgsFT, CMPIArgs>();
        made.getArgCount = [](const CMPIArgs* args, CMPIStatus* status) {
            leave(as<FakeArgs>(args)->broker->enter("getArgCount"), status);
            return static_cast<CMPICount>(as<FakeArgs>(args)->values.size());
        };
        made.addArg = [](const CMPIArgs* args, const char* name, const CMPIValue* value, const CMPIType type) {
            FakeArgs* fake = as<FakeArgs>(args);
            return put(fake->broker, "addArg", fake->values, name, value, type);
        };
        made.getArg = [](const CMPIArgs* args, const char* name, CMPIStatus* status) {
            FakeArgs* fake = as<FakeArgs>(args);
            return get(fake->broker, "getArg", fake->values, name, fake->broker->absentRc, status);
        };
        made.getArgAt = [](const CMPIArgs* args, CMPICount index, CMPIString** name, CMPIStatus* status) {
            FakeArgs* fake = as<FakeArgs>(args);
            return getAt(fake->broker, "getArgAt", fake->values, index, name, status);
        };
        return made;
    }();
    return &table;
}

CMPIContextFT* contextTable() {
    static CMPIContextFT table = [] {
        auto made = tableOf<FakeContext, CMPIContextFT, CMPIContext>();
        made.getEntry = [](const CMPIContext* context, const char* name, CMPIStatus* status) {
            FakeContext* fake = as<FakeContext>(context);
            leave(fake->broker->enter("getEntry"), status);
            auto found = fake->entries.find(name);
            if (found != fake->entries.end()) return found->second;
            *status = {CMPI_RC_ERR_NO_SUCH_PROPERTY, nullptr};
            return dataOf(CMPI_null, {}, absent);
        };
        return made;
    }();
    return &table;
}

CMPIResultFT* resultTable() {
    static CMPIResultFT table = [] {
        auto made = tableOf<FakeResult, CMPIResultFT, CMPIResult>();
        made.returnData = [](const CMPIResult* result, const CMPIValue* value, const CMPIType type) {
            as<FakeResult>(result)->data.push_back(store(value, type));
            return as<FakeResult>(result)->broker->enter("returnData");
        };
        made.returnInstance = [](const CMPIResult* result, const CMPIInstance* instance) {
            as<FakeResult>(result)->instances.push_back(instance);
            return as<FakeResult>(result)->broker->enter("returnInstance");
        };
        made.returnObjectPath = [](const CMPIResult* result, const CMPIObjectPath* path) {
            as<FakeResult>(result)->paths.push_back(path);
            return as<FakeResult>(result)->broker->enter("returnObjectPath");
        };
        made.returnDone = [](const CMPIResult* result) {
            ++as<FakeResult>(result)->done;
            return as<FakeResult>(result)->broker->enter("returnDone");
        };
        return made;
    }();
    return &table;
}

CMPIEnumerationFT* enumerationTable() {
    static CMPIEnumerationFT table = [] {
        auto made = tableOf<FakeEnumeration, CMPIEnumerationFT, CMPIEnumeration>();
        made.getNext = [](const CMPIEnumeration* enumeration, CMPIStatus* status) {
            FakeEnumeration* fake = as<FakeEnumeration>(enumeration);
            leave(fake->broker->enter("getNext"), status);
            return fake->elements.at(fake->next++);
        };
        made.hasNext = [](const CMPIEnumeration* enumeration, CMPIStatus* status) {
            FakeEnumeration* fake = as<FakeEnumeration>(enumeration);
            leave(fake->broker->enter("hasNext"), status);
            return static_cast<CMPIBoolean>(fake->next < fake->elements.size());
        };
        made.toArray = [](const CMPIEnumeration* enumeration, CMPIStatus* status) -> CMPIArray* {
            FakeEnumeration* fake = as<FakeEnumeration>(enumeration);
            leave(fake->broker->enter("toArray"), status);
            return fake->broker->array(static_cast<CMPICount>(fake->elements.size()), CMPI_ref);
        };
        return made;
    }();
    return &table;
}

CMPIBrokerEncFT* encTable() {
    static CMPIBrokerEncFT table = [] {
        CMPIBrokerEncFT made = {};
        made.newInstance = [](const CMPIBroker* broker, const CMPIObjectPath* path,
                              CMPIStatus* status) -> CMPIInstance* {
            return leave(as(broker)->enter("newInstance"), status)
                       ? as(broker)->instance(const_cast<CMPIObjectPath*>(path))
                       : nullptr;
        };
        made.newObjectPath = [](const CMPIBroker* broker, const char* nameSpace, const char* className,
                                CMPIStatus* status) -> CMPIObjectPath* {
            return leave(as(broker)->enter("newObjectPath"), status) ? as(broker)->path(nameSpace, className) : nullptr;
        };
        made.newArgs = [](const CMPIBroker* broker, CMPIStatus* status) -> CMPIArgs* {
            return leave(as(broker)->enter("newArgs"), status) ? as(broker)->args() : nullptr;
        };
        made.newString = [](const CMPIBroker* broker, const char* text, CMPIStatus* status) -> CMPIString* {
            CMPIStatus outcome = as(broker)->enter("newString");
            if (!text) outcome.rc = CMPI_RC_ERR_INVALID_PARAMETER;
            return leave(outcome, status) ? as(broker)->string(text) : nullptr;
        };
        made.newArray = [](const CMPIBroker* broker, CMPICount size, CMPIType type, CMPIStatus* status) -> CMPIArray* {
            return leave(as(broker)->enter("newArray"), status) ? as(broker)->array(size, type) : nullptr;
        };
        made.newDateTime = [](const CMPIBroker* broker, CMPIStatus* status) -> CMPIDateTime* {
            return leave(as(broker)->enter("newDateTime"), status) ? as(broker)->dateTime(1, 0) : nullptr;
        };
        made.newDateTimeFromBinary = [](const CMPIBroker* broker, CMPIUint64 microseconds, CMPIBoolean interval,
                                        CMPIStatus* status) -> CMPIDateTime* {
            return leave(as(broker)->enter("newDateTimeFromBinary"), status)
                       ? as(broker)->dateTime(microseconds, interval)
                       : nullptr;
        };
        made.newDateTimeFromChars = [](const CMPIBroker* broker, const char* text,
                                       CMPIStatus* status) -> CMPIDateTime* {
            as(broker)->lastText = text;
            return leave(as(broker)->enter("newDateTimeFromChars"), status) ? as(broker)->dateTime(2, 0) : nullptr;
        };
        made.classPathIsA = [](const CMPIBroker* broker, const CMPIObjectPath* path, const char* className,
                               CMPIStatus* status) {
            leave(as(broker)->enter("classPathIsA"), status);
            return static_cast<CMPIBoolean>(as<FakePath>(path)->className == className);
        };
        made.toString = [](const CMPIBroker* broker, const void*, CMPIStatus* status) -> CMPIString* {
            return leave(as(broker)->enter("toString"), status) ? as(broker)->string("an object") : nullptr;
        };
        made.isOfType = [](const CMPIBroker* broker, const void*, const char* typeName, CMPIStatus* status) {
            leave(as(broker)->enter("isOfType"), status);
            return static_cast<CMPIBoolean>(std::string(typeName) == "CMPIObjectPath");
        };
        return made;
    }();
    return &table;
}

void remember(FakeBroker* broker, const CMPIContext* context, const CMPIObjectPath* path = nullptr,
              const CMPIInstance* instance = nullptr, const char** properties = nullptr) {
    broker->lastContext = context;
    broker->lastPath = path;
    broker->lastInstance = instance;
    broker->lastProperties = properties;
}

CMPIBrokerFT* brokerTable() {
    static CMPIBrokerFT table = [] {
        CMPIBrokerFT made = {};
        made.prepareAttachThread = [](const CMPIBroker* broker, const CMPIContext* context) -> CMPIContext* {
            remember(as(broker), context);
            return as(broker)->enter("prepareAttachThread").rc == CMPI_RC_OK ? as(broker)->context() : nullptr;
        };
        made.attachThread = [](const CMPIBroker* broker, const CMPIContext* context) {
            remember(as(broker), context);
            return as(broker)->enter("attachThread");
        };
        made.detachThread = [](const CMPIBroker* broker, const CMPIContext* context) {
            remember(as(broker), context);
            return as(broker)->enter("detachThread");
        };
        made.deliverIndication = [](const CMPIBroker* broker, const CMPIContext* context, const char* nameSpace,
                                    const CMPIInstance* indication) {
            remember(as(broker), context, nullptr, indication);
            as(broker)->lastText = nameSpace;
            return as(broker)->enter("deliverIndication");
        };
        made.enumerateInstanceNames = [](const CMPIBroker* broker, const CMPIContext* context,
                                         const CMPIObjectPath* path, CMPIStatus* status) -> CMPIEnumeration* {
            remember(as(broker), context, path);
            return leave(as(broker)->enter("enumerateInstanceNames"), status) ? as(broker)->enumeration() : nullptr;
        };
        made.getInstance = [](const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path,
                              const char** properties, CMPIStatus* status) -> CMPIInstance* {
            remember(as(broker), context, path, nullptr, properties);
            return leave(as(broker)->enter("getInstance"), status)
                       ? as(broker)->instance(const_cast<CMPIObjectPath*>(path))
                       : nullptr;
        };
        made.createInstance = [](const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path,
                                 const CMPIInstance* instance, CMPIStatus* status) -> CMPIObjectPath* {
            remember(as(broker), context, path, instance);
            return leave(as(broker)->enter("createInstance"), status) ? as(broker)->path("created", "Class") : nullptr;
        };
        made.modifyInstance = [](const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path,
                                 const CMPIInstance* instance, const char** properties) {
            remember(as(broker), context, path, instance, properties);
            return as(broker)->enter("modifyInstance");
        };
        made.deleteInstance = [](const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path) {
            remember(as(broker), context, path);
            return as(broker)->enter("deleteInstance");
        };
        made.enumerateInstances = [](const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path,
                                     const char** properties, CMPIStatus* status) -> CMPIEnumeration* {
            remember(as(broker), context, path, nullptr, properties);
            return leave(as(broker)->enter("enumerateInstances"), status) ? as(broker)->enumeration() : nullptr;
        };
        return made;
    }();
    return &table;
}

template <typename Fake, typename Table>
Fake* made(FakeBroker* broker, Table* table) {
    Fake* object = broker->make<Fake>();
    object->hdl = object;
    object->ft = table;
    object->broker = broker;
    return object;
}

} // namespace

FakeBroker::FakeBroker() : CMPIBroker{nullptr, brokerTable(), encTable(), nullptr, nullptr} {}

void FakeBroker::failWith(const std::string& function, CMPIrc rc, const char* message) {
    failures[function] = {rc, message ? string(message) : nullptr};
}

int FakeBroker::count(const std::string& function) const {
    return static_cast<int>(std::count(calls.begin(), calls.end(), function));
}

CMPIStatus FakeBroker::enter(const char* function) {
    calls.emplace_back(function);
    auto failure = failures.find(function);
    return failure == failures.end() ? CMPIStatus{CMPI_RC_OK, nullptr} : failure->second;
}

FakeString* FakeBroker::string(const char* text) {
    FakeString* string = made<FakeString>(this, stringTable());
    string->text = text;
    string->hdl = string->text.data();
    return string;
}

FakeArray* FakeBroker::array(CMPICount size, CMPIType type) {
    FakeArray* array = made<FakeArray>(this, arrayTable());
    array->type = type;
    array->elements.resize(size);
    return array;
}

FakePath* FakeBroker::path(const char* nameSpace, const char* className) {
    FakePath* path = made<FakePath>(this, pathTable());
    path->nameSpace = nameSpace ? nameSpace : "";
    path->className = className ? className : "";
    return path;
}

FakeInstance* FakeBroker::instance(CMPIObjectPath* path) {
    FakeInstance* instance = made<FakeInstance>(this, instanceTable());
    instance->path = path;
    return instance;
}

FakeArgs* FakeBroker::args() { return made<FakeArgs>(this, argsTable()); }

FakeContext* FakeBroker::context() { return made<FakeContext>(this, contextTable()); }

FakeResult* FakeBroker::result() { return made<FakeResult>(this, resultTable()); }

FakeEnumeration* FakeBroker::enumeration() { return made<FakeEnumeration>(this, enumerationTable()); }

FakeDateTime* FakeBroker::dateTime(CMPIUint64 microseconds, CMPIBoolean interval) {
    FakeDateTime* date = made<FakeDateTime>(this, dateTimeTable());
    date->microseconds = microseconds;
    date->interval = interval;
    return date;
}

CMPIData dataOf(CMPIType type, CMPIValue value, CMPIValueState state) { return {type, state, value}; }
