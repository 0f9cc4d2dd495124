// One CIM operation as a message to a server: CIM-XML and the header fields that go with it (DSP0200, DSP0201).
#pragma once

#include "cimhost/broker/broker.h"
#include "cimhost/broker/objects.h"
#include "cimhost/byte_buffer.h"
#include "cimhost/cimxml/encoder.h"
#include "cimhost/cimxml/response.h"
#include "cimhost/http/message.h"

#include <string>
#include <string_view>
#include <vector>

namespace cimhost::remote {

class OperationMessage {
public:
    /// Begins an operation on a namespace. The table outlives the message.
    OperationMessage(const cimxml::TagTable& tags, cimxml::Asked asked, std::string_view nameSpace);
    /// Begins a call of a method of an object, or of a class if the path has no keys.
    OperationMessage(const cimxml::TagTable& tags, cimxml::Asked asked, const ObjectPathObject& target);

    // The encoder writes into the message's own buffer.
    OperationMessage(const OperationMessage&) = delete;
    OperationMessage& operator=(const OperationMessage&) = delete;

    // Parameters of an operation on a namespace.

    void addFlag(std::string_view name, bool value);
    void addText(std::string_view name, std::string_view text);
    /// Adds nothing if there is no list.
    void addTexts(std::string_view name, const PropertyList& texts);
    void addClass(std::string_view name, std::string_view className);
    /// These two add nothing for an empty text.
    void addClassIfAny(std::string_view name, std::string_view className);
    void addTextIfAny(std::string_view name, std::string_view text);
    void addPath(std::string_view name, const ObjectPathObject& path);
    void addInstance(std::string_view name, const InstanceObject& instance);
    void addNamedInstance(std::string_view name, const ObjectPathObject& path, const InstanceObject& instance);

    /// Adds an argument of a method.
    void addArgument(std::string_view name, const CMPIData& data);

    /// Ends the message. Called once, after the last parameter.
    void finish();

    [[nodiscard]] const cimxml::Asked& asked() const noexcept { return question; }
    [[nodiscard]] const std::vector<http::Field>& fields() const noexcept { return header; }
    [[nodiscard]] std::string_view body() const noexcept { return document.view(); }

private:
    void open(std::string_view object);
    void openParameter(std::string_view name);
    void closeParameter();

    const cimxml::Asked question;
    std::vector<http::Field> header;
    ByteBuffer document;
    cimxml::Encoder encoder;
};

} // namespace cimhost::remote
