#include "cimhost/remote/remote_calls.h"

#include "cimhost/model/cim_type.h"
#include "cimhost/model/printable.h"
#include "cimhost/remote/received_objects.h"
#include "cimhost/service/cim_failure.h"

#include <utility>
#include <variant>

namespace cimhost::remote {

namespace {

using Repeat = Connection::Repeat;

constexpr std::size_t longestReason = 300;

[[noreturn]] void refuseAnswer(std::string_view reason) {
    throw ServerFailure("its answer is not in order: " + printable(reason.substr(0, longestReason)));
}

// Asks for the given properties alone, without what servers may add unless they are told otherwise.
void addInstanceFlags(OperationMessage& message, const PropertyList& properties) {
    message.addFlag("IncludeQualifiers", false);
    message.addFlag("IncludeClassOrigin", false);
    message.addTexts("PropertyList", properties);
}

void addAssociatorsFilter(OperationMessage& message, const AssociationFilter& filter) {
    message.addClassIfAny("AssocClass", filter.associationClass);
    message.addClassIfAny("ResultClass", filter.resultClass);
    message.addTextIfAny("Role", filter.role);
    message.addTextIfAny("ResultRole", filter.resultRole);
}

// The result class of References is the association's own class.
void addReferencesFilter(OperationMessage& message, const AssociationFilter& filter) {
    message.addClassIfAny("ResultClass", filter.associationClass);
    message.addTextIfAny("Role", filter.role);
}

} // namespace

// The four association operations of DSP0200, 5.3.2.
struct RemoteCalls::AssociationRequest {
    enum class Returns { objects, names };

    std::string_view method;
    void (*addFilter)(OperationMessage& message, const AssociationFilter& filter);
    Returns returns;
};

constexpr RemoteCalls::AssociationRequest RemoteCalls::toObjects = {"Associators", addAssociatorsFilter,
                                                                    AssociationRequest::Returns::objects};
constexpr RemoteCalls::AssociationRequest RemoteCalls::toObjectNames = {"AssociatorNames", addAssociatorsFilter,
                                                                        AssociationRequest::Returns::names};
constexpr RemoteCalls::AssociationRequest RemoteCalls::toAssociations = {"References", addReferencesFilter,
                                                                         AssociationRequest::Returns::objects};
constexpr RemoteCalls::AssociationRequest RemoteCalls::toAssociationNames = {"ReferenceNames", addReferencesFilter,
                                                                             AssociationRequest::Returns::names};

namespace {

// Puts what a server returns where an outcome has it.
class OutcomeFiller {
public:
    OutcomeFiller(Outcome& target, const ReceivedObjects& maker, const ObjectPathObject* knownPath)
        : outcome(target), objects(maker), known(knownPath) {}

    void operator()(cimxml::NamedInstance& instance) const {
        outcome.instances.push_back(&objects.instance(instance, known));
    }
    void operator()(cimxml::ObjectPath& path) const { outcome.paths.push_back(&objects.path(std::move(path))); }
    void operator()(const cimxml::ClassSummary&) const { throw ReceivedObjectError("a class where an object stands"); }

private:
    Outcome& outcome;
    const ReceivedObjects& objects;
    const ObjectPathObject* known;
};

const MethodDeclaration* declaredMethod(const ObjectPathObject& path, std::string_view method) {
    return path.declaration() ? path.declaration()->method(method) : nullptr;
}

CMPIType declaredType(const MethodDeclaration* method, std::string_view parameter) {
    const ParameterDeclaration* declared = method ? method->parameter(parameter) : nullptr;
    return declared ? declared->type : static_cast<CMPIType>(CMPI_null);
}

cimxml::Response failedWith(const CimError& error) {
    cimxml::Response response;
    response.error = error;
    return response;
}

} // namespace

OperationMessage RemoteCalls::message(std::string_view method, std::string_view nameSpace) {
    return {tags, {std::to_string(++lastId), cimxml::Request::Kind::intrinsic, std::string(method)}, nameSpace};
}

cimxml::Response RemoteCalls::exchange(OperationMessage& message, Repeat repeat,
                                       const cimxml::ResponseReader::Sink& sink) {
    message.finish();
    cimxml::ResponseReader reader(message.asked(), sink);
    try {
        const auto error = connection.post(message.fields(), message.body(), repeat, [&reader](std::string_view piece) {
            if (const auto wrong = reader.read(piece)) refuseAnswer(wrong->message);
        });
        if (error) return failedWith(*error);
    } catch (const ReceivedObjectError& error) {
        refuseAnswer(error.what());
    }
    auto response = reader.finish();
    if (const auto* error = std::get_if<cimxml::ProtocolError>(&response)) refuseAnswer(error->message);
    return std::move(std::get<cimxml::Response>(response));
}

Outcome RemoteCalls::ask(RequestScope& scope, OperationMessage& message, Repeat repeat, std::string_view nameSpace,
                         const ObjectPathObject* knownPath) {
    Outcome outcome;
    const ReceivedObjects objects(scope, nameSpace);
    const OutcomeFiller fill(outcome, objects, knownPath);
    const cimxml::Response response =
        exchange(message, repeat, [&fill](cimxml::ReturnedObject object) { std::visit(fill, object); });
    outcome.error = response.error;
    return outcome;
}

Outcome RemoteCalls::enumerateInstanceNames(RequestScope& scope, const CallContext&,
                                            const ObjectPathObject& classPath) {
    OperationMessage sent = message("EnumerateInstanceNames", classPath.nameSpace());
    sent.addClass("ClassName", classPath.className());
    return ask(scope, sent, Repeat::ifLost, classPath.nameSpace(), nullptr);
}

Outcome RemoteCalls::enumerateInstances(RequestScope& scope, const CallContext&, const ObjectPathObject& classPath,
                                        const PropertyList& properties) {
    OperationMessage sent = message("EnumerateInstances", classPath.nameSpace());
    sent.addClass("ClassName", classPath.className());
    sent.addFlag("DeepInheritance", true);
    sent.addFlag("LocalOnly", false);
    addInstanceFlags(sent, properties);
    return ask(scope, sent, Repeat::ifLost, classPath.nameSpace(), nullptr);
}

Outcome RemoteCalls::getInstance(RequestScope& scope, const CallContext&, const ObjectPathObject& path,
                                 const PropertyList& properties) {
    OperationMessage sent = message("GetInstance", path.nameSpace());
    sent.addPath("InstanceName", path);
    sent.addFlag("LocalOnly", false);
    addInstanceFlags(sent, properties);
    return ask(scope, sent, Repeat::ifLost, path.nameSpace(), &path);
}

Outcome RemoteCalls::createInstance(RequestScope& scope, const CallContext&, const ObjectPathObject& path,
                                    const InstanceObject& instance) {
    OperationMessage sent = message("CreateInstance", path.nameSpace());
    sent.addInstance("NewInstance", instance);
    return ask(scope, sent, Repeat::never, path.nameSpace(), nullptr);
}

Outcome RemoteCalls::modifyInstance(RequestScope& scope, const CallContext&, const ObjectPathObject& path,
                                    const InstanceObject& instance, const PropertyList& properties) {
    OperationMessage sent = message("ModifyInstance", path.nameSpace());
    sent.addNamedInstance("ModifiedInstance", path, instance);
    sent.addTexts("PropertyList", properties);
    return ask(scope, sent, Repeat::never, path.nameSpace(), nullptr);
}

Outcome RemoteCalls::deleteInstance(RequestScope& scope, const CallContext&, const ObjectPathObject& path) {
    OperationMessage sent = message("DeleteInstance", path.nameSpace());
    sent.addPath("InstanceName", path);
    return ask(scope, sent, Repeat::never, path.nameSpace(), nullptr);
}

Outcome RemoteCalls::follow(RequestScope& scope, const ObjectPathObject& source, const AssociationRequest& request,
                            const AssociationFilter& filter, const PropertyList& properties) {
    OperationMessage sent = message(request.method, source.nameSpace());
    sent.addPath("ObjectName", source);
    request.addFilter(sent, filter);
    if (request.returns == AssociationRequest::Returns::objects) addInstanceFlags(sent, properties);
    return ask(scope, sent, Repeat::ifLost, source.nameSpace(), nullptr);
}

Outcome RemoteCalls::associators(RequestScope& scope, const CallContext&, const ObjectPathObject& source,
                                 const AssociationFilter& filter, const PropertyList& properties) {
    return follow(scope, source, toObjects, filter, properties);
}

Outcome RemoteCalls::associatorNames(RequestScope& scope, const CallContext&, const ObjectPathObject& source,
                                     const AssociationFilter& filter) {
    return follow(scope, source, toObjectNames, filter, std::nullopt);
}

Outcome RemoteCalls::references(RequestScope& scope, const CallContext&, const ObjectPathObject& source,
                                const AssociationFilter& filter, const PropertyList& properties) {
    return follow(scope, source, toAssociations, filter, properties);
}

Outcome RemoteCalls::referenceNames(RequestScope& scope, const CallContext&, const ObjectPathObject& source,
                                    const AssociationFilter& filter) {
    return follow(scope, source, toAssociationNames, filter, std::nullopt);
}

Outcome RemoteCalls::invokeMethod(RequestScope& scope, const CallContext&, const ObjectPathObject& path,
                                  const std::string& method, const ArgsObject& in) {
    OperationMessage sent(tags, {std::to_string(++lastId), cimxml::Request::Kind::extrinsic, method}, path);
    for (const NamedData& argument : in.arguments())
        sent.addArgument(argument.name, argument.data);
    cimxml::Response response = exchange(sent, Repeat::never, [](const cimxml::ReturnedObject&) {});
    Outcome outcome;
    outcome.error = response.error;
    ArgsObject* given = scope.make().arguments();
    outcome.outArguments = given;
    const ReceivedObjects objects(scope, path.nameSpace());
    const MethodDeclaration* declared = declaredMethod(path, method);
    try {
        if (response.returnValue) {
            const CMPIType type = declared ? declared->returnType : static_cast<CMPIType>(CMPI_null);
            outcome.returnValue = objects.value(*response.returnValue, type);
        }
        for (cimxml::Response::OutParameter& out : response.outParameters)
            given->list.set(scope.arena(), out.name, objects.value(out.value, declaredType(declared, out.name)));
    } catch (const ReceivedObjectError& error) {
        refuseAnswer(error.what());
    }
    return outcome;
}

RemoteCalls::Classes RemoteCalls::askClasses(OperationMessage& message) {
    Classes classes;
    const cimxml::Response response = exchange(message, Repeat::ifLost, [&classes](cimxml::ReturnedObject object) {
        auto* summary = std::get_if<cimxml::ClassSummary>(&object);
        if (!summary) throw ReceivedObjectError("an object where a class stands");
        classes.push_back(std::move(*summary));
    });
    if (response.error) throw CimFailure(*response.error);
    return classes;
}

RemoteCalls::Classes RemoteCalls::enumerateClasses(std::string_view nameSpace) {
    OperationMessage sent = message("EnumerateClasses", nameSpace);
    sent.addFlag("DeepInheritance", true);
    sent.addFlag("LocalOnly", true);
    sent.addFlag("IncludeQualifiers", false);
    sent.addFlag("IncludeClassOrigin", false);
    return askClasses(sent);
}

RemoteCalls::Classes RemoteCalls::followClasses(std::string_view nameSpace, std::string_view className,
                                                const AssociationRequest& request, const AssociationFilter& filter) {
    OperationMessage sent = message(request.method, nameSpace);
    sent.addClass("ObjectName", className);
    request.addFilter(sent, filter);
    addInstanceFlags(sent, std::nullopt);
    return askClasses(sent);
}

RemoteCalls::Classes RemoteCalls::associatorClasses(std::string_view nameSpace, std::string_view className,
                                                    const AssociationFilter& filter) {
    return followClasses(nameSpace, className, toObjects, filter);
}

RemoteCalls::Classes RemoteCalls::referenceClasses(std::string_view nameSpace, std::string_view className,
                                                   const AssociationFilter& filter) {
    return followClasses(nameSpace, className, toAssociations, filter);
}

} // namespace cimhost::remote
