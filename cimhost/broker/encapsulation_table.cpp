// The CMPIBrokerEncFT table: makers of objects, class tests, messages.

#include <chrono>

#include "cimhost/broker/broker.h"
#include "cimhost/broker/request_limit.h"
#include "cimhost/broker/result_collector.h"
#include "cimhost/broker/table_support.h"

namespace cimhost {
namespace {

// A larger array would be an error of the provider, and must not use up the host's memory.
constexpr CMPICount largestArray = 1U << 24;

void noteMaker(const CMPIBroker* broker) noexcept {
    if (currentBinding()) return;
    if (Broker* owner = Broker::from(broker)) owner->noteLeakingUnattachedCall();
}

// The broker of a call that would end a production server in a thread that is not attached.
Broker* checkedBroker(const CMPIBroker* broker, const char* function) noexcept {
    Broker* owner = Broker::from(broker);
    if (owner && !currentBinding()) owner->noteFatalUnattachedCall(function);
    return owner;
}

// If a management library tells wrong numbers, a provider may make objects without end.
bool isRequestFull(CMPIStatus* status) noexcept {
    if (!isFull(workArena())) return false;
    setStatus(status, CMPI_RC_ERR_FAILED);
    return true;
}

CMPIInstance* newInstance(const CMPIBroker* broker, const CMPIObjectPath* object, CMPIStatus* status) noexcept {
    Broker* owner = checkedBroker(broker, "newInstance");
    const ObjectPathObject* path = ObjectPathObject::from(object);
    if (isRequestFull(status)) return nullptr;
    setStatus(status, owner && path ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return owner && path ? ObjectMaker(*owner, workArena()).instance(*path) : nullptr;
}

CMPIObjectPath* newObjectPath(const CMPIBroker* broker, const char* nameSpace, const char* className,
                              CMPIStatus* status) noexcept {
    Broker* owner = checkedBroker(broker, "newObjectPath");
    if (isRequestFull(status)) return nullptr;
    setStatus(status, owner ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return owner ? ObjectMaker(*owner, workArena()).path(textOf(nameSpace), textOf(className)) : nullptr;
}

CMPIArgs* newArgs(const CMPIBroker* broker, CMPIStatus* status) noexcept {
    noteMaker(broker);
    setStatus(status, CMPI_RC_OK);
    return ArgsObject::make(workArena());
}

CMPIString* newString(const CMPIBroker* broker, const char* text, CMPIStatus* status) noexcept {
    noteMaker(broker);
    setStatus(status, text ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_PARAMETER);
    return text ? StringObject::make(workArena(), text) : nullptr;
}

CMPIArray* newArray(const CMPIBroker* broker, CMPICount size, CMPIType type, CMPIStatus* status) noexcept {
    noteMaker(broker);
    if (size > largestArray) {
        setStatus(status, CMPI_RC_ERR_FAILED);
        return nullptr;
    }
    ArrayObject* array = ArrayObject::make(workArena(), size, type);
    setStatus(status, array ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_DATA_TYPE);
    return array;
}

CMPIDateTime* dateTimeOrError(CMPIDateTime* dateTime, CMPIStatus* status) noexcept {
    setStatus(status, dateTime ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_PARAMETER);
    return dateTime;
}

CMPIDateTime* newDateTimeFromBinary(const CMPIBroker* broker, CMPIUint64 microseconds, CMPIBoolean isInterval,
                                    CMPIStatus* status) noexcept {
    noteMaker(broker);
    return dateTimeOrError(DateTimeObject::make(workArena(), microseconds, isInterval != 0), status);
}

CMPIDateTime* newDateTime(const CMPIBroker* broker, CMPIStatus* status) noexcept {
    using namespace std::chrono;
    const auto now = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    return newDateTimeFromBinary(broker, static_cast<CMPIUint64>(now), 0, status);
}

CMPIDateTime* newDateTimeFromChars(const CMPIBroker* broker, const char* text, CMPIStatus* status) noexcept {
    noteMaker(broker);
    return dateTimeOrError(DateTimeObject::make(workArena(), textOf(text)), status);
}

CMPISelectExp* newSelectExp(const CMPIBroker* broker, const char* query, const char* language, CMPIArray** projection,
                            CMPIStatus* status) noexcept {
    noteMaker(broker);
    if (projection) *projection = nullptr;
    setStatus(status, query ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_PARAMETER);
    return query ? SelectExpObject::make(workArena(), query, textOf(language)) : nullptr;
}

CMPIBoolean classPathIsA(const CMPIBroker* broker, const CMPIObjectPath* object, const char* className,
                         CMPIStatus* status) noexcept {
    checkedBroker(broker, "classPathIsA");
    const ObjectPathObject* path = ObjectPathObject::from(object);
    const CMPIrc code = !path                     ? CMPI_RC_ERR_INVALID_HANDLE
                        : !className              ? CMPI_RC_ERR_INVALID_PARAMETER
                        : !isLegalName(className) ? CMPI_RC_ERR_INVALID_CLASS
                                                  : CMPI_RC_OK;
    setStatus(status, code);
    if (code != CMPI_RC_OK) return 0;
    const ClassDeclaration* declared = path->declaration();
    return (declared ? declared->isA(className) : equalNames(path->className(), className)) ? 1 : 0;
}

// Every object begins with a handle and its table.
struct AnyObject {
    const void* hdl;
    const void* ft;
};

const char* typeNameOf(const void* object) noexcept {
    struct Row {
        const void* table;
        const char* name;
    };
    static constexpr Row rows[] = {
        {&tables::string, "CMPIString"},       {&tables::array, "CMPIArray"},
        {&tables::dateTime, "CMPIDateTime"},   {&tables::objectPath, "CMPIObjectPath"},
        {&tables::instance, "CMPIInstance"},   {&tables::args, "CMPIArgs"},
        {&tables::context, "CMPIContext"},     {&tables::result, "CMPIResult"},
        {&tables::selectExp, "CMPISelectExp"}, {&tables::enumeration, "CMPIEnumeration"},
    };
    const auto* any = static_cast<const AnyObject*>(object);
    if (!any || !any->hdl) return nullptr;
    for (const Row& row : rows) {
        if (row.table == any->ft) return row.name;
    }
    return nullptr;
}

CMPIBoolean isOfType(const CMPIBroker* /*broker*/, const void* object, const char* type, CMPIStatus* status) noexcept {
    const char* name = typeNameOf(object);
    setStatus(status, name ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return name && textOf(type) == name ? 1 : 0;
}

CMPIString* getType(const CMPIBroker* /*broker*/, const void* object, CMPIStatus* status) noexcept {
    const char* name = typeNameOf(object);
    setStatus(status, name ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return name ? StringObject::make(workArena(), name) : nullptr;
}

void appendProperties(std::string& out, const InstanceObject& instance) {
    instance.forEachSetProperty([&](std::string_view name, const PropertyDeclaration*, const CMPIData& data) {
        out += "\n  ";
        out += name;
        out += " = ";
        const bool isNull = (data.state & CMPI_nullValue) != 0;
        out += isNull ? "NULL" : (data.type & CMPI_ARRAY) != 0 ? "{...}" : "";
        appendValueText(out, data);
    });
}

// Paths and instances in readable form, texts and dates as they are, and the type of everything else.
CMPIString* toString(const CMPIBroker* /*broker*/, const void* object, CMPIStatus* status) noexcept {
    const char* name = typeNameOf(object);
    setStatus(status, name ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!name) return nullptr;
    std::string text;
    if (const auto* string = StringObject::from(static_cast<const CMPIString*>(object))) {
        text = string->text();
    } else if (const auto* dateTime = DateTimeObject::from(static_cast<const CMPIDateTime*>(object))) {
        text = dateTime->text();
    } else if (const auto* path = ObjectPathObject::from(static_cast<const CMPIObjectPath*>(object))) {
        path->appendText(text);
    } else if (const auto* instance = InstanceObject::from(static_cast<const CMPIInstance*>(object))) {
        instance->path(workArena())->appendText(text);
        appendProperties(text, *instance);
    } else {
        text = name;
    }
    return StringObject::make(workArena(), text);
}

// There are no message catalogues, so every message is its default text.
CMPIString* getMessage(const CMPIBroker* broker, const char* /*id*/, const char* defaultText, CMPIStatus* status,
                       CMPICount /*count*/, ...) noexcept {
    return newString(broker, defaultText ? defaultText : "", status);
}

CMPIString* getMessage2(const CMPIBroker* broker, const char* /*id*/, const CMPIMsgFileHandle /*file*/,
                        const char* defaultText, CMPIStatus* status, CMPICount /*count*/, ...) noexcept {
    return newString(broker, defaultText ? defaultText : "", status);
}

CMPIStatus writeLog(const CMPIBroker* broker, LogLevel level, const char* source, const char* text,
                    const CMPIString* string) noexcept {
    const Broker* owner = Broker::from(broker);
    if (!owner) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    const StringObject* object = StringObject::from(string);
    std::string line(textOf(source));
    if (!line.empty()) line += ": ";
    line += text ? textOf(text) : object ? object->text() : std::string_view();
    owner->log(level, line);
    return statusOf(CMPI_RC_OK);
}

CMPIStatus logMessage(const CMPIBroker* broker, CMPISeverity severity, const char* id, const char* text,
                      const CMPIString* string) noexcept {
    const LogLevel level = severity == CMPI_SEV_ERROR     ? LogLevel::error
                           : severity == CMPI_SEV_WARNING ? LogLevel::warning
                           : severity == CMPI_SEV_INFO    ? LogLevel::information
                                                          : LogLevel::trace;
    return writeLog(broker, level, id, text, string);
}

CMPIStatus trace(const CMPIBroker* broker, CMPILevel /*level*/, const char* component, const char* text,
                 const CMPIString* string) noexcept {
    return writeLog(broker, LogLevel::trace, component, text, string);
}

CMPIError* newCMPIError(const CMPIBroker* /*broker*/, const char* /*owner*/, const char* /*id*/, const char* /*text*/,
                        CMPIErrorSeverity /*severity*/, CMPIErrorProbableCause /*cause*/, CMPIrc /*code*/,
                        CMPIStatus* status) noexcept {
    setStatus(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return nullptr;
}

CMPIStatus openMessageFile(const CMPIBroker* /*broker*/, const char* /*file*/, CMPIMsgFileHandle* handle) noexcept {
    if (handle) *handle = nullptr;
    return statusOf(CMPI_RC_ERR_NOT_SUPPORTED);
}

CMPIStatus closeMessageFile(const CMPIBroker* /*broker*/, const CMPIMsgFileHandle /*handle*/) noexcept {
    return statusOf(CMPI_RC_ERR_NOT_SUPPORTED);
}

} // namespace

const CMPIBrokerEncFT tables::encapsulation = {
    CMPICurrentVersion,
    newInstance,
    newObjectPath,
    newArgs,
    newString,
    newArray,
    newDateTime,
    newDateTimeFromBinary,
    newDateTimeFromChars,
    newSelectExp,
    classPathIsA,
    toString,
    isOfType,
    getType,
    getMessage,
    logMessage,
    trace,
    newCMPIError,
    openMessageFile,
    closeMessageFile,
    getMessage2,
};

} // namespace cimhost
