#include "fleets.h"

#include "class_support.h"

using namespace adapters;

namespace {

std::vector<tavik::VpdItem> vpdItems(const std::string& serialNumber, const std::string& uuid) {
    std::vector<tavik::VpdItem> items{{"SN", serialNumber}};
    if (!uuid.empty()) items.push_back({"YU", uuid});
    return items;
}

tavik::StorageFunction storage(std::uint32_t number, const std::string& serialNumber, const std::string& uuid = "",
                               std::uint16_t pciDeviceId = chips::chip12) {
    tavik::StorageFunction function = functionWithVpd(number, vpdItems(serialNumber, uuid), pciDeviceId);
    function.modelName = "MLT-2562";
    function.driverVersion = "9.1.9";
    function.driverFirmwareVersion = "5.06.03";
    return function;
}

tavik::StorageFunction withModule(tavik::StorageFunction function, const std::string& moduleSerial) {
    function.transceiver = transceiver(moduleSerial);
    return function;
}

tavik::StorageFunction converged(std::uint32_t number, const std::string& serialNumber, const std::string& uuid) {
    tavik::StorageFunction function = storage(number, serialNumber, uuid, chips::chip15);
    function.protocolType = 1;
    return function;
}

tavik::NicFunction nic(std::uint32_t adapterId, std::uint32_t portId, const std::string& moduleSerial) {
    tavik::NicFunction function = nicFunction(adapterId, portId);
    function.card.manufacturer = "Maker";
    function.card.modelName = "MLT-8242";
    function.card.driverVersion = "2.3.7";
    function.card.flashVersion = "02.01.37";
    if (!moduleSerial.empty()) function.transceiver = transceiver(moduleSerial);
    return function;
}

tavik::Port port(std::uint8_t number, std::vector<tavik::Function> functions) {
    tavik::Port made;
    made.number = number;
    made.functions = std::move(functions);
    return made;
}

tavik::Card cardOfPorts(const std::string& serialNumber, std::vector<tavik::Port> ports) {
    tavik::Card made = card(serialNumber, {});
    made.ports = std::move(ports);
    return made;
}

tavik::Target target(std::uint8_t last, std::uint16_t lunCount) {
    tavik::Target made;
    made.portName = worldWideName(last);
    for (std::uint16_t number = 0; number < lunCount; ++number) {
        tavik::Lun lun;
        lun.number = number;
        lun.identifier[0] = last;
        lun.identifier[7] = static_cast<std::uint8_t>(number);
        made.luns.push_back(lun);
    }
    return made;
}

tavik::Fleet cards(const std::string& firstUuid, const std::string& convergedUuid, const std::string& ethernetUuid) {
    tavik::StorageFunction seen = withModule(storage(1, "MLA001", firstUuid), "MODA1");
    seen.targets = {target(0x61, 2), target(0x62, 1)};
    tavik::StorageFunction second = storage(2, "MLA001", firstUuid);
    second.targets = {target(0x61, 1)};
    tavik::StorageFunction twin = withModule(storage(7, "MLD005"), "MODD1");
    twin.nodeName = worldWideName(0xF6);
    twin.headerNodeName = worldWideName(0x77);
    twin.headerPortName = worldWideName(0x78);
    tavik::NicFunction ethernet = nic(4, 3, "MODE1");
    if (!ethernetUuid.empty()) ethernet.vpdItems = {{"YU", ethernetUuid}};

    tavik::Card storageOnly = cardOfPorts("MLA001", {port(0, {seen}), port(1, {second})});
    storageOnly.kind = 2;
    tavik::Card old = cardOfPorts("A00003", {port(0, {adapters::storageFunction(3, chips::chip7)})});
    old.kind = 1;
    return fleet({storageOnly, old,
                  cardOfPorts("MLC003", {port(0, {withModule(converged(4, "MLC003", convergedUuid), "MODC1"),
                                                  nic(3, 1, "MODC1")}),
                                         port(1, {converged(5, "MLC003", convergedUuid), nic(3, 2, "MODC2")})}),
                  cardOfPorts("MLE004", {port(0, {ethernet}), port(1, {nic(4, 4, "")})}),
                  cardOfPorts("MLD005", {port(2, {withModule(storage(6, "MLD005"), "MODD1"), twin})}),
                  cardOfPorts("MLF006", {port(0, {storage(8, "MLF006")})})});
}

} // namespace

tavik::Fleet manyCards() { return cards("", "", ""); }

tavik::Fleet cardsWithUuids() { return cards("uuid-a", "uuid-c", "uuid-e"); }
