#include "cimhost/monitoring/snapshot.h"

#include "cimhost/monitoring/published_classes.h"
#include "cimhost/service/cim_failure.h"
#include "optics/sff8472.h"

#include <algorithm>
#include <map>
#include <utility>

namespace cimhost::monitoring {

namespace {

using Instances = std::vector<const InstanceObject*>;

/// Keeps what is refused, and goes on.
class Tolerant {
public:
    Tolerant(const Enumerate& asked, std::vector<Failure>& failed) : enumerate(asked), failures(failed) {}

    Instances operator()(const char* className) {
        try {
            Instances instances = enumerate(className);
            isAnswered = true;
            return instances;
        } catch (const CimFailure& failure) {
            failures.push_back({className, std::string(statusName(failure.error().code)) + ": " + failure.what()});
            if (!first) first = failure.error();
            return {};
        }
    }

    void requireAnswer() const {
        if (!isAnswered && first) throw CimFailure(*first);
    }

private:
    const Enumerate& enumerate;
    std::vector<Failure>& failures;
    std::optional<CimError> first;
    bool isAnswered = false;
};

const CMPIData* valueOf(const InstanceObject& instance, std::string_view name) {
    const CMPIData* data = instance.value(name);
    return data && (data->state & CMPI_nullValue) == 0 ? data : nullptr;
}

std::string textOf(const InstanceObject& instance, std::string_view name) {
    std::string text;
    if (const CMPIData* data = valueOf(instance, name)) appendValueText(text, *data);
    return text;
}

/// Zero where there is no number that is not negative.
std::uint64_t numberOf(const CMPIData& data) {
    std::string text;
    appendValueText(text, data);
    std::uint64_t number = 0;
    for (const char digit : text) {
        if (digit < '0' || digit > '9') return 0;
        number = number * 10 + static_cast<std::uint64_t>(digit - '0');
    }
    return number;
}

std::uint64_t numberOf(const InstanceObject& instance, std::string_view name) {
    const CMPIData* data = valueOf(instance, name);
    return data ? numberOf(*data) : 0;
}

const ArrayObject* arrayOf(const InstanceObject& instance, std::string_view name) {
    const CMPIData* data = valueOf(instance, name);
    return data && (data->type & CMPI_ARRAY) != 0 ? ArrayObject::from(data->value.array) : nullptr;
}

std::uint64_t firstOf(const InstanceObject& instance, std::string_view name) {
    const ArrayObject* array = arrayOf(instance, name);
    return array && array->size() > 0 ? numberOf(array->element(0)) : 0;
}

/// At most one page of a module.
std::vector<std::uint8_t> pageOf(const InstanceObject& instance, std::string_view name) {
    constexpr CMPICount pageSize = 256;
    std::vector<std::uint8_t> page;
    const ArrayObject* array = arrayOf(instance, name);
    for (CMPICount at = 0; array && at < std::min(array->size(), pageSize); ++at) {
        page.push_back(static_cast<std::uint8_t>(numberOf(array->element(at))));
    }
    return page;
}

/// A key of the object that a reference leads to.
std::string keyOf(const InstanceObject& association, std::string_view end, std::string_view key) {
    const CMPIData* data = valueOf(association, end);
    if (!data || data->type != CMPI_ref) return {};
    const ObjectPathObject* path = ObjectPathObject::from(data->value.ref);
    const NamedData* value = path ? path->key(key) : nullptr;
    std::string text;
    if (value) appendValueText(text, value->data);
    return text;
}

/// From a key of the one end to a key of the other.
using Links = std::map<std::string, std::string>;

Links linksOf(const Instances& associations, std::string_view fromKey, std::string_view toKey) {
    Links links;
    for (const InstanceObject* association : associations) {
        links.emplace(keyOf(*association, "Dependent", fromKey), keyOf(*association, "Antecedent", toKey));
    }
    return links;
}

std::string found(const Links& links, const std::string& key) {
    const auto link = links.find(key);
    return link == links.end() ? std::string() : link->second;
}

/// OperationalStatus as the provider uses it (CIM_ManagedSystemElement): 2 OK, 6 Error, 10 Stopped.
LinkState fibreChannelState(std::uint64_t status) {
    if (status == 2) return LinkState::up;
    if (status == 6) return LinkState::down;
    return status == 0 ? LinkState::unknown : LinkState::suspended;
}

LinkState ethernetState(const InstanceObject& port) {
    const ArrayObject* texts = arrayOf(port, "StatusDescriptions");
    std::string text;
    if (texts && texts->size() > 0) appendValueText(text, texts->element(0));
    if (text == "Link Up") return LinkState::up;
    if (text == "Link Down") return LinkState::down;
    return text == "Testing" ? LinkState::testing : LinkState::unknown;
}

std::optional<std::uint64_t> positive(std::uint64_t number) {
    return number == 0 ? std::nullopt : std::optional(number);
}

void readCards(const Enumerate& enumerate, Snapshot& snapshot) {
    for (const InstanceObject* product : enumerate(published::product)) {
        snapshot.cards.push_back(
            {textOf(*product, "IdentifyingNumber"), textOf(*product, "Name"), textOf(*product, "Version")});
    }
}

void readJacks(const Enumerate& enumerate, Snapshot& snapshot) {
    for (const InstanceObject* jack : enumerate(published::physicalPort)) {
        snapshot.jacks.push_back({textOf(*jack, "Tag"), textOf(*jack, "SerialNumber"),
                                  static_cast<unsigned>(numberOf(*jack, "PortNumber"))});
    }
}

/// The tag of a module begins with its serial number, and that of its jack follows.
std::string jackOf(const std::string& tag, const std::string& serialNumber) {
    return tag.size() > serialNumber.size() + 1 ? tag.substr(serialNumber.size() + 1) : std::string();
}

Module moduleOf(const InstanceObject& connector) {
    Module module;
    module.tag = textOf(connector, "Tag");
    module.serialNumber = textOf(connector, "SerialNumber");
    module.jack = jackOf(module.tag, module.serialNumber);
    module.vendor = textOf(connector, "Manufacturer");
    module.partNumber = textOf(connector, "PartNumber");
    module.isReadable = numberOf(connector, "SFPStatus") == 1;
    const auto identity = pageOf(connector, "SFPDataA0");
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    module.hasPages = !std::all_of(identity.begin(), identity.end(), isZero);
    if (module.hasPages) module.told = optics::decodeSff8472(identity, pageOf(connector, "SFPDataA2"));
    return module;
}

/// DeviceID is the card's serial number, node and port name, with underscores.
std::string cardOf(const std::string& id) {
    constexpr std::size_t names = 34;
    return id.size() > names ? id.substr(0, id.size() - names) : std::string();
}

std::string nodeNameOf(const std::string& id) {
    constexpr std::size_t nodeFromEnd = 33, digits = 16;
    return id.size() > nodeFromEnd ? id.substr(id.size() - nodeFromEnd, digits) : std::string();
}

FibreChannelPort fibreChannelPortOf(const InstanceObject& instance, const Links& jacks) {
    FibreChannelPort port;
    port.id = textOf(instance, "DeviceID");
    port.jack = found(jacks, port.id);
    port.portName = textOf(instance, "PermanentAddress");
    port.nodeName = nodeNameOf(port.id);
    port.cardSerialNumber = cardOf(port.id);
    port.model = textOf(instance, "Model");
    const std::uint64_t status = firstOf(instance, "OperationalStatus");
    port.state = fibreChannelState(status);
    port.answers = status != 0 || numberOf(instance, "PortType") != 0;
    port.speedBitsPerSecond = positive(numberOf(instance, "Speed"));
    port.largestSpeedBitsPerSecond = positive(numberOf(instance, "MaxSpeed"));
    const std::string address = textOf(instance, "ENodeMACAddress");
    constexpr std::size_t digitsOfAddress = 12;
    port.isOverEthernet = address.size() == digitsOfAddress;
    port.interfaceName = textOf(instance, "InterfaceName");
    return port;
}

/// The name of a target's endpoint begins with that of the port which sees it.
void countTargets(const Enumerate& enumerate, Snapshot& snapshot) {
    for (const InstanceObject* target : enumerate(published::targetEndpoint)) {
        const std::string name = textOf(*target, "Name");
        const std::string owner = name.substr(0, name.find('_'));
        for (FibreChannelPort& port : snapshot.fibreChannelPorts) {
            if (port.portName == owner) ++port.targets;
        }
    }
}

void readFibreChannelPorts(const Enumerate& enumerate, Snapshot& snapshot) {
    const Links jacks = linksOf(enumerate(published::physicalPortFCPort), "DeviceID", "Tag");
    for (const InstanceObject* port : enumerate(published::fcPort)) {
        snapshot.fibreChannelPorts.push_back(fibreChannelPortOf(*port, jacks));
    }
}

/// Digits alone: "21-00-02-4D-10-31-70-01" without its strokes; "N/A" and the like are none.
std::string digitsOf(const std::string& text, std::size_t count) {
    std::string digits;
    for (const char character : text) {
        if (std::string_view("0123456789ABCDEFabcdef").find(character) != std::string_view::npos) digits += character;
    }
    return digits.size() == count ? digits : std::string();
}

/// The network port names card and link speed, and shares the address.
void readNetworkSpeeds(const Enumerate& enumerate, Snapshot& snapshot) {
    for (const InstanceObject* instance : enumerate(published::networkPort)) {
        const std::string address = textOf(*instance, "PermanentAddress");
        const std::string id = textOf(*instance, "DeviceID");
        for (EthernetPort& port : snapshot.ethernetPorts) {
            if (port.macAddress != address || !port.cardSerialNumber.empty()) continue;
            port.cardSerialNumber = id.substr(0, id.rfind('_'));
            port.speedMegabits = positive(numberOf(*instance, "Speed"));
            break;
        }
    }
}

void readEthernetPorts(const Enumerate& enumerate, Snapshot& snapshot) {
    constexpr std::size_t digitsOfName = 16;
    const Links jacks = linksOf(enumerate(published::physicalPortEthernetPort), "DeviceID", "Tag");
    for (const InstanceObject* instance : enumerate(published::ethernetPort)) {
        EthernetPort port;
        port.macAddress = textOf(*instance, "PermanentAddress");
        port.jack = found(jacks, textOf(*instance, "DeviceID"));
        port.state = ethernetState(*instance);
        port.mtuBytes = numberOf(*instance, "ActiveMaximumTransmissionUnit");
        port.fcoePortName = digitsOf(textOf(*instance, "FC_WWN"), digitsOfName);
        port.interfaceName = textOf(*instance, "InterfaceName");
        snapshot.ethernetPorts.push_back(std::move(port));
    }
    readNetworkSpeeds(enumerate, snapshot);
}

/// Counters whose growth is a sign of trouble.
constexpr std::string_view errorCounters[] = {
    "LinkFailures", "LossOfSignalCounter",      "LossOfSyncCounter",
    "CRCErrors",    "InvalidTransmissionWords", "PrimitiveSeqProtocolErrCount",
};

/// "...SERIAL_PORTNAME__Driver" of the storage side; of the Ethernet side the number in front tells the kind.
void takeKind(const std::string& id, Software& software) {
    constexpr std::size_t digitsOfName = 16;
    const auto end = id.rfind("__");
    if (end == std::string::npos) {
        software.kind = id.starts_with("2_") ? "NetworkDriver" : id.starts_with("3_") ? "NetworkFlash" : "Network";
        return;
    }
    software.kind = id.substr(end + 2);
    const auto before = id.rfind('_', end - 1);
    if (before != std::string::npos && end - before - 1 == digitsOfName)
        software.owner = id.substr(before + 1, digitsOfName);
}

std::string withoutSuffix(std::string text, std::string_view suffix) {
    if (text.ends_with(suffix)) text.resize(text.size() - suffix.size());
    return text;
}

void readSoftware(const Enumerate& enumerate, Snapshot& snapshot, const char* className, const char* associationName) {
    Links cards;
    for (const InstanceObject* association : enumerate(associationName)) {
        cards.emplace(keyOf(*association, "Antecedent", "InstanceID"), keyOf(*association, "Dependent", "DeviceID"));
    }
    for (const InstanceObject* identity : enumerate(className)) {
        Software software;
        const std::string id = textOf(*identity, "InstanceID");
        takeKind(id, software);
        software.cardSerialNumber = withoutSuffix(found(cards, id), "_NIC");
        software.version = textOf(*identity, "VersionString");
        const ArrayObject* values = arrayOf(*identity, "IdentityInfoValue");
        if (values && values->size() > 0) appendValueText(software.model, values->element(0));
        snapshot.software.push_back(std::move(software));
    }
}

void readHardware(const Enumerate& enumerate, Snapshot& snapshot) {
    readCards(enumerate, snapshot);
    readJacks(enumerate, snapshot);
    readFibreChannelPorts(enumerate, snapshot);
    readEthernetPorts(enumerate, snapshot);
    for (const InstanceObject* connector : enumerate(published::physicalConnector)) {
        snapshot.modules.push_back(moduleOf(*connector));
    }
}

/// The serial number that all classes show: of the long form of one OEM what stands behind its part number.
std::string_view shownSerialNumber(std::string_view serialNumber) {
    constexpr std::size_t longForm = 22, partEnd = 10;
    const bool isLong = serialNumber.size() == longForm && serialNumber.starts_with("11S");
    return isLong ? serialNumber.substr(partEnd) : serialNumber;
}

template <typename Item>
const Item* atJack(const std::vector<Item>& items, std::string_view jack) {
    const auto item = std::find_if(items.begin(), items.end(), [jack](const Item& one) { return one.jack == jack; });
    return item == items.end() || jack.empty() ? nullptr : &*item;
}

} // namespace

Snapshot readModules(const Enumerate& enumerate) {
    Snapshot snapshot;
    readHardware(enumerate, snapshot);
    return snapshot;
}

std::vector<PortCounters> readCounters(const Enumerate& enumerate) {
    std::vector<PortCounters> ports;
    for (const InstanceObject* instance : enumerate(published::fcPortStatistics)) {
        PortCounters& counters = ports.emplace_back();
        counters.portName = textOf(*instance, "ElementName");
        for (const std::string_view name : errorCounters)
            counters.errors.push_back({name, numberOf(*instance, name)});
    }
    return ports;
}

std::vector<std::string> readSystemNames(const Enumerate& enumerate) {
    std::vector<Failure> refused;
    std::vector<std::string> names;
    for (const InstanceObject* system : Tolerant(enumerate, refused)(published::computerSystem))
        names.push_back(textOf(*system, "Name"));
    return names;
}

Snapshot readSnapshot(const Enumerate& enumerate) {
    Snapshot snapshot;
    Tolerant tolerant(enumerate, snapshot.failures);
    const Enumerate ask = std::ref(tolerant);
    readHardware(ask, snapshot);
    countTargets(ask, snapshot);
    snapshot.counters = readCounters(ask);
    readSoftware(ask, snapshot, published::storageSoftware, published::storageSoftwareController);
    readSoftware(ask, snapshot, published::ethernetSoftware, published::ethernetSoftwareController);
    tolerant.requireAnswer();
    return snapshot;
}

bool isSameCard(std::string_view left, std::string_view right) {
    return !left.empty() && shownSerialNumber(left) == shownSerialNumber(right);
}

const Jack* findJack(const Snapshot& snapshot, std::string_view tag) {
    const auto jack =
        std::find_if(snapshot.jacks.begin(), snapshot.jacks.end(), [tag](const Jack& one) { return one.tag == tag; });
    return jack == snapshot.jacks.end() ? nullptr : &*jack;
}

const FibreChannelPort* fibreChannelAt(const Snapshot& snapshot, std::string_view jack) {
    return atJack(snapshot.fibreChannelPorts, jack);
}

const EthernetPort* ethernetAt(const Snapshot& snapshot, std::string_view jack) {
    return atJack(snapshot.ethernetPorts, jack);
}

const Module* moduleAt(const Snapshot& snapshot, std::string_view jack) { return atJack(snapshot.modules, jack); }

std::vector<std::string> interfacesAt(const Snapshot& snapshot, std::string_view jack) {
    std::vector<std::string> names;
    const auto take = [&](const auto& ports) {
        for (const auto& port : ports) {
            const bool isOther =
                port.jack == jack && std::find(names.begin(), names.end(), port.interfaceName) == names.end();
            if (isOther && !jack.empty() && !port.interfaceName.empty()) names.push_back(port.interfaceName);
        }
    };
    take(snapshot.ethernetPorts);
    take(snapshot.fibreChannelPorts);
    return names;
}

} // namespace cimhost::monitoring
