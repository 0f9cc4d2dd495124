// What a running server tells of itself.
#pragma once

#include "cimhost/http/traffic.h"
#include "cimhost/indications/indication_server.h"
#include "cimhost/metrics/exposition.h"
#include "cimhost/service/call_queue.h"
#include "cimhost/service/pull_sessions.h"
#include "cimhost/service/request_figures.h"

#include <chrono>

namespace cimhost::metrics {

/// Where the figures stand. All outlive whoever reads them.
struct ServerFigures {
    const http::Traffic& traffic; // of the CIM clients
    const RequestFigures& requests;
    const CallQueue& queue;
    const PullSessions& pulls;
    IndicationServer& indications;
    std::chrono::steady_clock::duration firstBuild{}; // of the inventory, as the server had to wait for it
};

void writeServer(Exposition& out, const ServerFigures& figures);

} // namespace cimhost::metrics
