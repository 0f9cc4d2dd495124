// Classes of a test and a provider that answers for them from memory and remembers what it was asked.
#pragma once

#include "cimhost/cimxml/request.h"
#include "cimhost/service/dispatcher.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace cimhost::testing_support {

/// T_Element (abstract) > T_Port (abstract) > T_FibrePort (two instances, "a" and "b"), T_EtherPort (one, "e"), both
/// with the keys System and Id; T_Counter with a uint32 key and no provider.
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

    /// "enumerateInstances T_FibrePort [Id,Speed] flags=2 by=anna in=root/ns", one for each call.
    std::vector<std::string> calls;
    /// The next calls end so.
    std::optional<CimError> failure;

private:
    std::mutex mutex;

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
