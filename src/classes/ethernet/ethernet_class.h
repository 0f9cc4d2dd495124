// The Ethernet pattern: an instance class without records of its own, computed from the CNA list at each request. A
// class is an EthernetClass row and the functions that are its own; the three request operations stand here once.
#pragma once

#include "classes/list_class.h"
#include "inventory/cna_list.h"

#include <functional>

namespace merolt::ethernet {

/// What an instance is computed from. A class uses what it needs of it.
struct Element {
    CNACard* card = nullptr;
    CNAPort* port = nullptr;
};

/// Returns false to end a walk.
using ElementVisitor = std::function<bool(const Element&)>;

/// Each port of each card.
void forEachPort(const ElementVisitor& visitor);

/// The log texts of a class's operations. Clients' support reads them, so they stand as they are.
struct EthernetTexts {
    const char* enumInstanceNamesEntry;
    const char* enumInstanceNamesNameSpace;
    const char* enumInstanceNamesClassName;
    const char* enumInstancesEntry;
    const char* enumInstancesNameSpace;
    const char* enumInstancesClassName;
    const char* getInstanceEntry;
    const char* getInstanceNameSpace;
    const char* getInstanceClassName;
    const char* getInstanceKey;
};

struct EthernetClass {
    const char* key; ///< the key by which getInstance finds an element

    void (*forEachElement)(const ElementVisitor& visitor);
    /// The element's key text, compared with the request's in any letter case.
    const char* (*keyText)(const Element& element);
    CmpiObjectPath (*makePath)(const char* className, const char* nameSpace, const Element& element);
    CmpiInstance (*makeInstance)(const char* className, const char* nameSpace, const char** properties,
                                 const Element& element);
    EthernetTexts texts;
};

CmpiStatus enumInstanceNames(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop);
CmpiStatus enumInstances(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop,
                         const char** properties);

/// Builds the instance of the first element with the key, and returns it unless returnInstance is false.
/// Throws CmpiStatus 6 with the key's text if no element has the key.
CmpiStatus getInstance(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop, const char** properties,
                       bool returnInstance);

} // namespace merolt::ethernet
