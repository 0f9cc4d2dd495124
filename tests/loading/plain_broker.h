/* A small CIM server's side of the CMPI tables, in plain C: version words of 1 and 0, memory from malloc alone, strings
 * without text where a name is missing, statuses written on errors only. Knows no classes: a path is of its own class
 * and of no other. */
#ifndef PLAIN_BROKER_H
#define PLAIN_BROKER_H

#include "cmpidt.h"
#include "cmpift.h"

#ifdef __cplusplus
#include <atomic>
extern "C" {
#endif

/* A test sets it while the provider's thread calls. */
typedef void (*PlainHook)(const char* function);
#ifdef __cplusplus
typedef std::atomic<PlainHook> PlainHookSlot;
#else
typedef _Atomic(PlainHook) PlainHookSlot;
#endif

typedef struct PlainBroker {
    CMPIBroker broker; /* to be handed to factories */
    /* Copies of a test's own: it may empty slots before the provider sees them. */
    CMPIBrokerFT functions;
    CMPIBrokerEncFT objects;
    CMPIBrokerExtFT threads;
    /* Called at the beginning of every function of the tables, objects' included, if set. May throw. */
    PlainHookSlot before;
    /* What the provider wrote to the server's log. */
    unsigned messageCount;
    CMPISeverity lastSeverity;
    char lastMessage[600];
    unsigned deliveredCount;
} PlainBroker;

/* There is one such server in a process. */
extern PlainBroker plainBroker;
/* As at the start of the program. */
void plainBrokerReset(void);

/* What a thread makes between the two is freed at the end; outside of a scope the server makes nothing. */
void plainScopeBegin(void);
void plainScopeEnd(void);

/* The objects of one request. A missing name is NULL. */
CMPIContext* plainContext(void);
CMPIObjectPath* plainPath(const char* nameSpace, const char* className);
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
