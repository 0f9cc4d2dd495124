#include "plain_broker.h"

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

/* An object begins with the two words that providers see; hdl of a string is its text. */
typedef struct Item {
    struct Item* next;
    const char* name;
    CMPIData data;
} Item;

typedef struct Object {
    void* hdl;
    void* ft;
    char* nameSpace;
    char* className;
    Item* items;
    Item** end;
    unsigned count;
    unsigned doneCount;
    CMPIType type;
    CMPIData* elements;
    struct Object* path;
} Object;

typedef struct Block {
    struct Block* next;
} Block;

/* The newest scope of the thread is that of its request, or of its attachment. */
typedef struct Scope {
    struct Scope* outer;
    Block* blocks;
} Scope;

static __thread Scope* current;

PlainBroker plainBroker;

static const CMPIStatus ok = {CMPI_RC_OK, NULL};

static CMPIStatus refused(CMPIrc rc) {
    CMPIStatus status = {rc, NULL};
    return status;
}

static void fail(CMPIStatus* status, CMPIrc rc) {
    if (status) *status = refused(rc);
}

static void enter(const char* function) {
    const PlainHook hook = plainBroker.before;
    if (hook) hook(function);
}

static void* make(size_t size) {
    Block* block;
    if (!current) {
        fprintf(stderr, "plain broker: called on a thread that is not attached\n");
        abort();
    }
    block = calloc(1, sizeof(Block) + size);
    if (!block) abort();
    block->next = current->blocks;
    current->blocks = block;
    return block + 1;
}

static char* copyText(const char* text) {
    char* copy;
    if (!text) return NULL;
    copy = make(strlen(text) + 1);
    return strcpy(copy, text);
}

static Object* makeObject(void* table) {
    Object* object = make(sizeof(Object));
    object->hdl = object;
    object->ft = table;
    object->end = &object->items;
    return object;
}

void plainScopeBegin(void) {
    Scope* scope = calloc(1, sizeof *scope);
    if (!scope) abort();
    scope->outer = current;
    current = scope;
}

static void freeScope(Scope* scope) {
    while (scope->blocks) {
        Block* block = scope->blocks;
        scope->blocks = block->next;
        free(block);
    }
    free(scope);
}

void plainScopeEnd(void) {
    Scope* scope = current;
    current = scope->outer;
    freeScope(scope);
}

/* Strings */

static const char* stringText(const CMPIString* string, CMPIStatus* status) {
    (void)status;
    enter("getCharPtr");
    return string->hdl;
}

static CMPIStringFT stringTable = {1, NULL, NULL, stringText};

static CMPIString* makeString(const char* text) {
    Object* string = makeObject(&stringTable);
    string->hdl = copyText(text);
    return (CMPIString*)string;
}

/* Items: keys, properties and arguments alike */

static CMPIData stored(const CMPIValue* value, CMPIType type) {
    CMPIData data;
    memset(&data, 0, sizeof data);
    data.type = type;
    if (!value) {
        data.state = CMPI_nullValue;
    } else if (type == CMPI_chars) {
        data.type = CMPI_string;
        data.value.string = makeString((const char*)value);
    } else {
        data.value = *value;
    }
    return data;
}

static CMPIData* find(const Object* object, const char* name) {
    Item* item;
    for (item = object->items; item; item = item->next)
        if (name && item->name && strcasecmp(item->name, name) == 0) return &item->data;
    return NULL;
}

static CMPIStatus put(Object* object, const char* name, const CMPIValue* value, CMPIType type) {
    CMPIData* present = find(object, name);
    Item* item;
    if (present) {
        *present = stored(value, type);
        return ok;
    }
    item = make(sizeof *item);
    item->name = copyText(name);
    item->data = stored(value, type);
    *object->end = item;
    object->end = &item->next;
    ++object->count;
    return ok;
}

static CMPIData get(const Object* object, const char* name, CMPIStatus* status) {
    CMPIData absent;
    const CMPIData* data = find(object, name);
    if (data) return *data;
    memset(&absent, 0, sizeof absent);
    absent.state = CMPI_notFound;
    fail(status, CMPI_RC_ERR_NOT_FOUND);
    return absent;
}

static CMPIData getAt(const Object* object, CMPICount place, CMPIString** name, CMPIStatus* status) {
    Item* item = object->items;
    while (item && place-- > 0)
        item = item->next;
    if (item && name) *name = makeString(item->name);
    return get(object, item ? item->name : NULL, status);
}

static void copyItems(const Object* from, Object* to) {
    const Item* item;
    for (item = from->items; item; item = item->next) {
        put(to, item->name, NULL, item->data.type);
        *find(to, item->name) = item->data;
    }
}

/* Paths. What is released or cloned lives as long as the request all the same. */

static CMPIObjectPathFT pathTable;

static CMPIStatus pathRelease(CMPIObjectPath* path) {
    (void)path;
    return ok;
}

static Object* makePath(const char* nameSpace, const char* className) {
    Object* path = makeObject(&pathTable);
    path->nameSpace = copyText(nameSpace);
    path->className = copyText(className);
    return path;
}

static CMPIObjectPath* pathClone(const CMPIObjectPath* path, CMPIStatus* status) {
    const Object* original = (const Object*)path;
    Object* copy;
    (void)status;
    enter("clone");
    copy = makePath(original->nameSpace, original->className);
    copyItems(original, copy);
    return (CMPIObjectPath*)copy;
}

static CMPIStatus pathSetNameSpace(CMPIObjectPath* path, const char* nameSpace) {
    enter("setNameSpace");
    ((Object*)path)->nameSpace = copyText(nameSpace);
    return ok;
}

static CMPIString* pathNameSpace(const CMPIObjectPath* path, CMPIStatus* status) {
    (void)status;
    enter("getNameSpace");
    return makeString(((const Object*)path)->nameSpace);
}

static CMPIStatus pathSetClassName(CMPIObjectPath* path, const char* className) {
    enter("setClassName");
    ((Object*)path)->className = copyText(className);
    return ok;
}

static CMPIString* pathClassName(const CMPIObjectPath* path, CMPIStatus* status) {
    const char* className = ((const Object*)path)->className;
    (void)status;
    enter("getClassName");
    /* Servers answer a missing name in two ways; one of them for each kind of name. */
    return className ? makeString(className) : NULL;
}

static CMPIStatus pathAddKey(CMPIObjectPath* path, const char* name, const CMPIValue* value, const CMPIType type) {
    enter("addKey");
    return put((Object*)path, name, value, type);
}

static CMPIData pathGetKey(const CMPIObjectPath* path, const char* name, CMPIStatus* status) {
    enter("getKey");
    return get((const Object*)path, name, status);
}

static CMPIData pathGetKeyAt(const CMPIObjectPath* path, CMPICount place, CMPIString** name, CMPIStatus* status) {
    enter("getKeyAt");
    return getAt((const Object*)path, place, name, status);
}

static CMPICount pathGetKeyCount(const CMPIObjectPath* path, CMPIStatus* status) {
    (void)status;
    enter("getKeyCount");
    return ((const Object*)path)->count;
}

static CMPIObjectPathFT pathTable = {
    .ftVersion = 1,
    .release = pathRelease,
    .clone = pathClone,
    .setNameSpace = pathSetNameSpace,
    .getNameSpace = pathNameSpace,
    .setClassName = pathSetClassName,
    .getClassName = pathClassName,
    .addKey = pathAddKey,
    .getKey = pathGetKey,
    .getKeyAt = pathGetKeyAt,
    .getKeyCount = pathGetKeyCount,
};

/* Instances */

static CMPIData instanceGetProperty(const CMPIInstance* instance, const char* name, CMPIStatus* status) {
    enter("getProperty");
    return get((const Object*)instance, name, status);
}

static CMPIData instanceGetPropertyAt(const CMPIInstance* instance, CMPICount place, CMPIString** name,
                                      CMPIStatus* status) {
    enter("getPropertyAt");
    return getAt((const Object*)instance, place, name, status);
}

static CMPICount instanceGetPropertyCount(const CMPIInstance* instance, CMPIStatus* status) {
    (void)status;
    enter("getPropertyCount");
    return ((const Object*)instance)->count;
}

static CMPIStatus instanceSetProperty(const CMPIInstance* instance, const char* name, const CMPIValue* value,
                                      CMPIType type) {
    enter("setProperty");
    return put((Object*)instance, name, value, type);
}

static CMPIObjectPath* instancePath(const CMPIInstance* instance, CMPIStatus* status) {
    (void)status;
    enter("getObjectPath");
    return (CMPIObjectPath*)((const Object*)instance)->path;
}

static CMPIStatus instanceFilter(CMPIInstance* instance, const char** properties, const char** keys) {
    (void)instance;
    enter("setPropertyFilter");
    while (properties && *properties)
        ++properties;
    while (keys && *keys)
        ++keys;
    return ok;
}

static CMPIInstanceFT instanceTable = {
    .ftVersion = 1,
    .getProperty = instanceGetProperty,
    .getPropertyAt = instanceGetPropertyAt,
    .getPropertyCount = instanceGetPropertyCount,
    .setProperty = instanceSetProperty,
    .getObjectPath = instancePath,
    .setPropertyFilter = instanceFilter,
};

/* Arguments */

static CMPIStatus argsAdd(const CMPIArgs* args, const char* name, const CMPIValue* value, const CMPIType type) {
    enter("addArg");
    return put((Object*)args, name, value, type);
}

static CMPIData argsGet(const CMPIArgs* args, const char* name, CMPIStatus* status) {
    enter("getArg");
    return get((const Object*)args, name, status);
}

static CMPIData argsGetAt(const CMPIArgs* args, CMPICount place, CMPIString** name, CMPIStatus* status) {
    enter("getArgAt");
    return getAt((const Object*)args, place, name, status);
}

static CMPICount argsCount(const CMPIArgs* args, CMPIStatus* status) {
    (void)status;
    enter("getArgCount");
    return ((const Object*)args)->count;
}

static CMPIArgsFT argsTable = {1, NULL, NULL, argsAdd, argsGet, argsGetAt, argsCount};

/* Arrays */

static CMPICount arraySize(const CMPIArray* array, CMPIStatus* status) {
    (void)status;
    enter("getSize");
    return ((const Object*)array)->count;
}

static CMPIType arrayType(const CMPIArray* array, CMPIStatus* status) {
    (void)status;
    enter("getSimpleType");
    return ((const Object*)array)->type;
}

static CMPIData arrayGet(const CMPIArray* array, CMPICount place, CMPIStatus* status) {
    const Object* object = (const Object*)array;
    enter("getElementAt");
    if (place < object->count) return object->elements[place];
    return get(object, NULL, status);
}

static CMPIStatus arraySet(CMPIArray* array, CMPICount place, const CMPIValue* value, CMPIType type) {
    Object* object = (Object*)array;
    enter("setElementAt");
    if (place >= object->count) return refused(CMPI_RC_ERR_FAILED);
    object->elements[place] = stored(value, type);
    return ok;
}

static CMPIArrayFT arrayTable = {1, NULL, NULL, arraySize, arrayType, arrayGet, arraySet};

/* Dates are their microseconds. */

static CMPIUint64 dateMicroseconds(const CMPIDateTime* date, CMPIStatus* status) {
    (void)status;
    enter("getBinaryFormat");
    return ((const Object*)date)->elements->value.uint64;
}

static CMPIBoolean dateIsInterval(const CMPIDateTime* date, CMPIStatus* status) {
    (void)date, (void)status;
    enter("isInterval");
    return 0;
}

static CMPIDateTimeFT dateTable = {1, NULL, NULL, dateMicroseconds, NULL, dateIsInterval};

/* Contexts */

static CMPIStatus contextRelease(CMPIContext* context) {
    free(context);
    return ok;
}

static CMPIData contextGet(const CMPIContext* context, const char* name, CMPIStatus* status) {
    (void)context;
    enter("getEntry");
    return get((const Object*)context, name, status);
}

static CMPIContextFT contextTable = {.ftVersion = 1, .release = contextRelease, .getEntry = contextGet};

CMPIContext* plainContext(void) { return (CMPIContext*)makeObject(&contextTable); }

/* Results */

static CMPIStatus add(const CMPIResult* result, CMPIType type, const CMPIValue* value) {
    Object* object = (Object*)result;
    Item* item = make(sizeof *item);
    item->data = stored(value, type);
    *object->end = item;
    object->end = &item->next;
    ++object->count;
    return ok;
}

static CMPIStatus resultData(const CMPIResult* result, const CMPIValue* value, const CMPIType type) {
    enter("returnData");
    return add(result, type, value);
}

static CMPIStatus resultInstance(const CMPIResult* result, const CMPIInstance* instance) {
    CMPIValue value;
    enter("returnInstance");
    value.inst = (CMPIInstance*)instance;
    return add(result, CMPI_instance, &value);
}

static CMPIStatus resultPath(const CMPIResult* result, const CMPIObjectPath* path) {
    CMPIValue value;
    enter("returnObjectPath");
    value.ref = (CMPIObjectPath*)path;
    return add(result, CMPI_ref, &value);
}

static CMPIStatus resultDone(const CMPIResult* result) {
    enter("returnDone");
    ++((Object*)result)->doneCount;
    return ok;
}

static CMPIResultFT resultTable = {1, NULL, NULL, resultData, resultInstance, resultPath, resultDone, NULL};

CMPIResult* plainResult(void) { return (CMPIResult*)makeObject(&resultTable); }
CMPIObjectPath* plainPath(const char* nameSpace, const char* className) {
    return (CMPIObjectPath*)makePath(nameSpace, className);
}
CMPIArgs* plainArgs(void) { return (CMPIArgs*)makeObject(&argsTable); }

unsigned plainReturned(const CMPIResult* result) { return ((const Object*)result)->count; }
unsigned plainDoneCount(const CMPIResult* result) { return ((const Object*)result)->doneCount; }

static const CMPIData* returnedAt(const CMPIResult* result, unsigned place) {
    const Item* item = ((const Object*)result)->items;
    while (item && place-- > 0)
        item = item->next;
    return item ? &item->data : NULL;
}

const char* plainText(const CMPIResult* result, unsigned place, const char* name) {
    const CMPIData* returned = returnedAt(result, place);
    const CMPIData* data = returned ? find((const Object*)returned->value.inst, name) : NULL;
    return data && data->type == CMPI_string && data->value.string ? data->value.string->hdl : NULL;
}

unsigned plainNumber(const CMPIResult* result) {
    const CMPIData* returned = returnedAt(result, 0);
    return returned ? returned->value.uint32 : ~0U;
}

CMPIObjectPath* plainReturnedPath(const CMPIResult* result, unsigned place) {
    const CMPIData* returned = returnedAt(result, place);
    return returned ? returned->value.ref : NULL;
}

/* What makes objects */

static CMPIInstance* newInstance(const CMPIBroker* broker, const CMPIObjectPath* path, CMPIStatus* status) {
    Object* instance;
    (void)broker, (void)status;
    enter("newInstance");
    instance = makeObject(&instanceTable);
    instance->path = (Object*)path;
    copyItems((const Object*)path, instance);
    return (CMPIInstance*)instance;
}

static CMPIObjectPath* newObjectPath(const CMPIBroker* broker, const char* nameSpace, const char* className,
                                     CMPIStatus* status) {
    (void)broker, (void)status;
    enter("newObjectPath");
    return plainPath(nameSpace, className);
}

static CMPIArgs* newArgs(const CMPIBroker* broker, CMPIStatus* status) {
    (void)broker, (void)status;
    enter("newArgs");
    return plainArgs();
}

static CMPIString* newString(const CMPIBroker* broker, const char* text, CMPIStatus* status) {
    (void)broker, (void)status;
    enter("newString");
    return makeString(text);
}

static CMPIArray* newArray(const CMPIBroker* broker, CMPICount size, CMPIType type, CMPIStatus* status) {
    Object* array;
    (void)broker, (void)status;
    enter("newArray");
    array = makeObject(&arrayTable);
    array->count = size;
    array->type = type;
    array->elements = make((size + 1) * sizeof *array->elements);
    return (CMPIArray*)array;
}

static CMPIDateTime* makeDate(CMPIUint64 microseconds) {
    Object* date = makeObject(&dateTable);
    date->elements = make(sizeof *date->elements);
    date->elements->value.uint64 = microseconds;
    return (CMPIDateTime*)date;
}

static CMPIDateTime* newDateTime(const CMPIBroker* broker, CMPIStatus* status) {
    (void)broker, (void)status;
    enter("newDateTime");
    return makeDate(1);
}

static CMPIDateTime* newDateTimeFromBinary(const CMPIBroker* broker, CMPIUint64 microseconds, CMPIBoolean interval,
                                           CMPIStatus* status) {
    (void)broker, (void)interval, (void)status;
    enter("newDateTimeFromBinary");
    return makeDate(microseconds);
}

static CMPIBoolean classPathIsA(const CMPIBroker* broker, const CMPIObjectPath* path, const char* className,
                                CMPIStatus* status) {
    const char* own = ((const Object*)path)->className;
    (void)broker, (void)status;
    enter("classPathIsA");
    return own && className && strcasecmp(own, className) == 0;
}

static CMPIStatus logMessage(const CMPIBroker* broker, CMPISeverity severity, const char* id, const char* text,
                             const CMPIString* string) {
    (void)broker, (void)id, (void)string;
    enter("logMessage");
    ++plainBroker.messageCount;
    plainBroker.lastSeverity = severity;
    snprintf(plainBroker.lastMessage, sizeof plainBroker.lastMessage, "%s", text ? text : "");
    return ok;
}

/* Threads. A context of a thread holds the thread's scope. */

static CMPIContext* prepareAttachThread(const CMPIBroker* broker, const CMPIContext* context) {
    Object* made;
    (void)broker, (void)context;
    enter("prepareAttachThread");
    made = calloc(1, sizeof *made);
    if (!made) abort();
    made->hdl = made;
    made->ft = &contextTable;
    return (CMPIContext*)made;
}

static CMPIStatus attachThread(const CMPIBroker* broker, const CMPIContext* context) {
    (void)broker, (void)context;
    enter("attachThread");
    plainScopeBegin();
    return ok;
}

static CMPIStatus detachThread(const CMPIBroker* broker, const CMPIContext* context) {
    (void)broker;
    plainScopeEnd();
    free((void*)context);
    enter("detachThread");
    return ok;
}

static CMPIStatus deliverIndication(const CMPIBroker* broker, const CMPIContext* context, const char* nameSpace,
                                    const CMPIInstance* indication) {
    (void)broker, (void)context, (void)nameSpace, (void)indication;
    enter("deliverIndication");
    ++plainBroker.deliveredCount;
    return ok;
}

static void* newThread(void* (*function)(void*), void* argument, int detached) {
    pthread_t thread;
    (void)detached;
    enter("newThread");
    return pthread_create(&thread, NULL, function, argument) == 0 ? (void*)thread : NULL;
}

static int joinThread(void* thread, void** answer) {
    enter("joinThread");
    return pthread_join((pthread_t)thread, answer);
}

void plainBrokerReset(void) {
    memset(&plainBroker, 0, sizeof plainBroker);
    plainBroker.functions = (CMPIBrokerFT){
        .brokerName = "plain",
        .prepareAttachThread = prepareAttachThread,
        .attachThread = attachThread,
        .detachThread = detachThread,
        .deliverIndication = deliverIndication,
    };
    plainBroker.objects = (CMPIBrokerEncFT){
        .ftVersion = 1,
        .newInstance = newInstance,
        .newObjectPath = newObjectPath,
        .newArgs = newArgs,
        .newString = newString,
        .newArray = newArray,
        .newDateTime = newDateTime,
        .newDateTimeFromBinary = newDateTimeFromBinary,
        .classPathIsA = classPathIsA,
        .logMessage = logMessage,
    };
    plainBroker.threads = (CMPIBrokerExtFT){.ftVersion = 0, .newThread = newThread, .joinThread = joinThread};
    plainBroker.broker =
        (CMPIBroker){.bft = &plainBroker.functions, .eft = &plainBroker.objects, .xft = &plainBroker.threads};
}
