#include "cimhost/service/pull_requests.h"

#include "cimhost/service/parameters.h"

#include <optional>
#include <string_view>
#include <utility>

namespace cimhost {

namespace {

using cimxml::Request;

std::chrono::seconds timeoutOf(const Request& request, const PullOptions& limits) {
    const std::optional<std::uint32_t> asked = numberParameter(request, "OperationTimeout");
    if (!asked) return limits.standardTimeout;
    const std::chrono::seconds timeout(*asked);
    const std::string longest = std::to_string(limits.longestTimeout.count());
    if (*asked == 0) {
        throw CimFailure(invalidOperationTimeout,
                         "an enumeration without a timeout is not supported: name 1 to " + longest + " seconds");
    }
    if (timeout > limits.longestTimeout) {
        throw CimFailure(invalidOperationTimeout, "the longest timeout is " + longest + " seconds");
    }
    return timeout;
}

// All elements are collected before the client gets a context, so there is no error after which it could continue.
void refuseContinuation(const Request& request) {
    if (!booleanParameter(request, "ContinueOnError", false)) return;
    throw CimFailure(continuationOnErrorNotSupported, "an enumeration ends with its first error");
}

std::string requiredContext(const Request& request) {
    std::optional<std::string> context = textParameter(request, "EnumerationContext");
    if (!context) refuseParameter("EnumerationContext", "missing");
    return std::move(*context);
}

std::uint32_t requiredCount(const Request& request) {
    const std::optional<std::uint32_t> count = numberParameter(request, "MaxObjectCount");
    if (!count) refuseParameter("MaxObjectCount", "missing");
    return *count;
}

// Without a session the enumeration is exhausted.
void appendOutput(const Call& call, std::unique_ptr<PullSession> session) {
    const bool isEnd = !session;
    call.encoder.raw("<PARAMVALUE NAME=\"EnumerationContext\" PARAMTYPE=\"string\"><VALUE>");
    if (session) call.context = call.pulls.keep(std::move(session));
    call.encoder.raw(call.context);
    call.encoder.raw("</VALUE></PARAMVALUE><PARAMVALUE NAME=\"EndOfSequence\" PARAMTYPE=\"boolean\"><VALUE>");
    call.encoder.raw(isEnd ? "TRUE" : "FALSE");
    call.encoder.raw("</VALUE></PARAMVALUE>");
}

std::unique_ptr<PullSession> takeSession(const Call& call, const std::string& context, std::optional<PulledKind> kind) {
    return call.pulls.take(context, {call.caller.principal, call.request.nameSpace, kind});
}

void pull(const Call& call, PulledKind kind) {
    call.operations.requireNamespace(call.request.nameSpace);
    const std::string context = requiredContext(call.request);
    const std::uint32_t count = requiredCount(call.request);
    std::unique_ptr<PullSession> session = takeSession(call, context, kind);
    call.encoder.raw("<IRETURNVALUE>");
    session->moveTo(call.encoder.buffer(), count);
    call.encoder.raw("</IRETURNVALUE>");
    if (session->isEmpty()) session.reset();
    appendOutput(call, std::move(session));
}

} // namespace

PulledAnswer::PulledAnswer(const Call& behind, PulledKind pulled)
    : call(behind), kind(pulled), host(hostOf(behind)), selection(nullptr, std::nullopt) {
    call.operations.requireNamespace(call.request.nameSpace);
    timeout = timeoutOf(call.request, call.pulls.options());
    refuseContinuation(call.request);
    most = numberParameter(call.request, "MaxObjectCount").value_or(0);
    call.encoder.raw("<IRETURNVALUE>");
    start = call.encoder.buffer().size();
}

void PulledAnswer::refuseFilter() const {
    for (const std::string_view name : {"FilterQueryLanguage", "FilterQuery"}) {
        const std::optional<std::string> text = textParameter(call.request, name);
        if (!text || text->empty()) continue;
        throw CimFailure(filteredEnumerationNotSupported,
                         "an enumeration cannot be filtered: leave out " + std::string(name));
    }
}

void PulledAnswer::deliver(const InstanceObject& instance) {
    const std::size_t begin = call.encoder.buffer().size();
    call.encoder.raw("<VALUE.INSTANCEWITHPATH>");
    call.encoder.instancePath(instance, {host, call.request.nameSpace});
    call.encoder.instance(
        instance, {(call.caller.flags & CMPI_FLAG_IncludeClassOrigin) != 0, selection.of(instance.declaration())});
    call.encoder.raw("</VALUE.INSTANCEWITHPATH>");
    endElement(begin);
}

void PulledAnswer::deliver(const ObjectPathObject& path) {
    const std::size_t begin = call.encoder.buffer().size();
    call.encoder.instancePath(path, {host, call.request.nameSpace});
    endElement(begin);
}

// The bytes from begin on are one more element.
void PulledAnswer::endElement(std::size_t begin) {
    ByteBuffer& answer = call.encoder.buffer();
    if (!session && most > 0 && begin - start < call.pulls.options().bytesOfAnswer) {
        --most;
        return;
    }
    if (!session) session = call.pulls.open({call.caller.principal, call.request.nameSpace, kind}, timeout);
    session->append(answer.view().substr(begin));
    answer.truncate(begin);
}

void PulledAnswer::end() {
    call.encoder.raw("</IRETURNVALUE>");
    appendOutput(call, std::move(session));
}

void openEnumerateInstances(const Call& call) {
    PulledAnswer answer(call, PulledKind::instances);
    call.caller.flags = readFlags(call.request, {{"DeepInheritance", CMPI_FLAG_DeepInheritance, true},
                                                 {"IncludeClassOrigin", CMPI_FLAG_IncludeClassOrigin, false}});
    const bool isDeep = (call.caller.flags & CMPI_FLAG_DeepInheritance) != 0;
    const PropertyList list = propertyList(call.request);
    const ClassDeclaration& declaration =
        call.operations.findClass(call.request.nameSpace, requiredClassName(call.request, "ClassName"));
    answer.refuseFilter();
    answer.show(Selection(isDeep ? nullptr : &declaration, list));
    call.operations.enumerateInstances(call.scope, call.caller, declaration, isDeep, list, answer);
    answer.end();
}

void openEnumerateInstancePaths(const Call& call) {
    PulledAnswer answer(call, PulledKind::paths);
    const ClassDeclaration& declaration =
        call.operations.findClass(call.request.nameSpace, requiredClassName(call.request, "ClassName"));
    answer.refuseFilter();
    call.operations.enumerateInstanceNames(call.scope, call.caller, declaration, answer);
    answer.end();
}

void pullInstancesWithPath(const Call& call) { pull(call, PulledKind::instances); }

void pullInstancePaths(const Call& call) { pull(call, PulledKind::paths); }

void closeEnumeration(const Call& call) {
    call.operations.requireNamespace(call.request.nameSpace);
    takeSession(call, requiredContext(call.request), std::nullopt);
}

} // namespace cimhost
