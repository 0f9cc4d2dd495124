#include "tavik/fleet/fleet_file.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tavik/fleet/card.h"
#include "tavik/fleet/numbering.h"

namespace tavik {

namespace fleet {

namespace {

constexpr std::size_t valueLimit = 500000;
constexpr std::size_t textLimit = 64 * 1024 * 1024;
constexpr std::string_view copyNumberMark = "{n}";

/** How many values a part of the document has and how long its texts are. */
struct Extent {
    std::size_t values = 0;
    std::size_t textBytes = 0;
};

Extent extentOf(const Json& value) {
    if (value.is_string()) return {1, value.get_ref<const std::string&>().size()};
    Extent extent{1, 0};
    if (!value.is_structured()) return extent;
    for (const auto& member : value) {
        const auto inner = extentOf(member);
        extent.values += inner.values;
        extent.textBytes += inner.textBytes;
    }
    return extent;
}

/** Bounds what a short file with many copies can grow to. */
class Budget {
public:
    /** Throws Fault if the card and its copies go beyond what one fleet may hold. */
    void spend(const Place& card, std::size_t copies) {
        const auto extent = extentOf(card.value());
        if ((cards_ += copies) > fleetCardLimit) throw tooManyCards(card.pointer(), fleetCardLimit);
        spendOne(values_, copies * extent.values, valueLimit, "values", card);
        spendOne(textBytes_, copies * extent.textBytes, textLimit, "bytes of text", card);
    }

    void spendFunctions(const Place& card, std::size_t count) {
        spendOne(functions_, count, fleetFunctionLimit, "functions", card);
    }

private:
    static void spendOne(std::size_t& spent, std::size_t more, std::size_t limit, std::string_view what,
                         const Place& card) {
        spent += more;
        if (spent > limit)
            throw Fault(card.pointer(), "expected at most " + std::to_string(limit) + " " + std::string(what) +
                                            " in the fleet, copies included");
    }

    std::size_t cards_ = 0;
    std::size_t functions_ = 0;
    std::size_t values_ = 0;
    std::size_t textBytes_ = 0;
};

/** Writes the number of the copy for every mark in the texts. */
void markCopy(Json& value, const std::string& number) {
    if (value.is_string()) {
        auto& text = value.get_ref<std::string&>();
        for (auto at = text.find(copyNumberMark); at != std::string::npos; at = text.find(copyNumberMark, at))
            text.replace(at, copyNumberMark.size(), number);
    } else if (value.is_structured()) {
        for (auto& member : value)
            markCopy(member, number);
    }
}

std::string fourDigits(std::size_t number) {
    const auto digits = std::to_string(number);
    return std::string(digits.size() < 4 ? 4 - digits.size() : 0, '0') + digits;
}

/** Adds to an address read as one number; the last byte is left to tell the ports of a card apart. */
template <std::size_t length>
void raise(std::array<std::uint8_t, length>& address, std::size_t copy) {
    for (std::size_t place = length - 1; place-- > 0 && copy > 0;) {
        copy += address[place];
        address[place] = static_cast<std::uint8_t>(copy);
        copy >>= 8;
    }
}

template <typename Address>
void raise(std::optional<Address>& address, std::size_t copy) {
    if (address) raise(*address, copy);
}

void raiseAddresses(StorageFunction& function, std::size_t copy) {
    raise(function.nodeName, copy);
    raise(function.property.portName, copy);
    if (function.treeProperty) raise(function.treeProperty->portName, copy);
    raise(function.headerNodeName, copy);
    raise(function.headerPortName, copy);
    raise(function.eNodeMac, copy);
}

void raiseAddresses(NicFunction& function, std::size_t copy) {
    raise(function.card.wwn, copy);
    raise(function.macAddress, copy);
    for (auto& linkage : function.fcoeLinkage) {
        raise(linkage.wwn, copy);
        raise(linkage.eNodeMac, copy);
    }
}

/** The cards that one entry of the file stands for. */
void parseCards(const Place& place, Budget& budget, std::vector<ParsedCard>& cards) {
    std::size_t count = 1;
    const bool counted = place.value().is_object() && place.value().contains("count");
    if (counted) count = parseNumber(place.child("count"), 1, fleetCardLimit);
    budget.spend(place, count);
    const auto firstNumber = static_cast<std::uint32_t>(cards.size() + 1);
    for (std::size_t copy = 0; copy < count; ++copy) {
        Json marked;
        if (counted) markCopy(marked = place.value(), fourDigits(copy + 1));
        const Place entry = counted ? Place(marked, place.pointer()) : place;
        auto parsed = parseCard(entry, firstNumber, "A0" + fourDigits(cards.size() + 1));
        budget.spendFunctions(place, parsed.wanted.size());
        forEachFunction(parsed.card, [copy](auto& function) { raiseAddresses(function, copy); });
        cards.push_back(std::move(parsed));
    }
}

Fleet parse(std::string_view text) {
    if (text.size() > fleetFileSizeLimit)
        throw Fault("", "expected at most " + std::to_string(fleetFileSizeLimit) + " bytes, found " +
                            std::to_string(text.size()));
    const Json document = parseDocument(text, {fleetFileDepthLimit, valueLimit, fleetCardLimit});
    ObjectReader object(Place(document, ""));
    const auto list = object.find("cards");
    object.finish();
    if (!list) return {};
    if (list->value().is_null()) return {std::nullopt};
    if (!list->value().is_array()) list->fail("an array of cards or null");

    Budget budget;
    std::vector<ParsedCard> cards;
    for (std::size_t i = 0; i < list->value().size(); ++i)
        parseCards(list->element(i), budget, cards);
    settleNumbers(cards);
    Fleet fleet;
    for (auto& card : cards)
        fleet.cards->push_back(std::move(card.card));
    return fleet;
}

} // namespace

} // namespace fleet

namespace {

class FileDescriptor {
public:
    explicit FileDescriptor(const std::string& path) : number_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~FileDescriptor() {
        if (number_ >= 0) close(number_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int number() const { return number_; }

private:
    int number_;
};

} // namespace

FleetOrError parseFleet(std::string_view text, std::string_view fileName) {
    try {
        return fleet::parse(text);
    } catch (const fleet::Fault& fault) {
        return FleetError{std::string(fileName) + ": " + fault.what()};
    }
}

std::variant<std::string, FleetError> readFleetText(const std::string& path) {
    const auto failure = [&path] { return FleetError{path + ": cannot be read: " + std::strerror(errno)}; };
    const FileDescriptor file(path);
    struct stat status {};
    if (file.number() < 0 || fstat(file.number(), &status) != 0) return failure();
    if (!S_ISREG(status.st_mode)) return FleetError{path + ": cannot be read: not a regular file"};

    std::string text;
    char buffer[65536];
    // One byte more than allowed is enough to know that the file is too long.
    while (text.size() <= fleetFileSizeLimit) {
        const auto length = read(file.number(), buffer, sizeof buffer);
        if (length < 0 && errno != EINTR) return failure();
        if (length == 0) break;
        if (length > 0) text.append(buffer, static_cast<std::size_t>(length));
    }
    return text;
}

FleetOrError readFleetFile(const std::string& path) {
    auto text = readFleetText(path);
    if (auto* error = std::get_if<FleetError>(&text)) return std::move(*error);
    return parseFleet(std::get<std::string>(text), path);
}

} // namespace tavik
