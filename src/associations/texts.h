// The log texts of the association families. Two dialects have a complete set each; a family that deviates takes a
// copy and changes single texts. Those who support this provider read and search them, so each stands as it is, slips
// included.
#pragma once

namespace merolt::association {

enum class Sink { error, debug };

/// A text with places to fill: {F} the family's token, {T} the token without underscores, {O} the operation, by the
/// name of its function in a search too, {K} the key, {n} a number: a status code, a type, an ftype. Without a pattern
/// nothing is logged, and the engine takes its plain road: a namespace goes untested, keys are read and set through the
/// wrapper classes, whose exceptions pass.
struct Text {
    const char* pattern = nullptr;
    Sink sink = Sink::error;

    constexpr Text() = default;
    constexpr Text(const char* text, Sink to = Sink::error) : pattern(text), sink(to) {}
    /// Keeps the sink.
    constexpr Text& operator=(const char* text) {
        pattern = text;
        return *this;
    }
    constexpr explicit operator bool() const { return pattern != nullptr; }
};

constexpr Text debugText(const char* text) { return {text, Sink::debug}; }

/// Failed additions of the two keys of an association path.
struct AddKeyTexts {
    Text role1;
    Text role2;
};

struct EnumerationTexts {
    Text open;
    Text nameSpace;
    AddKeyTexts addKey;
    AddKeyTexts addKeyOfSecondRow;
    Text close;
};

struct GetInstanceTexts {
    const char* token = nullptr; ///< another family's, where getInstance speaks as that; null: its own
    Text open;
    Text nameSpace; ///< read, before the class name is compared, only by families that have a text for it
    Text className;
    Text key1;
    Text key1Type;
    Text key2;
    Text key2Type;
    Text close;
};

struct SearchTexts {
    Text open;
    Text nameSpace;
    Text key;
    AddKeyTexts addKey;
};

/// Opening lines of the four association requests, by ftype, and what is logged before a foreign class is refused.
struct RequestTexts {
    Text open[4];
    Text className;
    Text foreignClass;
};

struct Texts {
    EnumerationTexts names;
    EnumerationTexts instances;
    GetInstanceTexts getInstance;
    SearchTexts findLeft;
    SearchTexts findRight;
    RequestTexts requests;
};

inline constexpr EnumerationTexts storageEnumeration = {
    .open = debugText("Entering {O}_{F}"),
    .nameSpace = "{O}_{F}: Error getting namespace, status.rc={n}!",
    .addKey = {},
    .addKeyOfSecondRow = {},
    .close = debugText("Exiting  {O}_{F}"),
};

/// Lines that open with Entering and close with Exiting; the requests log nothing.
inline constexpr Texts storageTexts = {
    .names = storageEnumeration,
    .instances = storageEnumeration,
    .getInstance = {.open = debugText("Entering {O}_{F}"),
                    .nameSpace = {},
                    .className = "{O}_{F}: Error getting classname, status.rc={n}!",
                    .key1 = "{O}_{F}: Error getting keyData1, status.rc={n}!",
                    .key1Type = "{O}_{F}: Error invalid keyData1 type, keyData1.type={n}!",
                    .key2 = "{O}_{F}: Error getting keyData2, status.rc={n}!",
                    .key2Type = "{O}_{F}: Error invalid keyData2 type, keyData2.type={n}!",
                    .close = debugText("Exiting  {O}_{F}")},
    .findLeft = {},
    .findRight = {},
    .requests = {},
};

inline constexpr EnumerationTexts ethernetEnumeration = {
    .open = debugText("{F}: {O} was called\n"),
    .nameSpace = "{F}: Error getting namespace in {O}\n",
    .addKey = {"{F}: Error addkey Role1 in {O}\n", "{F}: Error addkey Role2 in {O}\n"},
    .addKeyOfSecondRow = {"{F}: Error addkey Role1 in {O}1\n", "{F}: Error addkey Role2 in {O}1\n"},
    .close = {},
};

inline constexpr SearchTexts ethernetSearch = {
    .open = {},
    .nameSpace = "{F}: Error getting namespace in {O}\n",
    .key = "{F}: Error getting {K} key in findMatchedRole1\n",
    .addKey = {"{F}: Error addkey Role1 in {O}\n", "{F}: Error addkey Role2 in {O}\n"},
};

/// Lines that say that the function was called. A text for keys says findMatchedRole1 in both searches.
inline constexpr Texts ethernetTexts = {
    .names = ethernetEnumeration,
    .instances = ethernetEnumeration,
    .getInstance = {.open = debugText("{F}: {O} was called\n"),
                    .nameSpace = {},
                    .className = "{F}: Error getting classname in {O}\n",
                    .key1 = {},
                    .key1Type = {},
                    .key2 = {},
                    .key2Type = {},
                    .close = {}},
    .findLeft = ethernetSearch,
    .findRight = ethernetSearch,
    .requests = {.open = {debugText("{F}: {O} was called\n"), debugText("{F}: {O} was called\n"),
                          debugText("{F}: {O} was called\n"), debugText("{F}: {O} was called\n")},
                 .className = {},
                 .foreignClass = {}},
};

/// A copy of a set, changed. @param change called with the copy.
template <class Change>
constexpr Texts deviating(const Texts& texts, Change&& change) {
    Texts copy = texts;
    change(copy);
    return copy;
}

/// What a pattern's places are filled with.
struct Filling {
    const char* token;
    const char* operation = "";
    const char* key = "";
    int number = 0;
};

/// Logs the text if there is one, and its log is on.
void log(const Text& text, const Filling& filling);

} // namespace merolt::association
