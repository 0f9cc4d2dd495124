// Classes of a test and a provider that answers for them from memory and remembers what it was asked.
#pragma once

#include "cimhost/cimxml/request.h"
#include "cimhost/service/dispatcher.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace cimhost::testing_support {

struct FakeObject {
    std::string className;
    std::string id;
    std::uint64_t speed = 0;
};

/// An association of two objects, each named by class and id. The far one may lie in another namespace.
struct FakeLink {
    std::string association;
    FakeObject left;
    FakeObject right;
    std::string rightNamespace = {};
};

/// T_Element (abstract) > T_Port (abstract) > T_FibrePort (two instances, "a" and "b"), T_EtherPort (one, "e") and
/// T_Box (none), all with the keys System and Id; T_Counter with a uint32 key and no provider. T_Link joins two ports,
/// Left and Right; T_FibreLink is a T_Link whose Left is a T_FibrePort: "a" is linked with "e".
class FakeProvider final : public ProviderCalls {
public:
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

    /// "enumerateInstances T_FibrePort [Id,Speed] flags=2 by=anna in=root/ns", one for each call.
    std::vector<std::string> calls;
    /// The next calls end so, behind what they deliver.
    std::optional<CimError> failure;
    std::vector<FakeObject> objects;
    std::vector<FakeLink> links;

    FakeProvider();

private:
    std::mutex mutex;

    std::vector<const ObjectPathObject*> farEnds(RequestScope& scope, const ObjectPathObject& source,
                                                 const AssociationFilter& filter) const;
    std::vector<const ObjectPathObject*> linkPaths(RequestScope& scope, const ObjectPathObject& source,
                                                   const AssociationFilter& filter) const;
    void note(std::string_view call, const CallContext& context, const ObjectPathObject& source,
              const AssociationFilter& filter, const PropertyList& properties);

    void note(std::string_view call, const CallContext& context, const ObjectPathObject& path,
              const PropertyList& properties = {});
};

/// A dispatcher over the fake provider, and the CIM-XML around requests and answers.
class FakeHost {
public:
    FakeHost();

    /// Calls an intrinsic method with these IPARAMVALUE elements in root/ns; what stands inside the response element.
    std::string call(const std::string& method, const std::string& parameters,
                     const std::string& nameSpace = "root/ns");

    /// Handles a whole document.
    std::string handle(const std::string& document);

    Access access = Access::change; // of whoever asks
    std::string user = "anna";
    ClassRepository repository;
    Registration registration;
    FakeProvider provider;
    std::unique_ptr<Broker> broker;
    std::unique_ptr<Operations> operations;
    std::unique_ptr<Dispatcher> dispatcher;
};

std::string parameter(const std::string& name, const std::string& value);
std::string className(const std::string& name);

/// <INSTANCENAME> with text keys, given as "System=s,Id=a".
std::string instanceName(const std::string& className, const std::string& keys);

std::size_t countOf(const std::string& text, const std::string& part);

} // namespace cimhost::testing_support
