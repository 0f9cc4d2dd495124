// What a running server keeps in the interop namespace, put together: subscriptions, routes and deliveries, and what
// the server says of itself.
#pragma once

#include "cimhost/indications/interop_objects.h"

#include <filesystem>
#include <string>

namespace cimhost {

struct IndicationOptions {
    SubscriptionOptions subscriptions;
    bool asksForUser = false; ///< what the server tells of itself
    DeliveryOptions delivery;
    LogSink log;
};

class IndicationServer {
public:
    /// Broker, registration and provider outlive this.
    IndicationServer(Broker& broker, const Registration& registration, IndicationCalls& provider,
                     IndicationOptions options)
        : routes(broker.repository(), options.subscriptions.systemName, options.delivery, options.log),
          kept(broker, registration, provider, routes, options.subscriptions, options.log),
          instances(kept, ServerDescription(broker.repository(), factsOf(options))) {}

    [[nodiscard]] Subscriptions& subscriptions() noexcept { return kept; }
    [[nodiscard]] InteropObjects& objects() noexcept { return instances; }
    [[nodiscard]] Router& router() noexcept { return routes; }

private:
    static ServerFacts factsOf(const IndicationOptions& options);

    Router routes;
    Subscriptions kept;
    InteropObjects instances;
};

/// Where a server remembers subscriptions unless it is told: cimhost/subscriptions.json in XDG_STATE_HOME, or in
/// ~/.local/state. Empty where the environment names neither.
std::filesystem::path defaultStateFile();

} // namespace cimhost
