#include "indication_world.h"

#include "cimhost/model/cim_type.h"
#include "cimhost/service/cim_failure.h"
#include "cimhost/service/path_text.h"
#include "cimhost/service/request_values.h"

#include <sstream>

namespace cimhost::testing_support {

namespace {

constexpr const char* interop = "root/PG_InterOp";

std::string textOf(const ObjectPathObject& path) {
    std::string text;
    path.appendText(text);
    return text;
}

} // namespace

World::World(std::filesystem::path stateFile, DeliveryOptions delivery) {
    repository.loadFile("root/merolt_cmpi", std::filesystem::path(MOF) / "merolt.mof");
    repository.loadFile(interop, std::filesystem::path(MOF) / "interop.mof");
    repository.addAlias("interop", interop);
    registration = Registration::load(std::filesystem::path(MOF) / "cimhost.registration", repository, {});
    broker = std::make_unique<Broker>(repository);
    IndicationOptions options;
    options.subscriptions.systemName = "host";
    options.subscriptions.stateFile = std::move(stateFile);
    options.delivery = delivery;
    options.log = [this](LogLevel, std::string_view text) {
        const std::lock_guard lock(mutex);
        logged.emplace_back(text);
    };
    server = std::make_unique<IndicationServer>(*broker, registration, filters, std::move(options));
}

World::~World() { server->router().stop(); }

cimxml::Instance World::instance(const std::string& className, const Properties& properties,
                                 const std::string& nameSpace) const {
    cimxml::Instance made;
    made.className = className;
    const ClassDeclaration* declaration = repository.find(nameSpace, className);
    for (const auto& [name, text] : properties) {
        cimxml::Property property{name, {}};
        const PropertyDeclaration* declared = declaration->property(name);
        property.value.type = declared ? declared->type : CMPI_string;
        property.value.isNull = false;
        if (property.value.type == CMPI_ref) {
            property.value.references.push_back(parsePath(text, nameSpace, repository));
        } else if (isArrayType(property.value.type)) {
            property.value.type = elementOf(property.value.type);
            property.value.isArray = true;
            std::istringstream list(text);
            for (std::string entry; std::getline(list, entry, ',');)
                property.value.texts.append(entry);
        } else {
            property.value.texts.append(text);
        }
        made.properties.push_back(std::move(property));
    }
    return made;
}

std::string World::create(const std::string& className, const Properties& properties) {
    RequestScope scope(*broker);
    const ObjectPathObject& path = *scope.make().path(interop, className);
    const InstanceObject& given = makeInstance(scope, path, instance(className, properties, interop));
    return textOf(*server->objects().createInstance(scope, {}, path, given).paths.front());
}

std::string World::filter(const std::string& name, const std::string& query, const std::string& nameSpace) {
    return create("CIM_IndicationFilter", {{"Name", name}, {"Query", query}, {"SourceNamespace", nameSpace}});
}

std::string World::destination(const std::string& name, const std::string& url, const std::string& persistence) {
    return create("CIM_ListenerDestinationCIMXML",
                  {{"Name", name}, {"Destination", url}, {"PersistenceType", persistence}});
}

std::string World::subscribe(const std::string& filterPath, const std::string& handlerPath, const std::string& state) {
    return create("CIM_IndicationSubscription",
                  {{"Filter", filterPath}, {"Handler", handlerPath}, {"SubscriptionState", state}});
}

void World::remove(const std::string& path) {
    RequestScope scope(*broker);
    server->objects().deleteInstance(scope, {}, makePath(scope, interop, parsePath(path, interop, repository)));
}

std::vector<std::string> World::names(const std::string& className) {
    RequestScope scope(*broker);
    std::vector<std::string> texts;
    const Outcome outcome = server->objects().enumerateInstanceNames(scope, {}, *scope.make().path(interop, className));
    for (const ObjectPathObject* path : outcome.paths)
        texts.push_back(textOf(*path));
    return texts;
}

std::string World::property(const std::string& path, const std::string& name) {
    RequestScope scope(*broker);
    const ObjectPathObject& asked = makePath(scope, interop, parsePath(path, interop, repository));
    const CMPIData* data = server->objects().getInstance(scope, {}, asked, {}).instances.front()->value(name);
    std::string text;
    const ArrayObject* list = data && isArrayType(data->type) ? ArrayObject::from(data->value.array) : nullptr;
    for (CMPICount index = 0; list && index < list->size(); ++index) {
        if (index > 0) text += ',';
        appendValueText(text, list->element(index));
    }
    if (data && !list) appendValueText(text, *data);
    return text;
}

CMPIrc World::deliver(const std::string& className, const Properties& properties, const std::string& nameSpace) {
    RequestScope scope(*broker);
    const ObjectPathObject& path = *scope.make().path(nameSpace, className);
    return server->router().deliver(makeInstance(scope, path, instance(className, properties, nameSpace)));
}

CMPIrc World::statusOf(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const CimFailure& failure) {
        return failure.error().code;
    }
    return CMPI_RC_OK;
}

std::vector<std::string> World::messages() {
    const std::lock_guard lock(mutex);
    return logged;
}

} // namespace cimhost::testing_support
