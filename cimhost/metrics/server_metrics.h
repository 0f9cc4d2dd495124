// The metrics of a running server itself.
#pragma once

#include "cimhost/http/traffic.h"
#include "cimhost/indications/indication_server.h"
#include "cimhost/metrics/exposition.h"
#include "cimhost/service/call_queue.h"
#include "cimhost/service/pull_sessions.h"
#include "cimhost/service/request_figures.h"

#include <chrono>

namespace cimhost::metrics {

/// The objects that hold the figures. All of them outlive the metrics.
struct ServerFigures {
    const http::Traffic& traffic; // of the CIM clients
    const RequestFigures& requests;
    const CallQueue& queue;
    const PullSessions& pulls;
    IndicationServer& indications;
    std::chrono::steady_clock::duration firstBuild{}; // how long the server waited for the first build of the inventory
};

void writeServer(Exposition& out, const ServerFigures& figures);

} // namespace cimhost::metrics
