// Reading JSON with errors that name the place: a value with its pointer, objects that know their keys, and readers
// for the kinds of value that a fleet file holds.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "tavik/model.h"

namespace tavik::fleet {

/** Keeps the keys of an object in the order of the file. */
using Json = nlohmann::ordered_json;

/** What is wrong and where; never leaves parseFleet. */
class Fault : public std::runtime_error {
public:
    /** @param where a JSON pointer, or a line and column for what is not JSON. */
    Fault(std::string_view where, std::string_view problem);
};

/** The value as an error message shows it: short, printable, on one line. */
std::string describe(const Json& value);

struct DocumentLimits {
    std::size_t depth;
    std::size_t values;
    std::size_t cards; ///< elements of the list "cards" of the document
};

Fault tooManyCards(std::string_view where, std::size_t limit);

/** Parses a whole document, in a time that grows as the text does. Throws Fault for text that is no JSON, for an object
 *  with the same key twice and, as soon as it comes there, for what goes beyond the limits. */
Json parseDocument(std::string_view text, const DocumentLimits& limits);

/** A value and where it stands. Refers to the document, which must outlive it. */
class Place {
public:
    Place(const Json& value, std::string pointer) : value_(&value), pointer_(std::move(pointer)) {}

    const Json& value() const { return *value_; }
    const std::string& pointer() const { return pointer_; }

    /** @pre the value is an object with this key, or an array with this element. */
    Place child(const std::string& key) const;
    Place element(std::size_t index) const;

    /** Throws: "expected EXPECTED, found VALUE". */
    [[noreturn]] void fail(std::string_view expected) const;

private:
    const Json* value_;
    std::string pointer_;
};

/** Hands out the values of an object by their keys and tells about keys that nobody asked for. */
class ObjectReader {
public:
    explicit ObjectReader(const Place& object) : ObjectReader(object, std::nullopt) {}

    /** @param defaults another object, whose values stand in for keys that the first one lacks. */
    ObjectReader(const Place& object, const std::optional<Place>& defaults);

    const Place& place() const { return object_; }
    std::optional<Place> find(const char* key);
    bool has(const char* key) { return find(key).has_value(); }

    /** Reads the value of a key, if it is there, and leaves the target alone if not. */
    template <typename Target, typename Parser>
    void read(const char* key, Target& target, Parser parser) {
        if (const auto place = find(key)) target = parser(*place);
    }

    /** As read; null makes the optional target empty. */
    template <typename Value, typename Parser>
    void readNullable(const char* key, std::optional<Value>& target, Parser parser) {
        const auto place = find(key);
        if (!place) return;
        if (place->value().is_null())
            target.reset();
        else
            target = parser(*place);
    }

    /** Throws if the object, or its defaults, has a key that was never asked for. */
    void finish() const;

private:
    void checkKeys(const Place& object) const;

    Place object_;
    std::optional<Place> defaults_;
    std::vector<std::string> known_;
};

/** Reads every element of an array. */
template <typename Parser>
auto parseList(const Place& place, Parser parser) {
    if (!place.value().is_array()) place.fail("an array");
    std::vector<decltype(parser(place))> list;
    list.reserve(place.value().size());
    for (std::size_t i = 0; i < place.value().size(); ++i)
        list.push_back(parser(place.element(i)));
    return list;
}

/** A whole number from lowest to highest. */
std::uint64_t parseNumber(const Place& place, std::uint64_t lowest, std::uint64_t highest);

template <typename Number>
Number parseNumber(const Place& place) {
    return static_cast<Number>(parseNumber(place, 0, std::numeric_limits<Number>::max()));
}

/** A number of 16 bits, also as a text like "0xA127", the way PCI IDs are written. */
std::uint16_t parsePciId(const Place& place);

double parseReal(const Place& place);

/** A text of at most so many bytes, without a zero character. */
std::string parseText(const Place& place, std::size_t longest);

/** A parser for texts of at most so many bytes. */
inline auto textUpTo(std::size_t longest) {
    return [longest](const Place& place) { return parseText(place, longest); };
}

/** A name that a file may use for a number. */
struct Word {
    std::string_view name;
    std::uint32_t number;
};

/** One of the words, or any number up to highest. */
std::uint32_t parseWordOrNumber(const Place& place, const std::vector<Word>& words, std::uint32_t highest);

/** Two hexadecimal digits a byte, with or without colons between the bytes; from lowest to highest bytes. */
Bytes parseBytes(const Place& place, std::size_t lowest, std::size_t highest);

/** Bytes written with colons between them, as addresses are. */
Bytes parseAddressBytes(const Place& place, std::size_t length, std::string_view example);

template <std::size_t length>
std::array<std::uint8_t, length> toArray(const Bytes& bytes) {
    std::array<std::uint8_t, length> array{};
    for (std::size_t i = 0; i < length && i < bytes.size(); ++i)
        array[i] = bytes[i];
    return array;
}

WorldWideName parseWorldWideName(const Place& place);
MacAddress parseMacAddress(const Place& place);

/** Version numbers of one byte each, with dots between them. */
Bytes parseVersion(const Place& place, std::size_t numbers, std::string_view example);

/** An IPv4 or IPv6 address. */
IPAddress parseIPAddress(const Place& place);

/** An IPv4 address with the length of its network's prefix, as 192.0.2.10/24. */
struct IPv4Interface {
    IPAddress address;
    IPAddress mask;
};
IPv4Interface parseIPv4Interface(const Place& place);

} // namespace tavik::fleet
