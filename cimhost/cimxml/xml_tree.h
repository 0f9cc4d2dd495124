// A CIM-XML document as a bounded tree: only elements and attributes that DSP0201 knows, no DOCTYPE, no entities.
#pragma once

#include "cimhost/cimxml/protocol_error.h"
#include "cimhost/cimxml/values.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace cimhost::cimxml {

struct XmlLimits {
    std::size_t depth = 64;
    std::size_t elements = 65536; // entries of a VALUE.ARRAY do not count
    std::size_t attributeBytes = 16384;
    std::size_t tokenBytes = std::size_t{512} << 10; // of one tag, comment or instruction
    std::size_t heldBytes = std::size_t{64} << 20;   // of all that the tree keeps
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

/// Reads one document in pieces of any size: what is read of an array of bytes takes a twentieth of its XML.
class XmlReader {
public:
    explicit XmlReader(const XmlLimits& limits = {});
    ~XmlReader();
    XmlReader(const XmlReader&) = delete;
    XmlReader& operator=(const XmlReader&) = delete;

    /// Takes an element that is complete, out of the tree; an error ends the reading. What it throws comes out of
    /// read().
    using Taker = std::function<std::optional<ProtocolError>(XmlElement& element)>;

    /// From now on each child of the element of that name, at that depth (1 for the root), goes to the taker as soon as
    /// it is complete, and is no longer there in the end: a long answer takes the memory of one of its objects. The
    /// limits then are those of one child and what stands around them all. The name outlives the reader.
    void handOut(std::string_view parent, std::size_t depth, Taker taker);

    /// The next bytes. An error ends the reading; whoever goes on gets it again. Pieces of 64 KiB and more cost least.
    std::optional<ProtocolError> read(std::string_view piece);

    /// Behind the last bytes. Attributes that DSP0201 requires are present in the result; which child may stand where
    /// is for the caller to judge.
    std::variant<XmlElement, ProtocolError> finish();

    /// Bytes that the tree takes so far, without what the C++ library keeps in reserve.
    [[nodiscard]] std::size_t heldBytes() const;

private:
    class State;
    std::unique_ptr<State> state;
};

/// Reads a document that is at hand as a whole.
std::variant<XmlElement, ProtocolError> parseXml(std::string_view document, const XmlLimits& limits = {});

} // namespace cimhost::cimxml
