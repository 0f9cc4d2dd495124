// Indications of a running server, put together: subscriptions, their objects, routes and deliveries.
#pragma once

#include "cimhost/indications/interop_objects.h"

#include <filesystem>
#include <string>

namespace cimhost {

struct IndicationOptions {
    SubscriptionOptions subscriptions;
    DeliveryOptions delivery;
    LogSink log;
};

class IndicationServer {
public:
    /// Broker, registration and provider outlive this.
    IndicationServer(Broker& broker, const Registration& registration, IndicationCalls& provider,
                     IndicationOptions options)
        : routes(broker.repository(), options.subscriptions.systemName, options.delivery, options.log),
          kept(broker, registration, provider, routes, std::move(options.subscriptions), options.log), instances(kept) {
    }

    [[nodiscard]] Subscriptions& subscriptions() noexcept { return kept; }
    [[nodiscard]] InteropObjects& objects() noexcept { return instances; }
    [[nodiscard]] Router& router() noexcept { return routes; }

private:
    Router routes;
    Subscriptions kept;
    InteropObjects instances;
};

/// Where a server remembers subscriptions unless it is told: cimhost/subscriptions.json in XDG_STATE_HOME, or in
/// ~/.local/state. Empty where the environment names neither.
std::filesystem::path defaultStateFile();

/// The host's name, as the system reports it.
std::string systemName();

} // namespace cimhost
