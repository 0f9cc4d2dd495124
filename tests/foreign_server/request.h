// One request on its way to the provider and back.
#pragma once

#include "objects.h"
#include "server.h"

#include <memory>
#include <vector>

namespace foreign_server {

/// From its making to its end the calling thread is attached, and everything made in it ends with it. The thread must
/// be in a scope of the host's as well, in which the answers are made.
class Request {
public:
    /// @param hostContext may be null for a request of the server's own.
    explicit Request(const CMPIContext* hostContext);
    ~Request();
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    // What the provider is handed, as copies of the host's; null stays null.

    const CMPIContext* context() const;
    CMPIObjectPath* path(const CMPIObjectPath* hostPath);
    CMPIInstance* instance(const CMPIInstance* hostInstance);
    CMPIArgs* args(const CMPIArgs* hostArgs);
    CMPISelectExp* selectExp(const CMPISelectExp* hostExpression);
    const char* text(const char* hostText);
    const char** list(const char** hostList);
    CMPIResult* result();

    /// Copies what was returned, in its order, and what was set in the arguments, and gives the status in the host's
    /// terms. Null for what the request does not have.
    CMPIStatus finish(const CMPIStatus& status, const CMPIResult* hostResult, CMPIArgs* hostArgs = nullptr);

private:
    struct List {
        const char** items;
        std::size_t size;
    };

    template <class Wanted>
    Wanted* makeOwn();
    void copyResult(const CMPIResult* hostResult) const;
    void copyArguments(CMPIArgs* hostArgs) const;

    Server& server;
    Scope scope{"its request's end"};
    ContextObject* ownContext;
    ResultObject* returned = nullptr;
    ArgsObject* lastArgs = nullptr;
    std::vector<std::unique_ptr<ShownText>> texts;
    std::vector<List> lists;
};

} // namespace foreign_server
