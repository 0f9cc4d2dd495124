#include "fake_provider.h"

#include <sstream>

namespace cimhost::testing_support {

namespace {

constexpr const char* mof = R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier Abstract : boolean = false, Scope(class, association, indication), Flavor(Restricted);
[Abstract] class T_Element { string Caption; };
[Abstract] class T_Port : T_Element { [Key] string System; [Key] string Id; uint64 Speed; };
class T_FibrePort : T_Port { string Topology; };
class T_EtherPort : T_Port { uint32 Mtu; };
class T_Counter { [Key] uint32 Number; };
)";

struct PortRow {
    std::string_view className;
    std::string_view id;
    std::uint64_t speed;
};

constexpr PortRow ports[] = {
    {"T_FibrePort", "a", 16'000'000'000},
    {"T_FibrePort", "b", 8'000'000'000},
    {"T_EtherPort", "e", 10'000'000'000},
};

ObjectPathObject& pathOf(RequestScope& scope, const ObjectPathObject& asked, const PortRow& row) {
    ObjectPathObject& path = *scope.make().path(asked.nameSpace(), row.className);
    static_cast<void>(scope.make().addKey(path, "System", KeyKind::string, "s"));
    static_cast<void>(scope.make().addKey(path, "Id", KeyKind::string, row.id));
    return path;
}

const InstanceObject& instanceOf(RequestScope& scope, const ObjectPathObject& asked, const PortRow& row) {
    InstanceObject& instance = *scope.make().instance(pathOf(scope, asked, row));
    instance.setProperty("System", *scope.make().value(CMPI_string, "s"));
    instance.setProperty("Id", *scope.make().value(CMPI_string, row.id));
    instance.setProperty("Speed", *scope.make().value(CMPI_uint64, std::to_string(row.speed)));
    return instance;
}

} // namespace

void FakeProvider::note(std::string_view call, const CallContext& context, const ObjectPathObject& path,
                        const PropertyList& properties) {
    std::ostringstream line;
    line << call << " " << path.className();
    if (properties) {
        line << " [";
        for (std::size_t index = 0; index < properties->size(); ++index) {
            line << (index == 0 ? "" : ",") << (*properties)[index];
        }
        line << "]";
    }
    line << " flags=" << context.flags << " by=" << context.principal << " in=" << context.nameSpace;
    const std::lock_guard lock(mutex);
    calls.push_back(line.str());
}

Outcome FakeProvider::enumerateInstanceNames(RequestScope& scope, const CallContext& context,
                                             const ObjectPathObject& classPath) {
    note("enumerateInstanceNames", context, classPath);
    Outcome outcome;
    outcome.error = failure;
    for (const PortRow& row : ports) {
        if (classPath.className() == row.className) outcome.paths.push_back(&pathOf(scope, classPath, row));
    }
    return outcome;
}

Outcome FakeProvider::enumerateInstances(RequestScope& scope, const CallContext& context,
                                         const ObjectPathObject& classPath, const PropertyList& properties) {
    note("enumerateInstances", context, classPath, properties);
    Outcome outcome;
    outcome.error = failure;
    for (const PortRow& row : ports) {
        if (classPath.className() == row.className) outcome.instances.push_back(&instanceOf(scope, classPath, row));
    }
    return outcome;
}

Outcome FakeProvider::getInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                                  const PropertyList& properties) {
    note("getInstance", context, path, properties);
    Outcome outcome;
    outcome.error = failure;
    const NamedData* id = path.key("Id");
    for (const PortRow& row : ports) {
        if (path.className() != row.className || !id || id->data.type != CMPI_string) continue;
        if (StringObject::from(id->data.value.string)->text() != row.id) continue;
        outcome.instances.push_back(&instanceOf(scope, path, row));
    }
    return outcome;
}

Outcome FakeProvider::createInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                                     const InstanceObject& instance) {
    note("createInstance", context, path);
    static_cast<void>(instance);
    Outcome outcome;
    outcome.error = failure;
    outcome.paths.push_back(scope.make().copy(path));
    return outcome;
}

Outcome FakeProvider::modifyInstance(RequestScope&, const CallContext& context, const ObjectPathObject& path,
                                     const InstanceObject&, const PropertyList& properties) {
    note("modifyInstance", context, path, properties);
    Outcome outcome;
    outcome.error = failure;
    return outcome;
}

Outcome FakeProvider::deleteInstance(RequestScope&, const CallContext& context, const ObjectPathObject& path) {
    note("deleteInstance", context, path);
    Outcome outcome;
    outcome.error = failure;
    return outcome;
}

FakeHost::FakeHost() {
    repository.loadText("root/ns", mof);
    registration.add(*repository.find("root/ns", "T_FibrePort"), ProviderKind::instance);
    registration.add(*repository.find("root/ns", "T_EtherPort"), ProviderKind::instance);
    broker = std::make_unique<Broker>(repository);
    operations = std::make_unique<Operations>(repository, registration, provider);
    dispatcher = std::make_unique<Dispatcher>(*operations, *broker);
}

std::string FakeHost::handle(const std::string& document) {
    const auto decoded = cimxml::decodeRequest(document);
    if (const auto* error = std::get_if<cimxml::ProtocolError>(&decoded)) return error->message;
    return std::string(dispatcher->handle(std::get<cimxml::Request>(decoded), Caller{"anna", "", 0}).view());
}

std::string FakeHost::call(const std::string& method, const std::string& parameters, const std::string& nameSpace) {
    const std::string answer =
        handle("<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
               "<SIMPLEREQ><IMETHODCALL NAME=\"" +
               method + "\"><LOCALNAMESPACEPATH><NAMESPACE NAME=\"" + nameSpace + "\"/></LOCALNAMESPACEPATH>" +
               parameters + "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>");
    const std::string open = "<IMETHODRESPONSE NAME=\"" + method + "\">";
    const std::size_t begin = answer.find(open);
    const std::size_t end = answer.find("</IMETHODRESPONSE>");
    if (begin == std::string::npos || end == std::string::npos) return answer;
    return answer.substr(begin + open.size(), end - begin - open.size());
}

std::string parameter(const std::string& name, const std::string& value) {
    return "<IPARAMVALUE NAME=\"" + name + "\">" + value + "</IPARAMVALUE>";
}

std::string className(const std::string& name) { return parameter("ClassName", "<CLASSNAME NAME=\"" + name + "\"/>"); }

std::string instanceName(const std::string& className, const std::string& keys) {
    std::string text = "<INSTANCENAME CLASSNAME=\"" + className + "\">";
    std::istringstream stream(keys);
    for (std::string key; std::getline(stream, key, ',');) {
        const std::size_t equals = key.find('=');
        text += "<KEYBINDING NAME=\"" + key.substr(0, equals) + "\"><KEYVALUE VALUETYPE=\"string\">" +
                key.substr(equals + 1) + "</KEYVALUE></KEYBINDING>";
    }
    return text + "</INSTANCENAME>";
}

std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

} // namespace cimhost::testing_support
