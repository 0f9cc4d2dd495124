#include "cimhost/cimxml/answer.h"

#include "cimhost/cimxml/encoder.h"
#include "cimhost/cimxml/response.h"
#include "cimhost/cimxml/xml_text.h"

#include <string>

namespace cimhost::cimxml {

namespace {

ProtocolError invalid(std::string message) { return {ErrorKind::requestNotValid, std::move(message)}; }

const XmlElement* onlyChildNamed(const XmlElement& element, std::string_view name, std::string_view otherName) {
    if (element.children.size() != 1) return nullptr;
    const XmlElement& child = element.children.front();
    return child.name == name || child.name == otherName ? &child : nullptr;
}

const XmlElement* callOf(const XmlElement& root) {
    if (root.name != "CIM") return nullptr;
    const XmlElement* message = onlyChildNamed(root, "MESSAGE", "MESSAGE");
    const XmlElement* response = message ? onlyChildNamed(*message, "SIMPLERSP", "SIMPLEEXPRSP") : nullptr;
    return response ? onlyChildNamed(*response, "IMETHODRESPONSE", "EXPMETHODRESPONSE") : nullptr;
}

} // namespace

std::variant<Answer, ProtocolError> decodeAnswer(std::string_view document, const XmlLimits& limits) {
    std::variant<XmlElement, ProtocolError> tree = parseXml(document, limits);
    if (auto* error = std::get_if<ProtocolError>(&tree)) return std::move(*error);
    const XmlElement* call = callOf(std::get<XmlElement>(tree));
    if (!call) return invalid("the document is no answer to a CIM operation or an export");
    if (call->children.empty()) return Answer(std::vector<XmlElement>{});
    const XmlElement& content = call->children.front();
    if (content.name == "ERROR") return Answer(readError(content));
    if (content.name == "IRETURNVALUE") return Answer(content.children);
    return invalid("<" + std::string(content.name) + "> inside an answer");
}

void appendElement(ByteBuffer& out, const XmlElement& element) {
    out.append("<");
    out.append(element.name);
    for (const XmlAttribute& attribute : element.attributes)
        appendAttribute(out, attribute.name, attribute.value);
    out.append(">");
    appendText(out, element.text);
    for (const XmlElement& child : element.children)
        appendElement(out, child);
    out.append("</");
    out.append(element.name);
    out.append(">");
}

} // namespace cimhost::cimxml
