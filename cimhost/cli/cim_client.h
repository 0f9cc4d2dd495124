// A client of another CIM server, for the few operations that a listener needs to subscribe there.
#pragma once

#include "cimhost/byte_buffer.h"
#include "cimhost/cimxml/xml_tree.h"
#include "cimhost/remote/connection.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cimhost::cli {

/// A property, as CIM-XML names its type.
struct ClientProperty {
    std::string_view name;
    std::string_view type;
    std::string value;
};

/// Everything throws CimFailure for what the server refuses, std::runtime_error where it does not answer as one.
class CimClient {
public:
    CimClient(remote::Server target, remote::Identity who, std::string operationNamespace)
        : server(std::move(target)), identity(std::move(who)), nameSpace(std::move(operationNamespace)) {}

    /// The <INSTANCENAME> that the server gave.
    cimxml::XmlElement createInstance(std::string_view className, const std::vector<ClientProperty>& properties);
    /// The same of an association: references by name, to what createInstance() gave.
    struct Reference {
        std::string_view name;
        std::string_view className;
        const cimxml::XmlElement& target;
    };
    cimxml::XmlElement createAssociation(std::string_view className, const std::vector<Reference>& references);
    void deleteInstance(const cimxml::XmlElement& name);

private:
    std::vector<cimxml::XmlElement> call(std::string_view method, std::string_view parameter, const ByteBuffer& value);
    cimxml::XmlElement create(std::string_view className, const ByteBuffer& properties);
    void appendNamespacePath(ByteBuffer& out) const;

    const remote::Server server;
    const remote::Identity identity;
    const std::string nameSpace;
};

} // namespace cimhost::cli
