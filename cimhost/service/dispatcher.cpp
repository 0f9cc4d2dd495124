#include "cimhost/service/dispatcher.h"

#include "cimhost/broker/visit_value.h"
#include "cimhost/cimxml/class_encoder.h"
#include "cimhost/service/answer_pieces.h"
#include "cimhost/service/answer_sink.h"
#include "cimhost/service/association_requests.h"
#include "cimhost/service/call.h"
#include "cimhost/service/method_requests.h"
#include "cimhost/service/parameters.h"
#include "cimhost/service/pull_requests.h"
#include "cimhost/service/request_values.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <utility>

namespace cimhost {

namespace {

using cimxml::Encoder;
using cimxml::Request;

constexpr std::size_t largestReserve = std::size_t{8} << 20;

// LocalOnly is deprecated for instances, and servers differ in what they do with it. Here all properties are sent, as
// if it were false. The provider sees what the client said.
void enumerateInstances(const Call& call) {
    call.caller.flags = readFlags(call.request, {{"LocalOnly", CMPI_FLAG_LocalOnly, true},
                                                 {"DeepInheritance", CMPI_FLAG_DeepInheritance, true},
                                                 {"IncludeQualifiers", CMPI_FLAG_IncludeQualifiers, false},
                                                 {"IncludeClassOrigin", CMPI_FLAG_IncludeClassOrigin, false}});
    const bool isDeep = (call.caller.flags & CMPI_FLAG_DeepInheritance) != 0;
    const PropertyList list = propertyList(call.request);
    const ClassDeclaration& declaration =
        call.operations.findClass(call.request.nameSpace, requiredClassName(call.request, "ClassName"));
    Selection selection(isDeep ? nullptr : &declaration, list);
    const auto encode =
        Overloaded{[&](const InstanceObject& instance) {
                       call.encoder.raw("<VALUE.NAMEDINSTANCE>");
                       call.encoder.instanceName(instance);
                       call.encoder.instance(instance, {(call.caller.flags & CMPI_FLAG_IncludeClassOrigin) != 0,
                                                        selection.of(instance.declaration())});
                       call.encoder.raw("</VALUE.NAMEDINSTANCE>");
                   },
                   [](const ObjectPathObject&) {}};
    answerWith(call, encode, [&](ObjectSink& sink) {
        call.operations.enumerateInstances(call.scope, call.caller, declaration, isDeep, list, sink);
    });
}

void enumerateInstanceNames(const Call& call) {
    const ClassDeclaration& declaration =
        call.operations.findClass(call.request.nameSpace, requiredClassName(call.request, "ClassName"));
    const auto encode = Overloaded{[](const InstanceObject&) {},
                                   [&](const ObjectPathObject& path) { call.encoder.instanceName(path); }};
    answerWith(call, encode, [&](ObjectSink& sink) {
        call.operations.enumerateInstanceNames(call.scope, call.caller, declaration, sink);
    });
}

void getInstance(const Call& call) {
    call.caller.flags = readFlags(call.request, {{"LocalOnly", CMPI_FLAG_LocalOnly, true},
                                                 {"IncludeQualifiers", CMPI_FLAG_IncludeQualifiers, false},
                                                 {"IncludeClassOrigin", CMPI_FLAG_IncludeClassOrigin, false}});
    const PropertyList list = propertyList(call.request);
    const auto& name = requiredArgument<cimxml::ObjectPath>(call.request, "InstanceName", "instance name");
    const ObjectPathObject& path = instancePath(call, name, "InstanceName");
    const InstanceObject& instance = call.operations.getInstance(call.scope, call.caller, path, list);
    Selection selection(nullptr, list);
    call.encoder.instance(
        instance, {(call.caller.flags & CMPI_FLAG_IncludeClassOrigin) != 0, selection.of(instance.declaration())});
}

void createInstance(const Call& call) {
    const auto& given = requiredArgument<cimxml::NamedInstance>(call.request, "NewInstance", "instance");
    const ClassDeclaration& declaration = call.operations.findClass(call.request.nameSpace, given.instance.className);
    const ObjectPathObject& path = *call.scope.make().path(declaration.nameSpace(), declaration.name());
    const InstanceObject& instance = makeInstance(call.scope, path, given.instance);
    const ObjectPathObject& made = call.operations.createInstance(call.scope, call.caller, instance);
    call.change.object.clear();
    made.appendText(call.change.object);
    call.encoder.instanceName(made);
}

void modifyInstance(const Call& call) {
    const PropertyList list = propertyList(call.request);
    const auto& given = requiredArgument<cimxml::NamedInstance>(call.request, "ModifiedInstance", "named instance");
    if (!given.path) refuseParameter("ModifiedInstance", "the instance has no name");
    if (!equalNames(given.path->className, given.instance.className)) {
        refuseParameter("ModifiedInstance", "name and instance are of different classes");
    }
    const ObjectPathObject& path = instancePath(call, *given.path, "ModifiedInstance");
    call.operations.modifyInstance(call.scope, call.caller, path, makeInstance(call.scope, path, given.instance), list);
}

void deleteInstance(const Call& call) {
    const auto& name = requiredArgument<cimxml::ObjectPath>(call.request, "InstanceName", "instance name");
    call.operations.deleteInstance(call.scope, call.caller, instancePath(call, name, "InstanceName"));
}

cimxml::ClassOptions classOptions(const Request& request) {
    cimxml::ClassOptions options;
    options.localOnly = booleanParameter(request, "LocalOnly", true);
    options.includeQualifiers = booleanParameter(request, "IncludeQualifiers", true);
    options.includeClassOrigin = booleanParameter(request, "IncludeClassOrigin", false);
    return options;
}

void getClass(const Call& call) {
    cimxml::ClassOptions options = classOptions(call.request);
    if (const PropertyList list = propertyList(call.request)) {
        options.wantsProperty = [names = *list](std::string_view name) { return isListed(names, name); };
    }
    cimxml::appendClass(call.encoder.buffer(),
                        call.operations.findClass(call.request.nameSpace, requiredClassName(call.request, "ClassName"),
                                                  CMPI_RC_ERR_NOT_FOUND),
                        options);
}

std::vector<const ClassDeclaration*> enumeratedClasses(const Call& call) {
    return call.operations.enumerateClasses(call.request.nameSpace, optionalClassName(call.request, "ClassName"),
                                            booleanParameter(call.request, "DeepInheritance", false));
}

void enumerateClasses(const Call& call) {
    const cimxml::ClassOptions options = classOptions(call.request);
    for (const ClassDeclaration* declaration : enumeratedClasses(call)) {
        cimxml::appendClass(call.encoder.buffer(), *declaration, options);
    }
}

void enumerateClassNames(const Call& call) {
    for (const ClassDeclaration* declaration : enumeratedClasses(call)) {
        cimxml::appendClassName(call.encoder.buffer(), declaration->name());
    }
}

void enumerateQualifiers(const Call& call) {
    for (const QualifierDeclaration& declaration : call.operations.qualifiers(call.request.nameSpace)) {
        cimxml::appendQualifierDeclaration(call.encoder.buffer(), declaration);
    }
}

void getQualifier(const Call& call) {
    const auto& name = requiredArgument<cimxml::Value>(call.request, "QualifierName", "text");
    if (name.isArray || name.isNull) refuseParameter("QualifierName", "no text");
    cimxml::appendQualifierDeclaration(call.encoder.buffer(),
                                       call.operations.findQualifier(call.request.nameSpace, name.texts[0]));
}

// What an operation appends to its answer: nothing, what stands inside IRETURNVALUE, or that with its output
// parameters.
enum class Returns { nothing, value, valueAndOutput };

// What an operation is about: declarations; the instances of a class, or what they are associated with; what the server
// keeps of an enumeration.
enum class About { classes, instances, associations, sessions };

struct OperationRow {
    std::string_view name;
    Access needs;
    Returns returns;
    About about;
    void (*run)(const Call&);
    std::string_view parameters; // parted by blanks
};

// clang-format off
constexpr OperationRow operationRows[] = {
    {"EnumerateInstances",     Access::read,   Returns::value,   About::instances,    enumerateInstances,     "ClassName LocalOnly DeepInheritance IncludeQualifiers IncludeClassOrigin PropertyList"},
    {"EnumerateInstanceNames", Access::read,   Returns::value,   About::instances,    enumerateInstanceNames, "ClassName"},
    {"GetInstance",            Access::read,   Returns::value,   About::instances,    getInstance,            "InstanceName LocalOnly IncludeQualifiers IncludeClassOrigin PropertyList"},
    {"CreateInstance",         Access::change, Returns::value,   About::instances,    createInstance,         "NewInstance"},
    {"ModifyInstance",         Access::change, Returns::nothing, About::instances,    modifyInstance,         "ModifiedInstance IncludeQualifiers PropertyList"},
    {"DeleteInstance",         Access::change, Returns::nothing, About::instances,    deleteInstance,         "InstanceName"},
    {"GetClass",               Access::read,   Returns::value,   About::classes,      getClass,               "ClassName LocalOnly IncludeQualifiers IncludeClassOrigin PropertyList"},
    {"EnumerateClasses",       Access::read,   Returns::value,   About::classes,      enumerateClasses,       "ClassName DeepInheritance LocalOnly IncludeQualifiers IncludeClassOrigin"},
    {"EnumerateClassNames",    Access::read,   Returns::value,   About::classes,      enumerateClassNames,    "ClassName DeepInheritance"},
    {"EnumerateQualifiers",    Access::read,   Returns::value,   About::classes,      enumerateQualifiers,    ""},
    {"GetQualifier",           Access::read,   Returns::value,   About::classes,      getQualifier,           "QualifierName"},
    {"Associators",            Access::read,   Returns::value,   About::associations, associators,            "ObjectName AssocClass ResultClass Role ResultRole IncludeQualifiers IncludeClassOrigin PropertyList"},
    {"AssociatorNames",        Access::read,   Returns::value,   About::associations, associatorNames,        "ObjectName AssocClass ResultClass Role ResultRole"},
    {"References",             Access::read,   Returns::value,   About::associations, references,             "ObjectName ResultClass Role IncludeQualifiers IncludeClassOrigin PropertyList"},
    {"ReferenceNames",         Access::read,   Returns::value,   About::associations, referenceNames,         "ObjectName ResultClass Role"},

    {"OpenEnumerateInstances",      Access::read, Returns::valueAndOutput, About::instances,    openEnumerateInstances,      "ClassName DeepInheritance IncludeClassOrigin PropertyList FilterQueryLanguage FilterQuery OperationTimeout ContinueOnError MaxObjectCount"},
    {"OpenEnumerateInstancePaths",  Access::read, Returns::valueAndOutput, About::instances,    openEnumerateInstancePaths,  "ClassName FilterQueryLanguage FilterQuery OperationTimeout ContinueOnError MaxObjectCount"},
    {"OpenAssociatorInstances",     Access::read, Returns::valueAndOutput, About::associations, openAssociatorInstances,     "InstanceName AssocClass ResultClass Role ResultRole IncludeClassOrigin PropertyList FilterQueryLanguage FilterQuery OperationTimeout ContinueOnError MaxObjectCount"},
    {"OpenAssociatorInstancePaths", Access::read, Returns::valueAndOutput, About::associations, openAssociatorInstancePaths, "InstanceName AssocClass ResultClass Role ResultRole FilterQueryLanguage FilterQuery OperationTimeout ContinueOnError MaxObjectCount"},
    {"OpenReferenceInstances",      Access::read, Returns::valueAndOutput, About::associations, openReferenceInstances,      "InstanceName ResultClass Role IncludeClassOrigin PropertyList FilterQueryLanguage FilterQuery OperationTimeout ContinueOnError MaxObjectCount"},
    {"OpenReferenceInstancePaths",  Access::read, Returns::valueAndOutput, About::associations, openReferenceInstancePaths,  "InstanceName ResultClass Role FilterQueryLanguage FilterQuery OperationTimeout ContinueOnError MaxObjectCount"},
    {"PullInstancesWithPath",       Access::read, Returns::valueAndOutput, About::sessions,     pullInstancesWithPath,       "EnumerationContext MaxObjectCount"},
    {"PullInstancePaths",           Access::read, Returns::valueAndOutput, About::sessions,     pullInstancePaths,           "EnumerationContext MaxObjectCount"},
    {"CloseEnumeration",            Access::read, Returns::nothing,        About::sessions,     closeEnumeration,            "EnumerationContext"},
};
// clang-format on

const OperationRow* findRow(const Request& request) {
    for (const OperationRow& row : operationRows) {
        if (equalNames(row.name, request.methodName)) return &row;
    }
    return nullptr;
}

const OperationRow& rowFor(const Request& request) {
    if (const OperationRow* row = findRow(request)) return *row;
    throw CimFailure(CMPI_RC_ERR_NOT_SUPPORTED, "this server has no operation " + request.methodName.substr(0, 64));
}

Access accessFor(const Request& request) {
    if (request.kind == Request::Kind::extrinsic) return Access::change;
    const OperationRow* row = findRow(request);
    return row ? row->needs : Access::read;
}

bool mayDo(Access needed, const Caller& caller) { return needed == Access::read || caller.access == Access::change; }

void require(Access needed, const Caller& caller) {
    if (mayDo(needed, caller)) return;
    throw CimFailure(CMPI_RC_ERR_ACCESS_DENIED,
                     "this server lets nobody change anything without name and password, and it has no users: start it "
                     "with --credentials FILE (cimhost user add FILE NAME makes one), or with --anonymous-writes where "
                     "whoever can connect may make changes");
}

// The class whose objects a request is about. Empty if the request names none; then the operation itself refuses it.
std::string_view subjectOf(const Request& request) {
    for (const std::string_view name : {"ClassName", "InstanceName", "ObjectName"}) {
        const cimxml::Argument* argument = request.parameter(name);
        const auto* path = argument ? std::get_if<cimxml::ObjectPath>(argument) : nullptr;
        if (path) return path->className;
    }
    return {};
}

void runOperation(const Call& call) {
    if (call.request.kind == Request::Kind::extrinsic) {
        require(Access::change, call.caller);
        return invokeMethod(call);
    }
    const OperationRow& row = rowFor(call.request);
    require(row.needs, call.caller);
    refuseUnknownParameters(call.request, row.parameters);
    if (row.returns != Returns::value) return row.run(call);
    call.encoder.raw("<IRETURNVALUE>");
    row.run(call);
    call.encoder.raw("</IRETURNVALUE>");
}

CimError errorOf(const std::exception& failure) {
    if (const auto* cim = dynamic_cast<const CimFailure*>(&failure)) return cim->error();
    return {CMPI_RC_ERR_FAILED, failure.what()};
}

} // namespace

Dispatcher::Dispatcher(Operations& behind, Broker& owner, AuditLog* changes, std::size_t most,
                       const PullOptions& pullOptions)
    : operations(behind), broker(owner), audit(changes), longestAnswer(most), tags(behind.repository()),
      sessions(std::make_shared<PullSessions>(pullOptions)) {}

void Dispatcher::tell(const Request& request, const Caller& caller, const ChangeNote& change) const {
    if (!audit || accessFor(request) == Access::read) return;
    const AuditLog::Change told{caller.client, caller.principal, request.methodName, change.object, change.result};
    if (caller.access == Access::read) return audit->refused(told);
    audit->changed(told);
}

namespace {

// Ends the enumeration if its context does not reach the client, since nobody else could ask for it.
Receipt receiptFor(const std::string& context, std::weak_ptr<PullSessions> sessions) {
    if (context.empty()) return {};
    return Receipt([context, from = std::move(sessions)] {
        if (const std::shared_ptr<PullSessions> all = from.lock()) all->end(context);
    });
}

// What stands around the answer to one operation.
class Message {
public:
    Message(ByteBuffer& target, const Request& request)
        : document(target), element(request.kind == Request::Kind::intrinsic ? "IMETHODRESPONSE" : "METHODRESPONSE") {
        document.append("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
                        "<MESSAGE");
        cimxml::appendAttribute(document, "ID", request.messageId);
        cimxml::appendAttribute(document, "PROTOCOLVERSION", "1.0");
        document.append("><SIMPLERSP><");
        document.append(element);
        cimxml::appendAttribute(document, "NAME", request.methodName);
        document.append(">");
    }

    void end() {
        document.append("</");
        document.append(element);
        document.append("></SIMPLERSP></MESSAGE></CIM>\n");
    }

private:
    ByteBuffer& document;
    std::string_view element;
};

} // namespace

Dispatcher::Answer Dispatcher::carryOut(const Request& request, Caller caller, Outlet* outlet) {
    const NamespaceAlias* alias = operations.repository().findAlias(request.nameSpace);
    if (!alias) return answer(request, std::move(caller), outlet);
    Request renamed = request;
    renamed.nameSpace = alias->nameSpace;
    caller.calledNamespace = alias->name;
    return answer(renamed, std::move(caller), outlet);
}

CimError Dispatcher::tooLong() const {
    return {CMPI_RC_ERR_FAILED, "the answer would be longer than " + std::to_string(longestAnswer >> 20) +
                                    " MiB: ask for fewer objects or properties at a time"};
}

Dispatcher::Answer Dispatcher::answer(const Request& request, Caller caller, Outlet* outlet) {
    ByteBuffer document;
    AnswerPieces pieces(document, longestAnswer, std::min(largestReserve, lastSize.load(std::memory_order_relaxed)),
                        outlet);
    Message message(document, request);
    Encoder encoder(document, tags);
    if (!caller.calledNamespace.empty()) encoder.showNamespaceAs(request.nameSpace, caller.calledNamespace);
    ChangeNote change{objectOf(request)};
    std::optional<CimError> error;
    std::string context;
    try {
        RequestScope scope(broker);
        runOperation({operations, scope, request, caller, encoder, change, *sessions, pieces, context});
        message.end();
    } catch (const ByteBuffer::Full&) {
        error = tooLong();
    } catch (const std::exception& failure) {
        error = errorOf(failure);
    }
    Receipt receipt = receiptFor(context, sessions);
    if (error) {
        receipt = {};
        document = refuse(request, *error);
        change.result = statusName(error->code);
    }
    tell(request, caller, change);
    if (!pieces.hasBegun()) lastSize.store(document.size() + document.size() / 8, std::memory_order_relaxed);
    return {std::move(document), std::move(error), std::move(receipt)};
}

ByteBuffer Dispatcher::refuse(const Request& request, const CimError& error) const {
    ByteBuffer document;
    Message message(document, request);
    Encoder(document, tags).error(error);
    message.end();
    return document;
}

std::vector<std::string_view> Dispatcher::operationNames() {
    std::vector<std::string_view> names;
    for (const OperationRow& row : operationRows)
        names.push_back(row.name);
    names.insert(names.end(), {"InvokeMethod", "unknown"});
    return names;
}

std::size_t Dispatcher::operationOf(const Request& request) {
    if (request.kind == Request::Kind::extrinsic) return std::size(operationRows);
    const OperationRow* row = findRow(request);
    return row ? static_cast<std::size_t>(row - operationRows) : std::size(operationRows) + 1;
}

bool Dispatcher::needsProvider(const Request& request, const Caller& caller) const {
    if (request.kind == Request::Kind::extrinsic) return mayDo(Access::change, caller);
    const OperationRow* row = findRow(request);
    if (!row || row->about == About::classes || row->about == About::sessions) return false;
    if (!mayDo(row->needs, caller)) return false;
    // A subscription belongs to the server, but the provider is told of it.
    if (row->needs == Access::change) return true;
    const ClassDeclaration* subject = operations.repository().find(request.nameSpace, subjectOf(request));
    if (!subject) return false;
    return row->about == About::associations ? operations.asksProviderAbout(*subject)
                                             : operations.asksProviderFor(*subject);
}

std::string_view Dispatcher::aloneAs(const Request& request) const {
    if (request.kind != Request::Kind::extrinsic) return {};
    const ClassDeclaration* target = operations.repository().find(request.nameSpace, request.target.className);
    return target ? operations.registration().aloneAs(*target) : std::string_view();
}

} // namespace cimhost
