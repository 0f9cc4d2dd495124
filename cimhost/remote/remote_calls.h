// Another CIM server as a provider: each call becomes a message, and each answer becomes objects of the broker.
#pragma once

#include "cimhost/cimxml/encoder.h"
#include "cimhost/cimxml/response.h"
#include "cimhost/provider/provider_calls.h"
#include "cimhost/remote/connection.h"
#include "cimhost/remote/operation_message.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::remote {

/// Used by one thread at a time. An error of the server becomes that of the outcome. If the server gives no answer of
/// CIM, the call throws ServerFailure. Classes that the local repository lacks can be asked for like others.
class RemoteCalls final : public ProviderCalls {
public:
    /// Connection and tags outlive this. The tags belong to the repository of the scopes that calls are made with.
    RemoteCalls(Connection& to, const cimxml::TagTable& tagTable) : connection(to), tags(tagTable) {}

    Outcome enumerateInstanceNames(RequestScope& scope, const CallContext& context,
                                   const ObjectPathObject& classPath) override;
    Outcome enumerateInstances(RequestScope& scope, const CallContext& context, const ObjectPathObject& classPath,
                               const PropertyList& properties) override;
    Outcome getInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                        const PropertyList& properties) override;
    Outcome createInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                           const InstanceObject& instance) override;
    Outcome modifyInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                           const InstanceObject& instance, const PropertyList& properties) override;
    Outcome deleteInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path) override;
    Outcome associators(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                        const AssociationFilter& filter, const PropertyList& properties) override;
    Outcome associatorNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                            const AssociationFilter& filter) override;
    Outcome references(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                       const AssociationFilter& filter, const PropertyList& properties) override;
    Outcome referenceNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                           const AssociationFilter& filter) override;
    Outcome invokeMethod(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                         const std::string& method, const ArgsObject& in) override;

    /// Operations on classes, which providers do not have. They throw CimFailure for an error of the server, and
    /// ServerFailure.
    using Classes = std::vector<cimxml::ClassSummary>;
    Classes enumerateClasses(std::string_view nameSpace);
    Classes associatorClasses(std::string_view nameSpace, std::string_view className, const AssociationFilter& filter);
    Classes referenceClasses(std::string_view nameSpace, std::string_view className, const AssociationFilter& filter);

private:
    struct AssociationRequest;
    static const AssociationRequest toObjects;
    static const AssociationRequest toObjectNames;
    static const AssociationRequest toAssociations;
    static const AssociationRequest toAssociationNames;

    [[nodiscard]] OperationMessage message(std::string_view method, std::string_view nameSpace);
    cimxml::Response exchange(OperationMessage& message, Connection::Repeat repeat,
                              const cimxml::ResponseReader::Sink& sink);
    Outcome ask(RequestScope& scope, OperationMessage& message, Connection::Repeat repeat, std::string_view nameSpace,
                const ObjectPathObject* knownPath);
    Outcome follow(RequestScope& scope, const ObjectPathObject& source, const AssociationRequest& request,
                   const AssociationFilter& filter, const PropertyList& properties);
    Classes askClasses(OperationMessage& message);
    Classes followClasses(std::string_view nameSpace, std::string_view className, const AssociationRequest& request,
                          const AssociationFilter& filter);

    Connection& connection;
    const cimxml::TagTable& tags;
    std::uint64_t lastId = 0;
};

} // namespace cimhost::remote
