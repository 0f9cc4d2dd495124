#include "classes/ethernet/ethernet_class.h"

#include "log/log.h"
#include "text/text.h"

namespace merolt::ethernet {

namespace {

struct Scope {
    const char* nameSpace = "";
    const char* className = "";
};

/// Namespace first, then class name. The texts are the operation's error lines.
CMPIStatus readScope(const CmpiObjectPath& cop, const char* nameSpaceError, const char* classNameError, Scope& scope) {
    CMPIStatus status = readNameSpace(cop, scope.nameSpace);
    if (status.rc != CMPI_RC_OK) {
        ERROR_LOG("%s", nameSpaceError);
        return status;
    }
    status = readClassName(cop, scope.className);
    if (status.rc != CMPI_RC_OK) ERROR_LOG("%s", classNameError);
    return status;
}

void logKeyError(const EthernetClass& cls, const RequestKey& key) {
    const bool wrongType = key.status.rc == CMPI_RC_OK;
    if (wrongType && cls.texts.getInstanceKeyType) {
        ERROR_LOG(cls.texts.getInstanceKeyType, key.type);
    } else if (cls.keyErrorLog == KeyErrorLog::debug) {
        DEBUG_LOG("%s", cls.texts.getInstanceKey);
    } else {
        ERROR_LOG("%s", cls.texts.getInstanceKey);
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
    DEBUG_LOG("%s", cls.texts.enumInstanceNamesEntry);
    Scope scope;
    const CMPIStatus status =
        readScope(cop, cls.texts.enumInstanceNamesNameSpace, cls.texts.enumInstanceNamesClassName, scope);
    if (status.rc != CMPI_RC_OK) return status;
    cls.forEachElement([&](const Element& element) {
        if (cls.texts.enumInstanceNamesElement) DEBUG_LOG("%s", cls.texts.enumInstanceNamesElement);
        result.returnData(cls.makePath(scope.className, scope.nameSpace, element));
        return true;
    });
    return CmpiStatus(CMPI_RC_OK);
}

CmpiStatus enumInstances(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop,
                         const char** properties) {
    DEBUG_LOG("%s", cls.texts.enumInstancesEntry);
    Scope scope;
    const CMPIStatus status = readScope(cop, cls.texts.enumInstancesNameSpace, cls.texts.enumInstancesClassName, scope);
    if (status.rc != CMPI_RC_OK) return status;
    cls.forEachElement([&](const Element& element) {
        result.returnData(cls.makeInstance(scope.className, scope.nameSpace, properties, element));
        return true;
    });
    return CmpiStatus(CMPI_RC_OK);
}

CmpiStatus getInstance(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop, const char** properties,
                       bool returnInstance) {
    DEBUG_LOG("%s", cls.texts.getInstanceEntry);
    Scope scope;
    const CMPIStatus status = readScope(cop, cls.texts.getInstanceNameSpace, cls.texts.getInstanceClassName, scope);
    if (status.rc != CMPI_RC_OK) return status;
    const RequestKey key = readKey(cop, cls.key);
    if (cls.texts.getInstanceKey && !key.isText()) {
        // The status of the read stands, so a key of another type ends in success and an empty answer.
        logKeyError(cls, key);
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
