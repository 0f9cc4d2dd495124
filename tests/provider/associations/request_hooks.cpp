#include "request_hooks.h"

#include "broker_hooks.h"
#include "provider_host.h"

namespace {

// The tables' functions carry nothing but the object, so the hooks in place are found here.
RequestHooks* hooks = nullptr;
CMPIObjectPathFT* ownPaths = nullptr;
CMPIResultFT* ownResults = nullptr;
CMPIObjectPathFT watchedPaths;
CMPIResultFT watchedResults;

/// The broker knows its objects by their table: for the time of a call an object bears the broker's own.
template <class Object, class Table>
class OwnTable {
public:
    OwnTable(const Object* given, const Table& watched, Table* own) : object(const_cast<Object*>(given)) {
        wasWatched = object && object->ft == &watched;
        if (wasWatched) object->ft = own;
        watchedTable = const_cast<Table*>(&watched);
    }
    ~OwnTable() {
        if (wasWatched) object->ft = watchedTable;
    }
    OwnTable(const OwnTable&) = delete;
    OwnTable& operator=(const OwnTable&) = delete;

private:
    Object* object;
    Table* watchedTable = nullptr;
    bool wasWatched = false;
};

struct PlainPath : OwnTable<CMPIObjectPath, CMPIObjectPathFT> {
    explicit PlainPath(const CMPIObjectPath* path) : OwnTable(path, watchedPaths, ownPaths) {}
};

struct PlainResult : OwnTable<CMPIResult, CMPIResultFT> {
    explicit PlainResult(const CMPIResult* result) : OwnTable(result, watchedResults, ownResults) {}
};

/// A function of the table that only passes on.
template <auto slot>
struct PassedOn;

template <class Returned, class Object, class... Arguments, Returned (*CMPIObjectPathFT::*slot)(Object*, Arguments...)>
struct PassedOn<slot> {
    static Returned call(Object* object, Arguments... arguments) {
        const PlainPath plain(object);
        return (ownPaths->*slot)(object, arguments...);
    }
};

template <auto... slots>
void passOn() {
    ((watchedPaths.*slots = PassedOn<slots>::call), ...);
}

} // namespace

/// What the tables point to; a struct of its own so that it may look inside.
struct WatchedCalls {
    static CMPIStatus release(CMPIObjectPath* path) {
        path->ft = ownPaths;
        return ownPaths->release(path);
    }

    static CMPIObjectPath* clone(const CMPIObjectPath* path, CMPIStatus* status) {
        const PlainPath plain(path);
        CMPIObjectPath* copy = ownPaths->clone(path, status);
        if (copy && hooks->failingAddKey > 0) copy->ft = &watchedPaths;
        return copy;
    }

    static CMPIString* getNameSpace(const CMPIObjectPath* path, CMPIStatus* status) {
        return read(path, status, ownPaths->getNameSpace, hooks->failingNameSpaceRead, hooks->nameSpaceReads);
    }

    static CMPIString* getClassName(const CMPIObjectPath* path, CMPIStatus* status) {
        return read(path, status, ownPaths->getClassName, hooks->failingClassNameRead, hooks->classNameReads);
    }

    static CMPIData getKey(const CMPIObjectPath* path, const char* name, CMPIStatus* status) {
        const PlainPath plain(path);
        CMPIData data = ownPaths->getKey(path, name, status);
        if (hooks->keys == RequestHooks::Keys::asTheyAre) return data;
        data.value.string = nullptr;
        if (hooks->keys == RequestHooks::Keys::null) data.state = CMPI_nullValue;
        return data;
    }

    static CMPIStatus addKey(CMPIObjectPath* path, const char* name, const CMPIValue* value, CMPIType type) {
        if (hooks->refuses(hooks->failingAddKey, hooks->addedKeys)) return {RequestHooks::refusal, nullptr};
        const PlainPath plain(path);
        const PlainPath plainValue(type == CMPI_ref && value ? value->ref : nullptr);
        return ownPaths->addKey(path, name, value, type);
    }

    static CMPIStatus returnObjectPath(const CMPIResult* result, const CMPIObjectPath* path) {
        const PlainResult plain(result);
        const PlainPath plainPath(path);
        return ownResults->returnObjectPath(result, path);
    }

    static CMPIStatus returnInstance(const CMPIResult* result, const CMPIInstance* instance) {
        const PlainResult plain(result);
        return ownResults->returnInstance(result, instance);
    }

    static CMPIStatus returnDone(const CMPIResult* result) {
        const PlainResult plain(result);
        return ownResults->returnDone(result);
    }

    static CMPIBoolean classPathIsA(const CMPIBroker* broker, const CMPIObjectPath* path, const char* className,
                                    CMPIStatus* status) {
        const PlainPath plain(path);
        return hooks->ownObjects->classPathIsA(broker, path, className, status);
    }

    static CMPIInstance* newInstance(const CMPIBroker* broker, const CMPIObjectPath* path, CMPIStatus* status) {
        const PlainPath plain(path);
        return hooks->ownObjects->newInstance(broker, path, status);
    }

    static CMPIObjectPath* newObjectPath(const CMPIBroker* broker, const char* nameSpace, const char* className,
                                         CMPIStatus* status) {
        CMPIObjectPath* path = hooks->ownObjects->newObjectPath(broker, nameSpace, className, status);
        const bool isWatched = path && hooks->failingAddKey > 0 && hooks->associationClass == className;
        if (isWatched) path->ft = &watchedPaths;
        return path;
    }

private:
    using Getter = CMPIString* (*)(const CMPIObjectPath*, CMPIStatus*);

    static CMPIString* read(const CMPIObjectPath* path, CMPIStatus* status, Getter getter, unsigned failing,
                            unsigned& count) {
        if (hooks->refuses(failing, count)) {
            if (status) *status = {RequestHooks::refusal, nullptr};
            return nullptr;
        }
        const PlainPath plain(path);
        return getter(path, status);
    }
};

RequestHooks::RequestHooks(cimhost::Broker& broker)
    : table(const_cast<CMPIBroker&>(*brokerOfProvider(broker))), ownObjects(table.eft), objects(copyOf(table.eft)) {
    objects.classPathIsA = WatchedCalls::classPathIsA;
    objects.newInstance = WatchedCalls::newInstance;
    objects.newObjectPath = WatchedCalls::newObjectPath;
    table.eft = &objects;
    hooks = this;
}

RequestHooks::~RequestHooks() {
    table.eft = ownObjects;
    if (foreign_server::Server* server = foreign_server::Server::ifAny()) server->beforeNextRequest(nullptr);
    hooks = nullptr;
}

bool RequestHooks::refuses(unsigned failing, unsigned& count) {
    const bool isRefused = ++count == failing;
    refused = refused || isRefused;
    return isRefused;
}

void RequestHooks::watch(CMPIObjectPath* path, CMPIResult* result) {
    if (foreign_server::Server* server = foreign_server::Server::ifAny()) {
        server->beforeNextRequest([this](CMPIObjectPath* copy, CMPIResult* own) { watchProviders(copy, own); });
    } else {
        watchProviders(path, result);
    }
}

void RequestHooks::watchProviders(CMPIObjectPath* path, CMPIResult* result) {
    ownPaths = path->ft;
    ownResults = result->ft;
    watchedPaths = *ownPaths;
    watchedResults = copyOf(ownResults);
    passOn<&CMPIObjectPathFT::setNameSpace, &CMPIObjectPathFT::setHostname, &CMPIObjectPathFT::getHostname,
           &CMPIObjectPathFT::setClassName, &CMPIObjectPathFT::getKeyAt, &CMPIObjectPathFT::getKeyCount,
           &CMPIObjectPathFT::toString>();
    watchedPaths.release = WatchedCalls::release;
    watchedPaths.clone = WatchedCalls::clone;
    watchedPaths.getNameSpace = WatchedCalls::getNameSpace;
    watchedPaths.getClassName = WatchedCalls::getClassName;
    watchedPaths.getKey = WatchedCalls::getKey;
    watchedPaths.addKey = WatchedCalls::addKey;
    watchedResults.returnObjectPath = WatchedCalls::returnObjectPath;
    watchedResults.returnInstance = WatchedCalls::returnInstance;
    watchedResults.returnDone = WatchedCalls::returnDone;
    path->ft = &watchedPaths;
    result->ft = &watchedResults;
    nameSpaceReads = 0;
    classNameReads = 0;
    addedKeys = 0;
    refused = false;
}
