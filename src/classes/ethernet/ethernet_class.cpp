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

} // namespace

void forEachPort(const ElementVisitor& visitor) {
    for (CNACard* card = g_CNAList; card; card = card->next) {
        for (CNAPort* port = card->ports; port; port = port->next) {
            if (!visitor({card, port})) return;
        }
    }
}

CmpiStatus enumInstanceNames(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop) {
    DEBUG_LOG("%s", cls.texts.enumInstanceNamesEntry);
    Scope scope;
    const CMPIStatus status =
        readScope(cop, cls.texts.enumInstanceNamesNameSpace, cls.texts.enumInstanceNamesClassName, scope);
    if (status.rc != CMPI_RC_OK) return status;
    cls.forEachElement([&](const Element& element) {
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
    if (!key.isText()) {
        // The status of the read stands, so a key of another type ends in success and an empty answer.
        ERROR_LOG("%s", cls.texts.getInstanceKey);
        return key.status;
    }
    bool found = false;
    cls.forEachElement([&](const Element& element) {
        if (!equalsIgnoringCase(key.text, cls.keyText(element))) return true;
        found = true;
        const CmpiInstance instance = cls.makeInstance(scope.className, scope.nameSpace, properties, element);
        if (returnInstance) result.returnData(instance);
        return false;
    });
    if (!found) throw CmpiStatus(CMPI_RC_ERR_NOT_FOUND, key.text);
    return CmpiStatus(CMPI_RC_OK);
}

} // namespace merolt::ethernet
