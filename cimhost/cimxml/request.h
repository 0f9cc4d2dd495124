// One CIM operation request, decoded from CIM-XML (DSP0200, DSP0201) and free of XML.
#pragma once

#include "cimhost/cimxml/protocol_error.h"
#include "cimhost/cimxml/values.h"
#include "cimhost/cimxml/xml_tree.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace cimhost::cimxml {

// What stands where CLASS or QUALIFIER.DECLARATION does: no operation here takes one.
struct UnreadArgument {
    std::string_view element;
};

// monostate: the parameter is named, but null.
using Argument = std::variant<std::monostate, Value, ObjectPath, NamedInstance, UnreadArgument>;

struct Parameter {
    std::string name;
    Argument value;
};

struct Request {
    enum class Kind { intrinsic, extrinsic };

    std::string messageId;
    std::string protocolVersion;
    Kind kind = Kind::intrinsic;
    std::string nameSpace; // "root/merolt_cmpi"
    std::string methodName;
    ObjectPath target; // extrinsic only: the class or instance whose method is called
    std::vector<Parameter> parameters;

    /// By name, without regard to case; null where the client left it out.
    const Argument* parameter(std::string_view name) const;
};

/// Never throws for what the document holds. The error says what is wrong, for a person at the other end.
std::variant<Request, ProtocolError> decodeRequest(std::string_view document, const XmlLimits& limits = {});

/// The same of a document that was read in pieces, behind the last one.
std::variant<Request, ProtocolError> decodeRequest(XmlReader& document);

/// What a CIM server sends to a listener: one indication.
struct ExportRequest {
    std::string messageId;
    Instance indication;
};

/// The same of an ExportIndication message.
std::variant<ExportRequest, ProtocolError> decodeExport(std::string_view document, const XmlLimits& limits = {});

} // namespace cimhost::cimxml
