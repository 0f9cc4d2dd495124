#include "cimhost/cimxml/request.h"

#include "cimhost/cimxml/elements.h"
#include "cimhost/model/names.h"

#include <optional>
#include <utility>

namespace cimhost::cimxml {

namespace {

Argument readArgument(XmlElement& element) {
    if (element.name == "CLASS" || element.name == "QUALIFIER.DECLARATION") return UnreadArgument{element.name};
    if (namesObject(element.name)) return objectPath(element);
    if (std::optional<NamedInstance> instance = namedInstance(element)) return std::move(*instance);
    return readValue(element);
}

Parameter intrinsicParameter(XmlElement& element) {
    if (element.name != "IPARAMVALUE") refuse(shown(element) + " inside <IMETHODCALL>");
    Parameter parameter{requiredName(element, "NAME"), {}};
    if (!element.children.empty()) parameter.value = readArgument(onlyChild(element));
    return parameter;
}

Parameter methodParameter(XmlElement& element) {
    if (element.name != "PARAMVALUE") refuse(shown(element) + " inside <METHODCALL>");
    return {requiredName(element, "NAME"), parameterValue(element)};
}

template <typename ReadParameter>
void readParameters(XmlElement& call, Request& request, ReadParameter read) {
    if (call.children.size() > maximumNames) refuse(shown(call) + " has too many parameters");
    for (auto child = call.children.begin() + 1; child != call.children.end(); ++child) {
        Parameter parameter = read(*child);
        if (request.parameter(parameter.name)) {
            refuse("the parameter " + parameter.name.substr(0, 64) + " is given twice");
        }
        request.parameters.push_back(std::move(parameter));
    }
}

void readIntrinsicCall(XmlElement& call, Request& request) {
    request.kind = Request::Kind::intrinsic;
    if (call.children.empty() || call.children.front().name != "LOCALNAMESPACEPATH") {
        refuse("<IMETHODCALL> does not begin with <LOCALNAMESPACEPATH>");
    }
    request.nameSpace = localNamespacePath(call.children.front());
    readParameters(call, request, intrinsicParameter);
}

void readExtrinsicCall(XmlElement& call, Request& request) {
    request.kind = Request::Kind::extrinsic;
    if (call.children.empty() ||
        (call.children.front().name != "LOCALCLASSPATH" && call.children.front().name != "LOCALINSTANCEPATH")) {
        refuse("<METHODCALL> does not begin with <LOCALCLASSPATH> or <LOCALINSTANCEPATH>");
    }
    request.target = objectPath(call.children.front());
    request.nameSpace = request.target.nameSpace;
    readParameters(call, request, methodParameter);
}

void readSimpleRequest(XmlElement& element, Request& request) {
    XmlElement* call = nullptr;
    for (XmlElement& child : element.children) {
        if (child.name == "CORRELATOR") continue;
        if (call) refuse("<SIMPLEREQ> holds more than one call");
        call = &child;
    }
    if (!call) refuse("<SIMPLEREQ> holds no call");
    const bool isIntrinsic = call->name == "IMETHODCALL";
    if (!isIntrinsic && call->name != "METHODCALL") refuse(shown(*call) + " inside <SIMPLEREQ>");
    request.methodName = requiredName(*call, "NAME");
    return isIntrinsic ? readIntrinsicCall(*call, request) : readExtrinsicCall(*call, request);
}

// The message, with one request in it.
XmlElement& readRequest(XmlElement& root) {
    XmlElement& message = readMessage(root);
    const XmlElement& content = onlyChild(message);
    if (content.name == "MULTIREQ" || content.name == "MULTIEXPREQ") {
        refuse("several requests in one message are not supported", ErrorKind::multipleRequestsUnsupported);
    }
    return message;
}

Request readDocument(XmlElement& root) {
    XmlElement& message = readRequest(root);
    XmlElement& content = message.children.front();
    if (content.name == "SIMPLEEXPREQ") {
        refuse("this is a CIM server and no listener for indications", ErrorKind::unsupportedOperation);
    }
    if (content.name != "SIMPLEREQ") refuse(shown(content) + " inside <MESSAGE>");
    Request request;
    request.messageId = *message.attribute("ID");
    request.protocolVersion = *message.attribute("PROTOCOLVERSION");
    readSimpleRequest(content, request);
    return request;
}

ExportRequest readExport(XmlElement& root) {
    XmlElement& message = readRequest(root);
    XmlElement& content = message.children.front();
    if (content.name != "SIMPLEEXPREQ") {
        refuse("this is a listener for indications and no CIM server", ErrorKind::unsupportedOperation);
    }
    XmlElement& call = onlyChild(content);
    if (call.name != "EXPMETHODCALL") refuse(shown(call) + " inside <SIMPLEEXPREQ>");
    if (!equalNames(requiredName(call, "NAME"), "ExportIndication")) {
        refuse("a listener takes ExportIndication and no other call", ErrorKind::unsupportedOperation);
    }
    XmlElement& parameter = onlyChild(call);
    if (parameter.name != "EXPPARAMVALUE") refuse(shown(parameter) + " inside <EXPMETHODCALL>");
    if (!equalNames(requiredName(parameter, "NAME"), "NewIndication")) refuse("the parameter is not NewIndication");
    XmlElement& indication = onlyChild(parameter);
    if (indication.name != "INSTANCE") refuse(shown(indication) + " where the indication stands");
    return {*message.attribute("ID"), readInstance(indication)};
}

template <typename Read>
auto decode(std::variant<XmlElement, ProtocolError> tree, Read read)
    -> std::variant<decltype(read(std::declval<XmlElement&>())), ProtocolError> {
    if (auto* error = std::get_if<ProtocolError>(&tree)) return std::move(*error);
    try {
        return read(std::get<XmlElement>(tree));
    } catch (Refusal& refusal) {
        return std::move(refusal.error);
    }
}

} // namespace

const Argument* Request::parameter(std::string_view name) const {
    for (const Parameter& candidate : parameters) {
        if (equalNames(candidate.name, name)) return &candidate.value;
    }
    return nullptr;
}

std::variant<Request, ProtocolError> decodeRequest(std::string_view document, const XmlLimits& limits) {
    return decode(parseXml(document, limits), readDocument);
}

std::variant<Request, ProtocolError> decodeRequest(XmlReader& document) {
    return decode(document.finish(), readDocument);
}

std::variant<ExportRequest, ProtocolError> decodeExport(std::string_view document, const XmlLimits& limits) {
    return decode(parseXml(document, limits), readExport);
}

} // namespace cimhost::cimxml
