#include "cimhost/doctor/inventory_rules.h"

#include "cimhost/doctor/names.h"
#include "cimhost/model/host_name.h"

#include <algorithm>
#include <map>

namespace cimhost::doctor {

using namespace monitoring;

namespace {

/// "8.01.00" and "8.1.0" are the same version.
std::vector<unsigned long> numbersOf(const std::string& version) {
    std::vector<unsigned long> numbers;
    for (std::size_t at = 0; at < version.size();) {
        if (version[at] < '0' || version[at] > '9') {
            ++at;
            continue;
        }
        unsigned long number = 0;
        for (; at < version.size() && version[at] >= '0' && version[at] <= '9'; ++at) {
            number = number * 10 + static_cast<unsigned long>(version[at] - '0');
        }
        numbers.push_back(number);
    }
    while (!numbers.empty() && numbers.back() == 0)
        numbers.pop_back();
    return numbers;
}

bool isSameVersion(const std::string& left, const std::string& right) { return numbersOf(left) == numbersOf(right); }

/// "N/A" and an empty text tell nothing.
bool isTold(const std::string& version) { return !numbersOf(version).empty(); }

struct Firmware {
    std::string_view kind;
    std::string_view text;
};

constexpr Firmware firmwares[] = {
    {"FlashImage", "flash image"}, {"FlashFirmware", "firmware"}, {"NetworkFlash", "network flash"}};

/// Versions of one kind by model, each with a card that has it.
using VersionsOfModels = std::map<std::string, std::vector<const Software*>>;

void addVersion(VersionsOfModels& models, const Software& software) {
    auto& versions = models[software.model];
    const bool isKnown = std::any_of(versions.begin(), versions.end(), [&](const Software* other) {
        return isSameVersion(other->version, software.version);
    });
    if (!isKnown) versions.push_back(&software);
}

void examineFirmware(const Look& look, const Firmware& firmware, std::vector<Sign>& signs) {
    VersionsOfModels models;
    for (const Software& software : look.now.software) {
        if (software.kind == firmware.kind && !software.model.empty() && isTold(software.version)) {
            addVersion(models, software);
        }
    }
    for (const auto& [model, versions] : models) {
        if (versions.size() < 2) continue;
        std::string evidence(firmware.text);
        for (const Software* software : versions) {
            evidence += (software == versions.front() ? " " : ", ") + software->version + " on card " +
                        software->cardSerialNumber;
        }
        signs.push_back({"cards of model " + model, evidence});
    }
}

/// The interface of a port, where it is told; other things have none.
template <typename Item>
std::string interfaceOf(const Item& item) {
    if constexpr (requires { item.interfaceName; }) return item.interfaceName;
    return {};
}

/// Every value that stands more than once, once, with how often and at which interfaces.
template <typename Items, typename ValueOf>
void examineTwice(const Items& items, ValueOf valueOf, const std::string& what, std::vector<Sign>& signs) {
    struct Found {
        std::size_t count = 0;
        std::string interfaces;
    };
    std::map<std::string, Found> all;
    for (const auto& item : items) {
        const std::string value = valueOf(item);
        if (value.empty() || value.find_first_not_of('0') == std::string::npos) continue;
        Found& found = all[value];
        ++found.count;
        const std::string name = interfaceOf(item);
        if (!name.empty()) found.interfaces += (found.interfaces.empty() ? ": " : ", ") + name;
    }
    for (const auto& [value, found] : all) {
        if (found.count < 2) continue;
        signs.push_back(
            {what + " " + value, "it is published " + std::to_string(found.count) + " times" + found.interfaces});
    }
}

/// Both ends of a cable have its serial number.
bool isCable(const Module& module) {
    return module.told.identity.copper || module.told.identity.connector == "no separable connector";
}

} // namespace

void examineNoAdapters(const Look& look, std::vector<Sign>& signs) {
    const auto& [cards, jacks, modules, storage, counters, ethernet, software, failures] = look.now;
    if (!cards.empty() || !jacks.empty() || !storage.empty() || !ethernet.empty()) return;
    signs.push_back({"this host", failures.empty()
                                      ? "the server answers, and publishes no card and no port"
                                      : "no card and no port is published, and the server refuses questions"});
}

void examineRefusals(const Look& look, std::vector<Sign>& signs) {
    for (const Failure& failure : look.now.failures)
        signs.push_back({"class " + failure.className, failure.reason});
}

void examineSilentCards(const Look& look, std::vector<Sign>& signs) {
    for (const Card& card : look.now.cards) {
        const bool hasJack = std::any_of(look.now.jacks.begin(), look.now.jacks.end(), [&](const Jack& jack) {
            return isSameCard(jack.cardSerialNumber, card.serialNumber);
        });
        if (!hasJack) {
            signs.push_back({"card " + card.serialNumber + (card.model.empty() ? "" : ", model " + card.model),
                             "the card is published without any port"});
        }
    }
}

void examineSilentPorts(const Look& look, std::vector<Sign>& signs) {
    for (const FibreChannelPort& port : look.now.fibreChannelPorts) {
        if (!port.answers) signs.push_back({portText(look.now, port), "the port tells neither its state nor its type"});
    }
}

void examineFirmwareOfModel(const Look& look, std::vector<Sign>& signs) {
    for (const Firmware& firmware : firmwares)
        examineFirmware(look, firmware, signs);
}

void examineFirmwareInUse(const Look& look, std::vector<Sign>& signs) {
    for (const Software& used : look.now.software) {
        if (used.kind != "DriverFirmware" || !isTold(used.version)) continue;
        for (const Software& flashed : look.now.software) {
            if (flashed.kind != "FlashFirmware" || flashed.owner != used.owner || !isTold(flashed.version)) continue;
            if (flashed.cardSerialNumber != used.cardSerialNumber || isSameVersion(flashed.version, used.version))
                continue;
            signs.push_back({"port " + used.owner + " of card " + used.cardSerialNumber,
                             "the driver runs firmware " + used.version + ", the card's flash has " + flashed.version});
        }
    }
}

void examineSerialNumbers(const Look& look, std::vector<Sign>& signs) {
    examineTwice(
        look.now.cards, [](const Card& card) { return card.serialNumber; }, "card serial number", signs);
    examineTwice(
        look.now.modules, [](const Module& module) { return isCable(module) ? std::string() : module.serialNumber; },
        "module serial number", signs);
}

void examinePortNames(const Look& look, std::vector<Sign>& signs) {
    examineTwice(
        look.now.fibreChannelPorts, [](const FibreChannelPort& port) { return port.portName; }, "port name", signs);
}

void examineMacAddresses(const Look& look, std::vector<Sign>& signs) {
    examineTwice(
        look.now.ethernetPorts, [](const EthernetPort& port) { return port.macAddress; }, "MAC address", signs);
}

void examineSystemNames(const Look& look, std::vector<Sign>& signs) {
    for (const std::string& name : look.systemNames) {
        if (isLoopbackName(name)) signs.push_back({"this host", "clients know it as " + name});
    }
}

} // namespace cimhost::doctor
