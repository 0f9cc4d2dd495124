#include "classes/ethernet/ethernet_class.h"

#include "classes/object_memory.h"
#include "log/log.h"
#include "text/pattern.h"
#include "text/text.h"

#include <cstring>
#include <string>

namespace merolt::ethernet {

namespace {

struct Scope {
    const char* nameSpace = "";
    const char* className = "";
};

/// An operation of a class as its log lines name it.
struct Operation {
    const EthernetClass& cls;
    const char* name;
    const OperationTexts& texts;
};

/// @param number what stands at {n}.
std::string fill(const Operation& operation, const char* pattern, int number = 0) {
    return fillPattern(pattern, [&](char place) -> std::string {
        const char* token = operation.cls.texts.token;
        switch (place) {
        case 'F':
            return token;
        case 'X':
            return std::strrchr(token, '_') + 1;
        case 'O':
            return operation.name;
        case 'K':
            return operation.cls.key;
        default:
            return std::to_string(number);
        }
    });
}

void logEntry(const Operation& operation) { DEBUG_LOG("%s", fill(operation, operation.texts.entry).c_str()); }

/// Namespace first, then class name.
CMPIStatus readScope(const Operation& operation, const CmpiObjectPath& cop, Scope& scope) {
    CMPIStatus status = readNameSpace(cop, scope.nameSpace);
    if (status.rc != CMPI_RC_OK) {
        ERROR_LOG("%s", fill(operation, operation.texts.nameSpace).c_str());
        return status;
    }
    status = readClassName(cop, scope.className);
    if (status.rc != CMPI_RC_OK) ERROR_LOG("%s", fill(operation, operation.texts.className).c_str());
    return status;
}

void logKeyError(const Operation& operation, const RequestKey& key) {
    const EthernetTexts& texts = operation.cls.texts;
    const bool wrongType = key.status.rc == CMPI_RC_OK;
    if (wrongType && texts.keyType) {
        ERROR_LOG("%s", fill(operation, texts.keyType, key.type).c_str());
    } else if (operation.cls.keyErrorLog == KeyErrorLog::debug) {
        DEBUG_LOG("%s", fill(operation, texts.key).c_str());
    } else {
        ERROR_LOG("%s", fill(operation, texts.key).c_str());
    }
}

std::optional<Element> findElement(const EthernetClass& cls, const RequestKey& key) {
    if (!key.isText()) return std::nullopt;
    if (cls.find) return cls.find(key.text);
    std::optional<Element> found;
    cls.forEachElement([&](const Element& element) {
        if (equalsIgnoringCase(key.text, cls.keyText(element))) found = element;
        return !found;
    });
    return found;
}

bool matches(const SecondKey& expected, const RequestKey& key) {
    return key.isText() && equalsIgnoringCase(key.text, expected.value);
}

} // namespace

void forEachPort(const ElementVisitor& visitor) {
    for (CNACard* card = g_CNAList; card; card = card->next) {
        for (CNAPort* port = card->ports; port; port = port->next) {
            if (!visitor({.card = card, .port = port})) return;
        }
    }
}

void forEachCard(const ElementVisitor& visitor) {
    for (CNACard* card = g_CNAList; card; card = card->next) {
        if (!visitor({.card = card})) return;
    }
}

void forOne(const ElementVisitor& visitor) { visitor({}); }

CmpiStatus enumInstanceNames(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop) {
    const Operation operation = {cls, "enumInstanceNames", cls.texts.names};
    logEntry(operation);
    Scope scope;
    const CMPIStatus status = readScope(operation, cop, scope);
    if (status.rc != CMPI_RC_OK) return status;
    cls.forEachElement([&](const Element& element) {
        if (cls.texts.element) DEBUG_LOG("%s", fill(operation, cls.texts.element).c_str());
        const ObjectMemory memory;
        result.returnData(cls.makePath(scope.className, scope.nameSpace, element));
        memory.giveBack();
        return true;
    });
    return CmpiStatus(CMPI_RC_OK);
}

CmpiStatus enumInstances(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop,
                         const char** properties) {
    const Operation operation = {cls, "enumInstances", cls.texts.instances};
    logEntry(operation);
    Scope scope;
    const CMPIStatus status = readScope(operation, cop, scope);
    if (status.rc != CMPI_RC_OK) return status;
    cls.forEachElement([&](const Element& element) {
        const ObjectMemory memory;
        result.returnData(cls.makeInstance(scope.className, scope.nameSpace, properties, element));
        memory.giveBack();
        return true;
    });
    return CmpiStatus(CMPI_RC_OK);
}

CmpiStatus getInstance(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop, const char** properties,
                       bool returnInstance) {
    const Operation operation = {cls, "getInstance", cls.texts.getInstance};
    logEntry(operation);
    Scope scope;
    const CMPIStatus status = readScope(operation, cop, scope);
    if (status.rc != CMPI_RC_OK) return status;
    const RequestKey key = readKey(cop, cls.key);
    if (cls.texts.key && !key.isText()) {
        // The status of the read stands, so a key of another type ends in success and an empty answer.
        logKeyError(operation, key);
        return key.status;
    }
    bool secondMatches = true;
    if (cls.secondKey) {
        const RequestKey second = readKey(cop, cls.secondKey->name);
        if (second.status.rc != CMPI_RC_OK) {
            ERROR_LOG("%s", cls.secondKey->readError);
            return second.status;
        }
        secondMatches = matches(*cls.secondKey, second);
    }
    const std::optional<Element> element = findElement(cls, key);
    if (!element || !secondMatches) throw CmpiStatus(CMPI_RC_ERR_NOT_FOUND, key.text);
    const CmpiInstance instance = cls.makeInstance(scope.className, scope.nameSpace, properties, *element);
    if (returnInstance || cls.alwaysReturnsInstance.chosen()) result.returnData(instance);
    return CmpiStatus(CMPI_RC_OK);
}

} // namespace merolt::ethernet
