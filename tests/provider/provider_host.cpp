#include "provider_host.h"

#include "cmpift.h"
#include "configuration/nic_properties.h"
#include "indications/alarm_intake.h"
#include "indications/alert.h"
#include "indications/subscriptions.h"
#include "log/log.h"

#include "foreign_server/violations.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

using namespace cimhost;

std::string typeName(CMPIType type) {
    switch (type & ~CMPI_ARRAY) {
    case CMPI_boolean:
        return "boolean";
    case CMPI_uint8:
        return "uint8";
    case CMPI_uint16:
        return "uint16";
    case CMPI_uint32:
        return "uint32";
    case CMPI_uint64:
        return "uint64";
    case CMPI_sint32:
        return "sint32";
    case CMPI_sint64:
        return "sint64";
    case CMPI_string:
        return "string";
    case CMPI_dateTime:
        return "datetime";
    case CMPI_ref:
        return "ref";
    default:
        return "type " + std::to_string(type);
    }
}

std::string plainValue(const CMPIData& data) {
    if (data.state & CMPI_nullValue) return "null";
    std::string text;
    appendValueText(text, data);
    return data.type == CMPI_string ? '"' + text + '"' : text;
}

std::string describe(const CMPIData& data) {
    if (!(data.type & CMPI_ARRAY)) return typeName(data.type) + " " + plainValue(data);
    const ArrayObject* array = ArrayObject::from(data.value.array);
    std::string text = typeName(data.type) + "[] {";
    for (CMPICount index = 0; index < array->size(); ++index)
        text += (index > 0 ? ", " : "") + plainValue(array->element(index));
    return text + "}";
}

void add(TestObject& object, std::string_view name, const CMPIData& data) {
    object.values[std::string(name)] = describe(data);
    object.names.emplace_back(name);
}

TestObject describe(const InstanceObject& instance) {
    TestObject object{std::string(instance.className()), std::string(instance.nameSpace()), {}, {}};
    instance.forEachSetProperty(
        [&](std::string_view name, const PropertyDeclaration*, const CMPIData& data) { add(object, name, data); });
    return object;
}

TestObject describe(const ObjectPathObject& path) {
    TestObject object{std::string(path.className()), std::string(path.nameSpace()), {}, {}};
    for (const NamedData& key : path.keys())
        add(object, key.name, key.data);
    return object;
}

/// Whom the provider works with.
bool wantsForeignServer() {
    const char* server = std::getenv("MEROLT_TEST_SERVER");
    if (!server) return false;
    if (std::string_view(server) != "foreign") throw std::runtime_error("MEROLT_TEST_SERVER knows only \"foreign\"");
    return true;
}

/// The embedded server's side of what the foreign server does on a thread.
struct HostScope {
    explicit HostScope(Broker& broker) : scope(broker), context(ContextObject::make(scope.arena())) {}

    RequestScope scope;
    const CMPIContext* const context;
};

std::vector<const char*> asPointers(const std::optional<std::vector<std::string>>& names) {
    std::vector<const char*> pointers;
    if (names) {
        for (const std::string& name : *names)
            pointers.push_back(name.c_str());
    }
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

const CMPIBroker* brokerOfProvider(const cimhost::Broker& broker) {
    foreign_server::Server* server = foreign_server::Server::ifAny();
    return server ? server->broker() : broker.table();
}

std::string TestObject::operator[](const std::string& name) const {
    const auto found = values.find(name);
    return found == values.end() ? "absent" : found->second;
}

std::string TestObject::table() const {
    std::string lines;
    for (const std::string& name : names)
        lines += name + ": " + (*this)[name] + '\n';
    return lines;
}

std::vector<std::string> Answer::all(const std::string& name) const {
    std::vector<std::string> texts;
    for (const TestObject& object : objects)
        texts.push_back(object[name]);
    return texts;
}

namespace {

/// The classes as an earlier test of this process read them, if it did not add any.
std::optional<cimhost::ClassRepository>& readEarlier() {
    static std::optional<cimhost::ClassRepository> classes;
    return classes;
}

cimhost::ClassRepository readClasses(const char* nameSpace) {
    if (readEarlier()) {
        cimhost::ClassRepository taken = std::move(*readEarlier());
        readEarlier().reset();
        return taken;
    }
    cimhost::ClassRepository read;
    read.loadFile(nameSpace, std::filesystem::path(MEROLT_MOF_DIRECTORY) / "merolt.mof");
    read.addNamespace("root/PG_InterOp");
    return read;
}

std::size_t countOf(const cimhost::ClassRepository& classes) {
    std::size_t count = 0;
    for (const std::string_view nameSpace : classes.namespaces())
        count += 1 + classes.classes(nameSpace).size();
    return count;
}

} // namespace

ProviderTest::ProviderTest() {
    forgetEarlierTests();
    merolt::platform::replaceServices(&services);
    std::string pattern = (std::filesystem::temp_directory_path() / "merolt-provider-XXXXXX").string();
    directory = mkdtemp(pattern.data());
    previousDirectory = std::filesystem::current_path();
    std::filesystem::current_path(directory);
    classes = readClasses(implementationNamespace);
    classCount = countOf(classes);
    cimhost::BrokerOptions options;
    options.indicationSink = [this](std::string_view nameSpace, const InstanceObject& indication) {
        indications.push_back({std::string(nameSpace), describe(indication)});
        return deliveryAnswer;
    };
    broker = std::make_unique<Broker>(classes, std::move(options));
    if (wantsForeignServer()) startForeignServer();
}

ProviderTest::~ProviderTest() {
    stop();
    if (foreignServer) {
        foreignServer.reset();
        for (const std::string& violation : foreign_server::takeViolations())
            ADD_FAILURE() << "the foreign server saw: " << violation;
    }
    merolt::platform::replaceServices(nullptr);
    std::filesystem::current_path(previousDirectory);
    std::filesystem::remove_all(directory);
    broker.reset();
    if (countOf(classes) == classCount) readEarlier() = std::move(classes);
}

void ProviderTest::startForeignServer() {
    foreignServer = std::make_unique<foreign_server::Server>(
        foreign_server::Host{broker->table(), [this](const CMPIContext*& context) {
                                 auto scope = std::make_shared<HostScope>(*broker);
                                 context = scope->context;
                                 return std::shared_ptr<void>(std::move(scope));
                             }});
}

std::size_t ProviderTest::preparedContexts() const {
    return foreignServer ? foreignServer->preparedContexts() : broker->preparedContexts();
}

std::size_t ProviderTest::runningThreads() const {
    return foreignServer ? foreignServer->runningThreads() : broker->runningThreads();
}

void ProviderTest::waitForEndedThreads() {
    if (foreignServer) foreignServer->waitForThreads();
}

void ProviderTest::forgetEarlierTests() {
    tavikLibrary.reset();
    merolt::gDebugLog = true;
    merolt::gErrorLog = true;
    merolt::gIndicationsEnabled = false;
    merolt::gSubscriptionCount = 0;
    merolt::gIndicationIdentifier = 0;
    merolt::takeAlarms();
}

bool ProviderTest::settingsWereRead = false;

void ProviderTest::readOwnSettings() {
    if (std::exchange(hasOwnSettings, true)) return;
    // In the first test of a process the polling thread reads them by itself.
    if (!std::exchange(settingsWereRead, true)) return;
    merolt::Merolt_NIC_Properties& properties = merolt::Merolt_NIC_Properties::instance();
    properties = merolt::Merolt_NIC_Properties();
    properties.reload();
}

void ProviderTest::writeFile(const std::string& name, const std::string& text) {
    std::ofstream(directory / name, std::ios::binary) << text;
}

std::string ProviderTest::readFile(const std::string& name) const {
    std::ifstream file(directory / name, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<std::string> ProviderTest::logLines(const std::string& file) const {
    constexpr std::size_t timeAndBlank = 25;
    std::vector<std::string> lines;
    std::istringstream text(readFile(file));
    for (std::string line; std::getline(text, line);)
        lines.push_back(line.size() >= timeAndBlank ? line.substr(timeAndBlank) : line);
    return lines;
}

bool ProviderTest::logHas(const std::string& line) const {
    const std::vector<std::string> lines = logLines();
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

std::vector<std::string> ProviderTest::takeLogLines() {
    std::vector<std::string> lines = logLines();
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(logLinesTaken));
    logLinesTaken += lines.size();
    return lines;
}

template <class Factory>
auto ProviderTest::create(Factory factory, CMPIStatus* status) {
    readOwnSettings();
    RequestScope scope(*broker);
    if (foreignServer) return foreignServer->offer(factory, status);
    return factory(broker->table(), ContextObject::make(scope.arena()), status);
}

CMPIInstanceMI* ProviderTest::createInstanceMI() {
    return create(Merolt_CNA_Provider_Create_InstanceMI, &factoryStatus);
}

CMPIInstanceMI* ProviderTest::createInstanceMIWithoutStatus() {
    return create(Merolt_CNA_Provider_Create_InstanceMI, nullptr);
}

CMPIAssociationMI* ProviderTest::createAssociationMI() {
    return create(Merolt_CNA_Provider_Create_AssociationMI, &factoryStatus);
}

CMPIMethodMI* ProviderTest::createMethodMI() { return create(Merolt_CNA_Provider_Create_MethodMI, &factoryStatus); }

CMPIIndicationMI* ProviderTest::createIndicationMI() {
    return create(Merolt_CNA_Provider_Create_IndicationMI, &factoryStatus);
}

void ProviderTest::start() {
    instanceMI = createInstanceMI();
    ASSERT_NE(instanceMI, nullptr);
    services.waitUntilIdle();
}

void ProviderTest::stop() {
    RequestScope scope(*broker);
    const CMPIContext* context = ContextObject::make(scope.arena());
    constexpr CMPIBoolean terminating = 1;
    if (instanceMI) instanceMI->ft->cleanup(instanceMI, context, terminating);
    if (associationMI) associationMI->ft->cleanup(associationMI, context, terminating);
    if (methodMI) methodMI->ft->cleanup(methodMI, context, terminating);
    if (indicationMI) indicationMI->ft->cleanup(indicationMI, context, terminating);
    instanceMI = nullptr;
    associationMI = nullptr;
    methodMI = nullptr;
    indicationMI = nullptr;
}

template <class Call>
Answer ProviderTest::request(ResultKind kind, const std::string& className, const std::string& nameSpace, Call&& call) {
    RequestScope scope(*broker);
    ResultCollector result(scope, kind);
    ObjectPathObject* path = scope.make().path(nameSpace, className);
    const CMPIStatus status = call(scope, ContextObject::make(scope.arena()), &result, path);
    Answer answer;
    answer.rc = status.rc;
    if (status.msg) answer.message = status.msg->ft->getCharPtr(status.msg, nullptr);
    for (const InstanceObject* instance : result.instances)
        answer.objects.push_back(describe(*instance));
    for (const ObjectPathObject* returned : result.paths)
        answer.objects.push_back(describe(*returned));
    answer.doneCount = result.doneCount();
    return answer;
}

Answer ProviderTest::enumerateInstanceNames(const std::string& className, const std::string& nameSpace) {
    return request(ResultKind::paths, className, nameSpace, [&](auto&, auto* context, auto* result, auto* path) {
        return instanceMI->ft->enumerateInstanceNames(instanceMI, context, result, path);
    });
}

Answer ProviderTest::enumerateInstances(const std::string& className,
                                        const std::optional<std::vector<std::string>>& properties,
                                        const std::string& nameSpace) {
    std::vector<const char*> list = asPointers(properties);
    return request(ResultKind::instances, className, nameSpace, [&](auto&, auto* context, auto* result, auto* path) {
        return instanceMI->ft->enumerateInstances(instanceMI, context, result, path,
                                                  properties ? list.data() : nullptr);
    });
}

Answer ProviderTest::getInstance(const std::string& className, const KeyValues& keys,
                                 const std::optional<std::vector<std::string>>& properties,
                                 const std::string& nameSpace) {
    std::vector<const char*> list = asPointers(properties);
    return request(ResultKind::instances, className, nameSpace,
                   [&](RequestScope& scope, auto* context, auto* result, ObjectPathObject* path) {
                       for (const auto& [name, value] : keys) {
                           CMPIValue text{};
                           text.string = scope.make().string(value);
                           path->addKey(name, &text, CMPI_string);
                       }
                       return instanceMI->ft->getInstance(instanceMI, context, result, path,
                                                          properties ? list.data() : nullptr);
                   });
}

Answer ProviderTest::getInstanceByNumber(const std::string& className, const std::string& key, CMPIUint32 number) {
    return request(ResultKind::instances, className, implementationNamespace,
                   [&](RequestScope&, auto* context, auto* result, ObjectPathObject* path) {
                       // The class declares a text: its name is put in after the key, as a lenient server does.
                       path->setClassName("");
                       CMPIValue value{};
                       value.uint32 = number;
                       path->addKey(key, &value, CMPI_uint32);
                       path->setClassName(className);
                       return instanceMI->ft->getInstance(instanceMI, context, result, path, nullptr);
                   });
}

Answer ProviderTest::createInstance(const std::string& className) {
    return request(ResultKind::paths, className, implementationNamespace,
                   [&](RequestScope& scope, auto* context, auto* result, ObjectPathObject* path) {
                       return instanceMI->ft->createInstance(instanceMI, context, result, path,
                                                             scope.make().instance(*path));
                   });
}

Answer ProviderTest::modifyInstance(const std::string& className) {
    return request(ResultKind::nothing, className, implementationNamespace,
                   [&](RequestScope& scope, auto* context, auto* result, ObjectPathObject* path) {
                       return instanceMI->ft->modifyInstance(instanceMI, context, result, path,
                                                             scope.make().instance(*path), nullptr);
                   });
}

Answer ProviderTest::deleteInstance(const std::string& className) {
    return request(ResultKind::nothing, className, implementationNamespace,
                   [&](auto&, auto* context, auto* result, auto* path) {
                       return instanceMI->ft->deleteInstance(instanceMI, context, result, path);
                   });
}

Answer ProviderTest::invokeMethod(const std::string& className, const std::string& method) {
    if (!methodMI) methodMI = createMethodMI();
    return request(ResultKind::data, className, implementationNamespace,
                   [&](RequestScope& scope, auto* context, auto* result, ObjectPathObject* path) {
                       return methodMI->ft->invokeMethod(methodMI, context, result, path, method.c_str(),
                                                         ArgsObject::make(scope.arena()),
                                                         ArgsObject::make(scope.arena()));
                   });
}

template <class Operation>
void ProviderTest::callFilterOperation(Operation operation) {
    if (!indicationMI) indicationMI = createIndicationMI();
    ASSERT_NE(indicationMI, nullptr);
    cimhost::RequestScope scope(*broker);
    const CMPIContext* context = cimhost::ContextObject::make(scope.arena());
    const char* query = "SELECT * FROM CIM_AlertIndication";
    const CMPISelectExp* filter = cimhost::SelectExpObject::make(scope.arena(), query, "WQL");
    const CMPIObjectPath* path = scope.make().path(implementationNamespace, "CIM_AlertIndication");
    const CMPIStatus status =
        operation(indicationMI->ft)(indicationMI, context, filter, "CIM_AlertIndication", path, 1);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
}

void ProviderTest::activateFilter() {
    callFilterOperation([](const CMPIIndicationMIFT* table) { return table->activateFilter; });
}

void ProviderTest::deactivateFilter() {
    callFilterOperation([](const CMPIIndicationMIFT* table) { return table->deActivateFilter; });
}

void ProviderTest::expectSameValues(const TestObject& instance, const TestObject& asSet) {
    std::map<std::string, std::string> values = instance.values;
    const auto* declaration = classes.find(instance.nameSpace, instance.className);
    ASSERT_NE(declaration, nullptr) << instance.nameSpace << ":" << instance.className;
    std::erase_if(values, [&](const auto& entry) {
        const auto* property = declaration->property(entry.first);
        return asSet.values.count(entry.first) == 0 && property && !property->defaultValue.isNull;
    });
    EXPECT_EQ(values, asSet.values) << "the class's own types differ";
}

TestObject ProviderTest::onlyInstance(const std::string& className) {
    const Answer answer = enumerateInstances(className);
    EXPECT_TRUE(answer.isOk()) << answer.message;
    EXPECT_EQ(answer.objects.size(), 1U);
    return answer.objects.empty() ? TestObject{} : answer.objects.front();
}
