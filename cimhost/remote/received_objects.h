// Makes the broker's objects from a server's answer. Types and order are those of the local classes. Properties that
// these lack stay as the server sent them, in the server's order.
#pragma once

#include "cimhost/broker/request_scope.h"
#include "cimhost/cimxml/values.h"

#include <stdexcept>
#include <string_view>

namespace cimhost::remote {

/// Thrown for a text that is no value of its type, and for more objects than a request may have. what() says which.
class ReceivedObjectError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// All objects lie in the scope. All functions throw ReceivedObjectError.
class ReceivedObjects {
public:
    /// Scope and namespace outlive this object.
    /// @param nameSpace the namespace of objects that name none
    ReceivedObjects(RequestScope& target, std::string_view nameSpace) : scope(target), home(nameSpace) {}

    /// A path without its host: the object is at the server that was asked, whatever name that server has for itself.
    const ObjectPathObject& path(cimxml::ObjectPath given) const;

    /// @param knownPath the path of an instance that comes without one; null: such an instance has no keys
    const InstanceObject& instance(cimxml::NamedInstance& given, const ObjectPathObject* knownPath) const;

    /// @param declared the type of a value that comes without one; CMPI_null: it is a text
    CMPIData value(cimxml::Value& given, CMPIType declared) const;

private:
    [[nodiscard]] InstanceObject& make(const ObjectPathObject& path, cimxml::Instance& given, int depth) const;
    void setProperty(InstanceObject& instance, cimxml::Property& property, int depth) const;
    [[nodiscard]] CMPIData valueAt(cimxml::Value& given, CMPIType declared, int depth) const;
    [[nodiscard]] CMPIData embedded(std::string_view text, int depth) const;
    [[nodiscard]] CMPIData embeddedArray(const cimxml::Value& given, int depth) const;

    RequestScope& scope;
    std::string_view home;
};

} // namespace cimhost::remote
