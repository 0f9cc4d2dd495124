// The server's own instances in the interop namespace: subscriptions, which clients list, make and remove; the
// description of the server, which clients read; and the associations among all of these.
#pragma once

#include "cimhost/indications/server_description.h"
#include "cimhost/indications/subscriptions.h"
#include "cimhost/provider/provider_calls.h"

namespace cimhost {

class InteropObjects final : public ProviderCalls {
public:
    /// The subscriptions outlive this.
    InteropObjects(Subscriptions& kept, ServerDescription own)
        : subscriptions(kept), description(std::move(own)), describedClasses(description.classes()) {}

    /// The classes of all these objects.
    [[nodiscard]] std::vector<const ClassDeclaration*> classes() const;

    Outcome enumerateInstanceNames(RequestScope& scope, const CallContext& context,
                                   const ObjectPathObject& classPath) override;
    Outcome enumerateInstances(RequestScope& scope, const CallContext& context, const ObjectPathObject& classPath,
                               const PropertyList& properties) override;
    Outcome getInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                        const PropertyList& properties) override;
    Outcome createInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                           const InstanceObject& instance) override;
    /// CIM_ERR_NOT_SUPPORTED: to change a subscription, a client removes it and makes another one.
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

private:
    struct Link;
    using Instances = std::vector<const InstanceObject*>;

    [[nodiscard]] bool isDescribed(const ObjectPathObject& path) const;
    [[nodiscard]] std::vector<std::string> namesToTry(const CallContext& context) const;
    [[nodiscard]] Instances all(RequestScope& scope, std::string_view interopName) const;
    [[nodiscard]] Instances ofClass(RequestScope& scope, const CallContext& context,
                                    const ObjectPathObject& classPath) const;
    [[nodiscard]] std::vector<Link> follow(RequestScope& scope, const CallContext& context,
                                           const ObjectPathObject& source, const AssociationFilter& filter) const;

    Subscriptions& subscriptions;
    const ServerDescription description;
    const std::vector<const ClassDeclaration*> describedClasses;
};

} // namespace cimhost
