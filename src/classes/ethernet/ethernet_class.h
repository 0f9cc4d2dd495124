// The Ethernet pattern: an instance class without records of its own, computed from the CNA list at each request. A
// class is an EthernetClass row and the functions that are its own; the three request operations stand here once.
#pragma once

#include "classes/call_maker.h"
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

/// The lines of an operation: that it was called, and what of its path could not be read.
struct OperationTexts {
    const char* entry = "{F} {O} was called\n";
    const char* nameSpace = "{F}: Error getting namespace in {O}\n";
    const char* className = "{F}: Error getting ClassName in {O}\n";
};

constexpr const char* entryThatNamesClass = "{F} {O}_{X} was called\n";

/// Errors that do not tell in which operation.
constexpr OperationTexts withoutOperation = {.entry = entryThatNamesClass,
                                             .nameSpace = "{F}: Error getting namespace\n",
                                             .className = "{F}: Error getting ClassName\n"};

/// The log texts of a class's operations, with places to fill: {F} the class's name in the log, {X} that name without
/// its schema, {O} the operation, {K} the key, {n} the number of a type. Clients' support reads them, so each class has
/// the exceptions that it has, slips included.
struct EthernetTexts {
    const char* token; ///< the class's name in the log
    OperationTexts names = {};
    OperationTexts instances = {};
    OperationTexts getInstance = {};
    const char* key = "{F}: Error getting {K} key in {O}\n"; ///< null: the key is not tested, and one that is no text
                                                             ///< matches nothing
    const char* keyType = nullptr;                           ///< null: the text above serves a key of another type too
    const char* element = nullptr; ///< one more line for each element that names are enumerated of
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

/// A class's makers in the form in which the descriptor has them.
template <auto make>
CmpiObjectPath pathOf(const char* className, const char* nameSpace, const Element& element) {
    return callMaker<make>(element, className, nameSpace);
}

template <auto make>
CmpiInstance instanceOf(const char* className, const char* nameSpace, const char** properties, const Element& element) {
    return callMaker<make>(element, className, nameSpace, properties);
}

CmpiStatus enumInstanceNames(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop);
CmpiStatus enumInstances(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop,
                         const char** properties);

/// Builds the instance of the first element with the key, and returns it unless returnInstance is false.
/// Throws CmpiStatus 6 with the key's text if no element has the key.
CmpiStatus getInstance(const EthernetClass& cls, CmpiResult& result, const CmpiObjectPath& cop, const char** properties,
                       bool returnInstance);

} // namespace merolt::ethernet
