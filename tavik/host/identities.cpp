#include "tavik/host/identities.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <sstream>
#include <string_view>
#include <tuple>
#include <utility>

#include "tavik/host/device_parent.h"
#include "tavik/host/fibre_channel_host.h"
#include "tavik/host/neighbours.h"
#include "tavik/host/serial_places.h"
#include "tavik/host/sys_tree.h"
#include "tavik/host/text_forms.h"

namespace tavik::host {

namespace {

constexpr std::string_view macKind = "MAC address";
constexpr std::string_view addressKind = "IP address";
constexpr std::string_view nameKind = "world wide name";
constexpr std::string_view serialKind = "serial number";
constexpr std::string_view hostKind = "host name";
constexpr std::string_view neighbourKind = "text of a neighbour";

enum class Holds {
    Nothing,
    WideName,
    UnitName,
    SerialNumber,
    SymbolicName,
    HostName,
    Configuration,
    Addresses,
    Neighbours
};

struct FileRow {
    std::string_view name;
    Holds holds;
};

constexpr std::array<FileRow, 17> fileRows{{
    {"node_name", Holds::WideName},
    {"port_name", Holds::WideName},
    {"permanent_port_name", Holds::WideName},
    {"fabric_name", Holds::WideName},
    {"wwid", Holds::UnitName},
    {"serial_number", Holds::SerialNumber},
    {"serialnum", Holds::SerialNumber},
    {"serial_num", Holds::SerialNumber},
    {"serial", Holds::SerialNumber},
    {"phys_switch_id", Holds::SerialNumber},
    {"phys_port_id", Holds::SerialNumber},
    {"symbolic_name", Holds::SymbolicName},
    {"system_hostname", Holds::HostName},
    {"config", Holds::Configuration},
    {"addresses", Holds::Addresses},
    {neighboursFile, Holds::Neighbours},
    {"", Holds::Nothing},
}};

Holds holdsOf(const std::string& fileName) {
    const auto* row = std::find_if(fileRows.begin(), fileRows.end(),
                                   [&](const FileRow& candidate) { return candidate.name == fileName; });
    return row == fileRows.end() ? Holds::Nothing : row->holds;
}

std::string lastWord(const std::string& text) {
    std::istringstream words(text);
    std::string word;
    while (words >> word) {
    }
    return word;
}

std::string trimmed(const std::string& text) {
    const auto isBlank = [](char character) { return std::isspace(static_cast<unsigned char>(character)) != 0; };
    const auto begin = std::find_if_not(text.begin(), text.end(), isBlank);
    const auto end = std::find_if_not(text.rbegin(), std::make_reverse_iterator(begin), isBlank).base();
    return {begin, end};
}

std::string folded(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return text;
}

/** What stands there when nobody has set a number, and words that are no number. */
bool isPlaceholder(const std::string& text) {
    const auto count =
        std::count_if(text.begin(), text.end(), [](unsigned char character) { return std::isalnum(character) != 0; });
    const bool isOne = std::all_of(text.begin(), text.end(), [&](char character) { return character == text.front(); });
    const bool hasDigit =
        std::any_of(text.begin(), text.end(), [](unsigned char character) { return std::isdigit(character) != 0; });
    constexpr std::array<std::string_view, 5> words = {"none", "unknown", "default", "not set", "not available"};
    return count < 4 || isOne || (!hasDigit && std::find(words.begin(), words.end(), folded(text)) != words.end());
}

bool isWordBefore(std::string_view text, std::size_t at) {
    return at > 0 && (std::isxdigit(static_cast<unsigned char>(text[at - 1])) != 0 || text[at - 1] == ':');
}

/** In lower case and without what may stand between digits: two that are the same so would be found for each other. */
std::string essence(const std::string& text) {
    std::string all;
    for (const char character : folded(text))
        if (std::isalnum(static_cast<unsigned char>(character)) != 0) all += character;
    return all;
}

bool isAnyOriginal(const std::vector<Replacement>& replacements) {
    std::set<std::string> originals;
    for (const auto& replacement : replacements)
        originals.insert(essence(replacement.original));
    return std::any_of(replacements.begin(), replacements.end(),
                       [&](const Replacement& replacement) { return originals.contains(essence(replacement.other)); });
}

std::string formatBytes(const Bytes& bytes) { return formatHex(bytes.data(), bytes.size()); }
Bytes bytesOf(const MacAddress& mac) { return {mac.begin(), mac.end()}; }

/** Pseudonyms for one recording, each in the form of its kind. */
class Choice {
public:
    Choice(const Pseudonyms::Random& random, const std::set<MacAddress>& macs) : pseudonyms_(random) {
        for (const auto& mac : macs)
            makers_.insert(formatHex(mac.data(), 3));
    }

    void addMac(const MacAddress& mac) { add(macKind, formatMac(mac), formatMac(pseudonyms_.mac(mac))); }
    void addWideName(const Bytes& name) { add(nameKind, formatBytes(name), formatBytes(pseudonyms_.wideName(name))); }
    void addEui(const Bytes& name) { add(nameKind, formatBytes(name), formatBytes(pseudonyms_.eui(name))); }
    void addAddress(const std::string& address) {
        add(addressKind, address, formatIPAddress(pseudonyms_.ip(*parseIPAddress(address))));
    }
    void addText(std::string_view kind, const std::string& text) { add(kind, text, pseudonyms_.text(text)); }

    /** Some are made of an address of the card, and stay so. */
    void addSerialNumber(const std::string& text) {
        const auto bytes = parseHex(text);
        const bool hasMaker = bytes && bytes->size() >= 3 && makers_.contains(formatHex(bytes->data(), 3));
        if (hasMaker && bytes->size() == 6) {
            MacAddress mac{};
            std::copy(bytes->begin(), bytes->end(), mac.begin());
            addMac(mac);
        } else if (hasMaker && bytes->size() == 8) {
            addEui(*bytes);
        } else {
            addText(serialKind, text);
        }
    }

    std::vector<Replacement> sorted() && {
        const auto order = [](const Replacement& a, const Replacement& b) {
            return std::tie(a.kind, a.original) < std::tie(b.kind, b.original);
        };
        std::sort(chosen_.begin(), chosen_.end(), order);
        chosen_.erase(std::unique(chosen_.begin(), chosen_.end()), chosen_.end());
        return std::move(chosen_);
    }

private:
    void add(std::string_view kind, const std::string& original, const std::string& other) {
        if (other != original) chosen_.push_back({kind, original, other});
    }

    Pseudonyms pseudonyms_;
    std::set<std::string> makers_; ///< three bytes each, as digits
    std::vector<Replacement> chosen_;
};

void addAddress(const std::string& original, const std::string& other, Replacer& replacer) {
    replacer.addAddress(original, other);
    const auto from = *parseIPAddress(original);
    const auto to = *parseIPAddress(other);
    // Some files have an IPv6 address as digits or bytes; four bytes of an IPv4 address would be found anywhere.
    if (from.family == AddressIPv6)
        replacer.addBytes({from.bytes.begin(), from.bytes.end()}, {to.bytes.begin(), to.bytes.end()});
}

} // namespace

Identities::Identities(const std::vector<std::string>& hostNames) {
    for (const auto& name : hostNames)
        addHostName(name);
}

void Identities::addHostName(const std::string& anyCase) {
    const auto name = folded(anyCase);
    // The domain is a name of its own: other hosts have it, too.
    const auto dot = name.find('.');
    const auto domain = dot == std::string::npos ? std::string() : name.substr(dot + 1);
    for (const auto& part : {name.substr(0, dot), domain})
        if (part.size() >= Replacer::shortestText && part != "localhost" && part != "localdomain")
            hostNames_.insert(part);
}

void Identities::addSerialNumber(const std::string& text) {
    if (!isPlaceholder(text)) serialNumbers_.insert(text);
}

void Identities::addNeighbours(const std::string& lines) {
    for (const auto& neighbour : parseNeighbours(lines).valueOr({})) {
        addHostName(neighbour.systemName);
        for (const auto& identifier : {neighbour.chassis, neighbour.port})
            if (const auto address = parseIPAddress(identifier)) addresses_.insert(formatIPAddress(*address));
        const bool isAddress = parseMac(neighbour.chassis).present() || parseIPAddress(neighbour.chassis).present();
        if (!isAddress) neighbourTexts_.insert(neighbour.chassis);
        if (neighbour.portDescription != neighbour.port) neighbourTexts_.insert(neighbour.portDescription);
    }
    std::erase_if(neighbourTexts_, [](const std::string& text) { return text.size() < Replacer::shortestText; });
}

void Identities::addMacsIn(std::string_view text) {
    constexpr std::size_t size = 17;
    for (auto at = text.find(':'); at != std::string_view::npos; at = text.find(':', at + 1)) {
        const auto begin = at - std::min<std::size_t>(at, 2);
        if (const auto mac = parseMac(text.substr(begin, size)); mac && !isWordBefore(text, begin)) macs_.insert(*mac);
    }
    // The name of an interface that has no better one.
    for (auto at = text.find("enx"); at != std::string_view::npos; at = text.find("enx", at + 1))
        if (const auto bytes = parseHex(text.substr(at + 3, 12)); bytes && bytes->size() == 6) {
            MacAddress mac{};
            std::copy(bytes->begin(), bytes->end(), mac.begin());
            macs_.insert(mac);
        }
}

void Identities::collect(const std::string& path, const Bytes& content) {
    const auto fileName = baseName(path);
    const auto text = trimmed({content.begin(), content.end()});
    addMacsIn(path);
    addMacsIn(text);
    for (const auto& [at, size] : findSerialPlaces(fileName, content))
        addSerialNumber({content.begin() + static_cast<std::ptrdiff_t>(at),
                         content.begin() + static_cast<std::ptrdiff_t>(at + size)});
    switch (holdsOf(fileName)) {
    case Holds::WideName:
        if (const auto name = parseWorldWideName(text)) wideNames_.insert({name->begin(), name->end()});
        break;
    case Holds::UnitName:
        if (const auto name = parseUnitIdentifier(text))
            (text.starts_with("eui.") && name->size() == 8 ? euis_ : wideNames_).insert(*name);
        else
            addSerialNumber(lastWord(text));
        break;
    case Holds::SerialNumber:
        addSerialNumber(text);
        break;
    case Holds::SymbolicName:
        if (const auto at = text.find("HN:"); at != std::string::npos)
            addHostName(text.substr(at + 3, text.find(' ', at) - at - 3));
        break;
    case Holds::HostName:
        addHostName(text);
        break;
    case Holds::Configuration:
        if (const auto serial = parseDeviceSerialNumber(content)) euis_.insert(*parseHex(*serial));
        break;
    case Holds::Addresses: {
        std::istringstream words(text);
        for (std::string word; words >> word;)
            if (const auto address = parseIPAddress(word.substr(0, word.find('/'))))
                addresses_.insert(formatIPAddress(*address));
        break;
    }
    case Holds::Neighbours:
        addNeighbours(text);
        break;
    case Holds::Nothing:
        break;
    }
}

std::optional<std::vector<Replacement>> Identities::choose(const Pseudonyms::Random& random) const {
    constexpr int mostTries = 100;
    for (int tries = 0; tries < mostTries; ++tries) {
        Choice choice(random, macs_);
        for (const auto& mac : macs_)
            choice.addMac(mac);
        for (const auto& name : wideNames_)
            choice.addWideName(name);
        for (const auto& name : euis_)
            choice.addEui(name);
        for (const auto& address : addresses_)
            choice.addAddress(address);
        for (const auto& serial : serialNumbers_)
            choice.addSerialNumber(serial);
        for (const auto& name : hostNames_)
            choice.addText(hostKind, name);
        for (const auto& text : neighbourTexts_)
            choice.addText(neighbourKind, text);
        auto chosen = std::move(choice).sorted();
        if (!isAnyOriginal(chosen)) return chosen;
    }
    return std::nullopt;
}

Replacer Identities::makeReplacer(const std::vector<Replacement>& replacements) {
    Replacer replacer;
    for (const auto& [kind, original, other] : replacements) {
        if (kind == macKind)
            replacer.addBytes(bytesOf(*parseMac(original)), bytesOf(*parseMac(other)));
        else if (kind == nameKind)
            replacer.addBytes(*parseHex(original), *parseHex(other));
        else if (kind == addressKind)
            addAddress(original, other, replacer);
        else if (kind != neighbourKind)
            replacer.addText(original, other);
    }
    return replacer;
}

} // namespace tavik::host
