// The broker's three tables.
#include "date_times.h"
#include "paths.h"
#include "refusing_slots.h"
#include "server.h"
#include "tables.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <pthread.h>
#include <utility>

namespace foreign_server {

namespace {

/// Null with the breach written down and the status set, unless the broker is the right one.
Server* own(const CMPIBroker* broker, const char* function, CMPIStatus* status = nullptr) {
    Server* server = Server::ifAny();
    if (server && server->isOwn(broker, function)) return server;
    fail(status, CMPI_RC_ERR_INVALID_HANDLE);
    return nullptr;
}

CMPIContext* prepareAttachThread(const CMPIBroker* broker, const CMPIContext* context) {
    constexpr const char* function = "prepareAttachThread";
    Server* server = own(broker, function);
    const auto* parent = use<ContextObject>(context, function);
    return server && parent ? server->prepare(*parent) : nullptr;
}

CMPIStatus attachThread(const CMPIBroker* broker, const CMPIContext* context) {
    Server* server = own(broker, "attachThread");
    return answer(server ? server->attach(context) : CMPI_RC_ERR_INVALID_HANDLE);
}

CMPIStatus detachThread(const CMPIBroker* broker, const CMPIContext* context) {
    Server* server = own(broker, "detachThread");
    return answer(server ? server->detach(context) : CMPI_RC_ERR_INVALID_HANDLE);
}

CMPIStatus deliverIndication(const CMPIBroker* broker, const CMPIContext* context, const char* nameSpace,
                             const CMPIInstance* indication) {
    constexpr const char* function = "deliverIndication";
    Server* server = own(broker, function);
    const auto* given = use<ContextObject>(context, function);
    const auto* object = use<InstanceObject>(indication, function);
    if (!server || !given || !object) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    if (!isGiven(nameSpace, function, "the namespace")) return answer(CMPI_RC_ERR_INVALID_PARAMETER);
    return answer(server->deliver(nameSpace, object->data));
}

CMPIInstance* newInstance(const CMPIBroker* broker, const CMPIObjectPath* path, CMPIStatus* status) {
    constexpr const char* function = "newInstance";
    const auto* object = own(broker, function, status) ? use<PathObject>(path, function) : nullptr;
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!object) return nullptr;
    auto* made = make<InstanceObject>(function);
    made->data.path = contentOf(*object);
    return made->shown();
}

CMPIObjectPath* newObjectPath(const CMPIBroker* broker, const char* nameSpace, const char* className,
                              CMPIStatus* status) {
    constexpr const char* function = "newObjectPath";
    if (!own(broker, function, status)) return nullptr;
    if (!isGiven(nameSpace, function, "the namespace") || !isGiven(className, function, "the class name")) {
        fail(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    auto* made = make<PathObject>(function);
    if (*nameSpace) made->data.nameSpace = nameSpace;
    made->data.className = className;
    return made->shown();
}

CMPIArgs* newArgs(const CMPIBroker* broker, CMPIStatus* status) {
    return own(broker, "newArgs", status) ? make<ArgsObject>("newArgs")->shown() : nullptr;
}

CMPIString* newString(const CMPIBroker* broker, const char* text, CMPIStatus* status) {
    constexpr const char* function = "newString";
    if (!own(broker, function, status)) return nullptr;
    return (text ? make<StringObject>(function, text) : make<StringObject>(function))->shown();
}

CMPIArray* newArray(const CMPIBroker* broker, CMPICount size, CMPIType type, CMPIStatus* status) {
    constexpr const char* function = "newArray";
    if (!own(broker, function, status)) return nullptr;
    auto* made = make<ArrayObject>(function);
    made->elementType = inwardType(elementOf(type));
    made->mayGrow = size == 0;
    made->isSet.resize(size);
    made->numbers.resize(numberSize(made->elementType) * size);
    if (numberSize(made->elementType) == 0) made->objects.resize(size);
    return made->shown();
}

CMPIDateTime* newDate(const CMPIBroker* broker, const char* function, CMPIStatus* status, DateTimeData data) {
    if (!own(broker, function, status)) return nullptr;
    auto* made = make<DateTimeObject>(function);
    made->data = std::move(data);
    return made->shown();
}

CMPIDateTime* newDateTime(const CMPIBroker* broker, CMPIStatus* status) {
    using namespace std::chrono;
    const auto now = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    return newDate(broker, "newDateTime", status, {"", static_cast<CMPIUint64>(now), false});
}

CMPIDateTime* newDateTimeFromBinary(const CMPIBroker* broker, CMPIUint64 microseconds, CMPIBoolean isInterval,
                                    CMPIStatus* status) {
    return newDate(broker, "newDateTimeFromBinary", status, {"", microseconds, isInterval != 0});
}

CMPIDateTime* newDateTimeFromChars(const CMPIBroker* broker, const char* text, CMPIStatus* status) {
    constexpr const char* function = "newDateTimeFromChars";
    if (!isGiven(text, function, "the text") || !isDateTime(text)) {
        fail(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    return newDate(broker, function, status, {text, 0, false});
}

CMPISelectExp* newSelectExp(const CMPIBroker* broker, const char* query, const char* language, CMPIArray** projection,
                            CMPIStatus* status) {
    constexpr const char* function = "newSelectExp";
    if (projection) *projection = nullptr;
    if (!own(broker, function, status)) return nullptr;
    if (!isGiven(query, function, "the query") || !isGiven(language, function, "the language")) {
        fail(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    auto* made = make<SelectExpObject>(function);
    made->query = query;
    made->language = language;
    return made->shown();
}

CMPIBoolean classPathIsA(const CMPIBroker* broker, const CMPIObjectPath* path, const char* className,
                         CMPIStatus* status) {
    constexpr const char* function = "classPathIsA";
    Server* server = own(broker, function, status);
    const auto* object = server ? use<PathObject>(path, function) : nullptr;
    if (!object || !isGiven(className, function, "the class name")) {
        fail(status, object ? CMPI_RC_ERR_INVALID_PARAMETER : CMPI_RC_ERR_INVALID_HANDLE);
        return 0;
    }
    if (!Scope::current()) violate(function, "called on a thread that is not attached");
    return server->isA(contentOf(*object), className) ? 1 : 0;
}

CMPIString* toString(const CMPIBroker* broker, const void* object, CMPIStatus* status) {
    constexpr const char* function = "toString";
    if (!own(broker, function, status) || !isGiven(object, function, "the object")) return nullptr;
    return make<StringObject>(function, "an object")->shown();
}

CMPIBoolean isOfType(const CMPIBroker*, const void*, const char*, CMPIStatus* status) {
    violate("isOfType", "servers of the field read the object's first word as a text");
    fail(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return 0;
}

CMPIString* getType(const CMPIBroker*, const void*, CMPIStatus* status) {
    violate("getType", "servers of the field read the object's first word as a text");
    fail(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return nullptr;
}

CMPIString* getMessage(const CMPIBroker* broker, const char*, const char* standard, CMPIStatus* status, CMPICount,
                       ...) {
    fail(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return newString(broker, standard, nullptr);
}

char* resolveFileName(const char*) { return nullptr; }

void* newThread(void* (*function)(void*), void* argument, int) {
    Server* server = Server::ifAny();
    return server && isGiven(reinterpret_cast<const void*>(function), "newThread", "the function")
               ? server->startThread(function, argument)
               : nullptr;
}

int threadOnce(int* flag, void (*function)(void)) {
    static std::mutex mutex;
    const std::lock_guard guard(mutex);
    if (std::exchange(*flag, 1) == 0) function();
    return 0;
}

int createThreadKey(CMPI_THREAD_KEY_TYPE* key, void (*cleanUp)(void*)) { return pthread_key_create(key, cleanUp); }
int destroyThreadKey(CMPI_THREAD_KEY_TYPE key) { return pthread_key_delete(key); }
void* getThreadSpecific(CMPI_THREAD_KEY_TYPE key) { return pthread_getspecific(key); }
int setThreadSpecific(CMPI_THREAD_KEY_TYPE key, void* value) { return pthread_setspecific(key, value); }

void* newMutex(int) { return std::make_unique<std::mutex>().release(); }
void destroyMutex(void* mutex) { const std::unique_ptr<std::mutex> owned(static_cast<std::mutex*>(mutex)); }
void lockMutex(void* mutex) { static_cast<std::mutex*>(mutex)->lock(); }
void unlockMutex(void* mutex) { static_cast<std::mutex*>(mutex)->unlock(); }

void* newCondition(int) { return std::make_unique<std::condition_variable>().release(); }
void destroyCondition(void* condition) {
    const std::unique_ptr<std::condition_variable> owned(static_cast<std::condition_variable*>(condition));
}

// Who waits here without a look at its own condition is woken for nothing.
int condWait(void*, void* mutex) {
    unlockMutex(mutex);
    std::this_thread::yield();
    lockMutex(mutex);
    return 0;
}

int timedCondWait(void* condition, void* mutex, timespec*) { return condWait(condition, mutex); }

} // namespace

CMPIBrokerFT* brokerTable() {
    static auto* made = static_cast<CMPIBrokerFT*>([] {
        CMPIBrokerFT table{};
        table.brokerCapabilities = CMPI_MB_BasicRead | CMPI_MB_Indications;
        table.brokerVersion = 0;
        table.brokerName = "Foreign server";
        table.prepareAttachThread = prepareAttachThread;
        table.attachThread = attachThread;
        table.detachThread = detachThread;
        table.deliverIndication = deliverIndication;
        FOREIGN_UNSERVED_SLOT(table, enumerateInstanceNames);
        FOREIGN_UNSERVED_SLOT(table, getInstance);
        FOREIGN_UNSERVED_SLOT(table, createInstance);
        FOREIGN_UNSERVED_SLOT(table, modifyInstance);
        FOREIGN_UNSERVED_SLOT(table, deleteInstance);
        FOREIGN_UNSERVED_SLOT(table, execQuery);
        FOREIGN_UNSERVED_SLOT(table, enumerateInstances);
        FOREIGN_UNSERVED_SLOT(table, associators);
        FOREIGN_UNSERVED_SLOT(table, associatorNames);
        FOREIGN_UNSERVED_SLOT(table, references);
        FOREIGN_UNSERVED_SLOT(table, referenceNames);
        FOREIGN_UNSERVED_SLOT(table, invokeMethod);
        FOREIGN_UNSERVED_SLOT(table, setProperty);
        FOREIGN_UNSERVED_SLOT(table, getProperty);
        return tableOfSize(table, sizeof table);
    }());
    return made;
}

CMPIBrokerEncFT* encapsulationTable() {
    static auto* made = static_cast<CMPIBrokerEncFT*>([] {
        CMPIBrokerEncFT table{};
        table.ftVersion = 1;
        table.newInstance = newInstance;
        table.newObjectPath = newObjectPath;
        table.newArgs = newArgs;
        table.newString = newString;
        table.newArray = newArray;
        table.newDateTime = newDateTime;
        table.newDateTimeFromBinary = newDateTimeFromBinary;
        table.newDateTimeFromChars = newDateTimeFromChars;
        table.newSelectExp = newSelectExp;
        table.classPathIsA = classPathIsA;
        table.toString = toString;
        table.isOfType = isOfType;
        table.getType = getType;
        table.getMessage = getMessage;
        FOREIGN_UNSERVED_SLOT(table, logMessage);
        FOREIGN_UNSERVED_SLOT(table, trace);
        return tableOfSize(table, offsetof(CMPIBrokerEncFT, newCMPIError));
    }());
    return made;
}

CMPIBrokerExtFT* extensionTable() {
    static auto* made = static_cast<CMPIBrokerExtFT*>([] {
        CMPIBrokerExtFT table{};
        table.ftVersion = 100;
        table.resolveFileName = resolveFileName;
        table.newThread = newThread;
        table.threadOnce = threadOnce;
        table.createThreadKey = createThreadKey;
        table.destroyThreadKey = destroyThreadKey;
        table.getThreadSpecific = getThreadSpecific;
        table.setThreadSpecific = setThreadSpecific;
        table.newMutex = newMutex;
        table.destroyMutex = destroyMutex;
        table.lockMutex = lockMutex;
        table.unlockMutex = unlockMutex;
        table.newCondition = newCondition;
        table.destroyCondition = destroyCondition;
        table.condWait = condWait;
        table.timedCondWait = timedCondWait;
        return tableOfSize(table, sizeof table);
    }());
    return made;
}

void* tableOf(Kind kind) {
    static void* const tables[] = {stringTable(), arrayTable(),   dateTimeTable(), pathTable(),     instanceTable(),
                                   argsTable(),   contextTable(), resultTable(),   selectExpTable()};
    return tables[static_cast<std::size_t>(kind)];
}

} // namespace foreign_server
