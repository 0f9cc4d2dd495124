// How the class modules make their paths and instances: one line a property, in the order in which a client sees them.
#pragma once

#include "CmpiArray.h"
#include "CmpiData.h"
#include "CmpiInstance.h"
#include "CmpiObjectPath.h"
#include "cmpidt.h"

#include <initializer_list>

namespace merolt {

/// Creation class name of the system that scopes most classes.
constexpr const char* computerSystemClass = "Merolt_Adapter_ComputerSystem";

/// An instance of the class in the namespace of the request, without keys in its path. With a property list the
/// server gets only the listed properties and the keys.
/// @param properties null-terminated list of the request, or null for all. @param keys null-terminated.
CmpiInstance newInstance(const char* className, const char* nameSpace, const char** properties, const char** keys);

/// A path with the keys of a class that a computer system scopes; the class's own key comes last.
CmpiObjectPath systemScopedPath(const char* className, const char* nameSpace, const char* creationClassName,
                                const char* key, const char* value);

/// Sets SystemCreationClassName, SystemName and CreationClassName.
void setSystemScope(CmpiInstance& instance, const char* creationClassName);

CmpiArray uint16Array(std::initializer_list<CMPIUint16> values);
CmpiArray stringArray(std::initializer_list<const char*> values);

} // namespace merolt
