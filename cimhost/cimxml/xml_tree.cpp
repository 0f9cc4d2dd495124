#include "cimhost/cimxml/xml_tree.h"

#include <expat.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>
#include <utility>

namespace cimhost::cimxml {

namespace {

enum class Content {
    children, // white space between them means nothing
    text,
};

// What DSP0201 allows: attributes by name, parted by blanks.
struct ElementRule {
    std::string_view name;
    Content content;
    std::string_view required;
    std::string_view optional;
};

// clang-format off
constexpr ElementRule rules[] = {
    {"VALUE",                    Content::text,     "",                      ""},
    {"VALUE.NULL",               Content::children, "",                      ""},
    {"VALUE.ARRAY",              Content::children, "",                      ""},
    {"VALUE.REFERENCE",          Content::children, "",                      ""},
    {"VALUE.REFARRAY",           Content::children, "",                      ""},
    {"VALUE.OBJECT",             Content::children, "",                      ""},
    {"VALUE.NAMEDINSTANCE",      Content::children, "",                      ""},
    {"VALUE.NAMEDOBJECT",        Content::children, "",                      ""},
    {"VALUE.OBJECTWITHPATH",     Content::children, "",                      ""},
    {"VALUE.OBJECTWITHLOCALPATH",Content::children, "",                      ""},
    {"VALUE.INSTANCEWITHPATH",   Content::children, "",                      ""},

    {"CIM",                      Content::children, "CIMVERSION DTDVERSION", ""},
    {"MESSAGE",                  Content::children, "ID PROTOCOLVERSION",    ""},
    {"SIMPLEREQ",                Content::children, "",                      ""},
    {"MULTIREQ",                 Content::children, "",                      ""},
    {"SIMPLEEXPREQ",             Content::children, "",                      ""},
    {"MULTIEXPREQ",              Content::children, "",                      ""},
    {"IMETHODCALL",              Content::children, "NAME",                  ""},
    {"METHODCALL",               Content::children, "NAME",                  ""},
    {"EXPMETHODCALL",            Content::children, "NAME",                  ""},
    {"IPARAMVALUE",              Content::children, "NAME",                  ""},
    {"PARAMVALUE",               Content::children, "NAME",                  "PARAMTYPE EmbeddedObject EMBEDDEDOBJECT"},
    {"EXPPARAMVALUE",            Content::children, "NAME",                  ""},
    {"CORRELATOR",               Content::children, "NAME TYPE",             ""},

    {"SIMPLERSP",                Content::children, "",                      ""},
    {"MULTIRSP",                 Content::children, "",                      ""},
    {"SIMPLEEXPRSP",             Content::children, "",                      ""},
    {"IMETHODRESPONSE",          Content::children, "NAME",                  ""},
    {"METHODRESPONSE",           Content::children, "NAME",                  ""},
    {"EXPMETHODRESPONSE",        Content::children, "NAME",                  ""},
    {"IRETURNVALUE",             Content::children, "",                      ""},
    {"RETURNVALUE",              Content::children, "",                      "PARAMTYPE EmbeddedObject EMBEDDEDOBJECT"},
    {"ERROR",                    Content::children, "CODE",                  "DESCRIPTION"},

    {"NAMESPACEPATH",            Content::children, "",                      ""},
    {"LOCALNAMESPACEPATH",       Content::children, "",                      ""},
    {"HOST",                     Content::text,     "",                      ""},
    {"NAMESPACE",                Content::children, "NAME",                  ""},
    {"CLASSPATH",                Content::children, "",                      ""},
    {"LOCALCLASSPATH",           Content::children, "",                      ""},
    {"CLASSNAME",                Content::children, "NAME",                  ""},
    {"INSTANCEPATH",             Content::children, "",                      ""},
    {"LOCALINSTANCEPATH",        Content::children, "",                      ""},
    {"INSTANCENAME",             Content::children, "CLASSNAME",             ""},
    {"OBJECTPATH",               Content::children, "",                      ""},
    {"KEYBINDING",               Content::children, "NAME",                  ""},
    {"KEYVALUE",                 Content::text,     "",                      "VALUETYPE TYPE"},

    {"CLASS",                    Content::children, "NAME",                  "SUPERCLASS"},
    {"INSTANCE",                 Content::children, "CLASSNAME",             "xml:lang"},
    {"PROPERTY",                 Content::children, "NAME TYPE",             "CLASSORIGIN PROPAGATED EmbeddedObject EMBEDDEDOBJECT xml:lang"},
    {"PROPERTY.ARRAY",           Content::children, "NAME TYPE",             "ARRAYSIZE CLASSORIGIN PROPAGATED EmbeddedObject EMBEDDEDOBJECT xml:lang"},
    {"PROPERTY.REFERENCE",       Content::children, "NAME",                  "REFERENCECLASS CLASSORIGIN PROPAGATED"},
    {"QUALIFIER",                Content::children, "NAME TYPE",             "PROPAGATED OVERRIDABLE TOSUBCLASS TOINSTANCE TRANSLATABLE xml:lang"},
    {"QUALIFIER.DECLARATION",    Content::children, "NAME TYPE",             "ISARRAY ARRAYSIZE OVERRIDABLE TOSUBCLASS TOINSTANCE TRANSLATABLE"},
    {"SCOPE",                    Content::children, "",                      "CLASS ASSOCIATION REFERENCE PROPERTY METHOD PARAMETER INDICATION"},
    {"METHOD",                   Content::children, "NAME",                  "TYPE CLASSORIGIN PROPAGATED"},
    {"PARAMETER",                Content::children, "NAME TYPE",             ""},
    {"PARAMETER.REFERENCE",      Content::children, "NAME",                  "REFERENCECLASS"},
    {"PARAMETER.ARRAY",          Content::children, "NAME TYPE",             "ARRAYSIZE"},
    {"PARAMETER.REFARRAY",       Content::children, "NAME",                  "REFERENCECLASS ARRAYSIZE"},
};
// clang-format on

const ElementRule* findRule(std::string_view name) {
    const auto* row = std::find_if(std::begin(rules), std::end(rules), [&](const auto& r) { return r.name == name; });
    return row == std::end(rules) ? nullptr : row;
}

// The word as it stands in the list, or nothing.
std::string_view findWord(std::string_view words, std::string_view wanted) {
    while (!words.empty()) {
        const std::string_view word = words.substr(0, words.find(' '));
        if (word == wanted) return word;
        words.remove_prefix(std::min(words.size(), word.size() + 1));
    }
    return {};
}

// An element for a message; a hostile name may fill the whole request.
std::string shown(std::string_view name) { return "<" + std::string(name.substr(0, 64)) + ">"; }

bool isBlank(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

struct ParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ParserHandle = std::unique_ptr<XML_ParserStruct, ParserDeleter>;

} // namespace

class XmlReader::State {
public:
    explicit State(const XmlLimits& bounds) : handle(XML_ParserCreate(nullptr)), parser(handle.get()), limits(bounds) {
        if (!parser) throw std::bad_alloc();
        XML_SetUserData(parser, this);
        XML_SetElementHandler(
            parser,
            [](void* self, const XML_Char* name, const XML_Char** attributes) { of(self).start(name, attributes); },
            [](void* self, const XML_Char*) { of(self).end(); });
        XML_SetCharacterDataHandler(parser, [](void* self, const XML_Char* text, int length) {
            of(self).characters({text, static_cast<std::size_t>(length)});
        });
        XML_SetStartDoctypeDeclHandler(parser, [](void* self, const XML_Char*, const XML_Char*, const XML_Char*, int) {
            of(self).refuse("a document type declaration is not accepted");
        });
    }

    // The parser counts in int.
    void read(std::string_view piece, bool isLast) {
        constexpr std::size_t most = INT_MAX / 2;
        for (; piece.size() > most; piece.remove_prefix(most))
            readPart(piece.substr(0, most), false);
        readPart(piece, isLast);
    }

    void handOut(std::string_view parent, std::size_t depth, Taker function) {
        parentOfTaken = parent;
        depthOfParent = depth;
        taker = std::move(function);
    }

    const std::optional<ProtocolError>& failure() const { return error; }
    XmlElement takeRoot() { return std::move(root); }
    std::size_t heldBytes() const { return held; }

private:
    static State& of(void* self) { return *static_cast<State*>(self); }

    void readPart(std::string_view part, bool isLast) {
        if (error) return;
        bytesRead += part.size();
        const bool isRead = XML_Parse(parser, part.data(), static_cast<int>(part.size()), isLast) == XML_STATUS_OK;
        if (thrown) std::rethrow_exception(std::exchange(thrown, nullptr));
        if (isRead) return isLast ? void() : refuseLongToken();
        if (!error) {
            error = {ErrorKind::requestNotWellFormed, place() + XML_ErrorString(XML_GetErrorCode(parser))};
        }
    }

    // The parser begins an unfinished token anew with each piece: one without end would cost the square of its length.
    void refuseLongToken() {
        const XML_Index begin = XML_GetCurrentByteIndex(parser);
        const std::size_t done = begin < 0 ? 0 : static_cast<std::size_t>(begin);
        if (bytesRead - done > limits.tokenBytes) refuse("a tag or comment is too long");
    }

    std::string place() const { return "line " + std::to_string(XML_GetCurrentLineNumber(parser)) + ": "; }

    void refuse(const std::string& reason) {
        if (error) return;
        error = {ErrorKind::requestNotValid, place() + reason};
        XML_StopParser(parser, XML_FALSE);
    }

    void hold(std::size_t bytes) {
        held += bytes;
        if (held > limits.heldBytes) refuseTooMuch();
    }

    void refuseTooMuch() { refuse("the message holds too much"); }

    void start(std::string_view name, const XML_Char** attributes) {
        if (error) return;
        if (!open.empty() && open.back()->name == "VALUE.ARRAY" && startArrayEntry(name, attributes)) return;
        if (inArrayEntry) return refuse(shown(name) + " inside an array's value");
        const ElementRule* rule = findRule(name);
        if (!rule) return refuse(shown(name) + " is no element of CIM-XML");
        if (open.size() >= limits.depth) return refuse("elements are nested too deeply");
        if (++elementCount > limits.elements) return refuse("too many elements");
        if (!open.empty() && ruleOfOpen.back()->content == Content::text) {
            return refuse(shown(name) + " inside " + shown(ruleOfOpen.back()->name));
        }
        if (isTaken()) {
            heldAround = held;
            elementsAround = elementCount - 1;
        }
        XmlElement& element = open.empty() ? root : open.back()->children.emplace_back();
        element.name = rule->name;
        hold(sizeof(XmlElement));
        takeAttributes(element, *rule, attributes);
        open.push_back(&element);
        ruleOfOpen.push_back(rule);
    }

    // True for the entries that are kept as texts and not as children.
    bool startArrayEntry(std::string_view name, const XML_Char** attributes) {
        const bool isNull = name == "VALUE.NULL";
        if (inArrayEntry || (!isNull && name != "VALUE")) return false;
        if (attributes[0]) refuse(shown(name) + " takes no attribute " + attributes[0]);
        inArrayEntry = true;
        entryIsNull = isNull;
        entryText.clear();
        return true;
    }

    void takeAttributes(XmlElement& element, const ElementRule& rule, const XML_Char** attributes) {
        for (; attributes[0]; attributes += 2) {
            std::string_view known = findWord(rule.required, attributes[0]);
            if (known.empty()) known = findWord(rule.optional, attributes[0]);
            if (known.empty()) {
                return refuse(shown(rule.name) + " takes no attribute " +
                              std::string(attributes[0], strnlen(attributes[0], 64)));
            }
            if (std::strlen(attributes[1]) > limits.attributeBytes) {
                return refuse("attribute " + std::string(known) + " of " + shown(rule.name) + " is too long");
            }
            element.attributes.push_back({known, attributes[1]});
            hold(sizeof(XmlAttribute) + element.attributes.back().value.size());
        }
        for (std::string_view missing = rule.required; !missing.empty();) {
            const std::string_view word = missing.substr(0, missing.find(' '));
            if (!element.attribute(word)) {
                return refuse(shown(rule.name) + " lacks its attribute " + std::string(word));
            }
            missing.remove_prefix(std::min(missing.size(), word.size() + 1));
        }
    }

    void end() {
        if (error) return;
        if (inArrayEntry) return endArrayEntry();
        open.pop_back();
        ruleOfOpen.pop_back();
        if (isTaken()) handOutLast();
    }

    // True where the innermost open element is the one whose children are handed out.
    bool isTaken() const { return taker && open.size() == depthOfParent && open.back()->name == parentOfTaken; }

    // Nothing is thrown through the parser, which is written in C.
    void handOutLast() {
        std::vector<XmlElement>& children = open.back()->children;
        std::optional<ProtocolError> refused;
        try {
            refused = taker(children.back());
        } catch (...) {
            thrown = std::current_exception();
            refused = {ErrorKind::requestNotValid, {}};
        }
        children.pop_back();
        held = heldAround;
        elementCount = elementsAround;
        if (!refused) return;
        error = std::move(refused);
        XML_StopParser(parser, XML_FALSE);
    }

    void endArrayEntry() {
        TextList& values = open.back()->values;
        const std::size_t before = values.heldBytes();
        inArrayEntry = false;
        held -= entryText.size();
        const std::size_t most = before + limits.heldBytes - held;
        if (!(entryIsNull ? values.appendNull(most) : values.append(entryText, most))) return refuseTooMuch();
        held += values.heldBytes() - before;
    }

    void characters(std::string_view text) {
        if (error) return;
        if (inArrayEntry && !entryIsNull) {
            entryText.append(text);
            hold(text.size());
        } else if (!inArrayEntry && ruleOfOpen.back()->content == Content::text) {
            open.back()->text.append(text);
            hold(text.size());
        } else if (!isBlank(text)) {
            refuse("text where " + shown(open.back()->name) + " takes none");
        }
    }

    const ParserHandle handle;
    const XML_Parser parser;
    const XmlLimits limits;
    XmlElement root;
    // Pointers stay good: an element gains children only while it is the innermost open one.
    std::vector<XmlElement*> open;
    std::vector<const ElementRule*> ruleOfOpen;
    std::size_t elementCount = 0;
    bool inArrayEntry = false;
    bool entryIsNull = false;
    std::string entryText;
    std::size_t held = 0;
    std::size_t bytesRead = 0;
    std::optional<ProtocolError> error;
    std::string_view parentOfTaken;
    std::size_t depthOfParent = 0;
    Taker taker;
    // Of what stands around the child that is being read.
    std::size_t heldAround = 0;
    std::size_t elementsAround = 0;
    std::exception_ptr thrown;
};

XmlReader::XmlReader(const XmlLimits& limits) : state(std::make_unique<State>(limits)) {}

XmlReader::~XmlReader() = default;

void XmlReader::handOut(std::string_view parent, std::size_t depth, Taker taker) {
    state->handOut(parent, depth, std::move(taker));
}

std::optional<ProtocolError> XmlReader::read(std::string_view piece) {
    state->read(piece, false);
    return state->failure();
}

std::variant<XmlElement, ProtocolError> XmlReader::finish() {
    state->read({}, true);
    if (state->failure()) return *state->failure();
    return state->takeRoot();
}

std::size_t XmlReader::heldBytes() const { return state->heldBytes(); }

const std::string* XmlElement::attribute(std::string_view attributeName) const {
    for (const XmlAttribute& candidate : attributes) {
        if (candidate.name == attributeName) return &candidate.value;
    }
    return nullptr;
}

std::variant<XmlElement, ProtocolError> parseXml(std::string_view document, const XmlLimits& limits) {
    XmlReader reader(limits);
    reader.read(document);
    return reader.finish();
}

} // namespace cimhost::cimxml
