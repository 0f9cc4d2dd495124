#include "cimhost/service/association_requests.h"

#include "cimhost/broker/visit_value.h"
#include "cimhost/cimxml/class_encoder.h"
#include "cimhost/service/answer_sink.h"
#include "cimhost/service/call.h"
#include "cimhost/service/parameters.h"
#include "cimhost/service/pull_requests.h"

namespace cimhost {

namespace {

const cimxml::ObjectPath& objectName(const Call& call) {
    return requiredArgument<cimxml::ObjectPath>(call.request, "ObjectName", "class or instance name");
}

AssociationFilter associatorsFilter(const cimxml::Request& request) {
    return {optionalClassName(request, "AssocClass").value_or(""),
            optionalClassName(request, "ResultClass").value_or(""), roleParameter(request, "Role"),
            roleParameter(request, "ResultRole")};
}

// The result class of References is the association's own class.
AssociationFilter referencesFilter(const cimxml::Request& request) {
    return {optionalClassName(request, "ResultClass").value_or(""), "", roleParameter(request, "Role"), ""};
}

void readObjectFlags(const Call& call) {
    call.caller.flags = readFlags(call.request, {{"IncludeQualifiers", CMPI_FLAG_IncludeQualifiers, false},
                                                 {"IncludeClassOrigin", CMPI_FLAG_IncludeClassOrigin, false}});
}

// How associators and references differ.
struct Direction {
    AssociationFilter (*filter)(const cimxml::Request& request);
    void (Operations::*instances)(RequestScope&, const Caller&, const ObjectPathObject&, const AssociationFilter&,
                                  const PropertyList&, ObjectSink&);
    void (Operations::*names)(RequestScope&, const Caller&, const ObjectPathObject&, const AssociationFilter&,
                              ObjectSink&);
    decltype(&Operations::associatorClasses) classes;
};

constexpr Direction toAssociators = {associatorsFilter, &Operations::associators, &Operations::associatorNames,
                                     &Operations::associatorClasses};
constexpr Direction toReferences = {referencesFilter, &Operations::references, &Operations::referenceNames,
                                    &Operations::referenceClasses};

bool hasFlag(const Call& call, CMPIFlags flag) { return (call.caller.flags & flag) != 0; }

void appendClasses(const Call& call, const std::vector<const ClassDeclaration*>& classes, const PropertyList& list) {
    const std::string host = hostOf(call);
    cimxml::ClassOptions options;
    options.localOnly = false;
    options.includeQualifiers = hasFlag(call, CMPI_FLAG_IncludeQualifiers);
    options.includeClassOrigin = hasFlag(call, CMPI_FLAG_IncludeClassOrigin);
    if (list) options.wantsProperty = [&list](std::string_view name) { return isListed(*list, name); };
    for (const ClassDeclaration* declaration : classes) {
        call.encoder.raw("<VALUE.OBJECTWITHPATH>");
        call.encoder.classPath(*declaration, host);
        cimxml::appendClass(call.encoder.buffer(), *declaration, options);
        call.encoder.raw("</VALUE.OBJECTWITHPATH>");
    }
}

void appendClassPaths(const Call& call, const std::vector<const ClassDeclaration*>& classes) {
    const std::string host = hostOf(call);
    for (const ClassDeclaration* declaration : classes) {
        call.encoder.raw("<OBJECTPATH>");
        call.encoder.classPath(*declaration, host);
        call.encoder.raw("</OBJECTPATH>");
    }
}

void answerWithObjects(const Call& call, const Direction& direction) {
    readObjectFlags(call);
    const PropertyList list = propertyList(call.request);
    const AssociationFilter filter = direction.filter(call.request);
    const cimxml::ObjectPath& name = objectName(call);
    Operations& operations = call.operations;
    if (!name.namesInstance) {
        return appendClasses(call, (operations.*direction.classes)(call.request.nameSpace, name.className, filter),
                             list);
    }
    const ObjectPathObject& source = instancePath(call, name, "ObjectName");
    const std::string host = hostOf(call);
    Selection selection(nullptr, list);
    const auto encode = Overloaded{[&](const InstanceObject& instance) {
                                       call.encoder.raw("<VALUE.OBJECTWITHPATH>");
                                       call.encoder.instancePath(instance, {host, call.request.nameSpace});
                                       call.encoder.instance(instance, {hasFlag(call, CMPI_FLAG_IncludeClassOrigin),
                                                                        selection.of(instance.declaration())});
                                       call.encoder.raw("</VALUE.OBJECTWITHPATH>");
                                   },
                                   [](const ObjectPathObject&) {}};
    answerWith(call, encode, [&](ObjectSink& sink) {
        (operations.*direction.instances)(call.scope, call.caller, source, filter, list, sink);
    });
}

void answerWithNames(const Call& call, const Direction& direction) {
    const AssociationFilter filter = direction.filter(call.request);
    const cimxml::ObjectPath& name = objectName(call);
    Operations& operations = call.operations;
    if (!name.namesInstance) {
        return appendClassPaths(call, (operations.*direction.classes)(call.request.nameSpace, name.className, filter));
    }
    const ObjectPathObject& source = instancePath(call, name, "ObjectName");
    const std::string host = hostOf(call);
    const auto encode = Overloaded{[](const InstanceObject&) {},
                                   [&](const ObjectPathObject& path) {
                                       call.encoder.raw("<OBJECTPATH>");
                                       call.encoder.instancePath(path, {host, call.request.nameSpace});
                                       call.encoder.raw("</OBJECTPATH>");
                                   }};
    answerWith(call, encode,
               [&](ObjectSink& sink) { (operations.*direction.names)(call.scope, call.caller, source, filter, sink); });
}

// The source of an Open operation is an instance, never a class.
const ObjectPathObject& pulledSource(const Call& call) {
    return instancePath(call, requiredArgument<cimxml::ObjectPath>(call.request, "InstanceName", "instance name"),
                        "InstanceName");
}

void openWithInstances(const Call& call, const Direction& direction) {
    PulledAnswer answer(call, PulledKind::instances);
    call.caller.flags = readFlags(call.request, {{"IncludeClassOrigin", CMPI_FLAG_IncludeClassOrigin, false}});
    const PropertyList list = propertyList(call.request);
    const AssociationFilter filter = direction.filter(call.request);
    const ObjectPathObject& source = pulledSource(call);
    answer.refuseFilter();
    answer.show(Selection(nullptr, list));
    (call.operations.*direction.instances)(call.scope, call.caller, source, filter, list, answer);
    answer.end();
}

void openWithPaths(const Call& call, const Direction& direction) {
    PulledAnswer answer(call, PulledKind::paths);
    const AssociationFilter filter = direction.filter(call.request);
    const ObjectPathObject& source = pulledSource(call);
    answer.refuseFilter();
    (call.operations.*direction.names)(call.scope, call.caller, source, filter, answer);
    answer.end();
}

} // namespace

void associators(const Call& call) { answerWithObjects(call, toAssociators); }

void associatorNames(const Call& call) { answerWithNames(call, toAssociators); }

void references(const Call& call) { answerWithObjects(call, toReferences); }

void referenceNames(const Call& call) { answerWithNames(call, toReferences); }

void openAssociatorInstances(const Call& call) { openWithInstances(call, toAssociators); }

void openAssociatorInstancePaths(const Call& call) { openWithPaths(call, toAssociators); }

void openReferenceInstances(const Call& call) { openWithInstances(call, toReferences); }

void openReferenceInstancePaths(const Call& call) { openWithPaths(call, toReferences); }

} // namespace cimhost
