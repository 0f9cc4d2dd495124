// Calls into the provider's parts past its interfaces, on whichever server it works with.
#pragma once

#include "cimhost/broker/request_scope.h"
#include "cimhost/broker/result_collector.h"
#include "foreign_server/request.h"

#include <optional>

/// The calling thread's place in a request: what the provider makes there ends with it.
class ServerScope {
public:
    explicit ServerScope(cimhost::Broker& broker);

    cimhost::RequestScope host;

protected:
    std::optional<foreign_server::Request> foreign;
};

/// The same with a path, and with a result that ends up in the collector.
class ProviderCall : public ServerScope {
public:
    ProviderCall(cimhost::Broker& broker, cimhost::ResultKind kind) : ServerScope(broker), collector(host, kind) {}

    /// To be called once, with the test's path, before the three are asked for.
    void begin(CMPIObjectPath* hostPath);
    /// Once after the call, and before the collector is looked at.
    void end();

    CMPIContext* context = nullptr;
    CMPIResult* result = nullptr;
    CMPIObjectPath* path = nullptr;
    cimhost::ResultCollector collector;
};
