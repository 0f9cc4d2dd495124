// Decides to which listeners an indication goes, and owns the deliveries that bring it there.
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

/// What a subscription selects, and where that goes: one for each subscription.
struct Route {
    std::string nameSpace;
    const ClassDeclaration* from = nullptr;
    std::shared_ptr<const Query> query;
    std::string destination;  ///< tells listeners apart; each has one delivery
    std::string listenerName; ///< what reports call the listener
    http::Url url;
};

class Router {
public:
    /// The repository outlives the router. Throws std::system_error if the system gives no thread.
    /// @param systemName every sequence context begins with it
    Router(const ClassRepository& repository, std::string systemName, DeliveryOptions options, LogSink log);

    /// The same as stop().
    ~Router();
    Router(const Router&) = delete;
    Router& operator=(const Router&) = delete;

    /// Replaces all routes. A listener that has none any more is sent nothing more, not even the indications that wait
    /// for it.
    void setRoutes(std::vector<Route> routes);

    /// Queues the indication once for every route that selects it. Never waits.
    /// @return 0; 1 if there are no routes at all
    CMPIrc deliver(const InstanceObject& indication);

    /// Sends the indications that wait, for no longer than DeliveryOptions::stopGrace. After that nothing is delivered.
    void stop();

    struct Totals {
        DeliveryCounts counts;     ///< of all listeners since the start, also of those that have no route any more
        std::size_t listeners = 0; ///< that have a route now
        std::size_t queued = 0;    ///< indications that wait for these
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
    std::vector<std::shared_ptr<Delivery>> retired; // without a route, until they are over
    DeliveryCounts past;                            // of those that are over
};

} // namespace cimhost
