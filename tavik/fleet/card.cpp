#include "tavik/fleet/card.h"

#include <algorithm>

#include "inventory/tavik.h"
#include "tavik/fleet/functions.h"

namespace tavik::fleet {

namespace {

const std::vector<Word> cardKinds{{"converged", 0}, {"fibreChannel", 1}};

class CardParser {
public:
    CardParser(const Place& place, std::uint32_t cardNumber) : object_(place) {
        parsed_.pointer = place.pointer();
        surroundings_.cardNumber = cardNumber;
    }

    ParsedCard parse(const std::string& serialNumber) {
        auto& card = parsed_.card;
        card.serialNumber = serialNumber;
        object_.find("count");
        object_.read("serialNumber", card.serialNumber, textUpTo(sizeof(TAVIK_AdapterEntry::serialNumber) - 1));
        object_.read("version", card.version, textUpTo(sizeof(TAVIK_AdapterEntry::version) - 1));
        object_.read("modelName", card.modelName, textUpTo(sizeof(TAVIK_AdapterEntry::modelName) - 1));
        object_.read("adapterId", parsed_.adapterId, parseNumber<std::uint32_t>);
        surroundings_.modelName = card.modelName;
        checkDefaults();
        object_.readNullable("ports", card.ports, [this](const Place& ports) {
            return parseList(ports, [this](const Place& port) { return parsePort(port); });
        });
        card.kind = hasNic_ ? 0 : 1;
        object_.read("kind", card.kind,
                     [](const Place& kind) { return parseWordOrNumber(kind, cardKinds, 0xFFFFFFFF); });
        object_.finish();
        return std::move(parsed_);
    }

private:
    /** Defaults are wrong or right whether a function uses them or not. */
    void checkDefaults() {
        storageDefaults_ = object_.find("storageDefaults");
        nicDefaults_ = object_.find("ethernetDefaults");
        if (storageDefaults_) parseStorage(*storageDefaults_, surroundings_);
        if (nicDefaults_) parseNic(*nicDefaults_, surroundings_);
    }

    Port parsePort(const Place& place) {
        Port port;
        ObjectReader object(place);
        port.number = ++portNumber_;
        object.read("number", port.number, parseNumber<std::uint8_t>);
        surroundings_.portNumber = port.number;
        surroundings_.transceiver.reset();
        object.readNullable("transceiver", surroundings_.transceiver, parseTransceiver);
        const auto functions = object.find("functions");
        const auto storage = object.find("storage"), nic = object.find("ethernet");
        object.finish();
        if (functions && (storage || nic)) functions->fail("no list of functions beside \"storage\" or \"ethernet\"");

        if (!functions)
            port.functions = parseFunctions({{storage, nic}});
        else if (functions->value().is_null())
            port.functions.reset();
        else
            port.functions = parseFunctions(parseList(*functions, namedFunction));
        return port;
    }

    /** One of the two is there, or none. */
    struct NamedFunction {
        std::optional<Place> storage;
        std::optional<Place> nic;
    };

    static NamedFunction namedFunction(const Place& place) {
        ObjectReader object(place);
        NamedFunction named{object.find("storage"), object.find("ethernet")};
        object.finish();
        if (named.storage.has_value() == named.nic.has_value())
            place.fail("an object with either \"storage\" or \"ethernet\"");
        return named;
    }

    std::vector<Function> parseFunctions(const std::vector<NamedFunction>& named) {
        const auto isNic = [](const NamedFunction& function) { return function.nic.has_value(); };
        surroundings_.converged = std::any_of(named.begin(), named.end(), isNic);
        hasNic_ = hasNic_ || surroundings_.converged;
        std::vector<Function> functions;
        for (const auto& function : named) {
            if (function.storage) functions.emplace_back(addStorage(*function.storage));
            if (function.nic) functions.emplace_back(addNic(*function.nic));
        }
        return functions;
    }

    StorageFunction addStorage(const Place& place) {
        surroundings_.defaults = storageDefaults_;
        auto storage = parseStorage(place, surroundings_);
        parsed_.wanted.push_back({place.pointer(), storage.handle, storage.deviceNumber, {}, {}});
        return std::move(storage.function);
    }

    NicFunction addNic(const Place& place) {
        surroundings_.defaults = nicDefaults_;
        auto nic = parseNic(place, surroundings_);
        parsed_.wanted.push_back({place.pointer(), {}, {}, nic.adapterId, nic.deviceName});
        return std::move(nic.function);
    }

    ObjectReader object_;
    ParsedCard parsed_;
    std::optional<Place> storageDefaults_;
    std::optional<Place> nicDefaults_;
    FunctionSurroundings surroundings_;
    std::uint8_t portNumber_ = 0;
    bool hasNic_ = false;
};

} // namespace

ParsedCard parseCard(const Place& place, std::uint32_t cardNumber, const std::string& serialNumber) {
    return CardParser(place, cardNumber).parse(serialNumber);
}

} // namespace tavik::fleet
