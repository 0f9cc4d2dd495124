#include "tavik/host/dump.h"

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <type_traits>
#include <utility>
#include <vector>

#include "optics/level.h"
#include "optics/sff8472.h"
#include "tavik/host/module_translation.h"
#include "tavik/host/text_forms.h"

namespace tavik::host {

namespace {

std::string show(const std::string& text) {
    std::string line;
    for (const char character : text)
        line += character == '\n' ? ' ' : character;
    return line;
}
std::string show(bool truth) { return truth ? "yes" : "no"; }
std::string show(const MacAddress& address) { return formatMac(address); }
std::string show(const WorldWideName& name) { return formatWorldWideName(name); }
std::string show(const Bytes& bytes) { return formatHex(bytes.data(), bytes.size()); }
template <typename Number>
requires std::is_integral_v<Number> std::string show(Number number) { return std::to_string(number); }

using Json = nlohmann::ordered_json;

/** Numbers, truths and texts as they are; what has a form of its own as people read it. */
template <typename Value>
Json asJson(const Value& value) {
    if constexpr (std::is_integral_v<Value> || std::is_same_v<Value, std::string>)
        return value;
    else
        return show(value);
}

/** Each field in both forms: a line of an indented tree, and a member of a JSON object. */
class Page {
public:
    template <typename Value>
    void line(const std::string& label, const Value& value) {
        const auto shown = show(value);
        heading(label + ": " + (shown.empty() ? "- (empty)" : shown));
        put(label, asJson(value));
    }

    template <typename Value>
    void line(const std::string& label, const Attribute<Value>& attribute) {
        if (attribute)
            line(label, *attribute);
        else
            absent(label, attribute.absence().reason);
    }

    void names(const std::string& label, const std::vector<std::string>& names) {
        std::string all;
        for (const auto& name : names)
            all += " " + name;
        heading(label + ":" + all);
        put(label, names);
    }

    /** For an attribute of many parts: its absence in one line, or what lines makes of it. */
    template <typename Value, typename Lines>
    void part(const std::string& label, const Attribute<Value>& attribute, Lines lines) {
        if (!attribute) return absent(label, attribute.absence().reason);
        section(label, [&] { lines(*attribute); });
    }

    /** A value in each line, under one label. */
    void list(const std::string& label, const std::vector<FactValue>& values) {
        Json all = Json::array();
        for (const auto& value : values) {
            heading(label + ": " + std::visit([](const auto& one) { return show(one); }, value));
            all.push_back(std::visit([](const auto& one) { return asJson(one); }, value));
        }
        put(label, std::move(all));
    }

    template <typename Lines>
    void section(const std::string& title, Lines lines) {
        heading(title);
        objects_.push_back(Json::object());
        lines();
        const Json made = std::move(objects_.back());
        objects_.pop_back();
        put(title, made);
    }

    std::string text() && { return std::move(text_); }

    /** Bytes that are no UTF-8 become the replacement character. */
    std::string json() && { return objects_.front().dump(2, ' ', false, Json::error_handler_t::replace) + "\n"; }

private:
    void heading(const std::string& text) { text_ += std::string((objects_.size() - 1) * 2, ' ') + text + "\n"; }

    void absent(const std::string& label, const std::string& reason) {
        heading(label + ": - (" + show(reason) + ")");
        put(label, Json{{"absent", reason}});
    }

    /** A label that comes again makes a list. */
    void put(const std::string& label, Json value) {
        Json& object = objects_.back();
        const auto found = object.find(label);
        if (found == object.end())
            object[label] = std::move(value);
        else if (found->is_array())
            found->push_back(std::move(value));
        else
            *found = Json::array({std::move(*found), std::move(value)});
    }

    std::string text_;
    std::vector<Json> objects_{Json::object()};
};

Attribute<std::string> idText(const Attribute<std::uint16_t>& id) {
    return id.then([](std::uint16_t value) -> Attribute<std::string> { return formatId(value); });
}

const char* stateName(std::uint32_t state) {
    switch (state) {
    case LinkUp:
        return "up";
    case LinkDown:
        return "down";
    case LinkTesting:
        return "testing";
    default:
        return "unknown";
    }
}

void dumpItems(Page& page, const char* title, const std::vector<VpdItem>& items) {
    for (const auto& item : items)
        page.line(std::string(title) + " " + item.keyword, item.value);
}

void dumpPci(Page& page, const PciFunction& pci) {
    page.line("address", pci.address.text());
    page.line("vendor", idText(pci.vendor));
    page.line("device", idText(pci.device));
    page.line("subsystem vendor", idText(pci.subsystemVendor));
    page.line("subsystem device", idText(pci.subsystemDevice));
    page.line("virtual function", pci.isVirtualFunction);
    page.line("device serial number", pci.deviceSerialNumber);
    page.part("vital product data", pci.vpd, [&](const PciVpd& vpd) {
        page.line("product", vpd.productIdentifier);
        dumpItems(page, "read-only", vpd.readOnly);
        dumpItems(page, "writable", vpd.writable);
    });
}

void dumpParent(Page& page, const Attribute<DeviceParent>& attribute) {
    page.part("device", attribute, [&](const DeviceParent& parent) {
        page.line("path", parent.path);
        page.line("bus", parent.bus);
        page.line("driver", parent.driver);
        page.part("pci", parent.pci, [&](const PciFunction& pci) { dumpPci(page, pci); });
        if (parent.bus.valueOr({}) != "usb") return;
        page.part("usb", parent.usb, [&](const UsbDevice& usb) {
            page.line("manufacturer", usb.manufacturer);
            page.line("product", usb.product);
            page.line("serial number", usb.serialNumber);
        });
    });
}

std::string fixed(double number, int decimals, const char* unit) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f %s", decimals, number, unit);
    return text.data();
}

void dumpMonitor(Page& page, const std::string& label, const optics::Monitor& monitor, int decimals, const char* unit) {
    if (!monitor.reading) return;
    const auto level = optics::levelOf(monitor);
    const auto standing = level == optics::Level::Unknown ? "" : ", " + std::string(optics::nameOf(level));
    page.line(label, fixed(*monitor.reading, decimals, unit) + standing);
}

/** What page A2 says, and what of both pages cannot be believed. */
void dumpReadings(Page& page, const Transceiver& transceiver) {
    const auto module = optics::decodeSff8472(transceiver.pageA0, transceiver.pageA2);
    const auto lane = optics::worstLane(module);
    dumpMonitor(page, "temperature", module.temperatureCelsius, 2, "degrees Celsius");
    dumpMonitor(page, "supply", module.supplyVolts, 3, "V");
    dumpMonitor(page, "bias", lane.biasMilliamperes, 3, "mA");
    dumpMonitor(page, "transmit power", lane.transmitPowerMilliwatts, 4, "mW");
    dumpMonitor(page, "receive power", lane.receivePowerMilliwatts, 4, "mW");
    for (unsigned i = 0; i < static_cast<unsigned>(optics::Finding::Count); ++i)
        if (const auto finding = static_cast<optics::Finding>(i); module.findings.has(finding))
            page.line("note", std::string(optics::sentenceOf(finding)));
}

void dumpTransceiver(Page& page, const Attribute<Transceiver>& attribute) {
    page.part("transceiver", attribute, [&](const Transceiver& transceiver) {
        page.line("vendor", serialIdText(transceiver.pageA0, 20));
        page.line("part number", serialIdText(transceiver.pageA0, 40));
        page.line("serial number", serialIdText(transceiver.pageA0, 68));
        page.line("bytes of page A0", transceiver.pageA0.size());
        page.line("bytes of page A2", transceiver.pageA2.size());
        dumpReadings(page, transceiver);
    });
}

void dumpAddresses(Page& page, const Attribute<IPConfiguration>& attribute) {
    page.part("addresses", attribute, [&](const IPConfiguration& ip) {
        if (ip.ipv4.family != AddressNone)
            page.line("IPv4", formatIPAddress(ip.ipv4) + " mask " + formatIPAddress(ip.ipv4Mask));
        for (const auto& address : ip.firstList)
            page.line("IPv6", formatIPAddress(address));
    });
}

void dumpNetworkDevice(Page& page, const HostNetworkDevice& device) {
    page.line("index", device.index);
    dumpParent(page, device.parent);
    page.part("driver", device.driver, [&](const DriverInfo& driver) {
        page.line("name", driver.driver);
        page.line("version", driver.version);
        page.line("firmware version", driver.firmwareVersion);
        page.line("bus information", driver.busInfo);
    });
    page.line("permanent address", device.permanentAddress);
    page.line("current address", device.currentAddress);
    page.line("device port", device.devicePort);
    page.line("mtu", device.mtu);
    page.line("operational state", device.link.operationalState);
    page.line("carrier", device.link.carrier);
    page.line("speed", device.link.speed);
    page.line("link", std::string(stateName(device.link.state)));
    dumpAddresses(page, device.ip);
    dumpTransceiver(page, device.transceiver);
}

void dumpRemotePort(Page& page, const RemotePort& port) {
    page.line("port name", port.portName);
    page.line("node name", port.nodeName);
    page.line("state", port.state);
    page.line("roles", port.roles);
    for (const auto& unit : port.units)
        page.section("unit " + unit.address, [&] {
            page.line("vendor", unit.vendor);
            page.line("model", unit.model);
            page.line("revision", unit.revision);
            page.line("identifier", unit.identifier);
            page.line("block device", unit.blockDevice);
            page.line("block size", unit.blockSize);
        });
}

void dumpFibreChannelHost(Page& page, const FibreChannelHost& host) {
    dumpParent(page, host.parent);
    page.line("network interface", host.networkInterface);
    page.line("node name", host.nodeName);
    page.line("port name", host.link.portName);
    page.line("port id", host.portId);
    page.line("port type", host.link.type);
    page.line("port state", host.link.state);
    page.line("speed", host.link.speed);
    page.line("manufacturer", host.manufacturer);
    page.line("model", host.model);
    page.line("serial number", host.serialNumber);
    page.line("driver version", host.driverVersion);
    page.line("firmware version", host.firmwareVersion);
    page.line("BIOS version", host.biosVersion);
    page.line("EFI version", host.efiVersion);
    page.line("FCode version", host.fcodeVersion);
    page.section("statistics", [&] {
        for (std::size_t i = 0; i < host.counters.size(); ++i)
            page.line(counterNames[i], host.counters[i]);
    });
    dumpTransceiver(page, host.transceiver);
    for (const auto& port : host.remotePorts)
        page.section("remote port " + port.name, [&] { dumpRemotePort(page, port); });
}

void dumpFact(Page& page, const HostFact& fact) {
    const std::string label(fact.row->name);
    if (!fact.values) return page.line(label, Attribute<std::string>(fact.values.absence()));
    if (fact.row->count == merolt::FactCount::list) return page.list(label, *fact.values);
    std::visit([&](const auto& value) { page.line(label, value); }, fact.values->front());
}

/** @param facts of all ports, or of none. @param place of this port. */
void dumpFacts(Page& page, const std::vector<std::vector<HostFact>>& facts, std::size_t place) {
    if (place >= facts.size()) return;
    page.section("facts", [&] {
        for (const auto& fact : facts[place])
            dumpFact(page, fact);
    });
}

void dumpCard(Page& page, const HostCard& card) {
    page.line("serial number", card.serialNumber);
    for (const auto& port : card.ports) {
        std::vector<std::string> functions;
        if (port.networkDevice != nullptr) functions.push_back(port.networkDevice->name);
        for (const auto* host : port.fibreChannelHosts)
            functions.push_back("host" + std::to_string(host->number));
        page.names("port " + std::to_string(port.number), functions);
    }
}

Page pageOf(const HostFacts& facts) {
    Page page;
    for (const auto& card : groupCards(facts))
        page.section("card " + card.key, [&] { dumpCard(page, card); });
    for (std::size_t place = 0; place < facts.networkDevices.size(); ++place) {
        const auto& device = facts.networkDevices[place];
        page.section("interface " + device.name, [&] {
            dumpNetworkDevice(page, device);
            dumpFacts(page, facts.interfaceFacts, place);
        });
    }
    for (std::size_t place = 0; place < facts.fibreChannelHosts.size(); ++place) {
        const auto& host = facts.fibreChannelHosts[place];
        page.section("Fibre Channel host" + std::to_string(host.number), [&] {
            dumpFibreChannelHost(page, host);
            dumpFacts(page, facts.hostFacts, place);
        });
    }
    for (const auto& interface : facts.leftOut)
        page.line("left out " + interface.name, interface.reason);
    return page;
}

} // namespace

std::string dumpFacts(const HostFacts& facts) { return pageOf(facts).text(); }

std::string dumpFactsAsJson(const HostFacts& facts) { return pageOf(facts).json(); }

} // namespace tavik::host
