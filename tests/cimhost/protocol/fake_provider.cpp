#include "fake_provider.h"

#include <algorithm>
#include <sstream>

namespace cimhost::testing_support {

namespace {

constexpr const char* mof = R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride, ToSubclass);
Qualifier Override : string = null, Scope(property, reference, method), Flavor(Restricted);
Qualifier Abstract : boolean = false, Scope(class, association, indication), Flavor(Restricted);
[Abstract] class T_Element { string Caption; };
[Abstract] class T_Port : T_Element { [Key] string System; [Key] string Id; uint64 Speed; };
class T_FibrePort : T_Port { string Topology; };
class T_EtherPort : T_Port { uint32 Mtu; };
class T_Box : T_Port { };
class T_Counter { [Key] uint32 Number; };
[Association] class T_Link { [Key] T_Port ref Left; [Key] T_Port ref Right; uint16 Cost; };
[Association] class T_FibreLink : T_Link { [Key, Override("Left")] T_FibrePort ref Left; };
)";

ObjectPathObject& pathOf(RequestScope& scope, const ObjectPathObject& asked, const FakeObject& row) {
    ObjectPathObject& path = *scope.make().path(asked.nameSpace(), row.className);
    static_cast<void>(scope.make().addKey(path, "System", KeyKind::string, "s"));
    static_cast<void>(scope.make().addKey(path, "Id", KeyKind::string, row.id));
    return path;
}

const InstanceObject& instanceAt(RequestScope& scope, const ObjectPathObject& path, const FakeObject& row) {
    InstanceObject& instance = *scope.make().instance(path);
    instance.setProperty("System", *scope.make().value(CMPI_string, "s"));
    instance.setProperty("Id", *scope.make().value(CMPI_string, row.id));
    instance.setProperty("Speed", *scope.make().value(CMPI_uint64, std::to_string(row.speed)));
    return instance;
}

const InstanceObject& instanceOf(RequestScope& scope, const ObjectPathObject& asked, const FakeObject& row) {
    return instanceAt(scope, pathOf(scope, asked, row), row);
}

const InstanceObject& linkInstance(RequestScope& scope, const ObjectPathObject& path) {
    InstanceObject& instance = *scope.make().instance(*scope.make().path(path.nameSpace(), path.className()));
    for (const NamedData& key : path.keys())
        instance.setProperty(key.name, key.data);
    return instance;
}

bool isObject(const ObjectPathObject& path, const FakeObject& object) {
    const NamedData* id = path.key("Id");
    const StringObject* text = id && id->data.type == CMPI_string ? StringObject::from(id->data.value.string) : nullptr;
    return text && equalNames(path.className(), object.className) && text->text() == object.id;
}

bool passes(const std::string& filter, std::string_view name) { return filter.empty() || equalNames(filter, name); }

} // namespace

FakeProvider::FakeProvider()
    : objects{{"T_FibrePort", "a", 16'000'000'000},
              {"T_FibrePort", "b", 8'000'000'000},
              {"T_EtherPort", "e", 10'000'000'000}},
      links{{"T_FibreLink", {"T_FibrePort", "a"}, {"T_EtherPort", "e", 10'000'000'000}}} {}

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
    for (const FakeObject& row : objects) {
        if (classPath.className() == row.className) outcome.paths.push_back(&pathOf(scope, classPath, row));
    }
    return outcome;
}

Outcome FakeProvider::enumerateInstances(RequestScope& scope, const CallContext& context,
                                         const ObjectPathObject& classPath, const PropertyList& properties) {
    note("enumerateInstances", context, classPath, properties);
    Outcome outcome;
    outcome.error = failure;
    for (const FakeObject& row : objects) {
        if (classPath.className() == row.className) outcome.instances.push_back(&instanceOf(scope, classPath, row));
    }
    return outcome;
}

Outcome FakeProvider::getInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                                  const PropertyList& properties) {
    note("getInstance", context, path, properties);
    Outcome outcome;
    outcome.error = failure;
    for (const FakeObject& row : objects) {
        if (isObject(path, row)) outcome.instances.push_back(&instanceOf(scope, path, row));
    }
    const auto isReference = [](const NamedData& key) { return key.data.type == CMPI_ref; };
    const bool isLink = path.declaration() && path.declaration()->isAssociation();
    if (isLink && std::all_of(path.keys().begin(), path.keys().end(), isReference)) {
        outcome.instances.push_back(&linkInstance(scope, path));
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

std::vector<const ObjectPathObject*> FakeProvider::farEnds(RequestScope& scope, const ObjectPathObject& source,
                                                           const AssociationFilter& filter) const {
    std::vector<const ObjectPathObject*> ends;
    for (const FakeLink& link : links) {
        const bool fromLeft = isObject(source, link.left);
        if (!fromLeft && !isObject(source, link.right)) continue;
        const FakeObject& far = fromLeft ? link.right : link.left;
        if (!passes(filter.associationClass, link.association) || !passes(filter.resultClass, far.className)) continue;
        if (!passes(filter.role, fromLeft ? "Left" : "Right")) continue;
        ObjectPathObject& path = pathOf(scope, source, far);
        if (fromLeft && !link.rightNamespace.empty()) path.setNameSpace(link.rightNamespace);
        ends.push_back(&path);
    }
    return ends;
}

std::vector<const ObjectPathObject*> FakeProvider::linkPaths(RequestScope& scope, const ObjectPathObject& source,
                                                             const AssociationFilter& filter) const {
    std::vector<const ObjectPathObject*> paths;
    for (const FakeLink& link : links) {
        if (!isObject(source, link.left) && !isObject(source, link.right)) continue;
        if (!passes(filter.associationClass, link.association)) continue;
        ObjectPathObject& path = *scope.make().path(source.nameSpace(), link.association);
        path.addKey("Left", ObjectMaker::value(pathOf(scope, source, link.left)));
        path.addKey("Right", ObjectMaker::value(pathOf(scope, source, link.right)));
        paths.push_back(&path);
    }
    return paths;
}

void FakeProvider::note(std::string_view call, const CallContext& context, const ObjectPathObject& source,
                        const AssociationFilter& filter, const PropertyList& properties) {
    note(call, context, source, properties);
    const std::lock_guard lock(mutex);
    calls.back().append(" through=" + filter.associationClass + " to=" + filter.resultClass + " role=" + filter.role +
                        " resultRole=" + filter.resultRole);
}

Outcome FakeProvider::associators(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                                  const AssociationFilter& filter, const PropertyList& properties) {
    note("associators", context, source, filter, properties);
    Outcome outcome;
    outcome.error = failure;
    for (const ObjectPathObject* path : farEnds(scope, source, filter)) {
        for (const FakeObject& object : objects) {
            if (isObject(*path, object)) outcome.instances.push_back(&instanceAt(scope, *path, object));
        }
    }
    return outcome;
}

Outcome FakeProvider::associatorNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                                      const AssociationFilter& filter) {
    note("associatorNames", context, source, filter, {});
    Outcome outcome;
    outcome.error = failure;
    outcome.paths = farEnds(scope, source, filter);
    return outcome;
}

Outcome FakeProvider::references(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                                 const AssociationFilter& filter, const PropertyList& properties) {
    note("references", context, source, filter, properties);
    Outcome outcome;
    outcome.error = failure;
    for (const ObjectPathObject* path : linkPaths(scope, source, filter))
        outcome.instances.push_back(&linkInstance(scope, *path));
    return outcome;
}

Outcome FakeProvider::referenceNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                                     const AssociationFilter& filter) {
    note("referenceNames", context, source, filter, {});
    Outcome outcome;
    outcome.error = failure;
    outcome.paths = linkPaths(scope, source, filter);
    return outcome;
}

FakeHost::FakeHost() {
    repository.loadText("root/ns", mof);
    repository.loadText("root/io", mof);
    registration.add(*repository.find("root/ns", "T_FibrePort"), ProviderKind::instance);
    registration.add(*repository.find("root/ns", "T_EtherPort"), ProviderKind::instance);
    registration.add(*repository.find("root/ns", "T_FibreLink"), ProviderKind::instance);
    registration.add(*repository.find("root/ns", "T_FibreLink"), ProviderKind::association);
    broker = std::make_unique<Broker>(repository);
    operations = std::make_unique<Operations>(repository, registration, provider);
    dispatcher = std::make_unique<Dispatcher>(*operations, *broker);
}

std::string FakeHost::handle(const std::string& document) {
    const auto decoded = cimxml::decodeRequest(document);
    if (const auto* error = std::get_if<cimxml::ProtocolError>(&decoded)) return error->message;
    return std::string(dispatcher->handle(std::get<cimxml::Request>(decoded), Caller{user, "", 0, "", access}).view());
}

std::string FakeHost::call(const std::string& method, const std::string& parameters, const std::string& nameSpace) {
    std::string answer =
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
