#include "tavik/fleet/flash_writer.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "tavik/fleet/fleet_file.h"
#include "tavik/fleet/json_reader.h"
#include "tavik/fleet/whole_file.h"
#include "tavik/fleet/writer_lock.h"

namespace tavik::fleet {

namespace {

constexpr DocumentLimits checkedBefore{fleetFileDepthLimit, 500000, fleetCardLimit};

/** What the image writes, in the forms in which a fleet tells it. */
class Versions {
public:
    explicit Versions(const FlashImage& image) {
        const auto [major, minor, subMinor] = image.version;
        const auto& date = image.releaseDate;
        dotted_ = print("%02d.%02d.%02d", major, minor, subMinor);
        digits_ = print("%02d%02d%02d", major, minor, subMinor);
        multiBoot_ =
            print("V:%d.%02d.%02d,D:%02d%02d%04d,A:Y,T:M", major, minor, subMinor, date.month, date.day, date.year);
        const OptionRom& rom = image.optionRom;
        optionRom_ = Json::object();
        if (!rom.biosVersion.empty()) optionRom_["biosVersion"] = rom.biosVersion;
        add("firmware", rom.firmware);
        add("efi", rom.efi);
        add("fcode", rom.fcode);
    }

    /** @param isComplete the function takes nothing of the card's defaults. */
    void writeStorage(Json& function, bool isComplete) const {
        if (isComplete || function.contains("optionRom")) function["optionRom"] = optionRom_;
        replaceText(function, "multiBootVersion", multiBoot_);
        if (!function.contains("vpd") || !function["vpd"].is_object()) return;
        Json& vpd = function["vpd"];
        if (!vpd.contains("readOnly")) return;
        replaceText(vpd["readOnly"], "RM", dotted_);
        replaceText(vpd["readOnly"], "V9", digits_);
    }

    void writeNic(Json& function, bool isComplete) const {
        for (const char* key : {"defaultSoftwareVersion", "flashVersion"})
            if (isComplete || function.contains(key)) function[key] = dotted_;
    }

private:
    template <typename... Numbers>
    static std::string print(const char* format, Numbers... numbers) {
        char text[64];
        std::snprintf(text, sizeof text, format, numbers...);
        return text;
    }

    template <std::size_t count>
    void add(const char* key, const std::optional<std::array<std::uint8_t, count>>& numbers) {
        if (!numbers) return;
        std::string text;
        for (const int number : *numbers)
            text += (text.empty() ? "" : ".") + std::to_string(number);
        optionRom_[key] = text;
    }

    /** What a card does not tell, an image does not make it tell. */
    static void replaceText(Json& object, const char* key, const std::string& text) {
        if (object.contains(key) && object[key].is_string()) object[key] = text;
    }

    std::string dotted_, digits_, multiBoot_;
    Json optionRom_;
};

Json* member(Json& object, const char* key) {
    return object.is_object() && object.contains(key) && !object[key].is_null() ? &object[key] : nullptr;
}

/** One holder of functions: a port, or an element of its list. */
void writeFunctions(Json& holder, const Versions& versions, bool storageIsComplete, bool nicIsComplete) {
    if (Json* storage = member(holder, "storage")) versions.writeStorage(*storage, storageIsComplete);
    if (Json* nic = member(holder, "ethernet")) versions.writeNic(*nic, nicIsComplete);
}

void writeCard(Json& card, const Versions& versions) {
    Json* storageDefaults = member(card, "storageDefaults");
    Json* nicDefaults = member(card, "ethernetDefaults");
    if (storageDefaults) versions.writeStorage(*storageDefaults, true);
    if (nicDefaults) versions.writeNic(*nicDefaults, true);
    Json* ports = member(card, "ports");
    if (!ports) return;
    for (Json& port : *ports) {
        writeFunctions(port, versions, !storageDefaults, !nicDefaults);
        if (Json* functions = member(port, "functions"))
            for (Json& holder : *functions)
                writeFunctions(holder, versions, !storageDefaults, !nicDefaults);
    }
}

/** The entry of the file that the card at that place of the fleet comes from. */
std::variant<Json*, FlashFault> entryOf(Json& document, std::size_t place) {
    for (Json& entry : document["cards"]) {
        const std::size_t count = entry.value("count", std::size_t{1});
        if (place >= count) {
            place -= count;
        } else if (count > 1) {
            return FlashFault{statusNotSupported, "the card is one of several copies of one entry"};
        } else {
            return &entry;
        }
    }
    return noSuchCard();
}

std::string textOf(const Json& document) {
    auto text = document.dump(2) + '\n';
    return text.size() > fleetFileSizeLimit ? document.dump() : text;
}

FlashFault badFleet(const FleetError& error) { return {statusSourceFailed, error.message}; }

} // namespace

FlashFault noSuchCard() { return {statusNoSuchDevice, "the fleet has no such card, or another one in its place"}; }

std::variant<std::string, FlashFault> flashedFleet(std::string_view text, const CardTest& isWanted,
                                                   const FlashImage& image) {
    const auto parsed = parseFleet(text, "fleet");
    if (const auto* error = std::get_if<FleetError>(&parsed)) return badFleet(*error);
    const auto& fleet = std::get<Fleet>(parsed);
    if (!fleet.cards) return noSuchCard();
    const auto card = std::find_if(fleet.cards->begin(), fleet.cards->end(), isWanted);
    if (card == fleet.cards->end()) return noSuchCard();
    if (card->modelName != image.cardModel)
        return FlashFault{statusForeignImage, "the image is for cards of model \"" + image.cardModel + "\", not \"" +
                                                  card->modelName + '"'};

    Json document = parseDocument(text, checkedBefore);
    const auto entry = entryOf(document, static_cast<std::size_t>(card - fleet.cards->begin()));
    if (const auto* fault = std::get_if<FlashFault>(&entry)) return *fault;
    writeCard(*std::get<Json*>(entry), Versions(image));
    auto written = textOf(document);
    const auto again = parseFleet(written, "fleet");
    if (const auto* error = std::get_if<FleetError>(&again)) return badFleet(*error);
    return written;
}

std::variant<std::string, FlashFault> flashFleetFile(const std::string& path, const CardTest& isWanted,
                                                     const FlashImage& image) {
    // A link stays a link: what it leads to is written.
    std::error_code error;
    const auto file = std::filesystem::canonical(path, error);
    if (error) return FlashFault{statusSourceFailed, path + ": " + error.message()};
    const WriterLock onlyWriter(file);
    if (!onlyWriter.isHeld())
        return FlashFault{onlyWriter.isBusy() ? statusBusy : statusWriteFailed, onlyWriter.reason()};
    const auto text = readFleetText(file);
    if (const auto* unread = std::get_if<FleetError>(&text)) return badFleet(*unread);
    auto written = flashedFleet(std::get<std::string>(text), isWanted, image);
    if (const auto* flashed = std::get_if<std::string>(&written))
        if (const auto reason = replaceWholeFile(file, *flashed)) return FlashFault{statusWriteFailed, *reason};
    return written;
}

} // namespace tavik::fleet
