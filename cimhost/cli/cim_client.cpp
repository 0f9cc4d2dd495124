#include "cimhost/cli/cim_client.h"

#include "cimhost/cimxml/answer.h"
#include "cimhost/cimxml/encoder.h"
#include "cimhost/cimxml/xml_text.h"
#include "cimhost/service/cim_failure.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <stdexcept>

namespace cimhost::cli {

namespace {

// A server has for one call what a command's servers have unless told otherwise; what it answers here is short.
constexpr std::chrono::seconds longestCall{15};
constexpr std::size_t longestAnswer = std::size_t{1} << 20;

void appendOpening(ByteBuffer& out, std::string_view element, std::string_view attribute, std::string_view value) {
    out.append("<");
    out.append(element);
    cimxml::appendAttribute(out, attribute, value);
}

} // namespace

void CimClient::appendNamespacePath(ByteBuffer& out) const {
    out.append("<LOCALNAMESPACEPATH>");
    for (std::string_view rest = nameSpace; !rest.empty();) {
        const std::string_view part = rest.substr(0, rest.find('/'));
        appendOpening(out, "NAMESPACE", "NAME", part);
        out.append("/>");
        rest.remove_prefix(std::min(rest.size(), part.size() + 1));
    }
    out.append("</LOCALNAMESPACEPATH>");
}

std::vector<cimxml::XmlElement> CimClient::call(std::string_view method, std::string_view parameter,
                                                const ByteBuffer& value) {
    ByteBuffer message("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
                       "<MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>");
    appendOpening(message, "IMETHODCALL", "NAME", method);
    message.append(">");
    appendNamespacePath(message);
    appendOpening(message, "IPARAMVALUE", "NAME", parameter);
    message.append(">");
    message.append(value.view());
    message.append("</IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>\n");
    const std::vector<http::Field> fields = {{"Content-Type", "application/xml; charset=\"utf-8\""},
                                             {"CIMProtocolVersion", "1.0"},
                                             {"CIMOperation", "MethodCall"},
                                             {"CIMMethod", std::string(method)},
                                             {"CIMObject", nameSpace}};
    std::string answer;
    try {
        remote::Connection(server, identity, longestCall)
            .post(fields, message.view(), remote::Connection::Repeat::never, [&answer](std::string_view piece) {
                if (answer.size() + piece.size() > longestAnswer) throw remote::ServerFailure("its answer is too long");
                answer += piece;
            });
    } catch (const remote::ServerFailure& failure) {
        throw std::runtime_error(server.name + ": " + failure.what());
    }
    auto decoded = cimxml::decodeAnswer(answer);
    if (const auto* garbage = std::get_if<cimxml::ProtocolError>(&decoded)) {
        throw std::runtime_error(server.name + ": its answer is not in order: " + garbage->message);
    }
    auto& content = std::get<cimxml::Answer>(decoded);
    if (const auto* error = std::get_if<CimError>(&content)) throw CimFailure(*error);
    return std::move(std::get<std::vector<cimxml::XmlElement>>(content));
}

cimxml::XmlElement CimClient::create(std::string_view className, const ByteBuffer& properties) {
    ByteBuffer instance;
    appendOpening(instance, "INSTANCE", "CLASSNAME", className);
    instance.append(">");
    instance.append(properties.view());
    instance.append("</INSTANCE>");
    std::vector<cimxml::XmlElement> values = call("CreateInstance", "NewInstance", instance);
    if (values.size() != 1 || values.front().name != "INSTANCENAME") {
        throw std::runtime_error(server.name + " made an instance, but did not say which");
    }
    return std::move(values.front());
}

cimxml::XmlElement CimClient::createInstance(std::string_view className,
                                             const std::vector<ClientProperty>& properties) {
    ByteBuffer xml;
    for (const ClientProperty& property : properties) {
        appendOpening(xml, "PROPERTY", "NAME", property.name);
        cimxml::appendAttribute(xml, "TYPE", property.type);
        xml.append("><VALUE>");
        cimxml::appendText(xml, property.value);
        xml.append("</VALUE></PROPERTY>");
    }
    return create(className, xml);
}

cimxml::XmlElement CimClient::createAssociation(std::string_view className, const std::vector<Reference>& references) {
    ByteBuffer xml;
    for (const Reference& reference : references) {
        appendOpening(xml, "PROPERTY.REFERENCE", "NAME", reference.name);
        cimxml::appendAttribute(xml, "REFERENCECLASS", reference.className);
        xml.append("><VALUE.REFERENCE><LOCALINSTANCEPATH>");
        appendNamespacePath(xml);
        cimxml::appendElement(xml, reference.target);
        xml.append("</LOCALINSTANCEPATH></VALUE.REFERENCE></PROPERTY.REFERENCE>");
    }
    return create(className, xml);
}

void CimClient::deleteInstance(const cimxml::XmlElement& name) {
    ByteBuffer value;
    cimxml::appendElement(value, name);
    call("DeleteInstance", "InstanceName", value);
}

} // namespace cimhost::cli
