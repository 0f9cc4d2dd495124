// Loads a provider library, makes its management interfaces when they are first needed, calls them and cleans up.
#pragma once

#include "cimhost/provider/indication_calls.h"
#include "cimhost/provider/provider_calls.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace cimhost {

/// Thrown if the library cannot be loaded, or has none of the factories of that provider name.
class ProviderLoadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Several threads may call at once, each with a scope of its own. The provider is then called on all of them at once.
class ProviderLibrary final : public ProviderCalls, public IndicationCalls {
public:
    /// Loads the library at once. The factories `<providerName>_Create_...MI` are called when they are first needed.
    /// The broker outlives this. Throws ProviderLoadError.
    ProviderLibrary(const std::filesystem::path& file, std::string providerName, Broker& broker);
    /// Shuts down, unless that has been done. The library stays in memory, since its threads may still run.
    ~ProviderLibrary() override;
    ProviderLibrary(const ProviderLibrary&) = delete;
    ProviderLibrary& operator=(const ProviderLibrary&) = delete;

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

    /// references and referenceNames ignore filter.resultClass and filter.resultRole. A role also becomes the context
    /// entry CMPIRole.
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

    std::optional<CimError> authorizeFilter(RequestScope& scope, const FilterCall& call) override;
    std::optional<CimError> mustPoll(RequestScope& scope, const FilterCall& call) override;
    std::optional<CimError> activateFilter(RequestScope& scope, const FilterCall& call, bool isFirst) override;
    std::optional<CimError> deactivateFilter(RequestScope& scope, const FilterCall& call, bool isLast) override;
    std::optional<CimError> enableIndications(RequestScope& scope) override;

    /// Cleans up every interface that was made, as a server does when it ends: instance, association, method,
    /// indication. Called while no call is under way. Later calls fail. Threads of the provider that still run are
    /// reported.
    void shutdown();

private:
    struct Interfaces;
    std::unique_ptr<Interfaces> interfaces;
};

} // namespace cimhost
