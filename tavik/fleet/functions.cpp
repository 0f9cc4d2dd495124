#include "tavik/fleet/functions.h"

#include <algorithm>
#include <limits>

#include "inventory/fact_table.h"
#include "inventory/tavik.h"
#include "tavik/transceiver.h"
#include "tavik/vpd.h"

namespace tavik::fleet {

namespace {

constexpr std::size_t longestVpd = 32768;
constexpr std::size_t longestFreeText = 255;

/** Room for a text in a field that ends in NUL. */
template <std::size_t width>
constexpr std::size_t room(const char (&)[width]) {
    return width - 1;
}

const TAVIK_DeviceRecord deviceFields{};
const TAVIK_CardProperties cardFields{};

const std::vector<Word> storageProtocols{{"fibreChannel", 0}, {"fcoe", 1}};
const std::vector<Word> nicProtocols{{"ethernet", 2}};
const std::vector<Word> portStates{
    {"operational", PortOperational}, {"suspended", PortSuspended}, {"loopDown", PortLoopDown}};
const std::vector<Word> portTypes{{"N", 1},  {"NL", 2}, {"F/NL", 3},  {"Nx", 4}, {"F", 5},
                                  {"FL", 6}, {"B", 9},  {"other", 7}, {"E", 8}};
const std::vector<Word> linkStates{{"up", LinkUp}, {"down", LinkDown}, {"testing", LinkTesting}};

/** Objects of numbers: their keys and where the numbers go. */
template <typename Record>
struct NumberField {
    const char* key;
    std::uint32_t Record::*member;
};

constexpr NumberField<Statistics> statisticsFields[] = {
    {"ioCount", &Statistics::ioCount},
    {"megabyteCount", &Statistics::megabyteCount},
    {"lipCount", &Statistics::lipCount},
    {"linkFailures", &Statistics::linkFailures},
    {"lossOfSync", &Statistics::lossOfSync},
    {"lossOfSignal", &Statistics::lossOfSignal},
    {"primitiveSequenceErrors", &Statistics::primitiveSequenceErrors},
    {"invalidTransmissionWords", &Statistics::invalidTransmissionWords},
    {"crcErrors", &Statistics::crcErrors},
};

constexpr NumberField<StorageFailures> storageFailureFields[] = {
    {"portProperty", &StorageFailures::portProperty},
    {"vpd", &StorageFailures::vpd},
    {"uuid", &StorageFailures::uuid},
    {"statistics", &StorageFailures::statistics},
    {"transceiver", &StorageFailures::transceiver},
    {"multiBootVersion", &StorageFailures::multiBootVersion},
    {"flashUpdate", &StorageFailures::flashUpdate},
    {"facts", &StorageFailures::facts},
};

constexpr NumberField<NicFailures> nicFailureFields[] = {
    {"link", &NicFailures::link},
    {"ip", &NicFailures::ip},
    {"fcoeLinkage", &NicFailures::fcoeLinkage},
    {"transceiver", &NicFailures::transceiver},
    {"flashUpdate", &NicFailures::flashUpdate},
    {"facts", &NicFailures::facts},
};

/** A word of the function's own kind, or the number of a protocol that readers pass over. */
std::uint32_t parseProtocol(const Place& place, const std::vector<Word>& words) {
    const auto number = parseWordOrNumber(place, words, std::numeric_limits<std::uint32_t>::max());
    const bool isOwn = std::any_of(words.begin(), words.end(), [&](const Word& word) { return word.number == number; });
    if (!isOwn && number <= TAVIK_ProtocolNic) place.fail("a protocol of this kind of function or a number above 2");
    return number;
}

template <typename Record, std::size_t count>
auto numbersOf(const NumberField<Record> (&fields)[count]) {
    return [&fields](const Place& place) {
        Record record;
        ObjectReader object(place);
        for (const auto& field : fields)
            object.read(field.key, record.*field.member, parseNumber<std::uint32_t>);
        object.finish();
        return record;
    };
}

std::uint32_t parseSpeed(const Place& place) {
    const auto& value = place.value();
    if (value.is_string() && value.get_ref<const std::string&>() == "auto") return speedAutoNegotiate;
    for (const std::uint32_t gigabits : {1U, 2U, 4U, 8U, 10U, 16U})
        if (value.is_number_unsigned() && value.get<std::uint64_t>() == gigabits) return gigabits;
    place.fail("one of 1, 2, 4, 8, 10, 16 or \"auto\"");
}

std::uint8_t parsePortState(const Place& place) {
    return static_cast<std::uint8_t>(parseWordOrNumber(place, portStates, 255));
}

std::uint8_t parsePortType(const Place& place) {
    return static_cast<std::uint8_t>(parseWordOrNumber(place, portTypes, 255));
}

void readPortProperty(ObjectReader& object, PortProperty& property) {
    object.read("portName", property.portName, parseWorldWideName);
    object.read("portType", property.portType, parsePortType);
    object.read("state", property.state, parsePortState);
    object.read("speed", property.speedCode, parseSpeed);
    object.read("speedCode", property.speedCode, parseNumber<std::uint32_t>);
    object.read("transceiverKind", property.transceiverKind, parseNumber<std::uint16_t>);
}

std::vector<VpdItem> parseVpdItems(const Place& place, std::size_t mostItems, std::size_t longestValue) {
    if (!place.value().is_object() || place.value().size() > mostItems)
        place.fail("an object of at most " + std::to_string(mostItems) + " keywords and texts");
    std::vector<VpdItem> items;
    for (const auto& item : place.value().items()) {
        const auto value = place.child(item.key());
        if (item.key().size() != 2) throw Fault(value.pointer(), "expected a keyword of two characters");
        items.push_back({item.key(), parseText(value, longestValue)});
    }
    return items;
}

Bytes parseVpd(const Place& place) {
    ObjectReader object(place);
    if (const auto raw = object.find("hex")) {
        object.finish();
        return parseBytes(*raw, 0, longestVpd);
    }
    const auto items = [](const Place& section) { return parseVpdItems(section, 64, 255); };
    std::string productIdentifier;
    std::vector<VpdItem> readOnly, writable;
    object.read("productIdentifier", productIdentifier, textUpTo(longestFreeText));
    object.read("readOnly", readOnly, items);
    object.read("writable", writable, items);
    object.finish();
    return encodeVpd(productIdentifier, readOnly, writable);
}

TransceiverReadings parseReadings(const Place& place) {
    TransceiverReadings readings;
    ObjectReader object(place);
    object.read("temperatureCelsius", readings.temperatureCelsius, parseReal);
    object.read("supplyVolts", readings.supplyVolts, parseReal);
    object.read("biasMilliamperes", readings.biasMilliamperes, parseReal);
    object.read("transmitMilliwatts", readings.transmitMilliwatts, parseReal);
    object.read("receiveMilliwatts", readings.receiveMilliwatts, parseReal);
    object.finish();
    return readings;
}

Transceiver parseRawTransceiver(ObjectReader& object) {
    const auto page = [](const Place& place) { return parseBytes(place, 0, 256); };
    Transceiver transceiver;
    object.read("a0", transceiver.pageA0, page);
    object.read("a2", transceiver.pageA2, page);
    object.finish();
    return transceiver;
}

/** The function's own module, or the port's; null in the function: none. */
std::optional<Transceiver> readTransceiver(ObjectReader& object, const FunctionSurroundings& surroundings) {
    auto transceiver = surroundings.transceiver;
    object.readNullable("transceiver", transceiver, parseTransceiver);
    return transceiver;
}

/** A unit that says nothing of its identity is known by its target's name and its number. */
void makeLunIdentifier(const Target& target, Lun& lun) {
    std::copy(target.portName.begin(), target.portName.end(), lun.identifier.begin());
    lun.identifier[0] = 0x60;
    lun.identifier[14] = static_cast<std::uint8_t>(lun.number >> 8);
    lun.identifier[15] = static_cast<std::uint8_t>(lun.number);
    lun.identifierLength = 16;
}

Bytes parseLunIdentifier(const Place& place) {
    auto bytes = parseBytes(place, 8, 16);
    if (bytes.size() != 8 && bytes.size() != 16) place.fail("hexadecimal digits for 8 or 16 bytes");
    return bytes;
}

Lun parseLun(const Place& place, const Target& target, std::size_t index) {
    Lun lun;
    ObjectReader object(place);
    lun.number = static_cast<std::uint16_t>(index);
    lun.vendorId = "MEROLT";
    lun.productId = "VIRTUAL DISK";
    lun.productRevision = "0001";
    object.read("number", lun.number, parseNumber<std::uint16_t>);
    object.read("vendorId", lun.vendorId, textUpTo(sizeof(TAVIK_LunEntry::vendorId)));
    object.read("productId", lun.productId, textUpTo(sizeof(TAVIK_LunEntry::productId)));
    object.read("productRevision", lun.productRevision, textUpTo(sizeof(TAVIK_LunEntry::productRevision) - 1));
    makeLunIdentifier(target, lun);
    if (const auto identifier = object.find("identifier")) {
        const auto bytes = parseLunIdentifier(*identifier);
        lun.identifier = toArray<16>(bytes);
        lun.identifierLength = static_cast<std::uint8_t>(bytes.size());
    }
    object.read("identifierLength", lun.identifierLength, parseNumber<std::uint8_t>);
    object.read("blockSizeBytes", lun.blockSize, parseNumber<std::uint32_t>);
    object.read("osName", lun.osName, textUpTo(sizeof(TAVIK_LunEntry::osName) - 1));
    object.finish();
    return lun;
}

Target parseTarget(const Place& place) {
    Target target;
    ObjectReader object(place);
    object.read("portName", target.portName, parseWorldWideName);
    object.read("lunCount", target.lunCount, parseNumber<std::uint32_t>);
    std::size_t index = 0;
    object.read("luns", target.luns, [&](const Place& luns) {
        return parseList(luns, [&](const Place& lun) { return parseLun(lun, target, index++); });
    });
    object.finish();
    return target;
}

template <std::size_t numbers>
auto versionOf(std::string_view example) {
    return [example](const Place& place) { return toArray<numbers>(parseVersion(place, numbers, example)); };
}

OptionRom parseOptionRom(const Place& place) {
    OptionRom rom;
    ObjectReader object(place);
    object.read("biosVersion", rom.biosVersion, textUpTo(room(deviceFields.optionRomBiosVersion)));
    object.read("firmware", rom.firmware, versionOf<3>("5.3.1"));
    object.read("efi", rom.efi, versionOf<2>("2.27"));
    object.read("fcode", rom.fcode, versionOf<3>("3.12.0"));
    object.finish();
    return rom;
}

/** What a made-up address belongs to: each has its own range of locally administered addresses. */
enum class AddressUse : std::uint8_t { Ethernet = 0, ENode = 1, Card = 2 };

// Addresses for functions of which the file gives none, distinct over cards and ports.

MacAddress madeUpMac(AddressUse use, std::uint32_t cardNumber, std::uint8_t portNumber) {
    return {0x02,
            0x00,
            static_cast<std::uint8_t>(use),
            static_cast<std::uint8_t>(cardNumber >> 8),
            static_cast<std::uint8_t>(cardNumber),
            portNumber};
}

WorldWideName madeUpName(std::uint8_t first, std::uint8_t second, std::uint32_t cardNumber) {
    const auto low = madeUpMac(AddressUse::Ethernet, cardNumber, 0);
    return {first, second, low[0], low[1], low[2], low[3], low[4], low[5]};
}

StorageFunction initialStorage(const FunctionSurroundings& surroundings) {
    StorageFunction function;
    function.protocolType = surroundings.converged ? TAVIK_ProtocolFCoE : TAVIK_ProtocolFibreChannel;
    function.nodeName = madeUpName(0x20, 0x00, surroundings.cardNumber);
    function.property.portName = madeUpName(0x21, surroundings.portNumber, surroundings.cardNumber);
    function.modelName = surroundings.modelName.substr(0, room(deviceFields.modelName));
    return function;
}

void readIdentity(ObjectReader& object, const FunctionSurroundings& surroundings, StorageFunction& function) {
    object.read("protocol", function.protocolType,
                [](const Place& place) { return parseProtocol(place, storageProtocols); });
    const bool isFCoE = function.protocolType == TAVIK_ProtocolFCoE;
    function.pciDeviceId = isFCoE ? 0xA127 : 0xA130;
    if (isFCoE) function.eNodeMac = madeUpMac(AddressUse::ENode, surroundings.cardNumber, surroundings.portNumber);
    object.read("pciDeviceId", function.pciDeviceId, parsePciId);
    object.read("subsystemVendorId", function.pciSubsystemVendorId, parsePciId);
    object.read("subsystemDeviceId", function.pciSubsystemDeviceId, parsePciId);
    object.read("nodeName", function.nodeName, parseWorldWideName);
    object.read("headerNodeName", function.headerNodeName, parseWorldWideName);
    object.read("headerPortName", function.headerPortName, parseWorldWideName);
    object.read("modelName", function.modelName, textUpTo(room(deviceFields.modelName)));
    object.read("serialBytes", function.serialNumber,
                [](const Place& place) { return parseBytes(place, 0, sizeof(TAVIK_DeviceRecord::serialNumber)); });
    object.readNullable("eNodeMac", function.eNodeMac, parseMacAddress);
}

void readPort(ObjectReader& object, StorageFunction& function) {
    function.property.transceiverKind = function.transceiver ? transceiverKindSfp : std::uint16_t(0);
    readPortProperty(object, function.property);
    object.read("transceiverReadable", function.transceiverReadable, parseNumber<std::uint16_t>);
    object.read("treeProperty", function.treeProperty, [&](const Place& place) {
        auto property = function.property;
        ObjectReader different(place);
        readPortProperty(different, property);
        different.finish();
        return property;
    });
}

void readSoftware(ObjectReader& object, StorageFunction& function) {
    object.read("driverVersion", function.driverVersion, textUpTo(room(deviceFields.driverVersion)));
    object.read("driverFirmwareVersion", function.driverFirmwareVersion,
                textUpTo(room(deviceFields.driverFirmwareVersion)));
    object.read("optionRom", function.optionRom, parseOptionRom);
    object.readNullable("vpd", function.vpd, parseVpd);
    object.readNullable("uuid", function.uuid, textUpTo(longestFreeText));
    object.readNullable("multiBootVersion", function.multiBootVersion, textUpTo(longestFreeText));
}

NicFunction initialNic(const FunctionSurroundings& surroundings) {
    NicFunction function;
    function.card.wwn = madeUpMac(AddressUse::Card, surroundings.cardNumber, 0);
    function.card.manufacturer = "Merolt Corporation";
    function.card.modelName = surroundings.modelName.substr(0, room(cardFields.modelName));
    function.macAddress = madeUpMac(AddressUse::Ethernet, surroundings.cardNumber, surroundings.portNumber);
    function.portId = surroundings.portNumber;
    function.link = {10000, LinkUp};
    function.ip = IPConfiguration();
    return function;
}

void readNicCard(ObjectReader& object, NicCard& card) {
    object.read("cardWwn", card.wwn, parseMacAddress);
    object.read("manufacturer", card.manufacturer, textUpTo(room(cardFields.manufacturer)));
    object.read("modelName", card.modelName, textUpTo(room(cardFields.modelName)));
    object.read("serialNumber", card.serialNumber, textUpTo(room(cardFields.serialNumber)));
    object.read("driverVersion", card.driverVersion, textUpTo(room(cardFields.driverVersion)));
    object.read("defaultSoftwareVersion", card.defaultSoftwareVersion,
                textUpTo(room(cardFields.defaultSoftwareVersion)));
    object.read("flashVersion", card.flashVersion, textUpTo(room(cardFields.flashVersion)));
    object.read("fruNumber", card.defaultFruNumber, textUpTo(room(cardFields.defaultFruNumber)));
}

IPConfiguration parseIPConfiguration(const Place& place) {
    const auto addresses = [](const Place& list) { return parseList(list, parseIPAddress); };
    IPConfiguration configuration;
    ObjectReader object(place);
    if (const auto ipv4 = object.find("ipv4")) {
        const auto interface = parseIPv4Interface(*ipv4);
        configuration.ipv4 = interface.address;
        configuration.ipv4Mask = interface.mask;
    }
    object.read("ipv6", configuration.firstList, addresses);
    object.read("secondList", configuration.secondList, addresses);
    object.read("thirdList", configuration.thirdList, addresses);
    object.finish();
    return configuration;
}

FCoELinkage parseFCoELinkage(const Place& place) {
    FCoELinkage linkage;
    ObjectReader object(place);
    object.read("wwn", linkage.wwn, parseWorldWideName);
    object.read("fcPortId", linkage.fcPortId, [](const Place& id) {
        return toArray<3>(parseAddressBytes(id, 3, "a Fibre Channel port ID like \"01:0A:00\""));
    });
    object.read("eNodeMac", linkage.eNodeMac, parseMacAddress);
    object.finish();
    return linkage;
}

void readNicPort(ObjectReader& object, NicFunction& function) {
    object.read("macAddress", function.macAddress, parseMacAddress);
    object.read("portId", function.portId, parseNumber<std::uint32_t>);
    object.read("linkState", function.link.state, [](const Place& place) {
        return parseWordOrNumber(place, linkStates, std::numeric_limits<std::uint32_t>::max());
    });
    object.read("linkSpeedMegabits", function.link.speed, parseNumber<std::uint64_t>);
    object.read("mtuBytes", function.mtu, parseNumber<std::uint32_t>);
    object.read("vpdItems", function.vpdItems, [](const Place& place) { return parseVpdItems(place, 30, 208); });
    object.read("vpdItemCount", function.vpdItemCount, parseNumber<std::uint32_t>);
    object.readNullable("ip", function.ip, parseIPConfiguration);
    object.read("fcoeLinkage", function.fcoeLinkage,
                [](const Place& place) { return parseList(place, parseFCoELinkage); });
}

FactValue parseFact(const Place& place, const merolt::FactRow& row) {
    switch (row.type) {
    case TavikFactText: {
        const auto text = parseText(place, merolt::longestFact);
        if (!isFactText(text)) place.fail("a text of printable ASCII characters");
        return text;
    }
    case TavikFactTruth:
        if (!place.value().is_boolean()) place.fail("true or false");
        return place.value().get<bool>();
    case TavikFactNumber:
        break;
    }
    return parseNumber<std::uint64_t>(place);
}

void readFact(ObjectReader& object, const merolt::FactRow& row, Facts& facts) {
    const auto place = object.find(std::string(row.name).c_str());
    if (!place) return;
    if (row.count == merolt::FactCount::one) {
        facts.push_back({&row, parseFact(*place, row)});
        return;
    }
    if (place->value().size() > merolt::mostFactValues)
        place->fail("at most " + std::to_string(merolt::mostFactValues) + " values");
    for (auto& value : parseList(*place, [&](const Place& element) { return parseFact(element, row); }))
        facts.push_back({&row, std::move(value)});
}

/** @param classes FactClass bits: a key that none of them shows is unknown. */
auto factsOf(unsigned classes) {
    return [classes](const Place& place) {
        Facts facts;
        ObjectReader object(place);
        for (const auto& row : merolt::fact_table::rows)
            if ((row.classes & classes) != 0) readFact(object, row, facts);
        object.finish();
        return facts;
    };
}

} // namespace

Transceiver parseTransceiver(const Place& place) {
    ObjectReader object(place);
    if (object.has("a0")) return parseRawTransceiver(object);

    TransceiverIdentity identity{"Merolt", "MLT-SFP10-SR", "A", "SFP0001", "240115", {}};
    const auto bytes = [](const Place& value) { return toArray<8>(parseBytes(value, 8, 8)); };
    const auto oui = [](const Place& value) {
        return toArray<3>(parseAddressBytes(value, 3, "an identifier like \"02:4D:52\""));
    };
    object.read("vendor", identity.vendor, textUpTo(16));
    object.read("partNumber", identity.partNumber, textUpTo(16));
    object.read("revision", identity.revision, textUpTo(4));
    object.read("serialNumber", identity.serialNumber, textUpTo(16));
    object.read("dateCode", identity.dateCode, textUpTo(8));
    object.read("vendorOui", identity.vendorOui, oui);
    object.read("identifier", identity.identifier, parseNumber<std::uint8_t>);
    object.read("connector", identity.connector, parseNumber<std::uint8_t>);
    object.read("compliance", identity.compliance, bytes);
    object.read("bitRateMegabits", identity.bitRateMegabits, parseNumber<std::uint32_t>);
    object.read("wavelengthNanometres", identity.wavelengthNanometres, parseNumber<std::uint16_t>);
    std::optional<TransceiverReadings> readings = TransceiverReadings();
    object.readNullable("diagnostics", readings, parseReadings);
    identity.hasDiagnostics = readings.has_value();
    object.finish();
    return {encodeTransceiverIdentity(identity), readings ? encodeTransceiverReadings(*readings) : Bytes()};
}

ParsedStorage parseStorage(const Place& place, const FunctionSurroundings& surroundings) {
    ParsedStorage parsed{initialStorage(surroundings), {}, {}};
    auto& function = parsed.function;
    ObjectReader object(place, surroundings.defaults);
    object.read("handle", parsed.handle, parseNumber<std::uint32_t>);
    object.read("deviceNumber", parsed.deviceNumber, parseNumber<std::uint16_t>);
    readIdentity(object, surroundings, function);
    function.transceiver = readTransceiver(object, surroundings);
    readPort(object, function);
    readSoftware(object, function);
    object.read("targets", function.targets, [](const Place& targets) { return parseList(targets, parseTarget); });
    object.read("targetCount", function.targetCount, parseNumber<std::uint32_t>);
    object.read("statistics", function.statistics, numbersOf(statisticsFields));
    object.read("statisticsPerRefresh", function.statisticsPerRefresh, numbersOf(statisticsFields));
    object.read("facts", function.facts, factsOf(merolt::factsOfStorage));
    object.read("failures", function.failures, numbersOf(storageFailureFields));
    object.finish();
    return parsed;
}

ParsedNic parseNic(const Place& place, const FunctionSurroundings& surroundings) {
    ParsedNic parsed{initialNic(surroundings), {}, {}};
    auto& function = parsed.function;
    ObjectReader object(place, surroundings.defaults);
    object.read("protocol", function.protocolType,
                [](const Place& protocol) { return parseProtocol(protocol, nicProtocols); });
    object.read("adapterId", parsed.adapterId, parseNumber<std::uint32_t>);
    object.read("deviceName", parsed.deviceName, textUpTo(sizeof(TAVIK_PortProperties::deviceName) - 1));
    readNicCard(object, function.card);
    readNicPort(object, function);
    function.transceiver = readTransceiver(object, surroundings);
    object.read("facts", function.facts, factsOf(merolt::factsOfEthernet));
    object.read("failures", function.failures, numbersOf(nicFailureFields));
    object.finish();
    return parsed;
}

} // namespace tavik::fleet
