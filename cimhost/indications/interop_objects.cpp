#include "cimhost/indications/interop_objects.h"

#include "cimhost/indications/object_key.h"
#include "cimhost/service/cim_failure.h"

#include <algorithm>

namespace cimhost {

namespace {

bool passes(std::string_view filter, std::string_view name) { return filter.empty() || equalNames(filter, name); }

bool passes(std::string_view filter, const ClassDeclaration* declaration) {
    return filter.empty() || (declaration && declaration->isA(filter));
}

std::vector<const ObjectPathObject*> pathsOf(RequestScope& scope, const std::vector<const InstanceObject*>& instances) {
    std::vector<const ObjectPathObject*> paths;
    for (const InstanceObject* instance : instances)
        paths.push_back(instance->path(scope.arena()));
    return paths;
}

// Calls visit(name, path) for every reference of an association that is set.
template <typename Visitor>
void forEachEnd(const InstanceObject& association, Visitor visit) {
    association.forEachSetProperty([&](std::string_view name, const PropertyDeclaration*, const CMPIData& data) {
        if (data.type != CMPI_ref || (data.state & CMPI_nullValue) != 0) return;
        if (const ObjectPathObject* path = ObjectPathObject::from(data.value.ref)) visit(name, *path);
    });
}

} // namespace

// One step from a source over an association to its other end.
struct InteropObjects::Link {
    const InstanceObject* association;
    const ObjectPathObject* far;
};

std::vector<const ClassDeclaration*> InteropObjects::classes() const {
    std::vector<const ClassDeclaration*> both = subscriptions.classes();
    both.insert(both.end(), describedClasses.begin(), describedClasses.end());
    return both;
}

bool InteropObjects::isDescribed(const ObjectPathObject& path) const {
    return std::find(describedClasses.begin(), describedClasses.end(), path.declaration()) != describedClasses.end();
}

// The object that describes the interop namespace answers to every name of that namespace. The name that the client
// uses comes first.
std::vector<std::string> InteropObjects::namesToTry(const CallContext& context) const {
    std::vector<std::string> names = description.interopNames();
    const auto called = std::find(names.begin(), names.end(), context.calledNamespace);
    if (called != names.end()) std::rotate(names.begin(), called, called + 1);
    return names;
}

InteropObjects::Instances InteropObjects::all(RequestScope& scope, std::string_view interopName) const {
    Instances found;
    const bool hasDescription = !describedClasses.empty();
    if (hasDescription) found = description.describe(scope, interopName);
    for (const ClassDeclaration* kept : subscriptions.classes()) {
        for (const InstanceObject* instance : subscriptions.list(scope, kept->name())) {
            found.push_back(instance);
            if (kept->isAssociation() || !hasDescription) continue;
            found.push_back(&description.affected(scope, *instance->path(scope.arena())));
        }
    }
    return found;
}

InteropObjects::Instances InteropObjects::ofClass(RequestScope& scope, const CallContext& context,
                                                  const ObjectPathObject& classPath) const {
    if (!isDescribed(classPath)) return subscriptions.list(scope, classPath.className());
    Instances found = all(scope, namesToTry(context).front());
    std::erase_if(found, [&](const InstanceObject* instance) {
        return !equalNames(instance->className(), classPath.className());
    });
    return found;
}

Outcome InteropObjects::enumerateInstanceNames(RequestScope& scope, const CallContext& context,
                                               const ObjectPathObject& classPath) {
    Outcome outcome;
    outcome.paths = pathsOf(scope, ofClass(scope, context, classPath));
    return outcome;
}

Outcome InteropObjects::enumerateInstances(RequestScope& scope, const CallContext& context,
                                           const ObjectPathObject& classPath, const PropertyList&) {
    Outcome outcome;
    outcome.instances = ofClass(scope, context, classPath);
    return outcome;
}

Outcome InteropObjects::getInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                                    const PropertyList&) {
    Outcome outcome;
    if (!isDescribed(path)) {
        outcome.instances.push_back(&subscriptions.get(scope, path));
        return outcome;
    }
    const std::string key = keyOf(path);
    for (const std::string& name : namesToTry(context)) {
        for (const InstanceObject* instance : all(scope, name)) {
            if (keyOf(*instance->path(scope.arena())) != key) continue;
            outcome.instances.push_back(instance);
            return outcome;
        }
    }
    std::string text;
    path.appendText(text);
    throw CimFailure(CMPI_RC_ERR_NOT_FOUND, text);
}

Outcome InteropObjects::createInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject&,
                                       const InstanceObject& instance) {
    Outcome outcome;
    outcome.paths.push_back(&subscriptions.create(scope, instance, context.principal));
    return outcome;
}

Outcome InteropObjects::modifyInstance(RequestScope&, const CallContext&, const ObjectPathObject& path,
                                       const InstanceObject&, const PropertyList&) {
    return notSupported(isDescribed(path) ? "it tells what the server is like" : "remove it and make another one");
}

Outcome InteropObjects::deleteInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path) {
    if (isDescribed(path)) return notSupported("it tells what the server is like");
    subscriptions.remove(scope, path, context.principal);
    return {};
}

std::vector<InteropObjects::Link> InteropObjects::follow(RequestScope& scope, const CallContext& context,
                                                         const ObjectPathObject& source,
                                                         const AssociationFilter& filter) const {
    std::vector<Link> links;
    const std::vector<const ClassDeclaration*> kept = subscriptions.classes();
    const ClassDeclaration* declaration = source.declaration();
    if (!declaration || kept.empty() || declaration->nameSpace() != kept.front()->nameSpace()) return links;
    const std::string key = keyOf(source);
    for (const std::string& name : namesToTry(context)) {
        for (const InstanceObject* association : all(scope, name)) {
            if (!association->declaration()->isAssociation()) continue;
            if (!passes(filter.associationClass, association->declaration())) continue;
            forEachEnd(*association, [&](std::string_view nearRole, const ObjectPathObject& near) {
                if (!passes(filter.role, nearRole) || keyOf(near) != key) return;
                forEachEnd(*association, [&](std::string_view farRole, const ObjectPathObject& far) {
                    if (farRole == nearRole || !passes(filter.resultRole, farRole)) return;
                    if (passes(filter.resultClass, far.declaration())) links.push_back({association, &far});
                });
            });
        }
        if (!links.empty()) break;
    }
    return links;
}

Outcome InteropObjects::associators(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                                    const AssociationFilter& filter, const PropertyList& properties) {
    Outcome outcome;
    for (const Link& link : follow(scope, context, source, filter)) {
        const Outcome far = getInstance(scope, context, *link.far, properties);
        outcome.instances.push_back(far.instances.front());
    }
    return outcome;
}

Outcome InteropObjects::associatorNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                                        const AssociationFilter& filter) {
    Outcome outcome;
    for (const Link& link : follow(scope, context, source, filter))
        outcome.paths.push_back(link.far);
    return outcome;
}

Outcome InteropObjects::references(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                                   const AssociationFilter& filter, const PropertyList&) {
    Outcome outcome;
    for (const Link& link : follow(scope, context, source, filter))
        outcome.instances.push_back(link.association);
    return outcome;
}

Outcome InteropObjects::referenceNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                                       const AssociationFilter& filter) {
    Outcome outcome = references(scope, context, source, filter, std::nullopt);
    outcome.paths = pathsOf(scope, outcome.instances);
    outcome.instances.clear();
    return outcome;
}

} // namespace cimhost
