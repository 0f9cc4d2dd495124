// The pointer to a server's object that most wrapper classes hold.
#pragma once

#include "CmpiString.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// Base of the classes that stand for an object of the server. It shares that object and never releases or clones it:
/// copies of a wrapper are the same server object, which the server frees at the end of the request.
class CMPI_PROVIDER_LINKAGE CmpiObject {
    friend class CmpiBroker;
    friend class CmpiObjectPath;
    friend class CmpiInstance;

public:
    /// Non-zero if no server object stands behind this one.
    CmpiBoolean isNull() const { return enc ? 0 : 1; }

    /// The server's text form of the object. Throws CmpiStatus if the server has none.
    CmpiString toString();

    /// Non-zero if the object is of that CMPI type ("CMPIInstance" and the like, not a CIM class). Throws CmpiStatus if
    /// the server cannot tell.
    CmpiBoolean isA(const char* typeName) const;

protected:
    CmpiObject() = default;
    CmpiObject(const void* object) : enc(const_cast<void*>(object)) {}

    CmpiString doToString(CMPIBroker* broker);
    CmpiBoolean doIsA(CMPIBroker* broker, const char* typeName) const;

    void* enc = nullptr;
};
