// Passes calls about the server's own classes to the server's own objects, and all other calls to the provider.
#pragma once

#include "cimhost/provider/provider_calls.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace cimhost {

class RoutedCalls final : public ProviderCalls {
public:
    /// The provider outlives this.
    explicit RoutedCalls(ProviderCalls& behind) : provider(behind) {}

    /// From now on calls about these classes go to `objects`, which outlives this. Called before the first call.
    void routeTo(ProviderCalls& objects, const std::vector<const ClassDeclaration*>& classes) {
        own = &objects;
        ownClasses.insert(classes.begin(), classes.end());
    }

    [[nodiscard]] bool isAtHand(const ClassDeclaration& declaration) const override {
        return ownClasses.count(&declaration) != 0;
    }

    Outcome enumerateInstanceNames(RequestScope& scope, const CallContext& context,
                                   const ObjectPathObject& classPath) override {
        return of(classPath).enumerateInstanceNames(scope, context, classPath);
    }
    Outcome enumerateInstances(RequestScope& scope, const CallContext& context, const ObjectPathObject& classPath,
                               const PropertyList& properties) override {
        return of(classPath).enumerateInstances(scope, context, classPath, properties);
    }
    Outcome getInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                        const PropertyList& properties) override {
        return of(path).getInstance(scope, context, path, properties);
    }
    Outcome createInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                           const InstanceObject& instance) override {
        return of(path).createInstance(scope, context, path, instance);
    }
    Outcome modifyInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                           const InstanceObject& instance, const PropertyList& properties) override {
        return of(path).modifyInstance(scope, context, path, instance, properties);
    }
    Outcome deleteInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path) override {
        return of(path).deleteInstance(scope, context, path);
    }
    // The provider knows nothing of the server's own objects and associations, so the server alone is asked about
    // these. About any other source the provider is asked first and then the server, whose associations may hold
    // objects of the provider.
    Outcome associators(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                        const AssociationFilter& filter, const PropertyList& properties) override {
        return merge(source, filter, [&](ProviderCalls& calls) {
            return calls.associators(scope, context, source, filter, properties);
        });
    }
    Outcome associatorNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                            const AssociationFilter& filter) override {
        return merge(source, filter,
                     [&](ProviderCalls& calls) { return calls.associatorNames(scope, context, source, filter); });
    }
    Outcome references(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                       const AssociationFilter& filter, const PropertyList& properties) override {
        return merge(source, filter, [&](ProviderCalls& calls) {
            return calls.references(scope, context, source, filter, properties);
        });
    }
    Outcome referenceNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                           const AssociationFilter& filter) override {
        return merge(source, filter,
                     [&](ProviderCalls& calls) { return calls.referenceNames(scope, context, source, filter); });
    }
    Outcome invokeMethod(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                         const std::string& method, const ArgsObject& in) override {
        return of(path).invokeMethod(scope, context, path, method, in);
    }

private:
    [[nodiscard]] bool isAtHand(const ObjectPathObject& path) const {
        return path.declaration() && isAtHand(*path.declaration());
    }

    [[nodiscard]] ProviderCalls& of(const ObjectPathObject& path) const {
        return own && ownClasses.count(path.declaration()) != 0 ? *own : provider;
    }

    [[nodiscard]] bool isOwn(const ObjectPathObject& source, std::string_view association) const {
        return std::any_of(ownClasses.begin(), ownClasses.end(), [&](const ClassDeclaration* declaration) {
            return equalNames(declaration->name(), association) &&
                   equalNames(declaration->nameSpace(), source.nameSpace());
        });
    }

    template <typename Ask>
    Outcome merge(const ObjectPathObject& source, const AssociationFilter& filter, Ask ask) {
        if (!own) return ask(provider);
        if (isAtHand(source) || isOwn(source, filter.associationClass)) return ask(*own);
        Outcome outcome = ask(provider);
        if (outcome.error) return outcome;
        const Outcome further = ask(*own);
        outcome.instances.insert(outcome.instances.end(), further.instances.begin(), further.instances.end());
        outcome.paths.insert(outcome.paths.end(), further.paths.begin(), further.paths.end());
        return outcome;
    }

    ProviderCalls& provider;
    ProviderCalls* own = nullptr;
    std::unordered_set<const ClassDeclaration*> ownClasses;
};

} // namespace cimhost
