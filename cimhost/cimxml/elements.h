// The elements of DSP0201 that requests and responses have in common, read from a bounded tree into plain values.
#pragma once

#include "cimhost/cimxml/protocol_error.h"
#include "cimhost/cimxml/values.h"
#include "cimhost/cimxml/xml_tree.h"

#include <optional>
#include <string>
#include <string_view>

namespace cimhost::cimxml {

/// Thrown by what reads elements, caught by what decodes a message: a document has hundreds of places where it can be
/// wrong.
struct Refusal {
    ProtocolError error;
};

[[noreturn]] void refuse(std::string message, ErrorKind kind = ErrorKind::requestNotValid);

/// Keys of a path, parameters of a call: each is compared with all before it.
constexpr std::size_t maximumNames = 256;

/// "<NAME>"
std::string shown(const XmlElement& element);

/// For an element that is only looked at, and for one whose values are taken out. Throws Refusal, as everything here.
const XmlElement& onlyChild(const XmlElement& element);
XmlElement& onlyChild(XmlElement& element);
void refuseChildren(const XmlElement& element);

/// Of an attribute that DSP0201 requires. Names are compared and looked up, so none is empty.
std::string requiredName(const XmlElement& element, std::string_view attribute);
/// CMPI_null where the attribute is missing.
CMPIType typeAttribute(const XmlElement& element, std::string_view attribute);
/// True where the value is an object, written as a text.
bool isEmbedded(const XmlElement& element);

std::string localNamespacePath(const XmlElement& element);

/// True for each element that objectPath() reads but OBJECTPATH, which only wraps one.
bool namesObject(std::string_view element);
ObjectPath objectPath(const XmlElement& element);

/// VALUE, VALUE.ARRAY, VALUE.REFERENCE or VALUE.REFARRAY; takes the texts out of the element.
Value readValue(XmlElement& element);

/// Of a PARAMVALUE or RETURNVALUE, in the type that it says it has; null where there is none.
Value parameterValue(XmlElement& element);

Instance readInstance(XmlElement& element);

/// INSTANCE, or one of the elements that put a path in front of it; nothing for any other element.
std::optional<NamedInstance> namedInstance(XmlElement& element);

/// The element inside CIM and MESSAGE, whose versions are checked.
XmlElement& readMessage(XmlElement& root);

} // namespace cimhost::cimxml
