// Makes the objects that a provider is given from what a request carries, in the types that the class declares.
#pragma once

#include "cimhost/broker/objects.h"
#include "cimhost/broker/request_scope.h"
#include "cimhost/cimxml/values.h"

#include <string_view>

namespace cimhost {

/// The path in the given namespace; a namespace that the path itself names counts only in references. If the client
/// called the namespace by a further name, the path has the namespace's own name. A key of the kind that its class
/// declares gets the declared type. A key of another kind stays what the client said, so that the provider judges it.
/// Throws CimFailure with CIM_ERR_INVALID_PARAMETER for a text that is no value of its kind, and for a key without a
/// name if the class has several keys. The path lives in the scope, as do all objects made here.
ObjectPathObject& makePath(RequestScope& scope, std::string_view nameSpace, const cimxml::ObjectPath& path);

/// The instance under that path, whose class must exist. Throws CimFailure: CIM_ERR_NO_SUCH_PROPERTY,
/// CIM_ERR_TYPE_MISMATCH, or CIM_ERR_INVALID_PARAMETER for a text that is no value of its type.
InstanceObject& makeInstance(RequestScope& scope, const ObjectPathObject& path, const cimxml::Instance& instance);

/// Throws CimFailure with CIM_ERR_INVALID_PARAMETER if an array has more than 65536 entries. Arrays of bytes may have
/// as many as a message holds.
/// @param whose what the array belongs to, for the text of the error; may be empty
void requireEntries(CMPIType elementType, const cimxml::Value& value, std::string_view whose = {});

/// The value of a property or an argument of that type. Throws CimFailure with CIM_ERR_INVALID_PARAMETER for a text
/// that is no value of the type, and as requireEntries().
CMPIData makeValue(RequestScope& scope, std::string_view nameSpace, CMPIType type, const cimxml::Value& value);

} // namespace cimhost
