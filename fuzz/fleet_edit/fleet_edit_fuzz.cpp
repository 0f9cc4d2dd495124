// Changes of any fleet: a line that names the change and the card, then the fleet. A change is refused with its reason,
// or gives a good fleet that the same change leaves as it is.
#include "cimhost/cli/fleet_edit.h"

#include "tavik/fleet/flash_writer.h"
#include "tavik/fleet/fleet_file.h"

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

using cimhost::cli::LinkChange;
using cimhost::cli::LinkSide;
using cimhost::cli::LinkState;

void require(bool condition) {
    if (!condition) std::abort();
}

bool isFleet(const std::string& text) {
    return std::holds_alternative<tavik::Fleet>(tavik::parseFleet(text, "fleet.json"));
}

// The first byte chooses state and side, the second the port; the card's name ends the line.
LinkChange changeOf(const std::string& line) {
    const auto byte = [&line](std::size_t at) { return at < line.size() ? static_cast<unsigned char>(line[at]) : 0U; };
    LinkChange change;
    change.state = static_cast<LinkState>(byte(0) % 3);
    change.side = static_cast<LinkSide>(byte(0) / 3 % 3);
    change.port = byte(1) % 10;
    change.card = line.size() > 2 ? line.substr(2) : "1";
    change.file = "fleet.json";
    return change;
}

void setLink(const std::string& fleet, const LinkChange& change) {
    std::string changed;
    try {
        changed = cimhost::cli::withLink(fleet, change);
    } catch (const std::runtime_error& refused) {
        require(std::string(refused.what()).rfind("fleet.json: ", 0) == 0);
        return;
    }
    require(isFleet(changed));
    require(cimhost::cli::withLink(changed, change) == changed);
}

void flash(const std::string& fleet, const std::string& card) {
    tavik::FlashImage image;
    image.cardModel = "M";
    image.version = {2, 2, 3};
    image.releaseDate = {2013, 4, 30};
    image.optionRom = {"3.40", {{8, 1, 0}}, {{6, 2}}, {{4, 2, 0}}};
    const auto isWanted = [&card](const tavik::Card& candidate) { return candidate.serialNumber == card; };
    const auto written = tavik::fleet::flashedFleet(fleet, isWanted, image);
    const auto* changed = std::get_if<std::string>(&written);
    if (!changed) return;
    require(isFleet(*changed));
    const auto again = tavik::fleet::flashedFleet(*changed, isWanted, image);
    require(std::holds_alternative<std::string>(again) && std::get<std::string>(again) == *changed);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const auto end = input.find('\n');
    if (end == std::string::npos) return 0;
    const LinkChange change = changeOf(input.substr(0, end));
    const std::string fleet = input.substr(end + 1);
    setLink(fleet, change);
    flash(fleet, change.card);
    return 0;
}
