// What comes back for a CIM-XML message that this program sent: to a listener, or to another server.
#pragma once

#include "cimhost/byte_buffer.h"
#include "cimhost/cimxml/protocol_error.h"
#include "cimhost/cimxml/xml_tree.h"
#include "cimhost/model/cim_error.h"

#include <string_view>
#include <variant>
#include <vector>

namespace cimhost::cimxml {

/// What the other side made of the call: its values, or its error.
using Answer = std::variant<std::vector<XmlElement>, CimError>;

/// Decodes the answer to an intrinsic operation or to an export call. Never throws for what the document holds.
std::variant<Answer, ProtocolError> decodeAnswer(std::string_view document, const XmlLimits& limits = {});

/// The element as text again, to be handed back to whom it came from.
void appendElement(ByteBuffer& out, const XmlElement& element);

} // namespace cimhost::cimxml
