#include "provider_call.h"

#include "cimhost/broker/broker.h"

ServerScope::ServerScope(cimhost::Broker& broker) : host(broker) {
    if (foreign_server::Server::ifAny()) foreign.emplace(nullptr);
}

void ProviderCall::begin(CMPIObjectPath* hostPath) {
    if (!foreign) {
        context = cimhost::ContextObject::make(host.arena());
        result = &collector;
        path = hostPath;
        return;
    }
    context = const_cast<CMPIContext*>(foreign->context());
    result = foreign->result();
    path = foreign->path(hostPath);
    foreign_server::Server::current().announce(path, result);
}

void ProviderCall::end() {
    if (foreign) foreign->finish({CMPI_RC_OK, nullptr}, &collector);
}
