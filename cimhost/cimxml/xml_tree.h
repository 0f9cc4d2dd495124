// A CIM-XML document as a bounded tree: only elements and attributes that DSP0201 knows, no DOCTYPE, no entities.
#pragma once

#include "cimhost/cimxml/protocol_error.h"
#include "cimhost/cimxml/values.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace cimhost::cimxml {

struct XmlLimits {
    std::size_t depth = 64;
    std::size_t elements = 65536; // entries of a VALUE.ARRAY do not count: the body limit of the server bounds them
    std::size_t attributeBytes = 16384;
};

struct XmlAttribute {
    std::string_view name; // of the table of known attributes, lives for ever
    std::string value;
};

struct XmlElement {
    std::string_view name; // of the table of known elements, lives for ever
    std::vector<XmlAttribute> attributes;
    std::vector<XmlElement> children;
    std::string text;
    TextList values; // what VALUE and VALUE.NULL inside a VALUE.ARRAY hold; they are no children

    /// Null where the client left it out.
    const std::string* attribute(std::string_view attributeName) const;
};

/// Parses one document. Attributes that DSP0201 requires are present in the result; which child may stand where is
/// for the caller to judge.
std::variant<XmlElement, ProtocolError> parseXml(std::string_view document, const XmlLimits& limits = {});

} // namespace cimhost::cimxml
