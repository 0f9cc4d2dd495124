// A posted document goes all the way: decoded, answered by the operations over a small class set without a provider
// library, and the answer must be XML that our own strict parser takes. {context} in a document stands for the context
// of an enumeration that has just been opened.

#include "cimhost/cimxml/request.h"
#include "cimhost/service/dispatcher.h"

#include <expat.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace {

using namespace cimhost;

constexpr const char* mof = R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride, ToSubclass);
Qualifier In : boolean = true, Scope(parameter);
class T_Port { [Key] string Id; [Key] uint32 Number; real64 Ratio; datetime Time; char16 Letter; string Words[]; };
class T_FibrePort : T_Port { uint8 Bytes[]; };
[Association] class T_Link { [Key] T_Port ref Left; [Key] T_Port ref Right; };
class T_Service {
    [Key] string Name;
    uint32 InstallFromURI([In] string URI, [In] T_Port ref Target, [In] uint16 InstallOptions[]);
    uint32 InstallFromByteStream([In] uint8 Image[], [In] T_Port ref Target, [In] T_Port ref Others[]);
};
)";

// Gives back what it gets.
class EchoProvider final : public ProviderCalls {
public:
    Outcome enumerateInstanceNames(RequestScope&, const CallContext&, const ObjectPathObject& path) override {
        return withPath(path);
    }
    Outcome enumerateInstances(RequestScope& scope, const CallContext&, const ObjectPathObject& path,
                               const PropertyList&) override {
        return withInstance(scope, path);
    }
    Outcome getInstance(RequestScope& scope, const CallContext&, const ObjectPathObject& path,
                        const PropertyList&) override {
        return withInstance(scope, path);
    }
    Outcome createInstance(RequestScope&, const CallContext&, const ObjectPathObject& path,
                           const InstanceObject&) override {
        return withPath(path);
    }
    Outcome modifyInstance(RequestScope&, const CallContext&, const ObjectPathObject&, const InstanceObject&,
                           const PropertyList&) override {
        return {};
    }
    Outcome deleteInstance(RequestScope&, const CallContext&, const ObjectPathObject&) override { return {}; }
    Outcome associators(RequestScope& scope, const CallContext&, const ObjectPathObject& source,
                        const AssociationFilter&, const PropertyList&) override {
        return withInstance(scope, source);
    }
    Outcome associatorNames(RequestScope&, const CallContext&, const ObjectPathObject& source,
                            const AssociationFilter&) override {
        return withPath(source);
    }
    Outcome references(RequestScope& scope, const CallContext&, const ObjectPathObject& source,
                       const AssociationFilter&, const PropertyList&) override {
        return withInstance(scope, linkOf(scope, source));
    }
    Outcome referenceNames(RequestScope& scope, const CallContext&, const ObjectPathObject& source,
                           const AssociationFilter&) override {
        return withPath(linkOf(scope, source));
    }
    Outcome invokeMethod(RequestScope&, const CallContext&, const ObjectPathObject&, const std::string&,
                         const ArgsObject& in) override {
        Outcome outcome;
        outcome.returnValue = ObjectMaker::null(CMPI_uint32);
        outcome.outArguments = &in;
        return outcome;
    }

private:
    static Outcome withPath(const ObjectPathObject& path) {
        Outcome outcome;
        outcome.paths.push_back(&path);
        return outcome;
    }
    static const ObjectPathObject& linkOf(RequestScope& scope, const ObjectPathObject& source) {
        ObjectPathObject& link = *scope.make().path(source.nameSpace(), "T_Link");
        for (const char* end : {"Left", "Right"})
            link.addKey(end, ObjectMaker::value(source));
        return link;
    }
    static Outcome withInstance(RequestScope& scope, const ObjectPathObject& path) {
        InstanceObject& instance = *scope.make().instance(path);
        for (const NamedData& key : path.keys())
            instance.setProperty(key.name, key.data);
        Outcome outcome;
        outcome.instances.push_back(&instance);
        return outcome;
    }
};

struct World {
    World() : registration((repository.loadText("root/ns", mof), Registration::ofPrefix("T_", repository))) {}

    ClassRepository repository;
    Registration registration;
    EchoProvider provider;
    Broker broker{repository};
    Operations operations{repository, registration, provider};
    std::unique_ptr<Dispatcher> dispatcher;
};

constexpr std::string_view openRequest =
    "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>"
    "<IMETHODCALL NAME=\"OpenEnumerateInstances\"><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE "
    "NAME=\"ns\"/>"
    "</LOCALNAMESPACEPATH><IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"T_Port\"/></IPARAMVALUE></IMETHODCALL>"
    "</SIMPLEREQ></MESSAGE></CIM>";

// The same with a context that is good for it.
std::string withContext(Dispatcher& dispatcher, std::string document) {
    constexpr std::string_view marker = "{context}";
    const std::size_t place = document.find(marker);
    if (place == std::string::npos) return document;
    const auto request = std::get<cimxml::Request>(cimxml::decodeRequest(openRequest));
    const ByteBuffer answer = dispatcher.handle(request, {});
    constexpr std::string_view opening = "NAME=\"EnumerationContext\" PARAMTYPE=\"string\"><VALUE>";
    const std::size_t begin = answer.view().find(opening);
    if (begin == std::string_view::npos) std::abort();
    return document.replace(place, marker.size(), answer.view().substr(begin + opening.size(), 32));
}

void requireXml(std::string_view document) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    if (XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1) != XML_STATUS_OK) std::abort();
    XML_ParserFree(parser);
}

using Decoded = std::variant<cimxml::Request, cimxml::ProtocolError>;

Decoded decodeInPieces(std::string_view document, std::size_t pieceSize) {
    cimxml::XmlReader reader;
    for (; document.size() > pieceSize; document.remove_prefix(pieceSize))
        reader.read(document.substr(0, pieceSize));
    reader.read(document);
    return cimxml::decodeRequest(reader);
}

// Where a document has two errors side by side, which of them is seen first depends on the pieces.
void requireSame(const Decoded& one, const Decoded& other) {
    if (one.index() != other.index()) std::abort();
    const auto* request = std::get_if<cimxml::Request>(&one);
    if (request && request->parameters.size() != std::get<cimxml::Request>(other).parameters.size()) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static World world;
    // What one document opens is no affair of the next one.
    if (!world.dispatcher || world.dispatcher->pulls().figures().sessions > 0) {
        world.dispatcher = std::make_unique<Dispatcher>(world.operations, world.broker);
    }
    const std::string document = withContext(*world.dispatcher, {reinterpret_cast<const char*>(data), size});
    const Decoded decoded = cimxml::decodeRequest(document);
    requireSame(decoded, decodeInPieces(document, 1 + size % 97));
    if (const auto* request = std::get_if<cimxml::Request>(&decoded)) {
        requireXml(world.dispatcher->handle(*request, {}).view());
    }
    return 0;
}
