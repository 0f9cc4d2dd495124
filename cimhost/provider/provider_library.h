// A provider library: loads it, makes its management interfaces when they are first needed, calls them and cleans up.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "cimhost/broker/broker.h"
#include "cimhost/broker/result_collector.h"
#include "cimhost/model/cim_error.h"

namespace cimhost {

/// The library cannot be loaded, or it has none of the factories of that provider name.
class ProviderLoadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What becomes the entries of the CMPIContext of a call.
struct CallContext {
    std::string principal;      ///< CMPIPrincipal
    std::string nameSpace;      ///< CMPIInitNameSpace; empty: no entry (as for activating filters)
    CMPIFlags flags = 0;        ///< CMPIInvocationFlags
    std::string acceptLanguage; ///< CMPIAcceptLanguage; empty: no entry
    /// By what other name of the namespace the client asked; empty: by its own. For the server itself.
    std::string calledNamespace = {};
    /// Where paths and instances go as the provider hands them over; null: into the outcome. For the server itself.
    ObjectSink* sink = nullptr;
};

/// What a call gave. The objects live in the scope of the call. What a provider returned before it failed is there too.
struct Outcome {
    std::optional<CimError> error;
    std::vector<const InstanceObject*> instances;
    std::vector<const ObjectPathObject*> paths;
    std::optional<CMPIData> returnValue;
    const ArgsObject* outArguments = nullptr; ///< of a method call, never null there

    [[nodiscard]] bool ok() const noexcept { return !error; }
};

enum class ProviderKind { instance, association, method, indication };

/// Calls may come from several threads at once, each with a scope of its own; so do the provider's.
class ProviderLibrary {
public:
    /// Loads the library at once; the factories `<providerName>_Create_...MI` are called when first needed. The broker
    /// outlives the library. Throws ProviderLoadError.
    ProviderLibrary(const std::filesystem::path& file, std::string providerName, Broker& broker);
    /// Shuts down, unless that has been done; the library stays in memory, since its threads may not.
    ~ProviderLibrary();
    ProviderLibrary(const ProviderLibrary&) = delete;
    ProviderLibrary& operator=(const ProviderLibrary&) = delete;

    [[nodiscard]] const std::string& name() const noexcept;
    [[nodiscard]] bool has(ProviderKind kind) const noexcept;

    Outcome enumerateInstanceNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& classPath);
    Outcome enumerateInstances(RequestScope& scope, const CallContext& context, const ObjectPathObject& classPath,
                               const PropertyList& properties);
    Outcome getInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                        const PropertyList& properties);
    Outcome createInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                           const InstanceObject& instance);
    Outcome modifyInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                           const InstanceObject& instance, const PropertyList& properties);
    Outcome deleteInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path);
    Outcome execQuery(RequestScope& scope, const CallContext& context, const ObjectPathObject& classPath,
                      const std::string& query, const std::string& language);

    /// filter.resultClass and filter.resultRole mean nothing to references and referenceNames. A role also becomes the
    /// context entry CMPIRole.
    Outcome associators(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                        const AssociationFilter& filter, const PropertyList& properties);
    Outcome associatorNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                            const AssociationFilter& filter);
    Outcome references(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                       const AssociationFilter& filter, const PropertyList& properties);
    Outcome referenceNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                           const AssociationFilter& filter);

    Outcome invokeMethod(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                         const std::string& method, const ArgsObject& in);

    /// className is the class of the query's FROM. owner is who subscribes.
    Outcome authorizeFilter(RequestScope& scope, const CallContext& context, const SelectExpObject& filter,
                            const std::string& className, const ObjectPathObject& classPath, const std::string& owner);
    Outcome mustPoll(RequestScope& scope, const CallContext& context, const SelectExpObject& filter,
                     const std::string& className, const ObjectPathObject& classPath);
    Outcome activateFilter(RequestScope& scope, const CallContext& context, const SelectExpObject& filter,
                           const std::string& className, const ObjectPathObject& classPath, bool isFirst);
    Outcome deactivateFilter(RequestScope& scope, const CallContext& context, const SelectExpObject& filter,
                             const std::string& className, const ObjectPathObject& classPath, bool isLast);
    Outcome enableIndications(RequestScope& scope, const CallContext& context);
    Outcome disableIndications(RequestScope& scope, const CallContext& context);

    /// Cleans up every interface that was made, as a server that goes down: instance, association, method, indication.
    /// To be called when no call is under way; later calls fail. Reports threads of the provider that still run.
    void shutdown();

private:
    struct Interfaces;
    std::unique_ptr<Interfaces> interfaces;
};

} // namespace cimhost
