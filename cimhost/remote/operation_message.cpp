#include "cimhost/remote/operation_message.h"

#include "cimhost/cimxml/argument.h"
#include "cimhost/cimxml/class_encoder.h"
#include "cimhost/cimxml/xml_text.h"
#include "cimhost/model/names.h"
#include "cimhost/model/percent.h"

#include <utility>

namespace cimhost::remote {

namespace {

constexpr std::size_t longestObject = 2048; // of a header field, which servers bound

std::string objectField(const ObjectPathObject& target) {
    std::string text;
    target.appendText(text);
    const std::string field = escapePercent(text);
    if (field.size() <= longestObject) return field;
    return escapePercent(std::string(target.nameSpace()).append(":").append(target.className()));
}

std::string_view callElement(cimxml::Request::Kind kind) {
    return kind == cimxml::Request::Kind::intrinsic ? "IMETHODCALL" : "METHODCALL";
}

} // namespace

OperationMessage::OperationMessage(const cimxml::TagTable& tags, cimxml::Asked asked, std::string_view nameSpace)
    : question(std::move(asked)), encoder(document, tags) {
    open(escapePercent(trimNamespace(nameSpace)));
    encoder.localNamespacePath(nameSpace);
}

OperationMessage::OperationMessage(const cimxml::TagTable& tags, cimxml::Asked asked, const ObjectPathObject& target)
    : question(std::move(asked)), encoder(document, tags) {
    open(objectField(target));
    const bool isClass = target.keys().empty();
    encoder.raw(isClass ? "<LOCALCLASSPATH>" : "<LOCALINSTANCEPATH>");
    encoder.localNamespacePath(target.nameSpace());
    isClass ? cimxml::appendClassName(document, target.className()) : encoder.instanceName(target);
    encoder.raw(isClass ? "</LOCALCLASSPATH>" : "</LOCALINSTANCEPATH>");
}

void OperationMessage::open(std::string_view object) {
    header = {{"Content-Type", "application/xml; charset=\"utf-8\""},
              {"CIMProtocolVersion", "1.0"},
              {"CIMOperation", "MethodCall"},
              {"CIMMethod", escapePercent(question.method)},
              {"CIMObject", std::string(object)}};
    encoder.raw("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE");
    cimxml::appendAttribute(document, "ID", question.messageId);
    encoder.raw(" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><");
    encoder.raw(callElement(question.kind));
    cimxml::appendAttribute(document, "NAME", question.method);
    encoder.raw(">");
}

void OperationMessage::finish() {
    encoder.raw("</");
    encoder.raw(callElement(question.kind));
    encoder.raw("></SIMPLEREQ></MESSAGE></CIM>\n");
}

void OperationMessage::openParameter(std::string_view name) {
    encoder.raw("<IPARAMVALUE");
    cimxml::appendAttribute(document, "NAME", name);
    encoder.raw(">");
}

void OperationMessage::closeParameter() { encoder.raw("</IPARAMVALUE>"); }

void OperationMessage::addFlag(std::string_view name, bool value) { addText(name, value ? "TRUE" : "FALSE"); }

void OperationMessage::addText(std::string_view name, std::string_view text) {
    openParameter(name);
    encoder.raw("<VALUE>");
    cimxml::appendText(document, text);
    encoder.raw("</VALUE>");
    closeParameter();
}

void OperationMessage::addTextIfAny(std::string_view name, std::string_view text) {
    if (!text.empty()) addText(name, text);
}

void OperationMessage::addTexts(std::string_view name, const PropertyList& texts) {
    if (!texts) return;
    openParameter(name);
    encoder.raw("<VALUE.ARRAY>");
    for (const std::string& text : *texts) {
        encoder.raw("<VALUE>");
        cimxml::appendText(document, text);
        encoder.raw("</VALUE>");
    }
    encoder.raw("</VALUE.ARRAY>");
    closeParameter();
}

void OperationMessage::addClass(std::string_view name, std::string_view className) {
    openParameter(name);
    cimxml::appendClassName(document, className);
    closeParameter();
}

void OperationMessage::addClassIfAny(std::string_view name, std::string_view className) {
    if (!className.empty()) addClass(name, className);
}

void OperationMessage::addPath(std::string_view name, const ObjectPathObject& path) {
    openParameter(name);
    encoder.instanceName(path);
    closeParameter();
}

void OperationMessage::addInstance(std::string_view name, const InstanceObject& instance) {
    openParameter(name);
    encoder.instance(instance, {});
    closeParameter();
}

void OperationMessage::addNamedInstance(std::string_view name, const ObjectPathObject& path,
                                        const InstanceObject& instance) {
    openParameter(name);
    encoder.raw("<VALUE.NAMEDINSTANCE>");
    encoder.instanceName(path);
    encoder.instance(instance, {});
    encoder.raw("</VALUE.NAMEDINSTANCE>");
    closeParameter();
}

void OperationMessage::addArgument(std::string_view name, const CMPIData& data) {
    cimxml::appendArgument(encoder, "PARAMVALUE", name, data);
}

} // namespace cimhost::remote
