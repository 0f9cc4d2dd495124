#include "paths.h"
#include "server.h"
#include "tables.h"

namespace foreign_server {

namespace {

using HostGetter = CMPIString* (*)(const CMPIObjectPath*, CMPIStatus*);

CMPIString* shownText(const std::optional<std::string>& text, const char* function) {
    return text ? make<StringObject>(function, *text)->shown() : nullptr;
}

CMPIString* playedText(const CMPIObjectPath* played, HostGetter getter, CMPIStatus* status, const char* function) {
    CMPIStatus outcome = {CMPI_RC_OK, nullptr};
    const CMPIString* text = getter(played, &outcome);
    if (outcome.rc == CMPI_RC_OK) return shownText(Server::current().fromHost().text(text), function);
    if (status) *status = Server::current().toProvider(outcome, function);
    return nullptr;
}

CMPIStatus releasePath(CMPIObjectPath* path) { return answer(release(path, Kind::path, "CMPIObjectPath.release")); }

CMPIObjectPath* clonePath(const CMPIObjectPath* path, CMPIStatus* status) {
    const auto* object = use<PathObject>(path, "CMPIObjectPath.clone");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!object) return nullptr;
    auto* copy = makeClone<PathObject>();
    copy->data = contentOf(*object);
    return copy->shown();
}

template <class Set>
CMPIStatus setText(CMPIObjectPath* path, const char* text, const char* function, Set&& set) {
    auto* object = use<PathObject>(path, function);
    if (!object) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    if (!isGiven(text, function, "the text")) return answer(CMPI_RC_ERR_INVALID_PARAMETER);
    set(object->data, text);
    return answer(CMPI_RC_OK);
}

CMPIStatus setNameSpace(CMPIObjectPath* path, const char* text) {
    return setText(path, text, "CMPIObjectPath.setNameSpace",
                   [](PathData& data, const char* given) { data.nameSpace = given; });
}

CMPIStatus setHostname(CMPIObjectPath* path, const char* text) {
    return setText(path, text, "CMPIObjectPath.setHostname",
                   [](PathData& data, const char* given) { data.host = given; });
}

CMPIStatus setClassName(CMPIObjectPath* path, const char* text) {
    return setText(path, text, "CMPIObjectPath.setClassName",
                   [](PathData& data, const char* given) { data.className = given; });
}

CMPIString* getNameSpace(const CMPIObjectPath* path, CMPIStatus* status) {
    constexpr const char* function = "CMPIObjectPath.getNameSpace";
    const auto* object = use<PathObject>(path, function);
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!object) return nullptr;
    if (object->played) return playedText(object->played, object->played->ft->getNameSpace, status, function);
    return shownText(object->data.nameSpace, function);
}

CMPIString* getHostname(const CMPIObjectPath* path, CMPIStatus* status) {
    constexpr const char* function = "CMPIObjectPath.getHostname";
    const auto* object = use<PathObject>(path, function);
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return object ? shownText(object->data.host, function) : nullptr;
}

CMPIString* getClassName(const CMPIObjectPath* path, CMPIStatus* status) {
    constexpr const char* function = "CMPIObjectPath.getClassName";
    const auto* object = use<PathObject>(path, function);
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!object) return nullptr;
    if (object->played) return playedText(object->played, object->played->ft->getClassName, status, function);
    return shownText(object->data.className, function);
}

CMPIStatus addKey(CMPIObjectPath* path, const char* name, const CMPIValue* value, CMPIType type) {
    constexpr const char* function = "CMPIObjectPath.addKey";
    auto* object = use<PathObject>(path, function);
    if (!object) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    if (!isGiven(name, function, "the name")) return answer(CMPI_RC_ERR_INVALID_PARAMETER);
    if (isArray(type) || type == CMPI_instance || type == CMPI_null) return answer(CMPI_RC_ERR_INVALID_DATA_TYPE);
    Value taken;
    const CMPIrc code = take(value, type, taken, function);
    if (code != CMPI_RC_OK) return answer(code);
    if (taken.isNull()) return answer(CMPI_RC_ERR_FAILED);
    set(object->data.keys, name, std::move(taken));
    return answer(CMPI_RC_OK);
}

CMPIData unsignedKey(CMPIUint64 number) {
    CMPIData data{CMPI_uint64, CMPI_goodValue, {}};
    data.value.uint64 = number;
    return data;
}

CMPIData signedKey(CMPISint64 number) {
    CMPIData data{CMPI_sint64, CMPI_goodValue, {}};
    data.value.sint64 = number;
    return data;
}

/// Integers go out as the widest of their sign, and the state says nothing of keys.
CMPIData keyData(const Value& value, const char* function) {
    const CMPIData data = handOut(value, function);
    if (data.state != CMPI_goodValue) return data;
    switch (data.type) {
    case CMPI_uint8:
        return unsignedKey(data.value.uint8);
    case CMPI_uint16:
        return unsignedKey(data.value.uint16);
    case CMPI_uint32:
        return unsignedKey(data.value.uint32);
    case CMPI_sint8:
        return signedKey(data.value.sint8); // NOLINT(bugprone-signed-char-misuse): a number, not a character
    case CMPI_sint16:
        return signedKey(data.value.sint16);
    case CMPI_sint32:
        return signedKey(data.value.sint32);
    default:
        return data;
    }
}

CMPIData getKey(const CMPIObjectPath* path, const char* name, CMPIStatus* status) {
    constexpr const char* function = "CMPIObjectPath.getKey";
    const auto* object = use<PathObject>(path, function);
    if (!object || !isGiven(name, function, "the name")) {
        fail(status, object ? CMPI_RC_ERR_INVALID_PARAMETER : CMPI_RC_ERR_INVALID_HANDLE);
        return absent();
    }
    if (object->played) {
        CMPIStatus outcome = {CMPI_RC_OK, nullptr};
        const CMPIData data = object->played->ft->getKey(object->played, name, &outcome);
        if (outcome.rc == CMPI_RC_OK) return handOut(Server::current().fromHost().value(data), function);
        if (status) *status = Server::current().toProvider(outcome, function);
        return absent();
    }
    const NamedValue* key = find(object->data.keys, name);
    fail(status, key ? CMPI_RC_OK : CMPI_RC_ERR_NOT_FOUND);
    return key ? keyData(key->value, function) : absent();
}

CMPIData getKeyAt(const CMPIObjectPath* path, CMPICount position, CMPIString** name, CMPIStatus* status) {
    constexpr const char* function = "CMPIObjectPath.getKeyAt";
    const auto* object = use<PathObject>(path, function);
    if (!object || position >= object->data.keys.size()) {
        fail(status, object ? CMPI_RC_ERR_NOT_FOUND : CMPI_RC_ERR_INVALID_HANDLE);
        return absent();
    }
    const NamedValue& key = object->data.keys[sortedPlaces(object->data.keys)[position]];
    if (name) *name = make<StringObject>(function, key.name)->shown();
    return keyData(key.value, function);
}

CMPICount getKeyCount(const CMPIObjectPath* path, CMPIStatus* status) {
    const auto* object = use<PathObject>(path, "CMPIObjectPath.getKeyCount");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return object ? static_cast<CMPICount>(object->data.keys.size()) : 0;
}

CMPIStatus setNameSpaceFrom(CMPIObjectPath* path, const CMPIObjectPath* source) {
    constexpr const char* function = "CMPIObjectPath.setNameSpaceFromObjectPath";
    auto* object = use<PathObject>(path, function);
    const auto* from = use<PathObject>(source, function);
    if (!object || !from) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    object->data.nameSpace = contentOf(*from).nameSpace;
    return answer(CMPI_RC_OK);
}

CMPIStatus setHostAndNameSpaceFrom(CMPIObjectPath* path, const CMPIObjectPath* source) {
    constexpr const char* function = "CMPIObjectPath.setHostAndNameSpaceFromObjectPath";
    auto* object = use<PathObject>(path, function);
    const auto* from = use<PathObject>(source, function);
    if (!object || !from) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    const PathData content = contentOf(*from);
    object->data.nameSpace = content.nameSpace;
    object->data.host = content.host;
    return answer(CMPI_RC_OK);
}

CMPIString* pathToString(const CMPIObjectPath* path, CMPIStatus* status) {
    constexpr const char* function = "CMPIObjectPath.toString";
    const auto* object = use<PathObject>(path, function);
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!object) return nullptr;
    const PathData content = contentOf(*object);
    return make<StringObject>(function, content.nameSpace.value_or("") + ':' + content.className)->shown();
}

} // namespace

PathData contentOf(const PathObject& path) {
    return path.played ? Server::current().fromHost().path(path.played) : path.data;
}

void* pathTable() {
    static void* table = [] {
        CMPIObjectPathFT whole{};
        whole.ftVersion = 1;
        whole.release = releasePath;
        whole.clone = clonePath;
        whole.setNameSpace = setNameSpace;
        whole.getNameSpace = getNameSpace;
        whole.setHostname = setHostname;
        whole.getHostname = getHostname;
        whole.setClassName = setClassName;
        whole.getClassName = getClassName;
        whole.addKey = addKey;
        whole.getKey = getKey;
        whole.getKeyAt = getKeyAt;
        whole.getKeyCount = getKeyCount;
        whole.setNameSpaceFromObjectPath = setNameSpaceFrom;
        whole.setHostAndNameSpaceFromObjectPath = setHostAndNameSpaceFrom;
        whole.toString = pathToString;
        return tableOfSize(whole, sizeof whole);
    }();
    return table;
}

} // namespace foreign_server
