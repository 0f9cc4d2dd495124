#include "plain_broker.h"

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

/* A key, a property, an argument, an entry, an element, or what a result got. */
typedef struct Item {
    struct Item* next;
    const char* name;
    CMPIData data;
} Item;

/* An object of any kind begins with the two words that providers see; hdl of a string is its text. */
typedef struct Object {
    void* hdl;
    void* ft;
    char* host;
    char* nameSpace;
    char* className;
    Item* items;
    Item** end;
    unsigned count;
    unsigned walkedCount;    /* of an enumeration */
    unsigned doneCount;      /* of a result */
    CMPIType type;           /* of an array */
    CMPIUint64 microseconds; /* of a date */
    CMPIBoolean interval;
    CMPIObjectPath* path; /* of an instance */
    int isClone;          /* that nobody has released yet */
} Object;

typedef struct Block {
    struct Block* next;
} Block;

/* The newest scope of the thread is that of its request, or of its attachment. */
typedef struct Scope {
    struct Scope* outer;
    Block* blocks;
    const CMPIContext* attached; /* with what the thread was attached, if it was */
} Scope;

static __thread Scope* current;

PlainBroker plainBroker;

static const CMPIStatus ok = {CMPI_RC_OK, NULL};

static CMPIStatus refused(CMPIrc rc) {
    CMPIStatus status = {rc, NULL};
    return status;
}

/* CALL("function", .argument = ...) is the call that the hook is told of. */
#define CALL(...) (&(const PlainCall){.function = __VA_ARGS__})

/* Every function begins here. @return whether it may go on; if not, *status has what is to be answered. */
static int enter(CMPIStatus* status, const PlainCall* call) {
    const PlainHook hook = plainBroker.before;
    CMPIStatus answer = hook ? hook(call) : ok;
    if (call->broker && call->broker != &plainBroker.broker) answer = refused(CMPI_RC_ERR_INVALID_HANDLE);
    if (status && answer.rc != CMPI_RC_OK) *status = answer;
    return answer.rc == CMPI_RC_OK;
}

/* The same for a function without anything to do. */
static CMPIStatus entered(const PlainCall* call) {
    CMPIStatus status = ok;
    enter(&status, call);
    return status;
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

static Object* beginObject(Object* object, void* table) {
    object->hdl = object;
    object->ft = table;
    object->end = &object->items;
    return object;
}

static Object* makeObject(void* table) { return beginObject(make(sizeof(Object)), table); }

void plainScopeBegin(void) {
    Scope* scope = calloc(1, sizeof *scope);
    if (!scope) abort();
    scope->outer = current;
    current = scope;
}

void plainScopeEnd(void) {
    Scope* scope = current;
    current = scope->outer;
    while (scope->blocks) {
        Block* block = scope->blocks;
        scope->blocks = block->next;
        free(block);
    }
    free(scope);
}

/* What is released lives as long as the request all the same. Clones are there to be released, once. */
static CMPIStatus release(void* object) {
    Object* released = object;
    if (!released->isClone) __atomic_add_fetch(&plainBroker.releaseCount, 1, __ATOMIC_RELAXED);
    released->isClone = 0;
    return ok;
}

#define RELEASE(Kind)                                                                                                  \
    static CMPIStatus release##Kind(Kind* object) { return release(object); }

/* Of no object but a path there are clones. */
#define NO_CLONE(Kind)                                                                                                 \
    static Kind* clone##Kind(const Kind* object, CMPIStatus* status) {                                                 \
        (void)object;                                                                                                  \
        enter(status, CALL("clone"));                                                                                  \
        return NULL;                                                                                                   \
    }

#define RELEASE_AND_NO_CLONE(Kind)                                                                                     \
    RELEASE(Kind)                                                                                                      \
    NO_CLONE(Kind)

/* Strings */

RELEASE_AND_NO_CLONE(CMPIString)

static const char* getCharPtr(const CMPIString* string, CMPIStatus* status) {
    return enter(status, CALL("getCharPtr")) ? string->hdl : NULL;
}

static CMPIStringFT stringTable = {1, releaseCMPIString, cloneCMPIString, getCharPtr};

CMPIString* plainString(const char* text) {
    Object* string = makeObject(&stringTable);
    string->hdl = copyText(text);
    return (CMPIString*)string;
}

static CMPIString* stringOrNull(const char* text) { return text ? plainString(text) : NULL; }

/* Items */

static CMPIData stored(const CMPIValue* value, CMPIType type) {
    CMPIData data = {.type = type};
    if (!value)
        data.state = CMPI_nullValue;
    else if (type == CMPI_chars)
        data.value.chars = copyText((const char*)value);
    else
        data.value = *value;
    return data;
}

/* As stored, but chars are a string from then on. */
static CMPIData storedAsItem(const CMPIValue* value, CMPIType type) {
    CMPIValue string;
    if (!value || type != CMPI_chars) return stored(value, type);
    string.string = plainString((const char*)value);
    return stored(&string, CMPI_string);
}

static Item* itemAt(const void* holder, CMPICount place) {
    Item* item = ((const Object*)holder)->items;
    while (item && place-- > 0)
        item = item->next;
    return item;
}

static Item* find(const void* holder, const char* name) {
    Item* item = ((const Object*)holder)->items;
    while (item && !(name && item->name && strcasecmp(item->name, name) == 0))
        item = item->next;
    return item;
}

static Item* append(Object* object, const char* name) {
    Item* item = make(sizeof *item);
    item->name = copyText(name);
    *object->end = item;
    object->end = &item->next;
    ++object->count;
    return item;
}

static void copyItems(const void* from, Object* to) {
    const Item* item;
    for (item = ((const Object*)from)->items; item; item = item->next)
        append(to, item->name)->data = item->data;
}

static CMPIStatus put(const void* holder, const PlainCall* call) {
    CMPIStatus status = ok;
    Item* item;
    if (!enter(&status, call)) return status;
    item = find(holder, call->name);
    if (!item) item = append((Object*)holder, call->name);
    item->data = storedAsItem(call->value, call->type);
    return ok;
}

static CMPIData answered(const Item* item, const PlainCall* call, CMPIStatus* status) {
    const CMPIData absent = {.state = CMPI_nullValue | CMPI_notFound};
    if (!enter(status, call)) return absent;
    if (item) return item->data;
    if (status) *status = refused(plainBroker.absentRc);
    return absent;
}

static CMPIData getAt(const char* function, const void* holder, CMPICount place, CMPIString** name,
                      CMPIStatus* status) {
    const Item* item = itemAt(holder, place);
    if (item && name) *name = plainString(item->name);
    return answered(item, CALL(function, .name = item ? item->name : NULL), status);
}

static CMPICount countOf(const char* function, const void* holder, CMPIStatus* status) {
    return enter(status, CALL(function)) ? ((const Object*)holder)->count : 0;
}

/* The functions that a table has for keys, properties, arguments or entries. */
#define ITEM_FUNCTIONS(Holder, ChangedHolder, putItem, getItem)                                                        \
    static CMPIStatus putItem(ChangedHolder* holder, const char* name, const CMPIValue* value, CMPIType type) {        \
        return put(holder, CALL(#putItem, .name = name, .value = value, .type = type));                                \
    }                                                                                                                  \
    static CMPIData getItem(const Holder* holder, const char* name, CMPIStatus* status) {                              \
        return answered(find(holder, name), CALL(#getItem, .name = name), status);                                     \
    }                                                                                                                  \
    static CMPIData getItem##At(const Holder* holder, CMPICount place, CMPIString** name, CMPIStatus* status) {        \
        return getAt(#getItem "At", holder, place, name, status);                                                      \
    }                                                                                                                  \
    static CMPICount getItem##Count(const Holder* holder, CMPIStatus* status) {                                        \
        return countOf(#getItem "Count", holder, status);                                                              \
    }

/* Paths */

RELEASE(CMPIObjectPath)
ITEM_FUNCTIONS(CMPIObjectPath, CMPIObjectPath, addKey, getKey)

/* How one of its names is read and set. A name that is missing makes a string without text, or none. */
#define NAME_FUNCTIONS(Name, member, makeText)                                                                         \
    static CMPIString* get##Name(const CMPIObjectPath* path, CMPIStatus* status) {                                     \
        return enter(status, CALL("get" #Name)) ? makeText(((const Object*)path)->member) : NULL;                      \
    }                                                                                                                  \
    static CMPIStatus set##Name(CMPIObjectPath* path, const char* text) {                                              \
        CMPIStatus status = ok;                                                                                        \
        if (enter(&status, CALL("set" #Name, .text = text))) ((Object*)path)->member = copyText(text);                 \
        return status;                                                                                                 \
    }

/* Servers answer a missing name in two ways; one of them for each kind of name. */
NAME_FUNCTIONS(Hostname, host, plainString)
NAME_FUNCTIONS(NameSpace, nameSpace, plainString)
NAME_FUNCTIONS(ClassName, className, stringOrNull)

static CMPIObjectPath* clonePath(const CMPIObjectPath* path, CMPIStatus* status) {
    const Object* original = (const Object*)path;
    CMPIObjectPath* copy;
    if (!enter(status, CALL("clone"))) return NULL;
    copy = plainPath(original->nameSpace, original->className);
    copyItems(path, (Object*)copy);
    ((Object*)copy)->isClone = 1;
    return copy;
}

static CMPIObjectPathFT pathTable = {
    .ftVersion = 1,
    .release = releaseCMPIObjectPath,
    .clone = clonePath,
    .setNameSpace = setNameSpace,
    .getNameSpace = getNameSpace,
    .setHostname = setHostname,
    .getHostname = getHostname,
    .setClassName = setClassName,
    .getClassName = getClassName,
    .addKey = addKey,
    .getKey = getKey,
    .getKeyAt = getKeyAt,
    .getKeyCount = getKeyCount,
};

CMPIObjectPath* plainPath(const char* nameSpace, const char* className) {
    Object* path = makeObject(&pathTable);
    path->nameSpace = copyText(nameSpace);
    path->className = copyText(className);
    return (CMPIObjectPath*)path;
}

/* Instances */

RELEASE_AND_NO_CLONE(CMPIInstance)
ITEM_FUNCTIONS(CMPIInstance, const CMPIInstance, setProperty, getProperty)

static CMPIObjectPath* getObjectPath(const CMPIInstance* instance, CMPIStatus* status) {
    return enter(status, CALL("getObjectPath")) ? ((const Object*)instance)->path : NULL;
}

/* Reads both lists to their ends, as servers do. */
static CMPIStatus setPropertyFilter(CMPIInstance* instance, const char** properties, const char** keys) {
    const CMPIStatus status =
        entered(CALL("setPropertyFilter", .instance = instance, .properties = properties, .keys = keys));
    while (properties && *properties)
        ++properties;
    while (keys && *keys)
        ++keys;
    return status;
}

static CMPIInstanceFT instanceTable = {
    .ftVersion = 1,
    .release = releaseCMPIInstance,
    .clone = cloneCMPIInstance,
    .getProperty = getProperty,
    .getPropertyAt = getPropertyAt,
    .getPropertyCount = getPropertyCount,
    .setProperty = setProperty,
    .getObjectPath = getObjectPath,
    .setPropertyFilter = setPropertyFilter,
};

CMPIInstance* plainInstance(const CMPIObjectPath* path) {
    Object* instance = makeObject(&instanceTable);
    instance->path = (CMPIObjectPath*)path;
    if (path) copyItems(path, instance);
    return (CMPIInstance*)instance;
}

/* Arguments */

RELEASE_AND_NO_CLONE(CMPIArgs)
ITEM_FUNCTIONS(CMPIArgs, const CMPIArgs, addArg, getArg)

static CMPIArgsFT argsTable = {1, releaseCMPIArgs, cloneCMPIArgs, addArg, getArg, getArgAt, getArgCount};

CMPIArgs* plainArgs(void) { return (CMPIArgs*)makeObject(&argsTable); }

/* Arrays. An array of chars keeps them; an array grows by the element behind its last. */

RELEASE_AND_NO_CLONE(CMPIArray)

static CMPICount getSize(const CMPIArray* array, CMPIStatus* status) { return countOf("getSize", array, status); }

static CMPIType getSimpleType(const CMPIArray* array, CMPIStatus* status) {
    return enter(status, CALL("getSimpleType")) ? ((const Object*)array)->type : CMPI_null;
}

static CMPIData getElementAt(const CMPIArray* array, CMPICount place, CMPIStatus* status) {
    return answered(itemAt(array, place), CALL("getElementAt"), status);
}

static CMPIStatus setElementAt(CMPIArray* array, CMPICount place, const CMPIValue* value, CMPIType type) {
    Object* object = (Object*)array;
    CMPIStatus status = ok;
    if (!enter(&status, CALL("setElementAt", .value = value, .type = type))) return status;
    if (place > object->count) return refused(CMPI_RC_ERR_FAILED);
    (place < object->count ? itemAt(array, place) : append(object, NULL))->data = stored(value, type);
    return ok;
}

static CMPIArrayFT arrayTable = {1,           releaseCMPIArray, cloneCMPIArray, getSize, getSimpleType, getElementAt,
                                 setElementAt};

CMPIArray* plainArray(CMPICount size, CMPIType type) {
    Object* array = makeObject(&arrayTable);
    array->type = type;
    while (array->count < size)
        append(array, NULL);
    return (CMPIArray*)array;
}

/* Enumerations */

RELEASE_AND_NO_CLONE(CMPIEnumeration)

static CMPIData getNext(const CMPIEnumeration* enumeration, CMPIStatus* status) {
    return answered(itemAt(enumeration, ((Object*)enumeration)->walkedCount++), CALL("getNext"), status);
}

static CMPIBoolean hasNext(const CMPIEnumeration* enumeration, CMPIStatus* status) {
    const Object* object = (const Object*)enumeration;
    return enter(status, CALL("hasNext")) && object->walkedCount < object->count;
}

static CMPIArray* toArray(const CMPIEnumeration* enumeration, CMPIStatus* status) {
    CMPIArray* array;
    if (!enter(status, CALL("toArray"))) return NULL;
    array = plainArray(0, CMPI_ref);
    copyItems(enumeration, (Object*)array);
    return array;
}

static CMPIEnumerationFT enumerationTable = {1,      releaseCMPIEnumeration, cloneCMPIEnumeration, getNext, hasNext,
                                             toArray};

/* Dates */

RELEASE_AND_NO_CLONE(CMPIDateTime)

static CMPIUint64 getBinaryFormat(const CMPIDateTime* date, CMPIStatus* status) {
    return enter(status, CALL("getBinaryFormat")) ? ((const Object*)date)->microseconds : 0;
}

static CMPIBoolean isInterval(const CMPIDateTime* date, CMPIStatus* status) {
    return enter(status, CALL("isInterval")) && ((const Object*)date)->interval;
}

static CMPIDateTimeFT dateTable = {1, releaseCMPIDateTime, cloneCMPIDateTime, getBinaryFormat, NULL, isInterval};

static CMPIDateTime* makeDate(CMPIUint64 microseconds, CMPIBoolean interval) {
    Object* date = makeObject(&dateTable);
    date->microseconds = microseconds;
    date->interval = interval;
    return (CMPIDateTime*)date;
}

/* Contexts. One that was prepared for a thread is the provider's, until the thread is detached or the provider releases
 * it. To release the context of a request ends the program. */

NO_CLONE(CMPIContext)
ITEM_FUNCTIONS(CMPIContext, const CMPIContext, addEntry, getEntry)

static CMPIStatus releaseContext(CMPIContext* context) {
    free(context);
    return ok;
}

static CMPIContextFT contextTable = {1,          releaseContext, cloneCMPIContext, getEntry,
                                     getEntryAt, getEntryCount,  addEntry};

CMPIContext* plainContext(void) { return (CMPIContext*)makeObject(&contextTable); }

/* Results */

RELEASE_AND_NO_CLONE(CMPIResult)

static CMPIStatus returnData(const CMPIResult* result, const CMPIValue* value, const CMPIType type) {
    return put(result, CALL("returnData", .value = value, .type = type));
}

static CMPIStatus returnInstance(const CMPIResult* result, const CMPIInstance* instance) {
    const CMPIValue value = {.inst = (CMPIInstance*)instance};
    return put(result, CALL("returnInstance", .instance = instance, .value = &value, .type = CMPI_instance));
}

static CMPIStatus returnObjectPath(const CMPIResult* result, const CMPIObjectPath* path) {
    const CMPIValue value = {.ref = (CMPIObjectPath*)path};
    return put(result, CALL("returnObjectPath", .path = path, .value = &value, .type = CMPI_ref));
}

static CMPIStatus returnDone(const CMPIResult* result) {
    const CMPIStatus status = entered(CALL("returnDone"));
    ++((Object*)result)->doneCount;
    return status;
}

static CMPIResultFT resultTable = {
    1, releaseCMPIResult, cloneCMPIResult, returnData, returnInstance, returnObjectPath, returnDone, NULL};

CMPIResult* plainResult(void) { return (CMPIResult*)makeObject(&resultTable); }
unsigned plainReturned(const CMPIResult* result) { return ((const Object*)result)->count; }
unsigned plainDoneCount(const CMPIResult* result) { return ((const Object*)result)->doneCount; }

const char* plainText(const CMPIResult* result, unsigned place, const char* name) {
    const Item* returned = itemAt(result, place);
    const Item* item = returned ? find(returned->data.value.inst, name) : NULL;
    return item && item->data.type == CMPI_string && item->data.value.string ? item->data.value.string->hdl : NULL;
}

unsigned plainNumber(const CMPIResult* result) {
    const Item* returned = itemAt(result, 0);
    return returned ? returned->data.value.uint32 : ~0U;
}

CMPIObjectPath* plainReturnedPath(const CMPIResult* result, unsigned place) {
    const Item* returned = itemAt(result, place);
    return returned ? returned->data.value.ref : NULL;
}

/* What makes and tests objects */

static CMPIInstance* newInstance(const CMPIBroker* broker, const CMPIObjectPath* path, CMPIStatus* status) {
    return enter(status, CALL("newInstance", .broker = broker, .path = path)) ? plainInstance(path) : NULL;
}

static CMPIObjectPath* newObjectPath(const CMPIBroker* broker, const char* nameSpace, const char* className,
                                     CMPIStatus* status) {
    const PlainCall* call = CALL("newObjectPath", .broker = broker, .text = nameSpace, .name = className);
    return enter(status, call) ? plainPath(nameSpace, className) : NULL;
}

static CMPIArgs* newArgs(const CMPIBroker* broker, CMPIStatus* status) {
    return enter(status, CALL("newArgs", .broker = broker)) ? plainArgs() : NULL;
}

static CMPIString* newString(const CMPIBroker* broker, const char* text, CMPIStatus* status) {
    if (!enter(status, CALL("newString", .broker = broker, .text = text))) return NULL;
    if (!text && status) *status = refused(CMPI_RC_ERR_INVALID_PARAMETER);
    return stringOrNull(text);
}

static CMPIArray* newArray(const CMPIBroker* broker, CMPICount size, CMPIType type, CMPIStatus* status) {
    return enter(status, CALL("newArray", .broker = broker, .type = type)) ? plainArray(size, type) : NULL;
}

static CMPIDateTime* newDateTime(const CMPIBroker* broker, CMPIStatus* status) {
    return enter(status, CALL("newDateTime", .broker = broker)) ? makeDate(1, 0) : NULL;
}

static CMPIDateTime* newDateTimeFromBinary(const CMPIBroker* broker, CMPIUint64 microseconds, CMPIBoolean interval,
                                           CMPIStatus* status) {
    const PlainCall* call = CALL("newDateTimeFromBinary", .broker = broker);
    return enter(status, call) ? makeDate(microseconds, interval) : NULL;
}

static CMPIDateTime* newDateTimeFromChars(const CMPIBroker* broker, const char* text, CMPIStatus* status) {
    return enter(status, CALL("newDateTimeFromChars", .broker = broker, .text = text)) ? makeDate(2, 0) : NULL;
}

static CMPIBoolean classPathIsA(const CMPIBroker* broker, const CMPIObjectPath* path, const char* className,
                                CMPIStatus* status) {
    const char* own = ((const Object*)path)->className;
    if (!enter(status, CALL("classPathIsA", .broker = broker, .path = path, .name = className))) return 0;
    return own && className && strcasecmp(own, className) == 0;
}

static CMPIString* toString(const CMPIBroker* broker, const void* object, CMPIStatus* status) {
    (void)object;
    return enter(status, CALL("toString", .broker = broker)) ? plainString("an object") : NULL;
}

static CMPIBoolean isOfType(const CMPIBroker* broker, const void* object, const char* typeName, CMPIStatus* status) {
    if (!enter(status, CALL("isOfType", .broker = broker, .name = typeName))) return 0;
    return ((const Object*)object)->ft == &pathTable && strcmp(typeName, "CMPIObjectPath") == 0;
}

static CMPIStatus logMessage(const CMPIBroker* broker, CMPISeverity severity, const char* id, const char* text,
                             const CMPIString* string) {
    CMPIStatus status = ok;
    (void)id, (void)string;
    if (!enter(&status, CALL("logMessage", .broker = broker, .text = text))) return status;
    ++plainBroker.messageCount;
    plainBroker.lastSeverity = severity;
    snprintf(plainBroker.lastMessage, sizeof plainBroker.lastMessage, "%s", text ? text : "");
    return ok;
}

/* Threads */

static CMPIContext* prepareAttachThread(const CMPIBroker* broker, const CMPIContext* context) {
    Object* made;
    if (!enter(NULL, CALL("prepareAttachThread", .broker = broker, .context = context))) return NULL;
    made = calloc(1, sizeof *made);
    if (!made) abort();
    return (CMPIContext*)beginObject(made, &contextTable);
}

static CMPIStatus attachThread(const CMPIBroker* broker, const CMPIContext* context) {
    CMPIStatus status = ok;
    if (!enter(&status, CALL("attachThread", .broker = broker, .context = context))) return status;
    plainScopeBegin();
    current->attached = context;
    return ok;
}

/* Tells the hook last: it may throw. */
static CMPIStatus detachThread(const CMPIBroker* broker, const CMPIContext* context) {
    const PlainCall* call = CALL("detachThread", .broker = broker, .context = context);
    if (current->attached == context) {
        plainScopeEnd();
        free((void*)context);
    }
    return entered(call);
}

static CMPIStatus deliverIndication(const CMPIBroker* broker, const CMPIContext* context, const char* nameSpace,
                                    const CMPIInstance* indication) {
    const PlainCall* call =
        CALL("deliverIndication", .broker = broker, .context = context, .text = nameSpace, .instance = indication);
    CMPIStatus status = ok;
    if (enter(&status, call)) ++plainBroker.deliveredCount;
    return status;
}

static void* newThread(void* (*function)(void*), void* argument, int detached) {
    pthread_t thread;
    (void)detached;
    if (!enter(NULL, CALL("newThread"))) return NULL;
    return pthread_create(&thread, NULL, function, argument) == 0 ? (void*)thread : NULL;
}

static int joinThread(void* thread, void** answer) {
    return enter(NULL, CALL("joinThread")) ? pthread_join((pthread_t)thread, answer) : -1;
}

/* Operations. The server has no instances, and the name that it is asked with. */

#define OPERATION(...) CALL(__VA_ARGS__, .broker = broker, .context = context, .path = path)

static CMPIEnumeration* enumerateInstanceNames(const CMPIBroker* broker, const CMPIContext* context,
                                               const CMPIObjectPath* path, CMPIStatus* status) {
    Object* names;
    if (!enter(status, OPERATION("enumerateInstanceNames"))) return NULL;
    names = makeObject(&enumerationTable);
    append(names, NULL)->data = (CMPIData){.type = CMPI_ref, .value.ref = (CMPIObjectPath*)path};
    return (CMPIEnumeration*)names;
}

static CMPIEnumeration* enumerateInstances(const CMPIBroker* broker, const CMPIContext* context,
                                           const CMPIObjectPath* path, const char** properties, CMPIStatus* status) {
    if (!enter(status, OPERATION("enumerateInstances", .properties = properties))) return NULL;
    return (CMPIEnumeration*)makeObject(&enumerationTable);
}

static CMPIInstance* getInstance(const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path,
                                 const char** properties, CMPIStatus* status) {
    return enter(status, OPERATION("getInstance", .properties = properties)) ? plainInstance(path) : NULL;
}

static CMPIObjectPath* createInstance(const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path,
                                      const CMPIInstance* instance, CMPIStatus* status) {
    return enter(status, OPERATION("createInstance", .instance = instance)) ? plainPath("created", "Class") : NULL;
}

static CMPIStatus modifyInstance(const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path,
                                 const CMPIInstance* instance, const char** properties) {
    return entered(OPERATION("modifyInstance", .instance = instance, .properties = properties));
}

static CMPIStatus deleteInstance(const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* path) {
    return entered(OPERATION("deleteInstance"));
}

void plainBrokerReset(void) {
    memset(&plainBroker, 0, sizeof plainBroker);
    plainBroker.absentRc = CMPI_RC_ERR_NOT_FOUND;
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

void plainBrokerFillUp(void) {
    plainBroker.functions.enumerateInstanceNames = enumerateInstanceNames;
    plainBroker.functions.enumerateInstances = enumerateInstances;
    plainBroker.functions.getInstance = getInstance;
    plainBroker.functions.createInstance = createInstance;
    plainBroker.functions.modifyInstance = modifyInstance;
    plainBroker.functions.deleteInstance = deleteInstance;
    plainBroker.objects.newDateTimeFromChars = newDateTimeFromChars;
    plainBroker.objects.toString = toString;
    plainBroker.objects.isOfType = isOfType;
}
