#include "request.h"

#include "paths.h"
#include "tables.h"

namespace foreign_server {

template <class Wanted>
Wanted* Request::makeOwn() {
    auto made = std::make_unique<Wanted>();
    Wanted* object = made.get();
    adopt(std::move(made), Ownership::server, &scope);
    return object;
}

Request::Request(const CMPIContext* hostContext) : server(Server::current()), ownContext(makeOwn<ContextObject>()) {
    scope.enter();
    if (!hostContext) return;
    ownContext->entries = server.fromHost().entries(hostContext);
    Value session;
    session.type = CMPI_uint32;
    session.number.uint32 = 7;
    ownContext->entries.push_back({"ForeignSessionId", session});
}

Request::~Request() {
    for (const List& list : lists) {
        fillDead(list.items, list.size);
        bury(list.items, list.size);
    }
}

const CMPIContext* Request::context() const { return ownContext->shown(); }

CMPIObjectPath* Request::path(const CMPIObjectPath* hostPath) {
    if (!hostPath) return nullptr;
    auto* made = makeOwn<PathObject>();
    if (server.fromHost().isPlayed(hostPath)) {
        made->played = hostPath;
    } else {
        made->data = server.fromHost().path(hostPath);
    }
    return made->shown();
}

CMPIInstance* Request::instance(const CMPIInstance* hostInstance) {
    if (!hostInstance) return nullptr;
    auto* made = makeOwn<InstanceObject>();
    made->data = server.fromHost().instance(hostInstance);
    return made->shown();
}

CMPIArgs* Request::args(const CMPIArgs* hostArgs) {
    if (!hostArgs) return nullptr;
    lastArgs = makeOwn<ArgsObject>();
    if (server.fromHost().isPlayed(hostArgs)) {
        lastArgs->played = hostArgs;
    } else {
        lastArgs->values = server.fromHost().arguments(hostArgs);
    }
    return lastArgs->shown();
}

CMPISelectExp* Request::selectExp(const CMPISelectExp* hostExpression) {
    if (!hostExpression) return nullptr;
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    auto* made = makeOwn<SelectExpObject>();
    made->query = server.fromHost().text(hostExpression->ft->getString(hostExpression, &status)).value_or("");
    return made->shown();
}

const char* Request::text(const char* hostText) {
    if (!hostText) return nullptr;
    return texts.emplace_back(std::make_unique<ShownText>(hostText))->get();
}

const char** Request::list(const char** hostList) {
    if (!hostList) return nullptr;
    std::size_t count = 1;
    while (hostList[count - 1])
        ++count;
    const std::size_t size = count * sizeof(const char*);
    auto** items = static_cast<const char**>(allocateShown(size));
    for (std::size_t place = 0; place < count; ++place)
        items[place] = text(hostList[place]);
    lists.push_back({items, size});
    return items;
}

CMPIResult* Request::result() {
    returned = makeOwn<ResultObject>();
    return returned->shown();
}

void Request::copyResult(const CMPIResult* hostResult) const {
    const ToHost to(server.host().broker, "the answer");
    const CMPIResultFT& table = *hostResult->ft;
    for (const Value& value : returned->returned) {
        const CMPIStatus status = to.with(value, [&](const CMPIValue* converted, CMPIType type) {
            if (type == CMPI_instance) return table.returnInstance(hostResult, converted->inst);
            if (type == CMPI_ref) return table.returnObjectPath(hostResult, converted->ref);
            return table.returnData(hostResult, converted, type);
        });
        to.expectTaken(status, "what was returned");
    }
    for (std::size_t time = 0; time < returned->doneCount; ++time)
        table.returnDone(hostResult);
}

void Request::copyArguments(CMPIArgs* hostArgs) const {
    const ToHost to(server.host().broker, "the out arguments");
    for (const NamedValue& argument : lastArgs->values) {
        if (!argument.isProviders) continue;
        const CMPIStatus status = to.with(argument.value, [&](const CMPIValue* value, CMPIType type) {
            return hostArgs->ft->addArg(hostArgs, argument.name.c_str(), value, type);
        });
        to.expectTaken(status, argument.name);
    }
}

CMPIStatus Request::finish(const CMPIStatus& status, const CMPIResult* hostResult, CMPIArgs* hostArgs) {
    if (returned && hostResult) copyResult(hostResult);
    if (lastArgs && hostArgs) copyArguments(hostArgs);
    CMPIStatus answered = {status.rc, nullptr};
    if (!status.msg) return answered;
    const auto* message = use<StringObject>(status.msg, "the message of a status");
    if (message && message->text.get())
        answered.msg = ToHost(server.host().broker, "the message of a status").text(message->text.get());
    return answered;
}

} // namespace foreign_server
