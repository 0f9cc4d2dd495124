#include "tavik/fleet/json_reader.h"

#include <algorithm>
#include <set>

#include <arpa/inet.h>

namespace tavik::fleet {

std::string describe(const Json& value) {
    if (value.is_object()) return "an object";
    if (value.is_array()) return "an array";
    constexpr std::size_t longest = 40;
    auto text = value.dump(-1, ' ', true, Json::error_handler_t::replace);
    if (text.size() > longest) text = text.substr(0, longest) + "...";
    return text;
}

namespace {

bool isPrintable(char c) { return c >= 0x20 && c < 0x7F; }

/** A key within a pointer: short and printable, as keys of a fleet file are. */
std::string escapePointerToken(std::string_view key) {
    constexpr std::size_t longest = 64;
    std::string token;
    for (const char c : key.substr(0, longest)) {
        if (c == '~')
            token += "~0";
        else if (c == '/')
            token += "~1";
        else
            token += isPrintable(c) ? c : '?';
    }
    return key.size() > longest ? token + "..." : token;
}

/** The part of the parser's message that speaks about the text, on one printable line. */
std::string syntaxProblem(std::string_view what) {
    constexpr std::size_t longest = 200;
    const auto position = what.find(": ", what.find("column"));
    std::string problem(position == std::string_view::npos ? what : what.substr(position + 2));
    for (char& c : problem)
        if (!isPrintable(c)) c = '?';
    return problem.size() > longest ? problem.substr(0, longest) + "..." : problem;
}

std::string lineAndColumn(std::string_view text, std::size_t byte) {
    const auto before = text.substr(0, std::min(text.size(), byte == 0 ? 0 : byte - 1));
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const auto lineStart = before.rfind('\n');
    const auto column = before.size() - (lineStart == std::string_view::npos ? 0 : lineStart + 1) + 1;
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

/** Builds the document from what the parser finds, knows where it is, and stops where a document goes too far. The work
 *  for a value does not depend on how many there are: the library's own builder with a callback looks at all values of
 * a list behind each of them. */
class DocumentBuilder {
public:
    DocumentBuilder(std::string_view text, const DocumentLimits& limits) : text_(text), limits_(limits) {}

    Json document() { return std::move(document_); }

    // What the parser calls; false would end it.
    bool null() { return add(nullptr); }
    bool boolean(bool value) { return add(value); }
    bool number_integer(Json::number_integer_t value) { return add(value); }
    bool number_unsigned(Json::number_unsigned_t value) { return add(value); }
    bool number_float(Json::number_float_t value, const std::string&) { return add(value); }
    bool string(std::string& value) { return add(std::move(value)); }
    bool binary(Json::binary_t&) { return false; } // JSON texts have none
    bool start_object(std::size_t) { return enter(Json::object()); }
    bool start_array(std::size_t) { return enter(Json::array()); }
    bool end_object() { return leave(); }
    bool end_array() { return leave(); }

    bool key(std::string& name) {
        Level& level = levels_.back();
        level.key = name;
        if (!level.keys.insert(std::move(name)).second)
            throw Fault(pointer(), "the same key stands twice in one object");
        return true;
    }

    template <typename Problem>
    bool parse_error(std::size_t, const std::string&, const Problem& problem) {
        if (const auto* error = dynamic_cast<const Json::parse_error*>(&problem))
            throw Fault(lineAndColumn(text_, error->byte), syntaxProblem(error->what()));
        throw Fault("", "expected numbers within the range of a double");
    }

private:
    struct Level {
        Json* container;
        std::string key{};
        std::size_t elements = 0;
        std::set<std::string> keys{};

        bool isList() const { return container->is_array(); }
    };

    std::string pointer() const {
        std::string text;
        for (const auto& level : levels_)
            text += "/" + (level.isList() ? std::to_string(level.elements - 1) : escapePointerToken(level.key));
        return text;
    }

    void count() {
        if (!levels_.empty()) ++levels_.back().elements;
        if (isListOfCards() && levels_.back().elements > limits_.cards) throw tooManyCards(pointer(), limits_.cards);
        if (++values_ > limits_.values)
            throw Fault(pointer(), "expected at most " + std::to_string(limits_.values) + " values in the file");
    }

    bool isListOfCards() const { return levels_.size() == 2 && levels_[1].isList() && levels_[0].key == "cards"; }

    /** Puts the value where the parser stands. Keys have been compared, so that an object need not be searched. */
    Json& place(Json&& value) {
        if (levels_.empty()) return document_ = std::move(value);
        const Level& level = levels_.back();
        if (level.isList()) return level.container->get_ref<Json::array_t&>().emplace_back(std::move(value));
        Members& members = level.container->get_ref<Json::object_t&>();
        return members.emplace_back(level.key, std::move(value)).second;
    }

    bool add(Json value) {
        count();
        place(std::move(value));
        return true;
    }

    bool enter(Json container) {
        count();
        if (levels_.size() >= limits_.depth)
            throw Fault(pointer(), "expected values nested at most " + std::to_string(limits_.depth) + " deep");
        // The value stays where it is: nothing is added to what surrounds it before it ends.
        levels_.push_back({&place(std::move(container))});
        return true;
    }

    bool leave() {
        levels_.pop_back();
        return true;
    }

    using Members = std::vector<Json::object_t::value_type>; ///< what an ordered object is made of

    const std::string_view text_;
    const DocumentLimits limits_;
    Json document_;
    std::size_t values_ = 0;
    std::vector<Level> levels_;
};

std::string quoteList(const std::vector<std::string>& names) {
    std::string list;
    for (const auto& name : names)
        list += (list.empty() ? "\"" : ", \"") + name + "\"";
    return list;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

enum class Colons { Required, Optional };

std::optional<Bytes> hexBytes(std::string_view text, Colons colons) {
    Bytes bytes;
    for (std::size_t at = 0; at < text.size();) {
        if (at > 0) {
            const bool colon = text[at] == ':';
            if (colon) ++at;
            if (!colon && colons == Colons::Required) return std::nullopt;
        }
        if (at + 2 > text.size()) return std::nullopt;
        const int high = hexDigit(text[at]), low = hexDigit(text[at + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
        at += 2;
    }
    return bytes;
}

/** A decimal number without sign or leading blanks. */
std::optional<std::uint32_t> decimal(std::string_view text, std::uint32_t highest) {
    if (text.empty() || text.size() > 9) return std::nullopt;
    std::uint32_t number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        number = number * 10 + static_cast<std::uint32_t>(c - '0');
    }
    return number <= highest ? std::optional(number) : std::nullopt;
}

std::optional<IPAddress> ipAddress(const std::string& text) {
    if (text.find('\0') != std::string::npos) return std::nullopt;
    IPAddress address;
    address.family = AddressIPv4;
    if (inet_pton(AF_INET, text.c_str(), address.bytes.data()) == 1) return address;
    address.family = AddressIPv6;
    if (inet_pton(AF_INET6, text.c_str(), address.bytes.data()) == 1) return address;
    return std::nullopt;
}

} // namespace

Fault::Fault(std::string_view where, std::string_view problem)
    : std::runtime_error((where.empty() ? std::string("/") : std::string(where)) + ": " + std::string(problem)) {}

Fault tooManyCards(std::string_view where, std::size_t limit) {
    return Fault(where, "expected at most " + std::to_string(limit) + " cards in the fleet, copies included");
}

Json parseDocument(std::string_view text, const DocumentLimits& limits) {
    DocumentBuilder builder(text, limits);
    Json::sax_parse(text.begin(), text.end(), &builder);
    return builder.document();
}

Place Place::child(const std::string& key) const { return {value_->at(key), pointer_ + "/" + escapePointerToken(key)}; }

Place Place::element(std::size_t index) const { return {value_->at(index), pointer_ + "/" + std::to_string(index)}; }

void Place::fail(std::string_view expected) const {
    throw Fault(pointer_, "expected " + std::string(expected) + ", found " + describe(*value_));
}

ObjectReader::ObjectReader(const Place& object, const std::optional<Place>& defaults)
    : object_(object), defaults_(defaults) {
    if (!object.value().is_object()) object.fail("an object");
    if (defaults && !defaults->value().is_object()) defaults->fail("an object");
}

std::optional<Place> ObjectReader::find(const char* key) {
    if (std::find(known_.begin(), known_.end(), key) == known_.end()) known_.emplace_back(key);
    if (object_.value().contains(key)) return object_.child(key);
    if (defaults_ && defaults_->value().contains(key)) return defaults_->child(key);
    return std::nullopt;
}

void ObjectReader::finish() const {
    checkKeys(object_);
    if (defaults_) checkKeys(*defaults_);
}

void ObjectReader::checkKeys(const Place& object) const {
    for (const auto& item : object.value().items())
        if (std::find(known_.begin(), known_.end(), item.key()) == known_.end())
            throw Fault(object.child(item.key()).pointer(), "unknown key, expected one of " + quoteList(known_));
}

std::uint64_t parseNumber(const Place& place, std::uint64_t lowest, std::uint64_t highest) {
    const auto& value = place.value();
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        if (number >= lowest && number <= highest) return number;
    }
    place.fail("a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest));
}

std::uint16_t parsePciId(const Place& place) {
    constexpr std::uint16_t highest = std::numeric_limits<std::uint16_t>::max();
    if (!place.value().is_string()) {
        if (place.value().is_number_unsigned() && place.value().get<std::uint64_t>() <= highest)
            return place.value().get<std::uint16_t>();
    } else if (const auto text = place.value().get<std::string>(); text.size() == 6 && text.substr(0, 2) == "0x") {
        if (const auto bytes = hexBytes(text.substr(2), Colons::Optional))
            return static_cast<std::uint16_t>((*bytes)[0] << 8 | (*bytes)[1]);
    }
    place.fail("a number from 0 to 65535 or a text like \"0xA127\"");
}

double parseReal(const Place& place) {
    if (!place.value().is_number()) place.fail("a number");
    return place.value().get<double>();
}

std::string parseText(const Place& place, std::size_t longest) {
    const auto expected = "a text of at most " + std::to_string(longest) + " bytes";
    if (!place.value().is_string()) place.fail(expected);
    auto text = place.value().get<std::string>();
    if (text.size() > longest) place.fail(expected);
    if (text.find('\0') != std::string::npos) place.fail("a text without a zero character");
    return text;
}

std::uint32_t parseWordOrNumber(const Place& place, const std::vector<Word>& words, std::uint32_t highest) {
    const auto& value = place.value();
    if (value.is_number_unsigned() && value.get<std::uint64_t>() <= highest) return value.get<std::uint32_t>();
    std::vector<std::string> names;
    for (const auto& word : words) {
        if (value.is_string() && value.get_ref<const std::string&>() == word.name) return word.number;
        names.emplace_back(word.name);
    }
    place.fail("one of " + quoteList(names) + " or a number from 0 to " + std::to_string(highest));
}

Bytes parseBytes(const Place& place, std::size_t lowest, std::size_t highest) {
    if (place.value().is_string()) {
        const auto bytes = hexBytes(place.value().get_ref<const std::string&>(), Colons::Optional);
        if (bytes && bytes->size() >= lowest && bytes->size() <= highest) return *bytes;
    }
    place.fail("hexadecimal digits for " + std::to_string(lowest) + " to " + std::to_string(highest) + " bytes");
}

Bytes parseAddressBytes(const Place& place, std::size_t length, std::string_view example) {
    if (place.value().is_string()) {
        const auto bytes = hexBytes(place.value().get_ref<const std::string&>(), Colons::Required);
        if (bytes && bytes->size() == length) return *bytes;
    }
    place.fail(example);
}

WorldWideName parseWorldWideName(const Place& place) {
    return toArray<8>(parseAddressBytes(place, 8, "a world wide name like \"20:00:02:00:00:00:01:00\""));
}

MacAddress parseMacAddress(const Place& place) {
    return toArray<6>(parseAddressBytes(place, 6, "an address like \"02:00:00:00:01:00\""));
}

Bytes parseVersion(const Place& place, std::size_t numbers, std::string_view example) {
    Bytes version;
    std::string_view rest;
    if (place.value().is_string()) rest = place.value().get_ref<const std::string&>();
    while (version.size() <= numbers) {
        const auto dot = rest.find('.');
        const auto number = decimal(rest.substr(0, dot), std::numeric_limits<std::uint8_t>::max());
        if (!number) break;
        version.push_back(static_cast<std::uint8_t>(*number));
        if (dot == std::string_view::npos) {
            if (version.size() == numbers) return version;
            break;
        }
        rest.remove_prefix(dot + 1);
    }
    place.fail(std::to_string(numbers) + " numbers from 0 to 255 like \"" + std::string(example) + "\"");
}

IPAddress parseIPAddress(const Place& place) {
    if (place.value().is_string())
        if (const auto address = ipAddress(place.value().get<std::string>())) return *address;
    place.fail("an address like \"192.0.2.10\" or \"2001:db8::10\"");
}

IPv4Interface parseIPv4Interface(const Place& place) {
    const auto text = place.value().is_string() ? place.value().get<std::string>() : std::string();
    const auto slash = text.find('/');
    const auto address = ipAddress(text.substr(0, slash));
    const auto prefix = slash == std::string::npos ? std::nullopt : decimal(text.substr(slash + 1), 32);
    if (!address || address->family != AddressIPv4 || !prefix)
        place.fail("an address with the length of its network's prefix, like \"192.0.2.10/24\"");
    IPv4Interface interface {
        *address, { {}, AddressIPv4 }
    };
    const std::uint64_t bits = (0xFFFFFFFFULL << (32 - *prefix)) & 0xFFFFFFFFULL;
    for (std::size_t i = 0; i < 4; ++i)
        interface.mask.bytes[i] = static_cast<std::uint8_t>(bits >> (24 - 8 * i));
    return interface;
}

} // namespace tavik::fleet
