/* A provider in plain C. It answers with what it was asked, and keeps a list of what happened to it. */
#include <stdio.h>
#include <string.h>

#include "cmpidt.h"
#include "cmpift.h"

static const CMPIBroker* broker;
static char events[4096];

/* What happened since the last call, one word after the other. */
CMPI_EXPORT const char* takeEvents(void);
const char* takeEvents(void) {
    static char taken[sizeof events];
    memcpy(taken, events, sizeof events);
    events[0] = '\0';
    return taken;
}

static void note(const char* event) {
    strncat(events, event, sizeof events - strlen(events) - 2);
    strcat(events, " ");
}

static CMPIStatus ok(void) {
    const CMPIStatus status = {CMPI_RC_OK, NULL};
    return status;
}

static CMPIStatus failure(CMPIrc rc, const char* text) {
    CMPIStatus status = {rc, NULL};
    if (text) status.msg = broker->eft->newString(broker, text, NULL);
    return status;
}

static const char* textOf(const CMPIString* string) { return string ? string->ft->getCharPtr(string, NULL) : "-"; }

static const char* orNone(const char* text) { return text ? text : "-"; }

static void appendList(char* text, size_t size, const char** list) {
    size_t length = strlen(text);
    if (!list) {
        snprintf(text + length, size - length, " all");
        return;
    }
    for (; *list; ++list) {
        length += (size_t)snprintf(text + length, size - length, " +%s", *list);
    }
}

static CMPIObjectPath* pathNamed(const CMPIObjectPath* like, const char* name) {
    CMPIObjectPath* path =
        broker->eft->newObjectPath(broker, textOf(like->ft->getNameSpace(like, NULL)), "Test_Thing", NULL);
    path->ft->addKey(path, "Name", (const CMPIValue*)name, CMPI_chars);
    return path;
}

static CMPIInstance* instanceNamed(const CMPIObjectPath* like, const char* name, const char* text) {
    CMPIInstance* instance = broker->eft->newInstance(broker, pathNamed(like, name), NULL);
    instance->ft->setProperty(instance, "Name", (const CMPIValue*)name, CMPI_chars);
    instance->ft->setProperty(instance, "Text", (const CMPIValue*)text, CMPI_chars);
    return instance;
}

static CMPIStatus give(const CMPIResult* result, CMPIInstance* instance) {
    result->ft->returnInstance(result, instance);
    return result->ft->returnDone(result);
}

static CMPIStatus givePath(const CMPIResult* result, CMPIObjectPath* path) {
    result->ft->returnObjectPath(result, path);
    return result->ft->returnDone(result);
}

/* "principal namespace flags language role" */
static void describeContext(char* text, size_t size, const CMPIContext* context) {
    static const char* const names[] = {CMPIPrincipal, CMPIInitNameSpace, CMPIAcceptLanguage, CMPIRole};
    const CMPIData flags = context->ft->getEntry(context, CMPIInvocationFlags, NULL);
    size_t length = (size_t)snprintf(text, size, "%u", flags.value.uint32);
    for (size_t place = 0; place < sizeof names / sizeof *names; ++place) {
        CMPIStatus status = {CMPI_RC_OK, NULL};
        const CMPIData entry = context->ft->getEntry(context, names[place], &status);
        length += (size_t)snprintf(text + length, size - length, " %s",
                                   status.rc == CMPI_RC_OK ? textOf(entry.value.string) : "-");
    }
}

/* Instances */

static CMPIStatus cleanUpInstances(CMPIInstanceMI* mi, const CMPIContext* context, CMPIBoolean terminating) {
    (void)mi;
    note(context->ft->getEntryCount(context, NULL) == 0 && terminating ? "instance" : "instance?");
    return ok();
}

static CMPIStatus enumerateInstanceNames(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                         const CMPIObjectPath* path) {
    (void)mi;
    (void)context;
    result->ft->returnObjectPath(result, pathNamed(path, "one"));
    return givePath(result, pathNamed(path, "two"));
}

static CMPIStatus enumerateInstances(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                     const CMPIObjectPath* path, const char** properties) {
    char text[200];
    (void)mi;
    describeContext(text, sizeof text, context);
    appendList(text, sizeof text, properties);
    return give(result, instanceNamed(path, "context", text));
}

/* The key says how the call ends. */
static CMPIStatus getInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                              const CMPIObjectPath* path, const char** properties) {
    const char* name = textOf(path->ft->getKey(path, "Name", NULL).value.string);
    (void)mi;
    (void)context;
    (void)properties;
    if (strcmp(name, "missing") == 0) return failure(CMPI_RC_ERR_NOT_FOUND, "no such thing");
    if (strcmp(name, "silent") == 0) return failure(CMPI_RC_ERR_NOT_FOUND, NULL);
    if (strcmp(name, "handle") == 0) return failure(CMPI_RC_ERR_INVALID_HANDLE, NULL);
    if (strcmp(name, "system") == 0) return failure(CMPI_RC_ERROR_SYSTEM, "disk is full");
    if (strcmp(name, "late") == 0) {
        give(result, instanceNamed(path, name, "given"));
        return failure(CMPI_RC_ERR_FAILED, "after all");
    }
    if (strcmp(name, "kind") == 0) return result->ft->returnObjectPath(result, path);
    return give(result, instanceNamed(path, name, "found"));
}

static CMPIStatus createInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                 const CMPIObjectPath* path, const CMPIInstance* instance) {
    (void)mi;
    (void)context;
    return givePath(result, pathNamed(path, textOf(instance->ft->getProperty(instance, "Name", NULL).value.string)));
}

static CMPIStatus modifyInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                 const CMPIObjectPath* path, const CMPIInstance* instance, const char** properties) {
    char text[200] = "modify";
    (void)mi;
    (void)context;
    (void)path;
    (void)instance;
    appendList(text, sizeof text, properties);
    note(text);
    return result->ft->returnDone(result);
}

static CMPIStatus deleteInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                 const CMPIObjectPath* path) {
    (void)mi;
    (void)context;
    note("delete");
    note(textOf(path->ft->getKey(path, "Name", NULL).value.string));
    return result->ft->returnDone(result);
}

static CMPIStatus execQuery(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                            const CMPIObjectPath* path, const char* query, const char* language) {
    (void)mi;
    (void)context;
    return give(result, instanceNamed(path, language, query));
}

static CMPIInstanceMIFT instanceTable = {
    CMPICurrentVersion,     CMPICurrentVersion, "instance",  cleanUpInstances,
    enumerateInstanceNames, enumerateInstances, getInstance, createInstance,
    modifyInstance,         deleteInstance,     execQuery,
};
static CMPIInstanceMI instanceMI = {NULL, &instanceTable};

/* Associations */

static CMPIStatus cleanUpAssociations(CMPIAssociationMI* mi, const CMPIContext* context, CMPIBoolean terminating) {
    (void)mi;
    (void)context;
    (void)terminating;
    note("association");
    return failure(CMPI_RC_ERR_FAILED, "not now");
}

static CMPIStatus associators(CMPIAssociationMI* mi, const CMPIContext* context, const CMPIResult* result,
                              const CMPIObjectPath* path, const char* association, const char* resultClass,
                              const char* role, const char* resultRole, const char** properties) {
    char text[200];
    char entries[100];
    (void)mi;
    describeContext(entries, sizeof entries, context);
    snprintf(text, sizeof text, "%s %s %s %s (%s)", orNone(association), orNone(resultClass), orNone(role),
             orNone(resultRole), entries);
    appendList(text, sizeof text, properties);
    return give(result, instanceNamed(path, "associators", text));
}

static CMPIStatus associatorNames(CMPIAssociationMI* mi, const CMPIContext* context, const CMPIResult* result,
                                  const CMPIObjectPath* path, const char* association, const char* resultClass,
                                  const char* role, const char* resultRole) {
    char text[200];
    (void)mi;
    (void)context;
    snprintf(text, sizeof text, "%s %s %s %s", orNone(association), orNone(resultClass), orNone(role),
             orNone(resultRole));
    return givePath(result, pathNamed(path, text));
}

static CMPIStatus references(CMPIAssociationMI* mi, const CMPIContext* context, const CMPIResult* result,
                             const CMPIObjectPath* path, const char* association, const char* role,
                             const char** properties) {
    char text[200];
    (void)mi;
    (void)context;
    snprintf(text, sizeof text, "%s %s", orNone(association), orNone(role));
    appendList(text, sizeof text, properties);
    return give(result, instanceNamed(path, "references", text));
}

static CMPIAssociationMIFT associationTable = {
    CMPICurrentVersion, CMPICurrentVersion, "association", cleanUpAssociations,
    associators,        associatorNames,    references,    NULL, /* referenceNames */
};
static CMPIAssociationMI associationMI = {NULL, &associationTable};

/* Methods */

static CMPIStatus cleanUpMethods(CMPIMethodMI* mi, const CMPIContext* context, CMPIBoolean terminating) {
    (void)mi;
    (void)context;
    (void)terminating;
    note("method");
    return ok();
}

static CMPIStatus invokeMethod(CMPIMethodMI* mi, const CMPIContext* context, const CMPIResult* result,
                               const CMPIObjectPath* path, const char* method, const CMPIArgs* in, CMPIArgs* out) {
    const CMPIUint32 code = 5;
    const CMPIData text = in->ft->getArg(in, "Text", NULL);
    (void)mi;
    (void)context;
    (void)path;
    out->ft->addArg(out, "Echo", &text.value, text.type);
    out->ft->addArg(out, "Method", (const CMPIValue*)method, CMPI_chars);
    if (strcmp(method, "Void") == 0) return ok();
    result->ft->returnData(result, (const CMPIValue*)&code, CMPI_uint32);
    return result->ft->returnDone(result);
}

static CMPIMethodMIFT methodTable = {
    CMPICurrentVersion, CMPICurrentVersion, "method", cleanUpMethods, invokeMethod,
};
static CMPIMethodMI methodMI = {NULL, &methodTable};

/* Indications */

static CMPIStatus cleanUpIndications(CMPIIndicationMI* mi, const CMPIContext* context, CMPIBoolean terminating) {
    (void)mi;
    (void)context;
    (void)terminating;
    note("indication");
    return ok();
}

static CMPIStatus noteFilter(const char* event, const CMPISelectExp* filter, const char* className,
                             const CMPIObjectPath* path, CMPIBoolean flag) {
    char text[200];
    snprintf(text, sizeof text, "%s(%s,%s,%s,%d)", event, textOf(filter->ft->getString(filter, NULL)), className,
             textOf(path->ft->getClassName(path, NULL)), flag);
    note(text);
    return ok();
}

static CMPIStatus activateFilter(CMPIIndicationMI* mi, const CMPIContext* context, const CMPISelectExp* filter,
                                 const char* className, const CMPIObjectPath* path, CMPIBoolean isFirst) {
    (void)mi;
    (void)context;
    return noteFilter("activate", filter, className, path, isFirst);
}

static CMPIStatus deActivateFilter(CMPIIndicationMI* mi, const CMPIContext* context, const CMPISelectExp* filter,
                                   const char* className, const CMPIObjectPath* path, CMPIBoolean isLast) {
    (void)mi;
    (void)context;
    noteFilter("deactivate", filter, className, path, isLast);
    return failure(CMPI_RC_ERR_ACCESS_DENIED, "not yours");
}

static CMPIStatus enableIndications(CMPIIndicationMI* mi, const CMPIContext* context) {
    char text[100];
    (void)mi;
    describeContext(text, sizeof text, context);
    note("enable:");
    note(text);
    return ok();
}

static CMPIStatus disableIndications(CMPIIndicationMI* mi, const CMPIContext* context) {
    (void)mi;
    (void)context;
    note("disable");
    return ok();
}

static CMPIIndicationMIFT indicationTable = {
    CMPICurrentVersion, CMPICurrentVersion, "indication",      cleanUpIndications, NULL, NULL,
    activateFilter,     deActivateFilter,   enableIndications, disableIndications,
};
static CMPIIndicationMI indicationMI = {NULL, &indicationTable};

/* Factories of a provider that has everything. */

#define FACTORY(provider, Kind, made)                                                                                  \
    CMPI_EXPORT CMPI##Kind##MI* provider##_Create_##Kind##MI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);      \
    CMPI##Kind##MI* provider##_Create_##Kind##MI(const CMPIBroker* server, const CMPIContext* context,                 \
                                                 CMPIStatus* status) {                                                 \
        (void)status;                                                                                                  \
        broker = server;                                                                                               \
        note(context->ft->getEntryCount(context, NULL) == 0 ? "made" #Kind : "made?" #Kind);                           \
        return made;                                                                                                   \
    }

FACTORY(Whole, Instance, &instanceMI)
FACTORY(Whole, Association, &associationMI)
FACTORY(Whole, Method, &methodMI)
FACTORY(Whole, Indication, &indicationMI)
FACTORY(InstancesOnly, Instance, &instanceMI)
FACTORY(Nothing, Instance, NULL)

/* A factory that fails the first time, with a message or without. */
CMPI_EXPORT CMPIInstanceMI* Failing_Create_InstanceMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
CMPIInstanceMI* Failing_Create_InstanceMI(const CMPIBroker* server, const CMPIContext* context, CMPIStatus* status) {
    static int calls;
    (void)context;
    broker = server;
    note("tried");
    if (++calls > 2) return &instanceMI;
    *status = failure(CMPI_RC_ERR_ACCESS_DENIED, calls == 1 ? "no hardware" : NULL);
    return &instanceMI;
}

/* A provider that leaves a thread behind until it is told. */
static volatile int mayEnd;

CMPI_EXPORT void endThread(void);
void endThread(void) { __atomic_store_n(&mayEnd, 1, __ATOMIC_SEQ_CST); }

static void* lingering(void* argument) {
    while (!__atomic_load_n(&mayEnd, __ATOMIC_SEQ_CST)) {
        broker->xft->threadSleep(1);
    }
    return argument;
}

CMPI_EXPORT CMPIInstanceMI* Lingering_Create_InstanceMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
CMPIInstanceMI* Lingering_Create_InstanceMI(const CMPIBroker* server, const CMPIContext* context, CMPIStatus* status) {
    (void)context;
    (void)status;
    broker = server;
    broker->xft->newThread(lingering, NULL, 1);
    return &instanceMI;
}
