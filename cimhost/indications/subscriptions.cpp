#include "cimhost/indications/subscriptions.h"

#include "cimhost/indications/object_key.h"
#include "cimhost/model/names.h"
#include "cimhost/service/cim_failure.h"
#include "cimhost/service/request_values.h"
#include "cimhost/storage/atomic_file.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace cimhost {

namespace {

constexpr std::string_view systemClass = "CIM_ComputerSystem";
constexpr std::size_t longestText = 16384;

struct ClassRow {
    std::string_view name;
    Subscriptions::Kind kind;
};

constexpr ClassRow classRows[] = {
    {"CIM_IndicationFilter", Subscriptions::Kind::filter},
    {"CIM_ListenerDestinationCIMXML", Subscriptions::Kind::destination},
    {"CIM_IndicationSubscription", Subscriptions::Kind::subscription},
};

[[noreturn]] void refuse(std::string_view property, const std::string& reason,
                         CMPIrc code = CMPI_RC_ERR_INVALID_PARAMETER) {
    throw CimFailure(code, std::string(property) + ": " + reason);
}

std::string shown(std::string_view text) { return "\"" + std::string(text.substr(0, 128)) + "\""; }

const CMPIData* valueOf(const InstanceObject& instance, std::string_view property) {
    const CMPIData* data = instance.value(property);
    return data && (data->state & CMPI_nullValue) == 0 ? data : nullptr;
}

std::string textOf(const InstanceObject& instance, std::string_view property) {
    std::string text;
    if (const CMPIData* data = valueOf(instance, property)) appendValueText(text, *data);
    return text;
}

void setText(InstanceObject& instance, std::string_view property, std::string_view text) {
    instance.setProperty(property, ObjectMaker::null(CMPI_string));
    CMPIData data{};
    data.type = CMPI_string;
    data.value.string = StringObject::make(*instance.arena, text);
    instance.setProperty(property, data);
}

void setTextUnlessGiven(InstanceObject& instance, std::string_view property, std::string_view text) {
    if (textOf(instance, property).empty()) setText(instance, property, text);
}

void setNumberUnlessGiven(InstanceObject& instance, std::string_view property, CMPIUint16 number) {
    if (valueOf(instance, property)) return;
    CMPIData data{};
    data.type = CMPI_uint16;
    data.value.uint16 = number;
    instance.setProperty(property, data);
}

void setNowUnlessGiven(InstanceObject& instance, std::string_view property) {
    if (valueOf(instance, property)) return;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    CMPIData data{};
    data.type = CMPI_dateTime;
    data.value.dateTime = DateTimeObject::make(*instance.arena, static_cast<std::uint64_t>(microseconds), false);
    instance.setProperty(property, data);
}

CMPIUint16 numberOf(const InstanceObject& instance, std::string_view property) {
    const CMPIData* data = valueOf(instance, property);
    return data ? data->value.uint16 : CMPIUint16{0};
}

void requireOneOf(const InstanceObject& instance, std::string_view property,
                  std::initializer_list<CMPIUint16> numbers) {
    const CMPIUint16 given = numberOf(instance, property);
    if (std::find(numbers.begin(), numbers.end(), given) != numbers.end()) return;
    std::string allowed;
    for (const CMPIUint16 number : numbers)
        allowed += (allowed.empty() ? "" : " or ") + std::to_string(number);
    refuse(property, std::to_string(given) + " is not supported, " + allowed + " is");
}

void throwIf(const std::optional<CimError>& error) {
    if (error) throw CimFailure(*error);
}

} // namespace

// An instance with what it means. Never changes once it is among the objects.
struct Subscriptions::Object {
    Kind kind = Kind::filter;
    Arena arena;
    InstanceObject* instance = nullptr;
    const ObjectPathObject* path = nullptr;
    std::string key;
    Owner owner;

    std::shared_ptr<const Query> query; // of a filter
    std::string sourceNamespace;
    http::Url url;                  // of a destination
    const Object* filter = nullptr; // of a subscription
    const Object* destination = nullptr;

    [[nodiscard]] bool isTransient() const {
        if (kind == Kind::subscription) return destination->isTransient();
        return kind == Kind::destination && numberOf(*instance, "PersistenceType") == 3;
    }
    [[nodiscard]] bool isActive() const {
        return kind == Kind::subscription && numberOf(*instance, "SubscriptionState") == 2;
    }
    [[nodiscard]] bool refersTo(const Object& other) const { return filter == &other || destination == &other; }
};

Subscriptions::Subscriptions(Broker& owner, const Registration& registration, IndicationCalls& provider,
                             Router& deliveries, SubscriptionOptions options, LogSink sink)
    : broker(owner), registered(registration), calls(provider), router(deliveries), settings(std::move(options)),
      logSink(std::move(sink)) {}

Subscriptions::~Subscriptions() = default;

void Subscriptions::log(LogLevel level, const std::string& text) const {
    if (logSink) logSink(level, text);
}

std::vector<const ClassDeclaration*> Subscriptions::classes() const {
    std::vector<const ClassDeclaration*> declared;
    for (const ClassRow& row : classRows) {
        if (const auto* found = broker.repository().find(settings.interopNamespace, row.name))
            declared.push_back(found);
    }
    return declared;
}

const Subscriptions::Object* Subscriptions::find(std::string_view key) const {
    const auto place = std::find_if(objects.begin(), objects.end(), [&](const auto& one) { return one->key == key; });
    return place == objects.end() ? nullptr : place->get();
}

std::size_t Subscriptions::countOf(Kind kind) const {
    return static_cast<std::size_t>(
        std::count_if(objects.begin(), objects.end(), [&](const auto& one) { return one->kind == kind; }));
}

void Subscriptions::completeElement(InstanceObject& instance) const {
    setTextUnlessGiven(instance, "SystemCreationClassName", systemClass);
    setTextUnlessGiven(instance, "SystemName", settings.systemName);
    setTextUnlessGiven(instance, "CreationClassName", instance.className());
    if (!equalNames(textOf(instance, "CreationClassName"), instance.className())) {
        refuse("CreationClassName", "the class is " + std::string(instance.className()));
    }
    if (textOf(instance, "Name").empty()) refuse("Name", "it is required");
}

// The list is the newer form of the property; what is kept is the older one.
void Subscriptions::takeSourceNamespaces(InstanceObject& filter) const {
    const CMPIData* data = valueOf(filter, "SourceNamespaces");
    const ArrayObject* list = data ? ArrayObject::from(data->value.array) : nullptr;
    if (!list || list->size() == 0) return;
    if (list->size() > 1) {
        refuse("SourceNamespaces", "one namespace for each filter is supported, not " + std::to_string(list->size()));
    }
    std::string nameSpace;
    appendValueText(nameSpace, list->element(0));
    setTextUnlessGiven(filter, "SourceNamespace", nameSpace);
    if (!equalNames(trimNamespace(textOf(filter, "SourceNamespace")), trimNamespace(nameSpace))) {
        refuse("SourceNamespaces", "SourceNamespace says something else");
    }
    filter.setProperty("SourceNamespaces", ObjectMaker::null(CMPI_stringA));
}

// A copy for a client, with both forms of the source namespace.
InstanceObject& Subscriptions::forClient(RequestScope& scope, const Object& object) {
    InstanceObject& copy = *object.instance->copyTo(scope.arena());
    if (object.kind != Kind::filter) return copy;
    const std::vector<std::optional<std::string>> list = {textOf(copy, "SourceNamespace")};
    copy.setProperty("SourceNamespaces", *scope.make().arrayValue(CMPI_string, list));
    return copy;
}

void Subscriptions::completeFilter(Object& object) const {
    InstanceObject& instance = *object.instance;
    completeElement(instance);
    takeSourceNamespaces(instance);
    setTextUnlessGiven(instance, "SourceNamespace", settings.interopNamespace);
    setTextUnlessGiven(instance, "QueryLanguage", "WQL");
    object.sourceNamespace = trimNamespace(textOf(instance, "SourceNamespace"));
    if (const NamespaceAlias* alias = broker.repository().findAlias(object.sourceNamespace)) {
        object.sourceNamespace = alias->nameSpace;
    }
    if (!broker.repository().hasNamespace(object.sourceNamespace)) {
        refuse("SourceNamespace", "there is no namespace " + shown(object.sourceNamespace));
    }
    const std::string language = textOf(instance, "QueryLanguage");
    if (!isQueryLanguage(language)) {
        refuse("QueryLanguage", shown(language) + " is not known, WQL and DMTF:CQL are",
               CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED);
    }
    try {
        Query query = Query::parse(textOf(instance, "Query"));
        const ClassDeclaration* from = broker.repository().find(object.sourceNamespace, query.className());
        if (!from) refuse("Query", "namespace " + object.sourceNamespace + " has no class " + shown(query.className()));
        if (!from->isIndication()) refuse("Query", "class " + from->name() + " is no indication");
        query.checkAgainst(*from);
        object.query = std::make_shared<const Query>(std::move(query));
    } catch (const QueryError& error) {
        refuse("Query", error.what(), CMPI_RC_ERR_INVALID_QUERY);
    }
}

void Subscriptions::completeDestination(Object& object) const {
    InstanceObject& instance = *object.instance;
    completeElement(instance);
    setNumberUnlessGiven(instance, "PersistenceType", 2);
    requireOneOf(instance, "PersistenceType", {2, 3});
    const std::string destination = textOf(instance, "Destination");
    const std::optional<http::Url> url = http::parseUrl(destination);
    if (!url) refuse("Destination", shown(destination) + " is no URL of the form http://host:port/path or https://...");
    object.url = *url;
}

const Subscriptions::Object& Subscriptions::referenced(const InstanceObject& subscription, std::string_view role,
                                                       Kind kind) const {
    const CMPIData* data = valueOf(subscription, role);
    const ObjectPathObject* path = data ? ObjectPathObject::from(data->value.ref) : nullptr;
    if (!path) refuse(role, "it is required");
    const Object* found = equalNames(path->nameSpace(), settings.interopNamespace) ? find(keyOf(*path)) : nullptr;
    if (found && found->kind == kind) return *found;
    std::string text;
    path->appendText(text);
    refuse(role, "there is no " + text);
}

void Subscriptions::completeSubscription(Object& object) const {
    InstanceObject& instance = *object.instance;
    object.filter = &referenced(instance, "Filter", Kind::filter);
    object.destination = &referenced(instance, "Handler", Kind::destination);
    setNumberUnlessGiven(instance, "OnFatalErrorPolicy", 2);
    setNumberUnlessGiven(instance, "SubscriptionState", 2);
    setNumberUnlessGiven(instance, "RepeatNotificationPolicy", 2);
    requireOneOf(instance, "OnFatalErrorPolicy", {2});
    requireOneOf(instance, "SubscriptionState", {2, 4});
    requireOneOf(instance, "RepeatNotificationPolicy", {2});
    setNowUnlessGiven(instance, "TimeOfLastStateChange");
    setNowUnlessGiven(instance, "SubscriptionStartTime");
}

std::unique_ptr<Subscriptions::Object> Subscriptions::make(const InstanceObject& given) {
    const auto* row = std::find_if(std::begin(classRows), std::end(classRows),
                                   [&](const ClassRow& one) { return equalNames(one.name, given.className()); });
    if (row == std::end(classRows)) {
        throw CimFailure(CMPI_RC_ERR_NOT_SUPPORTED, "instances of class " + std::string(given.className()));
    }
    given.forEachSetProperty([](std::string_view name, const PropertyDeclaration*, const CMPIData& data) {
        std::string text;
        if ((data.state & CMPI_nullValue) == 0) appendValueText(text, data);
        if (text.size() > longestText) refuse(name, "it is longer than " + std::to_string(longestText) + " bytes");
    });
    auto object = std::make_unique<Object>();
    object->kind = row->kind;
    object->instance = given.copyTo(object->arena);
    if (row->kind == Kind::filter) completeFilter(*object);
    if (row->kind == Kind::destination) completeDestination(*object);
    if (row->kind == Kind::subscription) completeSubscription(*object);
    object->path = object->instance->path(object->arena);
    object->key = keyOf(*object->path);
    if (find(object->key)) {
        std::string text;
        object->path->appendText(text);
        throw CimFailure(CMPI_RC_ERR_ALREADY_EXISTS, text);
    }
    if (countOf(row->kind) >= settings.mostOfEach) {
        throw CimFailure(CMPI_RC_ERR_FAILED, "there are " + std::to_string(settings.mostOfEach) + " of them already");
    }
    return object;
}

// One user alone cannot take what is there for all.
void Subscriptions::requireRoom(const Object& made, const std::string& owner) const {
    const auto count = std::count_if(objects.begin(), objects.end(),
                                     [&](const auto& one) { return one->kind == made.kind && one->owner == owner; });
    if (static_cast<std::size_t>(count) < settings.mostOfUser) return;
    throw CimFailure(CMPI_RC_ERR_FAILED, (owner.empty() ? "there are " : "user " + owner + " has ") +
                                             std::to_string(settings.mostOfUser) +
                                             " of them already: remove others first");
}

// The class of the FROM, or the first one below it, that the provider is registered for.
const ClassDeclaration& Subscriptions::servedClass(const Object& filter) const {
    const ClassDeclaration& from = *broker.repository().find(filter.sourceNamespace, filter.query->className());
    if (registered.serves(from, ProviderKind::indication)) return from;
    for (const ClassDeclaration* below : from.allSubclasses()) {
        if (registered.serves(*below, ProviderKind::indication)) return *below;
    }
    throw CimFailure(CMPI_RC_ERR_NOT_SUPPORTED, "no provider serves indications of class " + from.name() +
                                                    " in namespace " + filter.sourceNamespace +
                                                    ": see SourceNamespace of the filter");
}

template <typename Call>
void Subscriptions::tellProvider(RequestScope& scope, const Object& subscription, const std::string& owner,
                                 Call call) const {
    const Object& filter = *subscription.filter;
    const ClassDeclaration& served = servedClass(filter);
    const SelectExpObject& query = *SelectExpObject::make(scope.arena(), textOf(*filter.instance, "Query"),
                                                          textOf(*filter.instance, "QueryLanguage"));
    const ObjectPathObject& path = *scope.make().path(filter.sourceNamespace, served.name());
    call(FilterCall{query, filter.query->className(), path, owner}, filter.sourceNamespace + ":" + served.name());
}

void Subscriptions::activate(RequestScope& scope, const Object& subscription, const std::string& owner) {
    tellProvider(scope, subscription, owner, [&](const FilterCall& call, const std::string& place) {
        throwIf(calls.authorizeFilter(scope, call));
        // Nobody polls here; the provider is only given the chance to say what it thinks of the filter.
        const std::optional<CimError> poll = calls.mustPoll(scope, call);
        if (poll && poll->code != CMPI_RC_ERR_NOT_SUPPORTED) throw CimFailure(*poll);
        std::size_t& count = activations[place];
        throwIf(calls.activateFilter(scope, call, count == 0));
        ++count;
        activated.insert(&subscription);
        if (std::exchange(isEnabled, true)) return;
        // Providers that need no gate leave the call out.
        const std::optional<CimError> error = calls.enableIndications(scope);
        if (error && error->code != CMPI_RC_ERR_NOT_SUPPORTED) {
            log(LogLevel::warning, "the provider did not enable indications: " + error->description);
        }
    });
}

void Subscriptions::deactivate(RequestScope& scope, const Object& subscription, const std::string& owner) {
    if (activated.erase(&subscription) == 0) return;
    tellProvider(scope, subscription, owner, [&](const FilterCall& call, const std::string& place) {
        const bool isLast = --activations[place] == 0;
        if (const std::optional<CimError> error = calls.deactivateFilter(scope, call, isLast)) {
            log(LogLevel::warning, "the provider did not give up a filter: " + error->description);
        }
    });
}

void Subscriptions::insert(std::unique_ptr<Object> object) {
    const std::lock_guard lock(access);
    objects.push_back(std::move(object));
}

std::unique_ptr<Subscriptions::Object> Subscriptions::take(const Object& object) {
    const std::lock_guard lock(access);
    const auto place =
        std::find_if(objects.begin(), objects.end(), [&](const auto& one) { return one.get() == &object; });
    std::unique_ptr<Object> taken = std::move(*place);
    objects.erase(place);
    return taken;
}

void Subscriptions::refreshRoutes() {
    std::vector<Route> routes;
    for (const auto& object : objects) {
        if (!object->isActive()) continue;
        const Object& filter = *object->filter;
        routes.push_back({filter.sourceNamespace,
                          broker.repository().find(filter.sourceNamespace, filter.query->className()), filter.query,
                          object->destination->key, textOf(*object->destination->instance, "Name"),
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
        // What is longer would be refused at the next reading, and then neither changes nor a restart would succeed.
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
    std::unique_ptr<Object> made = make(given);
    requireRoom(*made, owner);
    made->owner = owner;
    const Object& object = *made;
    if (object.kind == Kind::subscription) servedClass(*object.filter);
    insert(std::move(made));
    try {
        // The route stands before the provider hears of the filter, which may have something to tell at once.
        if (object.isActive()) refreshRoutes();
        if (object.isActive()) activate(scope, object, owner);
    } catch (...) {
        const std::unique_ptr<Object> undone = take(object);
        if (undone->isActive()) refreshRoutes();
        throw;
    }
    try {
        save();
    } catch (...) {
        const std::unique_ptr<Object> undone = take(object);
        if (undone->isActive()) deactivate(scope, *undone, owner);
        if (undone->isActive()) refreshRoutes();
        throw;
    }
    return *object.path->copyTo(scope.arena());
}

void Subscriptions::remove(RequestScope& scope, const ObjectPathObject& path, const std::string& owner) {
    const std::lock_guard change(changing);
    const Object* object = find(keyOf(path));
    if (!object) {
        std::string text;
        path.appendText(text);
        throw CimFailure(CMPI_RC_ERR_NOT_FOUND, text);
    }
    if (std::any_of(objects.begin(), objects.end(), [&](const auto& other) { return other->refersTo(*object); })) {
        throw CimFailure(CMPI_RC_ERR_FAILED, "a subscription refers to it: remove that first");
    }
    std::unique_ptr<Object> taken = take(*object);
    try {
        save();
    } catch (...) {
        insert(std::move(taken));
        throw;
    }
    if (!taken->isActive()) return;
    refreshRoutes();
    deactivate(scope, *taken, owner);
}

const InstanceObject& Subscriptions::get(RequestScope& scope, const ObjectPathObject& path) const {
    const std::lock_guard lock(access);
    if (const Object* object = find(keyOf(path))) return forClient(scope, *object);
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
    std::unique_ptr<Object> made = make(makeInstance(scope, path, remembered));
    made->owner = owner;
    const Object& object = *made;
    insert(std::move(made));
    if (!object.isActive()) return;
    refreshRoutes();
    try {
        activate(scope, object, owner.value_or(""));
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
