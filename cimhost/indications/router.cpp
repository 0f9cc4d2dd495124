#include "cimhost/indications/router.h"

#include "cimhost/model/names.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace cimhost {

namespace {

constexpr std::string_view endTag = "</INSTANCE>";

// Sequence numbers begin anew with each delivery. So each delivery has a context of its own, also after a restart.
std::string sequenceContext(const std::string& system, const std::string& destination, std::uint64_t number) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    return system + "." + std::to_string(microseconds) + "." + std::to_string(number) + "." + destination;
}

bool selects(const Route& route, const InstanceObject& indication) {
    const ClassDeclaration* declaration = indication.declaration();
    return declaration && equalNames(route.nameSpace, indication.nameSpace()) && declaration->isA(*route.from) &&
           route.query->selects(indication);
}

} // namespace

Router::Router(const ClassRepository& repository, std::string systemName, DeliveryOptions options, LogSink sink)
    : tags(repository), system(std::move(systemName)), settings(options), log(std::move(sink)),
      loop(options.connections), targets(std::make_shared<Targets>()) {}

Router::~Router() {
    stop();
    loop.end();
}

std::shared_ptr<Delivery> Router::deliveryFor(const Route& route) {
    std::shared_ptr<Delivery>& delivery = deliveries[route.destination];
    if (!delivery) {
        delivery =
            std::make_shared<Delivery>(loop, route.url, route.listenerName + " at " + route.url.authority(),
                                       sequenceContext(system, route.listenerName, deliveriesMade++), settings, log);
    }
    return delivery;
}

void Router::retireUnused(const Targets& used) {
    for (auto place = deliveries.begin(); place != deliveries.end();) {
        const auto isUsing = [&](const Target& target) { return target.delivery == place->second; };
        if (std::any_of(used.begin(), used.end(), isUsing)) {
            ++place;
            continue;
        }
        place->second->stop(Delivery::Clock::now());
        retired.push_back(std::move(place->second));
        place = deliveries.erase(place);
    }
    forgetEnded();
}

void Router::forgetEnded() {
    std::erase_if(retired, [this](const std::shared_ptr<Delivery>& delivery) {
        if (!delivery->isOver()) return false;
        past += delivery->counts();
        return true;
    });
}

Router::Totals Router::totals() {
    const std::lock_guard lock(mutex);
    forgetEnded();
    Totals totals{past, deliveries.size(), 0};
    for (const std::shared_ptr<Delivery>& delivery : retired)
        totals.counts += delivery->counts();
    for (const auto& [name, delivery] : deliveries) {
        totals.counts += delivery->counts();
        totals.queued += delivery->queued();
    }
    return totals;
}

void Router::setRoutes(std::vector<Route> routes) {
    auto made = std::make_shared<Targets>();
    const std::lock_guard lock(mutex);
    for (Route& route : routes) {
        auto delivery = deliveryFor(route);
        made->push_back({std::move(route), std::move(delivery)});
    }
    retireUnused(*made);
    targets = std::move(made);
}

OpenInstance Router::render(const InstanceObject& indication) const {
    std::vector<bool> selected;
    for (const PropertyDeclaration& property : indication.declaration()->properties()) {
        selected.push_back(!equalNames(property.name, "SequenceContext") &&
                           !equalNames(property.name, "SequenceNumber"));
    }
    ByteBuffer text;
    cimxml::Encoder(text, tags).instance(indication, {false, &selected});
    text.truncate(text.size() - endTag.size());
    return std::make_shared<const std::string>(text.view());
}

CMPIrc Router::deliver(const InstanceObject& indication) {
    std::shared_ptr<const Targets> current;
    {
        const std::lock_guard lock(mutex);
        current = targets;
    }
    OpenInstance text;
    for (const Target& target : *current) {
        if (!selects(target.route, indication)) continue;
        if (!text) text = render(indication);
        target.delivery->enqueue(text);
    }
    return current->empty() ? CMPI_RC_ERR_FAILED : CMPI_RC_OK;
}

void Router::stop() {
    std::map<std::string, std::shared_ptr<Delivery>> ending;
    {
        const std::lock_guard lock(mutex);
        targets = std::make_shared<Targets>();
        ending = std::exchange(deliveries, {});
    }
    const auto until = Delivery::Clock::now() + settings.stopGrace;
    for (const auto& [name, delivery] : ending)
        delivery->stop(until);
    for (const auto& [name, delivery] : ending)
        delivery->waitForEnd();
}

} // namespace cimhost
