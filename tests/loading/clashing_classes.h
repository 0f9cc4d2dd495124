// Classes and functions of the host that bear the names of the provider's own, in full view of every library.
#pragma once

#include "cmpidt.h"
#include "cmpift.h"

#define VISIBLE __attribute__((visibility("default")))

/// How often any of them was called.
extern int clashes;

class VISIBLE CmpiString {
public:
    CmpiString(const char* text);
    CmpiString(const CmpiString& other);
    ~CmpiString();
    const char* charPtr() const;
};

class VISIBLE CmpiStatus {
public:
    CmpiStatus(CMPIrc code, const char* message);
    const char* msg() const;
};

class VISIBLE CmpiObjectPath {
public:
    CmpiObjectPath(const char* nameSpace, const char* className);
    unsigned char classPathIsA(const char* className) const;
};

class VISIBLE CmpiBaseMI {
public:
    virtual ~CmpiBaseMI();
    static CMPIStatus driveBaseCleanup(void* interface, const CMPIContext* context, CMPIBoolean terminating);
    virtual int isUnloadable() const;
};

class VISIBLE Merolt_CNA_Provider {
public:
    virtual ~Merolt_CNA_Provider();
    virtual int isUnloadable() const;
};

namespace merolt {

VISIBLE void debugLog(const char* format, ...);
VISIBLE void errorLog(const char* format, ...);
VISIBLE bool equalsIgnoringCase(const char* left, const char* right);

} // namespace merolt

extern "C" VISIBLE int OSSGenerateHostNotificationAlarm(unsigned, unsigned, unsigned, const char*);
