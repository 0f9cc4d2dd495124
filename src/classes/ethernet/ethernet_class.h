// The Ethernet pattern: an instance class without records of its own, computed from the CNA list at each request. A
// class is an EthernetClass row and the functions that are its own; the three request operations stand here once.
#pragma once

#include "classes/list_class.h"
#include "configuration/answers.h"
#include "inventory/cna_list.h"

#include <functional>
#include <optional>

namespace merolt::ethernet {

struct RegisteredProfileEntry;

/// What an instance is computed from. A class uses what it needs of it.
struct Element {
    CNACard* card = nullptr;
    CNAPort* port = nullptr;
    const RegisteredProfileEntry* profile = nullptr;
    int softwareType = 0;
};

/// Returns false to end a walk.
using ElementVisitor = std::function<bool(const Element&)>;

/// Each port of each card.
void forEachPort(const ElementVisitor& visitor);
/// Each card, also one without ports.
void forEachCard(const ElementVisitor& visitor);
/// One element, for classes with one fixed instance.
void forOne(const ElementVisitor& visitor);

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
    const char* getInstanceKey; ///< null: the key is not tested, and one that is no text matches nothing
    /// With the type's number for %d; null: the text above serves a key of another type too.
    const char* getInstanceKeyType = nullptr;
    /// One more line for each element that names are enumerated of.
    const char* enumInstanceNamesElement = nullptr;
};

enum class KeyErrorLog { error, debug };

/// A further key that must match. Only its reading is tested; one that is no text matches nothing.
struct SecondKey {
    const char* name;
    const char* value;
    const char* readError;
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

    /// Finds the element of a key that must be taken apart; null: the keys of all elements are compared.
    std::optional<Element> (*find)(const char* key) = nullptr;
    const SecondKey* secondKey = nullptr;
    KeyErrorLog keyErrorLog = KeyErrorLog::error;
    /// getInstance hands the instance out even where only its existence is asked.
    TwoForms<bool> alwaysReturnsInstance = {false, false};
};

CmpiStatus enumInstanceNames(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop);
CmpiStatus enumInstances(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop,
                         const char** properties);

/// Builds the instance of the first element with the key, and returns it unless returnInstance is false.
/// Throws CmpiStatus 6 with the key's text if no element has the key.
CmpiStatus getInstance(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop, const char** properties,
                       bool returnInstance);

} // namespace merolt::ethernet
