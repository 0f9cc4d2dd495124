// The calls that operations make to a provider: a loaded library in the server, a fake one in tests.
#pragma once

#include "cimhost/broker/broker.h"
#include "cimhost/broker/object_sink.h"
#include "cimhost/model/cim_error.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace cimhost {

/// Values for the entries of a call's CMPIContext, and two for the server itself.
struct CallContext {
    std::string principal;      ///< CMPIPrincipal
    std::string nameSpace;      ///< CMPIInitNameSpace; empty: no entry (as for activating filters)
    CMPIFlags flags = 0;        ///< CMPIInvocationFlags
    std::string acceptLanguage; ///< CMPIAcceptLanguage; empty: no entry
    /// The further name by which the client calls the namespace; empty: its own name. For the server itself.
    std::string calledNamespace = {};
    /// Takes paths and instances while the provider hands them over; null: they go into the outcome. For the server
    /// itself.
    ObjectSink* sink = nullptr;
};

/// What a call returned. The objects live in the scope of the call. Objects that a provider returned before it failed
/// are included.
struct Outcome {
    std::optional<CimError> error;
    std::vector<const InstanceObject*> instances;
    std::vector<const ObjectPathObject*> paths;
    std::optional<CMPIData> returnValue;
    const ArgsObject* outArguments = nullptr; ///< of a method call, never null there

    [[nodiscard]] bool ok() const noexcept { return !error; }
};

enum class ProviderKind { instance, association, method, indication };

class ProviderCalls {
public:
    virtual ~ProviderCalls() = default;

    /// True if objects of the class are known without a call that may take long.
    [[nodiscard]] virtual bool isAtHand(const ClassDeclaration&) const { return false; }

    virtual Outcome enumerateInstanceNames(RequestScope& scope, const CallContext& context,
                                           const ObjectPathObject& classPath) = 0;
    virtual Outcome enumerateInstances(RequestScope& scope, const CallContext& context,
                                       const ObjectPathObject& classPath, const PropertyList& properties) = 0;
    virtual Outcome getInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                                const PropertyList& properties) = 0;
    virtual Outcome createInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                                   const InstanceObject& instance) = 0;
    virtual Outcome deleteInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path) = 0;

    // Override these only for objects that can be changed, have associations, or have methods.

    virtual Outcome modifyInstance(RequestScope&, const CallContext&, const ObjectPathObject&, const InstanceObject&,
                                   const PropertyList&) {
        return notSupported("");
    }
    virtual Outcome associators(RequestScope&, const CallContext&, const ObjectPathObject&, const AssociationFilter&,
                                const PropertyList&) {
        return {};
    }
    virtual Outcome associatorNames(RequestScope&, const CallContext&, const ObjectPathObject&,
                                    const AssociationFilter&) {
        return {};
    }
    virtual Outcome references(RequestScope&, const CallContext&, const ObjectPathObject&, const AssociationFilter&,
                               const PropertyList&) {
        return {};
    }
    virtual Outcome referenceNames(RequestScope&, const CallContext&, const ObjectPathObject&,
                                   const AssociationFilter&) {
        return {};
    }
    virtual Outcome invokeMethod(RequestScope& scope, const CallContext&, const ObjectPathObject&, const std::string&,
                                 const ArgsObject&) {
        Outcome outcome = notSupported("");
        outcome.outArguments = scope.make().arguments();
        return outcome;
    }

protected:
    static Outcome notSupported(std::string description) {
        Outcome outcome;
        outcome.error = CimError{CMPI_RC_ERR_NOT_SUPPORTED, std::move(description)};
        return outcome;
    }
};

} // namespace cimhost
