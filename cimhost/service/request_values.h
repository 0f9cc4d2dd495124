// What a request carries, made into the objects that a provider is given, in the types of the class concerned.
#pragma once

#include "cimhost/broker/objects.h"
#include "cimhost/broker/request_scope.h"
#include "cimhost/cimxml/values.h"

#include <string_view>

namespace cimhost {

/// The path in the given namespace (its own one, if it names one, is for references only), which goes by its own name
/// whatever the client called it. A key in the kind that its class declares gets the declared type; in another kind it
/// stays what the client said, so that the provider judges it. Throws CimFailure with CIM_ERR_INVALID_PARAMETER for a
/// text that is no value of its kind.
ObjectPathObject& makePath(RequestScope& scope, std::string_view nameSpace, const cimxml::ObjectPath& path);

/// The instance under that path. Throws CimFailure: CIM_ERR_NO_SUCH_PROPERTY, CIM_ERR_TYPE_MISMATCH, or
/// CIM_ERR_INVALID_PARAMETER for a text that is no value of its type.
InstanceObject& makeInstance(RequestScope& scope, const ObjectPathObject& path, const cimxml::Instance& instance);

/// Bytes may be as many as a message holds, entries of other types 65536. Throws CimFailure with
/// CIM_ERR_INVALID_PARAMETER if there are more, its text beginning with whose they are where that is given.
void requireEntries(CMPIType elementType, const cimxml::Value& value, std::string_view whose = {});

/// A value as a property or an argument of that type. Throws as above.
CMPIData makeValue(RequestScope& scope, std::string_view nameSpace, CMPIType type, const cimxml::Value& value);

} // namespace cimhost
