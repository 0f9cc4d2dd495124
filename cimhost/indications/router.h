// Which listeners an indication goes to, and the deliveries that bring it there.
#pragma once

#include "cimhost/cimxml/encoder.h"
#include "cimhost/indications/delivery.h"
#include "cimhost/indications/query.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace cimhost {

/// What a subscription selects, and where that goes.
struct Route {
    std::string nameSpace;
    const ClassDeclaration* from = nullptr;
    std::shared_ptr<const Query> query;
    std::string destination;  ///< tells listeners apart: one delivery for each
    std::string listenerName; ///< what reports call it
    http::Url url;
};

class Router {
public:
    /// The repository outlives the router. systemName begins every sequence context.
    Router(const ClassRepository& repository, std::string systemName, DeliveryOptions options, LogSink log);

    /// Stops.
    ~Router();
    Router(const Router&) = delete;
    Router& operator=(const Router&) = delete;

    /// From now on these. A listener without a route is told nothing more, not even what waits for it.
    void setRoutes(std::vector<Route> routes);

    /// Queues the indication for every route that selects it: once for each. Never waits. 0, or 1 without any routes.
    CMPIrc deliver(const InstanceObject& indication);

    /// Brings what waits, as far as the grace of the options goes; then nothing is delivered any more.
    void stop();

    /// Of all listeners since the start, also of those that nothing goes to any more; and what waits for them.
    struct Totals {
        DeliveryCounts counts;
        std::size_t listeners = 0;
        std::size_t queued = 0;
    };
    [[nodiscard]] Totals totals();

private:
    struct Target {
        Route route;
        std::shared_ptr<Delivery> delivery;
    };
    using Targets = std::vector<Target>;

    std::shared_ptr<Delivery> deliveryFor(const Route& route);
    void retireUnused(const Targets& used);
    void forgetEnded();
    OpenInstance render(const InstanceObject& indication) const;

    const cimxml::TagTable tags;
    const std::string system;
    const DeliveryOptions settings;
    const LogSink log;

    DeliveryLoop loop;
    mutable std::mutex mutex;
    std::shared_ptr<const Targets> targets;
    std::map<std::string, std::shared_ptr<Delivery>> deliveries;
    std::uint64_t deliveriesMade = 0;
    std::vector<std::shared_ptr<Delivery>> retired; // until they are over
    DeliveryCounts past;                            // of those that are
};

} // namespace cimhost
