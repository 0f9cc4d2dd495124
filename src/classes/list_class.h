// The storage pattern: an instance class over a global list of records, or over one or two fixed objects. A class is
// a ListClass row and the functions that are its own; the three request operations stand here once.
#pragma once

#include "classes/request.h"

#include "CmpiInstance.h"

namespace merolt {

/// A further key of a class with one object: read and tested like the first one, and compared after it.
struct SecondListKey {
    const char* name;
    const char* value;
    const char* noMatchFormat; ///< takes key, expected key, key once more, expected second key
};

/// What the request operations need to know of a class.
struct ListClass {
    const char* name; ///< short name: part of function names and of every log text
    const char* key;  ///< the key by which getInstance finds a record

    int (*count)();
    /// The record's key text, compared with the request's in any letter case.
    const char* (*keyText)(int index);
    CmpiObjectPath (*makePath)(const char* className, const char* nameSpace, int index);
    CmpiInstance (*makeInstance)(const char* className, const char* nameSpace, const char** properties, int index);

    /// Whether createX finished the record; null for classes without records. getInstance passes invalid ones over.
    bool (*valid)(int index) = nullptr;
    /// Enumerations pass invalid records over. Most classes list every index below the count.
    bool enumerationSkipsInvalid = false;
    /// Classes with one object print in their no-match text what the key should have been.
    bool noMatchNamesElement = false;
    /// The error lines of enumInstances are those of enumInstanceNames.
    bool enumInstancesErrorsSayNames = false;
    const SecondListKey* secondKey = nullptr;
};

CmpiStatus enumInstanceNames(const ListClass& cls, CmpiResult& result, const CmpiObjectPath& cop);
CmpiStatus enumInstances(const ListClass& cls, CmpiResult& result, const CmpiObjectPath& cop, const char** properties);

/// @param returnInstance false only tests that the object exists: nothing goes to the result.
/// Throws CmpiStatus 6 with the key's text if no valid record has the key.
CmpiStatus getInstance(const ListClass& cls, CmpiResult& result, const CmpiObjectPath& cop, const char** properties,
                       bool returnInstance);

} // namespace merolt

/// Declares the three request functions of a class X.
#define DECLARE_REQUEST_FUNCTIONS(X)                                                                                   \
    CmpiStatus enumInstanceNames_##X(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop);       \
    CmpiStatus enumInstances_##X(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,            \
                                 const char** properties);                                                             \
    CmpiStatus getInstance_##X(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,              \
                               const char** properties, bool returnInstance);

/// Defines them over the class's descriptor.
#define DEFINE_REQUEST_FUNCTIONS(X, descriptor)                                                                        \
    CmpiStatus enumInstanceNames_##X(const CmpiContext&, CmpiResult& result, const CmpiObjectPath& cop) {              \
        return enumInstanceNames(descriptor, result, cop);                                                             \
    }                                                                                                                  \
    CmpiStatus enumInstances_##X(const CmpiContext&, CmpiResult& result, const CmpiObjectPath& cop,                    \
                                 const char** properties) {                                                            \
        return enumInstances(descriptor, result, cop, properties);                                                     \
    }                                                                                                                  \
    CmpiStatus getInstance_##X(const CmpiContext&, CmpiResult& result, const CmpiObjectPath& cop,                      \
                               const char** properties, bool returnInstance) {                                         \
        return getInstance(descriptor, result, cop, properties, returnInstance);                                       \
    }
