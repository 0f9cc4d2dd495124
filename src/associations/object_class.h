// What an association has to know of a class at one of its ends: how its objects are named, shown and tested.
#pragma once

#include "classes/call_maker.h"
#include "classes/request.h"
#include "inventory/cna_list.h"

#include "CmpiInstance.h"

#include <optional>

namespace merolt::association {

/// One object of a class: a record of a list, or what the CNA list holds of a card. A class uses what it needs.
struct Object {
    int index = 0;
    CNACard* card = nullptr;
    CNAPort* port = nullptr;
    int softwareType = 0;
};

/// Nothing where the object has no record, as a module that went away with a refresh: it is then not delivered.
using MakePath = std::optional<CmpiObjectPath> (*)(const char* className, const char* nameSpace, const Object& object);
using MakeInstance = std::optional<CmpiInstance> (*)(const char* className, const char* nameSpace,
                                                     const char** properties, const Object& object);

struct ObjectClass {
    const char* name;
    MakePath makePath = nullptr;
    MakeInstance makeInstance = nullptr;
    GetInstance getInstance = nullptr;
};

/// A class's path maker in the form in which associations call it.
template <auto make>
std::optional<CmpiObjectPath> pathOf(const char* className, const char* nameSpace, const Object& object) {
    return callMaker<make>(object, className, nameSpace);
}

template <auto make>
std::optional<CmpiInstance> instanceOf(const char* className, const char* nameSpace, const char** properties,
                                       const Object& object) {
    return callMaker<make>(object, className, nameSpace, properties);
}

} // namespace merolt::association

/// The class X of a module side, whose functions are named makePath_X, makeInstance_X and getInstance_X.
#define OBJECT_CLASS(className, side, X)                                                                               \
    merolt::association::ObjectClass {                                                                                 \
        className, merolt::association::pathOf<merolt::side::makePath_##X>,                                            \
            merolt::association::instanceOf<merolt::side::makeInstance_##X>, merolt::side::getInstance_##X             \
    }

/// The same class as the Ethernet side reaches it, by card or port: makers makePath_Nic_X and makeInstance_Nic_X.
#define NIC_OBJECT_CLASS(className, side, X)                                                                           \
    merolt::association::ObjectClass {                                                                                 \
        className, merolt::association::pathOf<merolt::side::makePath_Nic_##X>,                                        \
            merolt::association::instanceOf<merolt::side::makeInstance_Nic_##X>, merolt::side::getInstance_##X         \
    }
