// Makes the broker's objects of a server's answer. Types and order are those of the local classes; properties that
// these lack stay as the server sent them, in its order.
#pragma once

#include "cimhost/broker/request_scope.h"
#include "cimhost/cimxml/values.h"

#include <stdexcept>
#include <string_view>

namespace cimhost::remote {

/// A text that is no value of its type, or more objects than a request may have. what() says which.
class ReceivedObjectError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Everything lies in the scope, and throws ReceivedObjectError.
class ReceivedObjects {
public:
    /// @param nameSpace of what names none itself; outlives this object, as does the scope
    ReceivedObjects(RequestScope& target, std::string_view nameSpace) : scope(target), home(nameSpace) {}

    /// Without its host: the object lives at the server that was asked, by whatever name that calls itself.
    const ObjectPathObject& path(cimxml::ObjectPath given) const;

    /// @param knownPath of an instance that comes without one; null: it has no keys then
    const InstanceObject& instance(cimxml::NamedInstance& given, const ObjectPathObject* knownPath) const;

    /// @param declared the type of a value that does not tell its own; CMPI_null: a text
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
