#include "cimhost/indications/kept_object_maker.h"

#include "cimhost/indications/object_key.h"
#include "cimhost/model/names.h"
#include "cimhost/service/cim_failure.h"

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <optional>
#include <span>

namespace cimhost {

namespace {

constexpr std::string_view systemClass = "CIM_ComputerSystem";
constexpr std::size_t longestText = 16384;

[[noreturn]] void refuse(std::string_view property, const std::string& reason,
                         CMPIrc code = CMPI_RC_ERR_INVALID_PARAMETER) {
    throw CimFailure(code, std::string(property) + ": " + reason);
}

std::string shown(std::string_view text) { return "\"" + std::string(text.substr(0, 128)) + "\""; }

void setText(InstanceObject& instance, std::string_view property, std::string_view text) {
    instance.setProperty(property, ObjectMaker::null(CMPI_string));
    CMPIData data{};
    data.type = CMPI_string;
    data.value.string = StringObject::make(*instance.arena, text);
    instance.setProperty(property, data);
}

void setTextUnlessGiven(InstanceObject& instance, std::string_view property, std::string_view text) {
    if (givenText(instance, property).empty()) setText(instance, property, text);
}

void setNumberUnlessGiven(InstanceObject& instance, std::string_view property, CMPIUint16 number) {
    if (givenValue(instance, property)) return;
    CMPIData data{};
    data.type = CMPI_uint16;
    data.value.uint16 = number;
    instance.setProperty(property, data);
}

void setNowUnlessGiven(InstanceObject& instance, std::string_view property) {
    if (givenValue(instance, property)) return;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    CMPIData data{};
    data.type = CMPI_dateTime;
    data.value.dateTime = DateTimeObject::make(*instance.arena, static_cast<std::uint64_t>(microseconds), false);
    instance.setProperty(property, data);
}

void requireOneOf(const InstanceObject& instance, std::string_view property,
                  std::initializer_list<CMPIUint16> numbers) {
    const CMPIUint16 given = givenNumber(instance, property);
    if (std::find(numbers.begin(), numbers.end(), given) != numbers.end()) return;
    std::string allowed;
    for (const CMPIUint16 number : numbers)
        allowed += (allowed.empty() ? "" : " or ") + std::to_string(number);
    refuse(property, std::to_string(given) + " is not supported, " + allowed + " is");
}

} // namespace

void KeptObjectMaker::completeElement(InstanceObject& instance) const {
    setTextUnlessGiven(instance, "SystemCreationClassName", systemClass);
    setTextUnlessGiven(instance, "SystemName", systemName);
    setTextUnlessGiven(instance, "CreationClassName", instance.className());
    if (!equalNames(givenText(instance, "CreationClassName"), instance.className())) {
        refuse("CreationClassName", "the class is " + std::string(instance.className()));
    }
    if (givenText(instance, "Name").empty()) refuse("Name", "it is required");
}

// SourceNamespaces, a list, is the newer form of SourceNamespace. The older form is the one that is kept.
void KeptObjectMaker::takeSourceNamespaces(InstanceObject& filter) {
    const CMPIData* data = givenValue(filter, "SourceNamespaces");
    const ArrayObject* list = data ? ArrayObject::from(data->value.array) : nullptr;
    if (!list || list->size() == 0) return;
    if (list->size() > 1) {
        refuse("SourceNamespaces", "one namespace for each filter is supported, not " + std::to_string(list->size()));
    }
    std::string nameSpace;
    appendValueText(nameSpace, list->element(0));
    setTextUnlessGiven(filter, "SourceNamespace", nameSpace);
    if (!equalNames(trimNamespace(givenText(filter, "SourceNamespace")), trimNamespace(nameSpace))) {
        refuse("SourceNamespaces", "SourceNamespace says something else");
    }
    filter.setProperty("SourceNamespaces", ObjectMaker::null(CMPI_stringA));
}

void KeptObjectMaker::completeFilter(KeptObject& object) const {
    InstanceObject& instance = *object.instance;
    completeElement(instance);
    takeSourceNamespaces(instance);
    setTextUnlessGiven(instance, "SourceNamespace", interopNamespace);
    setTextUnlessGiven(instance, "QueryLanguage", "WQL");
    object.sourceNamespace = trimNamespace(givenText(instance, "SourceNamespace"));
    if (const NamespaceAlias* alias = repository.findAlias(object.sourceNamespace)) {
        object.sourceNamespace = alias->nameSpace;
    }
    if (!repository.hasNamespace(object.sourceNamespace)) {
        refuse("SourceNamespace", "there is no namespace " + shown(object.sourceNamespace));
    }
    const std::string language = givenText(instance, "QueryLanguage");
    if (!isQueryLanguage(language)) {
        refuse("QueryLanguage", shown(language) + " is not known, WQL and DMTF:CQL are",
               CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED);
    }
    try {
        Query query = Query::parse(givenText(instance, "Query"));
        const ClassDeclaration* from = repository.find(object.sourceNamespace, query.className());
        if (!from) refuse("Query", "namespace " + object.sourceNamespace + " has no class " + shown(query.className()));
        if (!from->isIndication()) refuse("Query", "class " + from->name() + " is no indication");
        query.checkAgainst(*from);
        object.query = std::make_shared<const Query>(std::move(query));
    } catch (const QueryError& error) {
        refuse("Query", error.what(), CMPI_RC_ERR_INVALID_QUERY);
    }
}

void KeptObjectMaker::completeDestination(KeptObject& object) const {
    InstanceObject& instance = *object.instance;
    completeElement(instance);
    setNumberUnlessGiven(instance, "PersistenceType", 2);
    requireOneOf(instance, "PersistenceType", {2, 3});
    const std::string destination = givenText(instance, "Destination");
    const std::optional<http::Url> url = http::parseUrl(destination);
    if (!url) refuse("Destination", shown(destination) + " is no URL of the form http://host:port/path or https://...");
    object.url = *url;
}

const KeptObject& KeptObjectMaker::referenced(const InstanceObject& subscription, std::string_view role,
                                              KeptKind kind) const {
    const CMPIData* data = givenValue(subscription, role);
    const ObjectPathObject* path = data ? ObjectPathObject::from(data->value.ref) : nullptr;
    if (!path) refuse(role, "it is required");
    const KeptObject* found = equalNames(path->nameSpace(), interopNamespace) ? find(keyOf(*path)) : nullptr;
    if (found && found->kind == kind) return *found;
    std::string text;
    path->appendText(text);
    refuse(role, "there is no " + text);
}

void KeptObjectMaker::completeSubscription(KeptObject& object) const {
    InstanceObject& instance = *object.instance;
    object.filter = &referenced(instance, "Filter", KeptKind::filter);
    object.destination = &referenced(instance, "Handler", KeptKind::destination);
    setNumberUnlessGiven(instance, "OnFatalErrorPolicy", 2);
    setNumberUnlessGiven(instance, "SubscriptionState", 2);
    setNumberUnlessGiven(instance, "RepeatNotificationPolicy", 2);
    requireOneOf(instance, "OnFatalErrorPolicy", {2});
    requireOneOf(instance, "SubscriptionState", {2, 4});
    requireOneOf(instance, "RepeatNotificationPolicy", {2});
    setNowUnlessGiven(instance, "TimeOfLastStateChange");
    setNowUnlessGiven(instance, "SubscriptionStartTime");
}

std::unique_ptr<KeptObject> KeptObjectMaker::make(const InstanceObject& given) const {
    const std::span<const KeptClass> rows = keptClasses();
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [&](const KeptClass& one) { return equalNames(one.name, given.className()); });
    if (row == rows.end()) {
        throw CimFailure(CMPI_RC_ERR_NOT_SUPPORTED, "instances of class " + std::string(given.className()));
    }
    given.forEachSetProperty([](std::string_view name, const PropertyDeclaration*, const CMPIData& data) {
        std::string text;
        if ((data.state & CMPI_nullValue) == 0) appendValueText(text, data);
        if (text.size() > longestText) refuse(name, "it is longer than " + std::to_string(longestText) + " bytes");
    });
    auto object = std::make_unique<KeptObject>();
    object->kind = row->kind;
    object->instance = given.copyTo(object->arena);
    if (row->kind == KeptKind::filter) completeFilter(*object);
    if (row->kind == KeptKind::destination) completeDestination(*object);
    if (row->kind == KeptKind::subscription) completeSubscription(*object);
    object->path = object->instance->path(object->arena);
    object->key = keyOf(*object->path);
    if (find(object->key)) {
        std::string text;
        object->path->appendText(text);
        throw CimFailure(CMPI_RC_ERR_ALREADY_EXISTS, text);
    }
    return object;
}

} // namespace cimhost
