// Everything that a running server keeps in the interop namespace: subscriptions, with their routes and deliveries, and
// the description of the server itself.
#pragma once

#include "cimhost/indications/interop_objects.h"

#include <filesystem>
#include <string>

namespace cimhost {

struct IndicationOptions {
    SubscriptionOptions subscriptions;
    bool asksForUser = false; ///< the description says that clients need a name and a password
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

/// The file in which a server keeps subscriptions if it is told no other: cimhost/subscriptions.json in XDG_STATE_HOME,
/// or in ~/.local/state. Empty if the environment names neither.
std::filesystem::path defaultStateFile();

} // namespace cimhost
