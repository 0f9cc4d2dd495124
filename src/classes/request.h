// Reading a request's object path through the server's own function tables, and what the class functions have in
// common whatever their pattern.
#pragma once

#include "CmpiContext.h"
#include "CmpiObjectPath.h"
#include "CmpiResult.h"
#include "CmpiStatus.h"

namespace merolt {

/// Reads the class name. @param text receives it; it lives as long as the request. @return the server's status.
CMPIStatus readClassName(const CmpiObjectPath& path, const char*& text);
/// Reads the namespace, likewise.
CMPIStatus readNameSpace(const CmpiObjectPath& path, const char*& text);

/// A key as the request brought it.
struct RequestKey {
    CMPIStatus status;
    CMPIType type;
    const char* text; ///< never null when the type is a string
    bool isText() const { return status.rc == CMPI_RC_OK && type == CMPI_string; }
};
RequestKey readKey(const CmpiObjectPath& path, const char* name);

/// The three request functions that every instance class has.
using EnumInstanceNames = CmpiStatus (*)(const CmpiContext&, CmpiResult&, const CmpiObjectPath&);
using EnumInstances = CmpiStatus (*)(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char** properties);
using GetInstance = CmpiStatus (*)(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char** properties,
                                   bool returnInstance);

/// How the list of a class is read anew.
struct ClassList {
    void (*build)();
    void (*clear)();
};

} // namespace merolt
