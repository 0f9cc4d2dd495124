/* A small CIM server's side of the CMPI tables, in plain C: version words of 1 and 0, memory from malloc alone, strings
 * without text where a name is missing, statuses written on errors only. Knows no classes: a path is of its own class
 * and of no other. A test sees each call and may let it fail. */
#ifndef PLAIN_BROKER_H
#define PLAIN_BROKER_H

#include "cmpidt.h"
#include "cmpift.h"

#ifdef __cplusplus
#include <atomic>
extern "C" {
#endif

/* A call of a table's function. What is none of its arguments is NULL; pointers are good until the call ends. */
typedef struct PlainCall {
    const char* function; /* as its slot is called, objects' included */
    const CMPIBroker* broker;
    const CMPIContext* context;
    const CMPIObjectPath* path;
    const CMPIInstance* instance;
    const char** properties;
    const char** keys; /* of a filter */
    const char* name;  /* of a class, or of a key, property, argument or entry */
    const char* text;  /* of a namespace, a name that a path is given, a string, a date or a message */
    const CMPIValue* value;
    CMPIType type; /* of the value. Of CMPI_chars the value is the text itself */
} PlainCall;

/* Its answer is that of the function, which does nothing more unless it is CMPI_RC_OK. May throw. A test sets it while
 * the provider's thread calls. */
typedef CMPIStatus (*PlainHook)(const PlainCall* call);
#ifdef __cplusplus
typedef std::atomic<PlainHook> PlainHookSlot;
#else
typedef _Atomic(PlainHook) PlainHookSlot;
#endif

typedef struct PlainBroker {
    CMPIBroker broker; /* to be handed to factories; calls with another are refused */
    /* Copies of a test's own: it may empty and fill slots before the provider sees them. */
    CMPIBrokerFT functions;
    CMPIBrokerEncFT objects;
    CMPIBrokerExtFT threads;
    /* Called by every function before it does anything, if set. Not by release, which is called where nothing may be
     * thrown, and at the end of detachThread. */
    PlainHookSlot before;
    /* The code for what an object lacks: servers differ in it. */
    CMPIrc absentRc;
    /* What the provider wrote to the server's log. */
    unsigned messageCount;
    CMPISeverity lastSeverity;
    char lastMessage[600];
    unsigned deliveredCount;
    unsigned releaseCount; /* of objects that are neither clones nor contexts */
} PlainBroker;

/* There is one such server in a process. */
extern PlainBroker plainBroker;
/* As at the start of the program: the few slots that any server fills. */
void plainBrokerReset(void);
/* Fills those slots, too, for which the wrapper classes have calls: operations, texts of objects, dates from texts. */
void plainBrokerFillUp(void);

/* What a thread makes between the two is freed at the end; outside of a scope the server makes nothing. */
void plainScopeBegin(void);
void plainScopeEnd(void);

/* The objects of one request; the hook is not told of their making. A missing name, text or path is NULL. */
CMPIContext* plainContext(void);
CMPIObjectPath* plainPath(const char* nameSpace, const char* className);
CMPIInstance* plainInstance(const CMPIObjectPath* path);
CMPIString* plainString(const char* text);
CMPIArray* plainArray(CMPICount size, CMPIType type);
CMPIArgs* plainArgs(void);
CMPIResult* plainResult(void);

/* What a result got. */
unsigned plainReturned(const CMPIResult* result);
unsigned plainDoneCount(const CMPIResult* result);
/* Text of a property or key of the object at that place, or NULL. */
const char* plainText(const CMPIResult* result, unsigned place, const char* name);
/* The number that a method returned. */
unsigned plainNumber(const CMPIResult* result);
/* The path at that place of a result of paths. */
CMPIObjectPath* plainReturnedPath(const CMPIResult* result, unsigned place);

#ifdef __cplusplus
}
#endif

#endif
