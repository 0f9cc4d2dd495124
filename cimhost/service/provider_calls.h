// What the operations ask of a provider: a loaded library in the server, whatever a test likes in its place.
#pragma once

#include "cimhost/provider/provider_library.h"

#include <string>
#include <utility>

namespace cimhost {

class ProviderCalls {
public:
    virtual ~ProviderCalls() = default;

    /// True if what is read of the class is known at once, without a provider that may take its time.
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

    // Whoever changes nothing, associates nothing or has no methods leaves these as they are.

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

/// Calls a provider library, which outlives this.
class LibraryCalls final : public ProviderCalls {
public:
    explicit LibraryCalls(ProviderLibrary& loaded) : library(loaded) {}

    Outcome enumerateInstanceNames(RequestScope& scope, const CallContext& context,
                                   const ObjectPathObject& classPath) override {
        return library.enumerateInstanceNames(scope, context, classPath);
    }
    Outcome enumerateInstances(RequestScope& scope, const CallContext& context, const ObjectPathObject& classPath,
                               const PropertyList& properties) override {
        return library.enumerateInstances(scope, context, classPath, properties);
    }
    Outcome getInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                        const PropertyList& properties) override {
        return library.getInstance(scope, context, path, properties);
    }
    Outcome createInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                           const InstanceObject& instance) override {
        return library.createInstance(scope, context, path, instance);
    }
    Outcome modifyInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                           const InstanceObject& instance, const PropertyList& properties) override {
        return library.modifyInstance(scope, context, path, instance, properties);
    }
    Outcome deleteInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path) override {
        return library.deleteInstance(scope, context, path);
    }
    Outcome associators(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                        const AssociationFilter& filter, const PropertyList& properties) override {
        return library.associators(scope, context, source, filter, properties);
    }
    Outcome associatorNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                            const AssociationFilter& filter) override {
        return library.associatorNames(scope, context, source, filter);
    }
    Outcome references(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                       const AssociationFilter& filter, const PropertyList& properties) override {
        return library.references(scope, context, source, filter, properties);
    }
    Outcome referenceNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                           const AssociationFilter& filter) override {
        return library.referenceNames(scope, context, source, filter);
    }
    Outcome invokeMethod(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                         const std::string& method, const ArgsObject& in) override {
        return library.invokeMethod(scope, context, path, method, in);
    }

private:
    ProviderLibrary& library;
};

} // namespace cimhost
