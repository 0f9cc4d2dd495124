#include "cimhost/cli/fleet_edit.h"

#include "tavik/fleet/fleet_file.h"
#include "tavik/fleet/whole_file.h"
#include "tavik/fleet/writer_lock.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <stdexcept>

namespace cimhost::cli {

namespace {

using Json = nlohmann::ordered_json;

void requireValid(const std::string& text, const std::string& file) {
    const tavik::FleetOrError fleet = tavik::parseFleet(text, file);
    if (const auto* error = std::get_if<tavik::FleetError>(&fleet)) throw std::runtime_error(error->message);
}

[[noreturn]] void fail(const LinkChange& change, const std::string& reason) {
    throw std::runtime_error(change.file + ": " + reason);
}

Json& listIn(Json& object, const char* key) {
    Json& list = object[key];
    if (list.is_null()) list = Json::array();
    return list;
}

// A card without a serial number has one by its place; who names the place finds it too.
Json& findCard(Json& document, const LinkChange& change) {
    Json* numbered = nullptr;
    std::size_t place = 0;
    for (Json& card : listIn(document, "cards")) {
        if (card.contains("serialNumber") && card["serialNumber"] == change.card) return card;
        if (std::to_string(++place) == change.card) numbered = &card;
    }
    if (!numbered) fail(change, "there is no card " + change.card);
    return *numbered;
}

Json& findPort(Json& card, const LinkChange& change) {
    if (card.contains("count") && card["count"] != 1) {
        fail(change, "card " + change.card + " stands for several copies: describe it by itself first");
    }
    unsigned place = 0;
    for (Json& port : listIn(card, "ports")) {
        ++place;
        if ((port.contains("number") ? port["number"].get<unsigned>() : place) == change.port) return port;
    }
    fail(change, "card " + change.card + " has no port " + std::to_string(change.port));
}

const char* ethernetWord(LinkState state) {
    if (state == LinkState::testing) return "testing";
    return state == LinkState::up ? "up" : "down";
}

bool setStates(Json& port, const LinkChange& change) {
    bool isSet = false;
    if (change.side != LinkSide::storage && port.contains("ethernet")) {
        port["ethernet"]["linkState"] = ethernetWord(change.state);
        isSet = true;
    }
    if (change.side != LinkSide::ethernet && change.state != LinkState::testing && port.contains("storage")) {
        port["storage"]["state"] = change.state == LinkState::up ? "operational" : "loopDown";
        isSet = true;
    }
    return isSet;
}

} // namespace

std::string withLink(const std::string& text, const LinkChange& change) {
    requireValid(text, change.file);
    Json document = Json::parse(text);
    Json& port = findPort(findCard(document, change), change);
    if (!setStates(port, change)) {
        fail(change, "port " + std::to_string(change.port) + " of card " + change.card +
                         " has no function that knows this state");
    }
    std::string edited = document.dump(2) + "\n";
    requireValid(edited, change.file);
    return edited;
}

void setLink(const LinkChange& change) {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::canonical(change.file, error);
    if (error) fail(change, error.message());
    // From the reading to the writing: a flash update or another change meanwhile would be lost.
    const tavik::fleet::WriterLock onlyWriter(file);
    if (!onlyWriter.isHeld()) throw std::runtime_error(onlyWriter.reason());
    const auto text = tavik::readFleetText(file);
    if (const auto* unread = std::get_if<tavik::FleetError>(&text)) throw std::runtime_error(unread->message);
    const std::string edited = withLink(std::get<std::string>(text), change);
    if (const auto reason = tavik::fleet::replaceWholeFile(file, edited)) throw std::runtime_error(*reason);
}

} // namespace cimhost::cli
