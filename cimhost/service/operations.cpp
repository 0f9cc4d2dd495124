#include "cimhost/service/operations.h"

#include "cimhost/service/class_associations.h"

#include <algorithm>
#include <utility>

namespace cimhost {

namespace {

std::string quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

CallContext contextOf(const Caller& caller, std::string_view nameSpace, ObjectSink* sink = nullptr) {
    CallContext context;
    context.principal = caller.principal;
    context.nameSpace = std::string(nameSpace);
    context.flags = caller.flags;
    context.acceptLanguage = caller.acceptLanguage;
    context.calledNamespace = caller.calledNamespace;
    context.sink = sink;
    return context;
}

void throwUnlessOk(const Outcome& outcome) {
    if (outcome.error) throw CimFailure(*outcome.error);
}

// Hands over the objects that were answered all at once, without the sink.
void handOver(const Outcome& outcome, ObjectSink& sink) {
    throwUnlessOk(outcome);
    for (const InstanceObject* instance : outcome.instances)
        sink.deliver(*instance);
    for (const ObjectPathObject* path : outcome.paths)
        sink.deliver(*path);
}

// Without deep inheritance a subclass shows only the properties of the class that was asked for. The provider is given
// their names in a list, as production servers do.
PropertyList listFor(const ClassDeclaration& declaration, bool deepInheritance, const PropertyList& properties) {
    if (deepInheritance || properties) return properties;
    std::vector<std::string> names;
    for (const PropertyDeclaration& property : declaration.properties())
        names.push_back(property.name);
    return names;
}

bool isBound(const ObjectPathObject& path, const ClassDeclaration& declaration, std::size_t position) {
    return path.key(declaration.properties()[position].name) != nullptr;
}

void requireExactKeys(const ObjectPathObject& path, const ClassDeclaration& declaration) {
    for (const std::size_t position : declaration.keys()) {
        if (isBound(path, declaration, position)) continue;
        throw CimFailure(CMPI_RC_ERR_INVALID_PARAMETER, "the path lacks the key " +
                                                            declaration.properties()[position].name + " of class " +
                                                            declaration.name());
    }
    for (const NamedData& key : path.keys()) {
        const PropertyDeclaration* property = declaration.property(key.name);
        if (property && property->isKey) continue;
        throw CimFailure(CMPI_RC_ERR_INVALID_PARAMETER, quoted(key.name) + " is no key of class " + declaration.name());
    }
}

} // namespace

void Operations::requireNamespace(std::string_view nameSpace) const {
    if (!classes.hasNamespace(nameSpace)) throw CimFailure(CMPI_RC_ERR_INVALID_NAMESPACE, quoted(nameSpace));
}

const ClassDeclaration& Operations::findClass(std::string_view nameSpace, std::string_view className,
                                              CMPIrc unknownClass) const {
    requireNamespace(nameSpace);
    if (const ClassDeclaration* declaration = classes.find(nameSpace, className)) return *declaration;
    throw CimFailure(unknownClass, "namespace " + std::string(nameSpace) + " has no class " + quoted(className));
}

std::span<const QualifierDeclaration> Operations::qualifiers(std::string_view nameSpace) const {
    requireNamespace(nameSpace);
    return classes.qualifierDeclarations(nameSpace);
}

const QualifierDeclaration& Operations::findQualifier(std::string_view nameSpace, std::string_view name) const {
    for (const QualifierDeclaration& declaration : qualifiers(nameSpace)) {
        if (equalNames(declaration.name, name)) return declaration;
    }
    throw CimFailure(CMPI_RC_ERR_NOT_FOUND,
                     "namespace " + std::string(nameSpace) + " has no qualifier " + quoted(name.substr(0, 64)));
}

std::vector<const ClassDeclaration*> Operations::servedClasses(const ClassDeclaration& declaration) const {
    std::vector<const ClassDeclaration*> served = {&declaration};
    const std::vector<const ClassDeclaration*> below = declaration.allSubclasses();
    served.insert(served.end(), below.begin(), below.end());
    std::erase_if(served, [&](const ClassDeclaration* candidate) {
        return !registered.serves(*candidate, ProviderKind::instance);
    });
    return served;
}

void Operations::requireServed(const ClassDeclaration& declaration) const {
    if (registered.serves(declaration, ProviderKind::instance)) return;
    throw CimFailure(CMPI_RC_ERR_NOT_SUPPORTED, "no provider serves instances of class " + declaration.name());
}

void Operations::enumerateInstances(RequestScope& scope, const Caller& caller, const ClassDeclaration& declaration,
                                    bool deepInheritance, const PropertyList& properties, ObjectSink& sink) {
    const CallContext context = contextOf(caller, declaration.nameSpace(), &sink);
    const PropertyList wanted = listFor(declaration, deepInheritance, properties);
    for (const ClassDeclaration* served : servedClasses(declaration)) {
        const ObjectPathObject* path = scope.make().path(declaration.nameSpace(), served->name());
        handOver(calls.enumerateInstances(scope, context, *path, wanted), sink);
    }
}

void Operations::enumerateInstanceNames(RequestScope& scope, const Caller& caller, const ClassDeclaration& declaration,
                                        ObjectSink& sink) {
    const CallContext context = contextOf(caller, declaration.nameSpace(), &sink);
    for (const ClassDeclaration* served : servedClasses(declaration)) {
        const ObjectPathObject* path = scope.make().path(declaration.nameSpace(), served->name());
        handOver(calls.enumerateInstanceNames(scope, context, *path), sink);
    }
}

std::vector<const InstanceObject*> Operations::enumerateInstances(RequestScope& scope, const Caller& caller,
                                                                  const ClassDeclaration& declaration,
                                                                  bool deepInheritance,
                                                                  const PropertyList& properties) {
    ObjectCollector all(scope.arena());
    enumerateInstances(scope, caller, declaration, deepInheritance, properties, all);
    return std::move(all.instances);
}

std::vector<const ObjectPathObject*> Operations::enumerateInstanceNames(RequestScope& scope, const Caller& caller,
                                                                        const ClassDeclaration& declaration) {
    ObjectCollector all(scope.arena());
    enumerateInstanceNames(scope, caller, declaration, all);
    return std::move(all.paths);
}

const InstanceObject& Operations::getInstance(RequestScope& scope, const Caller& caller, const ObjectPathObject& path,
                                              const PropertyList& properties) {
    const ClassDeclaration& declaration = findClass(path.nameSpace(), path.className());
    requireExactKeys(path, declaration);
    const auto notFound = [&] {
        std::string text;
        path.appendText(text);
        return CimFailure(CMPI_RC_ERR_NOT_FOUND, text);
    };
    if (!registered.serves(declaration, ProviderKind::instance)) throw notFound();
    const Outcome outcome = calls.getInstance(scope, contextOf(caller, declaration.nameSpace()), path, properties);
    throwUnlessOk(outcome);
    if (outcome.instances.size() == 1) return *outcome.instances.front();
    throw CimFailure(CMPI_RC_ERR_FAILED, outcome.instances.empty() ? "the provider delivered too few objects: none"
                                                                   : "the provider delivered too many objects: " +
                                                                         std::to_string(outcome.instances.size()));
}

const ObjectPathObject& Operations::createInstance(RequestScope& scope, const Caller& caller,
                                                   const InstanceObject& instance) {
    const ClassDeclaration& declaration = findClass(instance.nameSpace(), instance.className());
    requireServed(declaration);
    const ObjectPathObject* path = instance.path(scope.arena());
    const Outcome outcome = calls.createInstance(scope, contextOf(caller, declaration.nameSpace()), *path, instance);
    throwUnlessOk(outcome);
    return outcome.paths.empty() ? *path : *outcome.paths.front();
}

void Operations::modifyInstance(RequestScope& scope, const Caller& caller, const ObjectPathObject& path,
                                const InstanceObject& instance, const PropertyList& properties) {
    const ClassDeclaration& declaration = findClass(path.nameSpace(), path.className());
    requireExactKeys(path, declaration);
    requireServed(declaration);
    throwUnlessOk(calls.modifyInstance(scope, contextOf(caller, declaration.nameSpace()), path, instance, properties));
}

void Operations::deleteInstance(RequestScope& scope, const Caller& caller, const ObjectPathObject& path) {
    const ClassDeclaration& declaration = findClass(path.nameSpace(), path.className());
    requireExactKeys(path, declaration);
    requireServed(declaration);
    throwUnlessOk(calls.deleteInstance(scope, contextOf(caller, declaration.nameSpace()), path));
}

bool Operations::servesAssociations(std::string_view nameSpace) const {
    const auto all = classes.classes(nameSpace);
    return std::any_of(all.begin(), all.end(), [&](const ClassDeclaration* candidate) {
        return registered.serves(*candidate, ProviderKind::association);
    });
}

void Operations::requireClasses(std::string_view nameSpace, const AssociationFilter& filter) const {
    if (!filter.associationClass.empty() &&
        !findClass(nameSpace, filter.associationClass, CMPI_RC_ERR_INVALID_PARAMETER).isAssociation()) {
        throw CimFailure(CMPI_RC_ERR_INVALID_PARAMETER, "class " + filter.associationClass + " is no association");
    }
    if (!filter.resultClass.empty()) findClass(nameSpace, filter.resultClass, CMPI_RC_ERR_INVALID_PARAMETER);
}

template <typename Ask>
void Operations::askAssociations(const Caller& caller, const ObjectPathObject& source, const AssociationFilter& filter,
                                 ObjectSink& sink, Ask ask) const {
    const ClassDeclaration& declaration = findClass(source.nameSpace(), source.className());
    requireClasses(source.nameSpace(), filter);
    requireExactKeys(source, declaration);
    const CallContext context = contextOf(caller, declaration.nameSpace(), &sink);
    if (associationCalls == AssociationCalls::once) {
        if (servesAssociations(source.nameSpace())) handOver(ask(context, filter), sink);
        return;
    }
    for (const ClassDeclaration* association : cimhost::referenceClasses(classes, declaration, filter)) {
        if (!registered.serves(*association, ProviderKind::association)) continue;
        AssociationFilter ofClass = filter;
        ofClass.associationClass = association->name();
        handOver(ask(context, ofClass), sink);
    }
}

void Operations::associators(RequestScope& scope, const Caller& caller, const ObjectPathObject& source,
                             const AssociationFilter& filter, const PropertyList& properties, ObjectSink& sink) {
    askAssociations(caller, source, filter, sink, [&](const CallContext& context, const AssociationFilter& asked) {
        return calls.associators(scope, context, source, asked, properties);
    });
}

void Operations::associatorNames(RequestScope& scope, const Caller& caller, const ObjectPathObject& source,
                                 const AssociationFilter& filter, ObjectSink& sink) {
    askAssociations(caller, source, filter, sink, [&](const CallContext& context, const AssociationFilter& asked) {
        return calls.associatorNames(scope, context, source, asked);
    });
}

void Operations::references(RequestScope& scope, const Caller& caller, const ObjectPathObject& source,
                            const AssociationFilter& filter, const PropertyList& properties, ObjectSink& sink) {
    askAssociations(caller, source, filter, sink, [&](const CallContext& context, const AssociationFilter& asked) {
        return calls.references(scope, context, source, asked, properties);
    });
}

void Operations::referenceNames(RequestScope& scope, const Caller& caller, const ObjectPathObject& source,
                                const AssociationFilter& filter, ObjectSink& sink) {
    askAssociations(caller, source, filter, sink, [&](const CallContext& context, const AssociationFilter& asked) {
        return calls.referenceNames(scope, context, source, asked);
    });
}

std::vector<const InstanceObject*> Operations::associators(RequestScope& scope, const Caller& caller,
                                                           const ObjectPathObject& source,
                                                           const AssociationFilter& filter,
                                                           const PropertyList& properties) {
    ObjectCollector all(scope.arena());
    associators(scope, caller, source, filter, properties, all);
    return std::move(all.instances);
}

std::vector<const ObjectPathObject*> Operations::associatorNames(RequestScope& scope, const Caller& caller,
                                                                 const ObjectPathObject& source,
                                                                 const AssociationFilter& filter) {
    ObjectCollector all(scope.arena());
    associatorNames(scope, caller, source, filter, all);
    return std::move(all.paths);
}

std::vector<const InstanceObject*> Operations::references(RequestScope& scope, const Caller& caller,
                                                          const ObjectPathObject& source,
                                                          const AssociationFilter& filter,
                                                          const PropertyList& properties) {
    ObjectCollector all(scope.arena());
    references(scope, caller, source, filter, properties, all);
    return std::move(all.instances);
}

std::vector<const ObjectPathObject*> Operations::referenceNames(RequestScope& scope, const Caller& caller,
                                                                const ObjectPathObject& source,
                                                                const AssociationFilter& filter) {
    ObjectCollector all(scope.arena());
    referenceNames(scope, caller, source, filter, all);
    return std::move(all.paths);
}

bool Operations::asksProviderFor(const ClassDeclaration& declaration) const {
    const std::vector<const ClassDeclaration*> served = servedClasses(declaration);
    return std::any_of(served.begin(), served.end(),
                       [&](const ClassDeclaration* candidate) { return !calls.isAtHand(*candidate); });
}

bool Operations::asksProviderAbout(const ClassDeclaration& source) const {
    return servesAssociations(source.nameSpace()) && !calls.isAtHand(source);
}

const MethodDeclaration& Operations::findMethod(const ClassDeclaration& declaration, std::string_view name) {
    if (const MethodDeclaration* method = declaration.method(name)) return *method;
    throw CimFailure(CMPI_RC_ERR_METHOD_NOT_FOUND,
                     "class " + declaration.name() + " has no method " + quoted(name.substr(0, 64)));
}

Outcome Operations::invokeMethod(RequestScope& scope, const Caller& caller, const ObjectPathObject& path,
                                 const MethodDeclaration& method, const ArgsObject& arguments) {
    const ClassDeclaration& declaration = findClass(path.nameSpace(), path.className());
    if (!registered.serves(declaration, ProviderKind::method)) {
        throw CimFailure(CMPI_RC_ERR_METHOD_NOT_AVAILABLE, "no provider serves methods of class " + declaration.name());
    }
    Outcome outcome =
        calls.invokeMethod(scope, contextOf(caller, declaration.nameSpace()), path, method.name, arguments);
    throwUnlessOk(outcome);
    return outcome;
}

std::vector<const ClassDeclaration*> Operations::associatorClasses(std::string_view nameSpace,
                                                                   std::string_view className,
                                                                   const AssociationFilter& filter) const {
    const ClassDeclaration& source = findClass(nameSpace, className);
    requireClasses(nameSpace, filter);
    return cimhost::associatorClasses(classes, source, filter);
}

std::vector<const ClassDeclaration*> Operations::referenceClasses(std::string_view nameSpace,
                                                                  std::string_view className,
                                                                  const AssociationFilter& filter) const {
    const ClassDeclaration& source = findClass(nameSpace, className);
    requireClasses(nameSpace, filter);
    return cimhost::referenceClasses(classes, source, filter);
}

std::vector<const ClassDeclaration*> Operations::enumerateClasses(std::string_view nameSpace,
                                                                  const std::optional<std::string>& className,
                                                                  bool deepInheritance) const {
    requireNamespace(nameSpace);
    if (className) {
        const ClassDeclaration& top = findClass(nameSpace, *className);
        if (deepInheritance) return top.allSubclasses();
        return {top.subclasses().begin(), top.subclasses().end()};
    }
    std::vector<const ClassDeclaration*> found;
    for (const ClassDeclaration* declaration : classes.classes(nameSpace)) {
        if (deepInheritance || !declaration->superclass()) found.push_back(declaration);
    }
    return found;
}

} // namespace cimhost
