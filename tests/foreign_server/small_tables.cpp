// Strings, dates, arguments, contexts, results and select expressions.
#include "date_times.h"
#include "played.h"
#include "tables.h"

namespace foreign_server {

namespace {

CMPIStatus releaseString(CMPIString* string) { return answer(release(string, Kind::string, "CMPIString.release")); }

CMPIString* cloneString(const CMPIString* string, CMPIStatus* status) {
    const auto* object = use<StringObject>(string, "CMPIString.clone");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!object) return nullptr;
    const char* text = object->text.get();
    return (text ? makeClone<StringObject>(text) : makeClone<StringObject>())->shown();
}

const char* getCharPtr(const CMPIString* string, CMPIStatus* status) {
    const auto* object = use<StringObject>(string, "CMPIString.getCharPtr");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return object ? object->text.get() : nullptr;
}

CMPIStatus releaseDate(CMPIDateTime* date) { return answer(release(date, Kind::dateTime, "CMPIDateTime.release")); }

CMPIDateTime* cloneDate(const CMPIDateTime* date, CMPIStatus* status) {
    const auto* object = use<DateTimeObject>(date, "CMPIDateTime.clone");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!object) return nullptr;
    auto* copy = makeClone<DateTimeObject>();
    copy->data = object->data;
    return copy->shown();
}

CMPIUint64 getBinaryFormat(const CMPIDateTime* date, CMPIStatus* status) {
    const auto* object = use<DateTimeObject>(date, "CMPIDateTime.getBinaryFormat");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return object ? microsecondsOf(object->data) : 0;
}

CMPIString* getStringFormat(const CMPIDateTime* date, CMPIStatus* status) {
    constexpr const char* function = "CMPIDateTime.getStringFormat";
    const auto* object = use<DateTimeObject>(date, function);
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return object ? make<StringObject>(function, textOf(object->data))->shown() : nullptr;
}

CMPIBoolean isInterval(const CMPIDateTime* date, CMPIStatus* status) {
    const auto* object = use<DateTimeObject>(date, "CMPIDateTime.isInterval");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return object && isIntervalOf(object->data) ? 1 : 0;
}

CMPIStatus releaseArgs(CMPIArgs* args) { return answer(release(args, Kind::args, "CMPIArgs.release")); }

CMPIArgs* cloneArgs(const CMPIArgs* args, CMPIStatus* status) {
    const auto* object = use<ArgsObject>(args, "CMPIArgs.clone");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!object) return nullptr;
    auto* copy = makeClone<ArgsObject>();
    copy->values = object->values;
    copy->played = object->played;
    return copy->shown();
}

CMPIStatus addArg(const CMPIArgs* args, const char* name, const CMPIValue* value, CMPIType type) {
    constexpr const char* function = "CMPIArgs.addArg";
    auto* object = use<ArgsObject>(args, function);
    if (!object) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    if (!isGiven(name, function, "the name")) return answer(CMPI_RC_ERR_INVALID_PARAMETER);
    Value taken;
    const CMPIrc code = take(value, type, taken, function);
    if (code == CMPI_RC_OK) set(object->values, name, std::move(taken));
    return answer(code);
}

CMPIData getArg(const CMPIArgs* args, const char* name, CMPIStatus* status) {
    constexpr const char* function = "CMPIArgs.getArg";
    const auto* object = use<ArgsObject>(args, function);
    if (!object || !isGiven(name, function, "the name")) {
        fail(status, object ? CMPI_RC_ERR_INVALID_PARAMETER : CMPI_RC_ERR_INVALID_HANDLE);
        return absent();
    }
    if (object->played) return readPlayed(object->played, name, status, function);
    const NamedValue* value = find(object->values, name);
    fail(status, value ? CMPI_RC_OK : CMPI_RC_ERR_NOT_FOUND);
    return value ? handOut(value->value, function) : absent();
}

CMPIData getArgAt(const CMPIArgs* args, CMPICount position, CMPIString** name, CMPIStatus* status) {
    constexpr const char* function = "CMPIArgs.getArgAt";
    const auto* object = use<ArgsObject>(args, function);
    if (object) return valueAt(object->values, position, name, status, CMPI_RC_ERR_NOT_FOUND, function);
    fail(status, CMPI_RC_ERR_INVALID_HANDLE);
    return absent();
}

CMPICount getArgCount(const CMPIArgs* args, CMPIStatus* status) {
    const auto* object = use<ArgsObject>(args, "CMPIArgs.getArgCount");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return object ? static_cast<CMPICount>(object->values.size()) : 0;
}

/// Names of entries compare with case here.
const NamedValue* findEntry(const ContextObject& context, const char* name) {
    for (const NamedValue& entry : context.entries) {
        if (entry.name == name) return &entry;
    }
    return nullptr;
}

CMPIData getEntry(const CMPIContext* context, const char* name, CMPIStatus* status) {
    constexpr const char* function = "CMPIContext.getEntry";
    const auto* object = use<ContextObject>(context, function);
    if (!object || !isGiven(name, function, "the name")) {
        fail(status, object ? CMPI_RC_ERR_INVALID_PARAMETER : CMPI_RC_ERR_INVALID_HANDLE);
        return absent();
    }
    const NamedValue* entry = findEntry(*object, name);
    fail(status, entry ? CMPI_RC_OK : CMPI_RC_ERR_NO_SUCH_PROPERTY);
    return entry ? handOut(entry->value, function) : absent();
}

CMPIData getEntryAt(const CMPIContext* context, CMPICount position, CMPIString** name, CMPIStatus* status) {
    constexpr const char* function = "CMPIContext.getEntryAt";
    const auto* object = use<ContextObject>(context, function);
    if (object) return valueAt(object->entries, position, name, status, CMPI_RC_ERR_NO_SUCH_PROPERTY, function);
    fail(status, CMPI_RC_ERR_INVALID_HANDLE);
    return absent();
}

CMPICount getEntryCount(const CMPIContext* context, CMPIStatus* status) {
    const auto* object = use<ContextObject>(context, "CMPIContext.getEntryCount");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return object ? static_cast<CMPICount>(object->entries.size()) : 0;
}

CMPIStatus addEntry(const CMPIContext* context, const char* name, const CMPIValue* value, CMPIType type) {
    constexpr const char* function = "CMPIContext.addEntry";
    auto* object = use<ContextObject>(context, function);
    if (!object) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    if (!isGiven(name, function, "the name")) return answer(CMPI_RC_ERR_INVALID_PARAMETER);
    Value taken;
    const CMPIrc code = take(value, type, taken, function);
    if (code == CMPI_RC_OK) object->entries.push_back({name, std::move(taken)});
    return answer(code);
}

/// Keeps what the provider returns, as it is at this moment. Which kind a request wants is not looked at here.
CMPIStatus keep(const CMPIResult* result, const CMPIValue* value, CMPIType type, const char* function) {
    auto* object = use<ResultObject>(result, function);
    if (!object) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    if (object->doneCount > 0) violate(function, "returned behind returnDone");
    Value taken;
    const CMPIrc code = take(value, type, taken, function);
    if (code == CMPI_RC_OK) object->returned.push_back(std::move(taken));
    return answer(code);
}

CMPIStatus returnData(const CMPIResult* result, const CMPIValue* value, CMPIType type) {
    constexpr const char* function = "CMPIResult.returnData";
    // A production server ends the process.
    if (type == CMPI_ref) violate(function, "a reference as data");
    if (!isGiven(value, function, "the value")) return answer(CMPI_RC_ERR_INVALID_PARAMETER);
    return keep(result, value, type, function);
}

CMPIStatus returnInstance(const CMPIResult* result, const CMPIInstance* instance) {
    constexpr const char* function = "CMPIResult.returnInstance";
    if (!use<InstanceObject>(instance, function)) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    CMPIValue value{};
    value.inst = const_cast<CMPIInstance*>(instance);
    return keep(result, &value, CMPI_instance, function);
}

CMPIStatus returnObjectPath(const CMPIResult* result, const CMPIObjectPath* path) {
    constexpr const char* function = "CMPIResult.returnObjectPath";
    if (!use<PathObject>(path, function)) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    CMPIValue value{};
    value.ref = const_cast<CMPIObjectPath*>(path);
    return keep(result, &value, CMPI_ref, function);
}

CMPIStatus returnDone(const CMPIResult* result) {
    auto* object = use<ResultObject>(result, "CMPIResult.returnDone");
    if (!object) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    ++object->doneCount;
    return answer(CMPI_RC_OK);
}

CMPIStatus releaseExpression(CMPISelectExp* expression) {
    return answer(release(expression, Kind::selectExp, "CMPISelectExp.release"));
}

CMPISelectExp* cloneExpression(const CMPISelectExp* expression, CMPIStatus* status) {
    const auto* object = use<SelectExpObject>(expression, "CMPISelectExp.clone");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!object) return nullptr;
    auto* copy = makeClone<SelectExpObject>();
    copy->query = object->query;
    copy->language = object->language;
    return copy->shown();
}

CMPIString* getString(const CMPISelectExp* expression, CMPIStatus* status) {
    constexpr const char* function = "CMPISelectExp.getString";
    const auto* object = use<SelectExpObject>(expression, function);
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return object ? make<StringObject>(function, object->query)->shown() : nullptr;
}

CMPIBoolean evaluate(const CMPISelectExp*, const CMPIInstance*, CMPIStatus* status) {
    fail(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return 0;
}

CMPIBoolean evaluateUsingAccessor(const CMPISelectExp*, CMPIAccessor*, void*, CMPIStatus* status) {
    fail(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return 0;
}

CMPISelectCond* noCondition(const CMPISelectExp*, CMPIStatus* status) {
    fail(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return nullptr;
}

} // namespace

void* stringTable() {
    static void* table = tableOfSize(CMPIStringFT{1, releaseString, cloneString, getCharPtr}, sizeof(CMPIStringFT));
    return table;
}

void* dateTimeTable() {
    static void* table =
        tableOfSize(CMPIDateTimeFT{1, releaseDate, cloneDate, getBinaryFormat, getStringFormat, isInterval},
                    sizeof(CMPIDateTimeFT));
    return table;
}

void* argsTable() {
    static void* table =
        tableOfSize(CMPIArgsFT{1, releaseArgs, cloneArgs, addArg, getArg, getArgAt, getArgCount}, sizeof(CMPIArgsFT));
    return table;
}

void* contextTable() {
    static void* table =
        tableOfSize(CMPIContextFT{1, releaseContext, nullptr, getEntry, getEntryAt, getEntryCount, addEntry},
                    sizeof(CMPIContextFT));
    return table;
}

void* resultTable() {
    // Neither release nor clone; returnError came with a later level.
    static void* table = tableOfSize(
        CMPIResultFT{1, nullptr, nullptr, returnData, returnInstance, returnObjectPath, returnDone, nullptr},
        offsetof(CMPIResultFT, returnError));
    return table;
}

void* selectExpTable() {
    static void* table = tableOfSize(CMPISelectExpFT{1, releaseExpression, cloneExpression, evaluate, getString,
                                                     noCondition, noCondition, evaluateUsingAccessor},
                                     sizeof(CMPISelectExpFT));
    return table;
}

} // namespace foreign_server
