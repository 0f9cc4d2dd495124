#include "cimhost/cimxml/response.h"

#include "cimhost/cimxml/elements.h"
#include "cimhost/model/names.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

namespace cimhost::cimxml {

namespace {

constexpr std::string_view objectsElement = "IRETURNVALUE";
constexpr std::size_t objectsDepth = 5; // CIM, MESSAGE, SIMPLERSP, IMETHODRESPONSE, IRETURNVALUE

std::string quoted(std::string_view text) { return "\"" + std::string(text.substr(0, 64)) + "\""; }

ClassSummary classSummary(const XmlElement& element) {
    const std::string* superclass = element.attribute("SUPERCLASS");
    return {requiredName(element, "NAME"), superclass ? *superclass : std::string()};
}

// The elements that put a path in front of an instance, or of a class.
struct ObjectWithPathRule {
    std::string_view element;
    std::string_view instancePath;
    std::string_view classPath; // empty: no class
};

constexpr ObjectWithPathRule objectWithPathRules[] = {
    {"VALUE.NAMEDINSTANCE", "INSTANCENAME", ""},
    {"VALUE.INSTANCEWITHPATH", "INSTANCEPATH", ""},
    {"VALUE.NAMEDOBJECT", "INSTANCENAME", ""},
    {"VALUE.OBJECTWITHPATH", "INSTANCEPATH", "CLASSPATH"},
    {"VALUE.OBJECTWITHLOCALPATH", "LOCALINSTANCEPATH", "LOCALCLASSPATH"},
};

ReturnedObject objectWithPath(XmlElement& element, const ObjectWithPathRule& rule) {
    if (element.children.size() == 2) {
        const XmlElement& path = element.children[0];
        XmlElement& object = element.children[1];
        if (path.name == rule.instancePath && object.name == "INSTANCE") {
            NamedInstance named{objectPath(path), readInstance(object)};
            if (equalNames(named.path->className, named.instance.className)) return named;
            refuse(shown(element) + ": path and instance are of different classes");
        }
        if (path.name == rule.classPath && object.name == "CLASS") return classSummary(object);
    }
    refuse(shown(element) + " holds other than a path and its object");
}

ReturnedObject returnedObject(XmlElement& element) {
    if (element.name == "CLASS") return classSummary(element);
    if (element.name == "CLASSNAME") return ClassSummary{requiredName(element, "NAME"), {}};
    if (element.name == "INSTANCE") return NamedInstance{std::nullopt, readInstance(element)};
    if (element.name == "OBJECTPATH" || namesObject(element.name)) return objectPath(element);
    for (const ObjectWithPathRule& rule : objectWithPathRules) {
        if (rule.element == element.name) return objectWithPath(element, rule);
    }
    refuse(shown(element) + " where an object stands");
}

bool tellsObjects(const XmlElement& element) { return element.name == objectsElement; }

void readIntrinsicPart(XmlElement& part, Response& response) {
    if (part.name == "ERROR") {
        response.error = readError(part);
    } else if (!tellsObjects(part) && part.name != "PARAMVALUE") {
        refuse(shown(part) + " inside <IMETHODRESPONSE>");
    }
}

void readOutParameter(XmlElement& part, Response& response) {
    if (response.outParameters.size() >= maximumNames) refuse("<METHODRESPONSE> has too many parameters");
    std::string name = requiredName(part, "NAME");
    for (const Response::OutParameter& other : response.outParameters) {
        if (equalNames(other.name, name)) refuse("the parameter " + quoted(name) + " is given twice");
    }
    response.outParameters.push_back({std::move(name), parameterValue(part)});
}

void readExtrinsicPart(XmlElement& part, Response& response) {
    if (part.name == "ERROR") {
        response.error = readError(part);
    } else if (part.name == "RETURNVALUE") {
        if (response.returnValue) refuse("a second <RETURNVALUE>");
        response.returnValue = parameterValue(part);
    } else if (part.name == "PARAMVALUE") {
        readOutParameter(part, response);
    } else {
        refuse(shown(part) + " inside <METHODRESPONSE>");
    }
}

XmlElement& readCall(XmlElement& root, const Asked& asked) {
    XmlElement& message = readMessage(root);
    if (*message.attribute("ID") != asked.messageId) {
        refuse("it answers message " + quoted(*message.attribute("ID")) + ", and this was " + quoted(asked.messageId));
    }
    XmlElement& content = onlyChild(message);
    if (content.name != "SIMPLERSP") refuse(shown(content) + " where <SIMPLERSP> stands");
    XmlElement& call = onlyChild(content);
    const std::string_view expected = asked.kind == Request::Kind::intrinsic ? "IMETHODRESPONSE" : "METHODRESPONSE";
    if (call.name != expected) refuse(shown(call) + " where <" + std::string(expected) + "> stands");
    const std::string method = requiredName(call, "NAME");
    if (!equalNames(method, asked.method)) refuse("it answers " + quoted(method) + " and not " + asked.method);
    return call;
}

Response readDocument(XmlElement& root, const Asked& asked) {
    Response response;
    XmlElement& call = readCall(root, asked);
    const bool isIntrinsic = asked.kind == Request::Kind::intrinsic;
    if (std::count_if(call.children.begin(), call.children.end(), tellsObjects) > 1) {
        refuse("a second <" + std::string(objectsElement) + ">");
    }
    for (XmlElement& part : call.children)
        isIntrinsic ? readIntrinsicPart(part, response) : readExtrinsicPart(part, response);
    return response;
}

} // namespace

CimError statusError(std::string_view code, std::string description) {
    unsigned number = 0;
    const auto [end, failure] = std::from_chars(code.data(), code.data() + code.size(), number);
    const bool isNumber = failure == std::errc() && end == code.data() + code.size();
    if (isNumber && number >= CMPI_RC_ERR_FAILED && number <= CMPI_RC_ERR_METHOD_NOT_FOUND) {
        return {static_cast<CMPIrc>(number), std::move(description)};
    }
    return {CMPI_RC_ERR_FAILED,
            "status " + std::string(code.substr(0, 16)) + (description.empty() ? "" : ": ") + description};
}

CimError readError(const XmlElement& element) {
    const std::string* description = element.attribute("DESCRIPTION");
    return statusError(*element.attribute("CODE"), description ? *description : std::string());
}

struct ResponseReader::State {
    State(Asked question, Sink taker, const ResponseLimits& bounds)
        : asked(std::move(question)), sink(std::move(taker)), limits(bounds), xml(bounds.xml) {
        xml.handOut(objectsElement, objectsDepth, [this](XmlElement& element) { return take(element); });
    }

    std::optional<ProtocolError> take(XmlElement& element) {
        try {
            if (++count > limits.objects) refuse("it holds too many objects");
            sink(returnedObject(element));
            return std::nullopt;
        } catch (Refusal& refusal) {
            return std::move(refusal.error);
        }
    }

    const Asked asked;
    const Sink sink;
    const ResponseLimits limits;
    std::size_t count = 0;
    XmlReader xml;
};

ResponseReader::ResponseReader(Asked asked, Sink sink, const ResponseLimits& limits)
    : state(std::make_unique<State>(std::move(asked), std::move(sink), limits)) {}

ResponseReader::~ResponseReader() = default;

std::optional<ProtocolError> ResponseReader::read(std::string_view piece) { return state->xml.read(piece); }

std::variant<Response, ProtocolError> ResponseReader::finish() {
    std::variant<XmlElement, ProtocolError> tree = state->xml.finish();
    if (auto* error = std::get_if<ProtocolError>(&tree)) return std::move(*error);
    try {
        return readDocument(std::get<XmlElement>(tree), state->asked);
    } catch (Refusal& refusal) {
        return std::move(refusal.error);
    }
}

std::optional<Instance> decodeEmbeddedInstance(std::string_view text, const XmlLimits& limits) {
    std::variant<XmlElement, ProtocolError> tree = parseXml(text, limits);
    auto* root = std::get_if<XmlElement>(&tree);
    if (!root || root->name != "INSTANCE") return std::nullopt;
    try {
        return readInstance(*root);
    } catch (const Refusal&) {
        return std::nullopt;
    }
}

} // namespace cimhost::cimxml
