#include "classes/list_class.h"

#include "classes/object_memory.h"
#include "log/log.h"
#include "text/text.h"

namespace merolt {

namespace {

struct Scope {
    const char* className = "";
    const char* nameSpace = "";
};

/// Class name first, then namespace. @param operation the function's name for the log.
CMPIStatus readScope(const ListClass& cls, const char* operation, const CmpiObjectPath& cop, Scope& scope) {
    CMPIStatus status = readClassName(cop, scope.className);
    if (status.rc != CMPI_RC_OK) {
        ERROR_LOG("%s_%s: Error getting classname, status.rc=%d!", operation, cls.name, status.rc);
        return status;
    }
    status = readNameSpace(cop, scope.nameSpace);
    if (status.rc != CMPI_RC_OK)
        ERROR_LOG("%s_%s: Error getting namespace, status.rc=%d!", operation, cls.name, status.rc);
    return status;
}

/// Calls the visitor with each index that an enumeration shows.
template <class Visitor>
CmpiStatus enumerate(const ListClass& cls, const char* operation, const CmpiObjectPath& cop, Visitor&& visitor) {
    DEBUG_LOG("Entering %s_%s", operation, cls.name);
    Scope scope;
    const char* errorOperation = cls.enumInstancesErrorsSayNames ? "enumInstanceNames" : operation;
    const CMPIStatus status = readScope(cls, errorOperation, cop, scope);
    if (status.rc != CMPI_RC_OK) return status;
    const int count = cls.count();
    for (int index = 0; index < count; ++index) {
        if (cls.enumerationSkipsInvalid && !cls.valid(index)) continue;
        const ObjectMemory memory;
        visitor(scope, index);
        memory.giveBack();
    }
    DEBUG_LOG("Exiting  %s_%s", operation, cls.name);
    return CmpiStatus(CMPI_RC_OK);
}

/// The first valid record with that key, or -1.
int findRecord(const ListClass& cls, const char* keyText) {
    const int count = cls.count();
    for (int index = 0; index < count; ++index) {
        if (!equalsIgnoringCase(keyText, cls.keyText(index))) continue;
        if (!cls.valid || cls.valid(index)) return index;
        ERROR_LOG("getInstance_%s: Found a device that has the same %s but the entry is invalid.  Move on...", cls.name,
                  cls.key);
    }
    return -1;
}

[[noreturn]] void throwNoMatch(const ListClass& cls, const char* keyText) {
    if (cls.secondKey) {
        ERROR_LOG(cls.secondKey->noMatchFormat, keyText, cls.keyText(0), keyText, cls.secondKey->value);
    } else if (cls.noMatchNamesElement) {
        ERROR_LOG("getInstance_%s: Error no matching instance found, KeyValue=%s, MatchingElement=%s!", cls.name,
                  keyText, cls.keyText(0));
    } else {
        ERROR_LOG("getInstance_%s: Error no matching instance found, KeyValue=%s!", cls.name, keyText);
    }
    throw CmpiStatus(CMPI_RC_ERR_NOT_FOUND, keyText);
}

/// Logs what is wrong with a key. @param readNumber, typeNumber mark a second key. @return whether it can be compared.
bool isUsable(const ListClass& cls, const RequestKey& key, const char* readNumber, const char* typeNumber) {
    if (key.status.rc != CMPI_RC_OK) {
        ERROR_LOG("getInstance_%s: Error getting key data%s, status.rc=%d!", cls.name, readNumber, key.status.rc);
        return false;
    }
    if (!key.isText())
        ERROR_LOG("getInstance_%s: Error invalid key data type, keyData%s.type=%d!", cls.name, typeNumber, key.type);
    return key.isText();
}

} // namespace

CmpiStatus enumInstanceNames(const ListClass& cls, CmpiResult& result, const CmpiObjectPath& cop) {
    return enumerate(cls, "enumInstanceNames", cop, [&](const Scope& scope, int index) {
        result.returnData(cls.makePath(scope.className, scope.nameSpace, index));
    });
}

CmpiStatus enumInstances(const ListClass& cls, CmpiResult& result, const CmpiObjectPath& cop, const char** properties) {
    return enumerate(cls, "enumInstances", cop, [&](const Scope& scope, int index) {
        result.returnData(cls.makeInstance(scope.className, scope.nameSpace, properties, index));
    });
}

CmpiStatus getInstance(const ListClass& cls, CmpiResult& result, const CmpiObjectPath& cop, const char** properties,
                       bool returnInstance) {
    DEBUG_LOG("Entering getInstance_%s", cls.name);
    // Where a key is of another type the status of its read stands: such a request ends in success and an empty answer.
    const RequestKey key = readKey(cop, cls.key);
    if (!isUsable(cls, key, "", "")) return key.status;
    bool secondMatches = true;
    if (cls.secondKey) {
        const RequestKey second = readKey(cop, cls.secondKey->name);
        if (!isUsable(cls, second, " 2", "2")) return second.status;
        secondMatches = equalsIgnoringCase(second.text, cls.secondKey->value);
    }
    const int index = findRecord(cls, key.text);
    if (index < 0 || !secondMatches) throwNoMatch(cls, key.text);
    if (returnInstance) {
        Scope scope;
        const CMPIStatus status = readScope(cls, "getInstance", cop, scope);
        if (status.rc != CMPI_RC_OK) return status;
        result.returnData(cls.makeInstance(scope.className, scope.nameSpace, properties, index));
    }
    DEBUG_LOG("Exiting  getInstance_%s", cls.name);
    return CmpiStatus(CMPI_RC_OK);
}

} // namespace merolt
