// A client of another CIM server, for the few operations that a listener needs to subscribe there.
#pragma once

#include "cimhost/byte_buffer.h"
#include "cimhost/cimxml/xml_tree.h"
#include "cimhost/http/client.h"

#include <filesystem>
#include <string>
#include <string_view>
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
    /// The path of the URL is not used: operations go to /cimom.
    /// @param user "name:password" for HTTP Basic authentication; empty: nobody in particular.
    /// @param authorities as http::Client takes it
    CimClient(const http::Url& server, std::string operationNamespace, std::string_view user,
              const std::filesystem::path& authorities = {});

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

    http::Client client;
    std::string authority;
    std::string nameSpace;
    std::string authorization; // value of the field; empty: none is sent
};

} // namespace cimhost::cli
