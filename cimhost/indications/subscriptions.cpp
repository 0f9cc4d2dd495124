#include "cimhost/indications/subscriptions.h"

#include "cimhost/indications/object_key.h"
#include "cimhost/model/names.h"
#include "cimhost/service/cim_failure.h"
#include "cimhost/service/request_values.h"
#include "cimhost/storage/atomic_file.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace cimhost {

Subscriptions::Subscriptions(Broker& owner, const Registration& registration, IndicationCalls& provider,
                             Router& deliveries, SubscriptionOptions options, LogSink sink)
    : broker(owner), router(deliveries), settings(std::move(options)), logSink(std::move(sink)),
      maker(broker.repository(), settings.interopNamespace, settings.systemName,
            [this](std::string_view key) { return find(key); }),
      filters(broker.repository(), registration, provider, logSink) {}

Subscriptions::~Subscriptions() = default;

void Subscriptions::log(LogLevel level, const std::string& text) const {
    if (logSink) logSink(level, text);
}

std::vector<const ClassDeclaration*> Subscriptions::classes() const {
    std::vector<const ClassDeclaration*> declared;
    for (const KeptClass& row : keptClasses()) {
        if (const auto* found = broker.repository().find(settings.interopNamespace, row.name))
            declared.push_back(found);
    }
    return declared;
}

const KeptObject* Subscriptions::find(std::string_view key) const {
    const auto place = std::find_if(objects.begin(), objects.end(), [&](const auto& one) { return one->key == key; });
    return place == objects.end() ? nullptr : place->get();
}

std::size_t Subscriptions::countOf(KeptKind kind) const {
    return static_cast<std::size_t>(
        std::count_if(objects.begin(), objects.end(), [&](const auto& one) { return one->kind == kind; }));
}

// A copy for a client, with both forms of the source namespace.
InstanceObject& Subscriptions::forClient(RequestScope& scope, const KeptObject& object) {
    InstanceObject& copy = *object.instance->copyTo(scope.arena());
    if (object.kind != KeptKind::filter) return copy;
    const std::vector<std::optional<std::string>> list = {givenText(copy, "SourceNamespace")};
    copy.setProperty("SourceNamespaces", *scope.make().arrayValue(CMPI_string, list));
    return copy;
}

std::unique_ptr<KeptObject> Subscriptions::make(const InstanceObject& given) const {
    std::unique_ptr<KeptObject> object = maker.make(given);
    if (countOf(object->kind) < settings.mostOfEach) return object;
    throw CimFailure(CMPI_RC_ERR_FAILED, "there are " + std::to_string(settings.mostOfEach) + " of them already");
}

// A single user cannot take all the room.
void Subscriptions::requireRoom(const KeptObject& made, const std::string& owner) const {
    const auto count = std::count_if(objects.begin(), objects.end(),
                                     [&](const auto& one) { return one->kind == made.kind && one->owner == owner; });
    if (static_cast<std::size_t>(count) < settings.mostOfUser) return;
    throw CimFailure(CMPI_RC_ERR_FAILED, (owner.empty() ? "there are " : "user " + owner + " has ") +
                                             std::to_string(settings.mostOfUser) +
                                             " of them already: remove others first");
}

void Subscriptions::insert(std::unique_ptr<KeptObject> object) {
    const std::lock_guard lock(access);
    objects.push_back(std::move(object));
}

std::unique_ptr<KeptObject> Subscriptions::take(const KeptObject& object) {
    const std::lock_guard lock(access);
    const auto place =
        std::find_if(objects.begin(), objects.end(), [&](const auto& one) { return one.get() == &object; });
    std::unique_ptr<KeptObject> taken = std::move(*place);
    objects.erase(place);
    return taken;
}

void Subscriptions::refreshRoutes() {
    std::vector<Route> routes;
    for (const auto& object : objects) {
        if (!object->isActive()) continue;
        const KeptObject& filter = *object->filter;
        routes.push_back({filter.sourceNamespace,
                          broker.repository().find(filter.sourceNamespace, filter.query->className()), filter.query,
                          object->destination->key, givenText(*object->destination->instance, "Name"),
                          object->destination->url});
    }
    router.setRoutes(std::move(routes));
}

void Subscriptions::save() {
    if (settings.stateFile.empty()) return;
    std::vector<OwnedInstance> lasting;
    for (const auto& object : objects) {
        if (!object->isTransient()) lasting.push_back({object->instance, object->owner});
    }
    if (lasting.empty() && lastState.empty()) return;
    std::string text = stateText(lasting);
    if (text == lastState) return;
    try {
        // A longer file would be refused when it is read next, and then neither a change nor a restart would succeed.
        if (text.size() > longestStateFile) {
            throw std::runtime_error("together they would take more than " + std::to_string(longestStateFile) +
                                     " bytes; remove others first");
        }
        if (readWholeFile(settings.stateFile, longestStateFile).value_or("") != lastState) {
            throw std::runtime_error(settings.stateFile.string() + ": somebody else has changed it");
        }
        replaceFile(settings.stateFile, text);
    } catch (const std::exception& error) {
        throw CimFailure(CMPI_RC_ERR_FAILED, std::string("subscriptions cannot be remembered: ") + error.what());
    }
    lastState = std::move(text);
}

const ObjectPathObject& Subscriptions::create(RequestScope& scope, const InstanceObject& given,
                                              const std::string& owner) {
    const std::lock_guard change(changing);
    std::unique_ptr<KeptObject> made = make(given);
    requireRoom(*made, owner);
    made->owner = owner;
    const KeptObject& object = *made;
    if (object.kind == KeptKind::subscription) filters.servedClass(*object.filter);
    insert(std::move(made));
    try {
        // The route is made before the provider is told: the provider may deliver an indication at once.
        if (object.isActive()) refreshRoutes();
        if (object.isActive()) filters.activate(scope, object, owner);
    } catch (...) {
        const std::unique_ptr<KeptObject> undone = take(object);
        if (undone->isActive()) refreshRoutes();
        throw;
    }
    try {
        save();
    } catch (...) {
        const std::unique_ptr<KeptObject> undone = take(object);
        if (undone->isActive()) filters.deactivate(scope, *undone, owner);
        if (undone->isActive()) refreshRoutes();
        throw;
    }
    return *object.path->copyTo(scope.arena());
}

void Subscriptions::remove(RequestScope& scope, const ObjectPathObject& path, const std::string& owner) {
    const std::lock_guard change(changing);
    const KeptObject* object = find(keyOf(path));
    if (!object) {
        std::string text;
        path.appendText(text);
        throw CimFailure(CMPI_RC_ERR_NOT_FOUND, text);
    }
    if (std::any_of(objects.begin(), objects.end(), [&](const auto& other) { return other->refersTo(*object); })) {
        throw CimFailure(CMPI_RC_ERR_FAILED, "a subscription refers to it: remove that first");
    }
    std::unique_ptr<KeptObject> taken = take(*object);
    try {
        save();
    } catch (...) {
        insert(std::move(taken));
        throw;
    }
    if (!taken->isActive()) return;
    refreshRoutes();
    filters.deactivate(scope, *taken, owner);
}

std::size_t Subscriptions::size() const {
    const std::lock_guard lock(access);
    return countOf(KeptKind::subscription);
}

const InstanceObject& Subscriptions::get(RequestScope& scope, const ObjectPathObject& path) const {
    const std::lock_guard lock(access);
    if (const KeptObject* object = find(keyOf(path))) return forClient(scope, *object);
    std::string text;
    path.appendText(text);
    throw CimFailure(CMPI_RC_ERR_NOT_FOUND, text);
}

std::vector<const InstanceObject*> Subscriptions::list(RequestScope& scope, std::string_view className) const {
    const std::lock_guard lock(access);
    std::vector<const InstanceObject*> found;
    for (const auto& object : objects) {
        if (equalNames(object->path->className(), className)) found.push_back(&forClient(scope, *object));
    }
    return found;
}

void Subscriptions::restoreObject(const cimxml::Instance& remembered, const Owner& owner) {
    RequestScope scope(broker);
    const ObjectPathObject& path = *scope.make().path(settings.interopNamespace, remembered.className);
    std::unique_ptr<KeptObject> made = make(makeInstance(scope, path, remembered));
    made->owner = owner;
    const KeptObject& object = *made;
    insert(std::move(made));
    if (!object.isActive()) return;
    refreshRoutes();
    try {
        filters.activate(scope, object, owner.value_or(""));
    } catch (const CimFailure& failure) {
        log(LogLevel::warning, std::string("a remembered subscription has no effect: ") + failure.what());
    }
}

void Subscriptions::restore() {
    if (settings.stateFile.empty()) return;
    const std::lock_guard change(changing);
    removeUnfinished(settings.stateFile);
    const std::optional<std::string> text = readWholeFile(settings.stateFile, longestStateFile);
    if (!text) return;
    readState(settings.stateFile, *text, broker.repository(), settings.interopNamespace,
              [this](const cimxml::Instance& remembered, const Owner& owner) { restoreObject(remembered, owner); });
    lastState = *text;
}

} // namespace cimhost
