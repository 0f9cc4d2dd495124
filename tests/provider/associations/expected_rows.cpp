#include "expected_rows.h"

#include <algorithm>
#include <cstdlib>
#include <strings.h>

namespace {

using Text = std::string;
using Test = std::function<bool(const Path&)>;
using PairTest = std::function<bool(const End& left, const End& right)>;

/// How one association joins its ends.
struct Rules {
    std::function<Pairs(const World&)> pairs;
    std::function<Ends(const World&, const Path& source)> left;
    std::function<Ends(const World&, const Path& source)> right;
};

constexpr const char* host = "Merolt_Adapter_ComputerSystem";
constexpr const char* product = "Merolt_Adapter_Product";
constexpr const char* package = "Merolt_Adapter_PhysicalPackage";
constexpr const char* connector = "Merolt_Adapter_PhysicalConnector";
constexpr const char* jack = "Merolt_Adapter_PhysicalPort";
constexpr const char* fcPort = "Merolt_FCHBA_FCPort";
constexpr const char* fcController = "Merolt_FCHBA_PortController";
constexpr const char* fcGroup = "Merolt_FCHBA_LogicalPortGroup";
constexpr const char* fcSoftware = "Merolt_FCHBA_SoftwareIdentity";
constexpr const char* fcService = "Merolt_FCHBA_SoftwareInstallationService";
constexpr const char* fcCapabilities = "Merolt_FCHBA_SoftwareInstallationServiceCapabilities";
constexpr const char* objectManager = "Merolt_FCHBA_ObjectManager";
constexpr const char* mechanism = "Merolt_FCHBA_CIMXMLCommMech";
constexpr const char* ethernetPort = "Merolt_NIC_EthernetPort2";
constexpr const char* networkPort = "Merolt_NIC_NetworkPort";
constexpr const char* nicController = "Merolt_NIC_PortController";
constexpr const char* lanEndpoint = "Merolt_NIC_LANEndpoint";
constexpr const char* ipEndpoint = "Merolt_NIC_IPProtocolEndpoint";
constexpr const char* ipCapabilities = "Merolt_NIC_IPProtocolEndpointCapabilities";
constexpr const char* nicSoftware = "Merolt_NIC_SoftwareIdentity";
constexpr const char* nicService = "Merolt_NIC_SoftwareInstallationService";
constexpr const char* nicCapabilities = "Merolt_NIC_SoftwareInstallationServiceCapabilities";
constexpr const char* profile = "Merolt_NIC_RegisteredProfile";
constexpr const char* installer = "CNA_SW_INSTALLER";

bool same(const Text& left, const Text& right) { return strcasecmp(left.c_str(), right.c_str()) == 0; }

Text before(const Text& text, char separator) {
    const std::size_t at = text.find(separator);
    return at == Text::npos ? Text() : text.substr(0, at);
}

Text behindFirst(const Text& text, char separator) {
    const std::size_t at = text.find(separator);
    return at == Text::npos ? Text() : text.substr(at + 1);
}

Text prefix(const Text& text) { return before(text, '_'); }

Text suffix(const Text& text) {
    const std::size_t at = text.rfind('_');
    return at == Text::npos ? Text() : text.substr(at + 1);
}

/// What stands between the first and the second underscore; nothing without a second one.
std::optional<Text> middle(const Text& text) {
    const Text rest = behindFirst(text, '_');
    if (rest.find('_') == Text::npos) return std::nullopt;
    return before(rest, '_');
}

std::vector<Text> pieces(const Text& text) {
    std::vector<Text> cut{""};
    for (const char character : text) {
        if (character == '_') {
            cut.emplace_back();
        } else {
            cut.back() += character;
        }
    }
    return cut;
}

/// The second piece of a connector's tag; nothing where there are not three.
Text cardOfConnector(const Text& tag) {
    const std::vector<Text> cut = pieces(tag);
    return cut.size() >= 3 ? cut[1] : Text();
}

Text cardOfJack(const Text& tag) {
    const std::vector<Text> cut = pieces(tag);
    return cut.size() >= 2 ? cut[0] : Text();
}

Text property(const End& end, const Text& name) {
    for (const auto& [itsName, value] : end.instance.values) {
        if (itsName == name && value.size() >= 2) return value.substr(1, value.size() - 2);
    }
    return {};
}

Text serialOf(const End& end) { return property(end, "SerialNumber"); }

bool contains(const Text& text, const char* part) { return text.find(part) != Text::npos; }

// Building blocks of rules.

Ends where(const World& world, const char* className, const Test& test) {
    Ends found;
    for (const End& end : world.all(className)) {
        if (test(end.path)) found.push_back(end);
    }
    return found;
}

std::optional<End> firstWith(const World& world, const char* className, const char* key, const Text& value) {
    for (const End& end : world.all(className)) {
        if (same(end.path[key], value)) return end;
    }
    return std::nullopt;
}

void add(Ends& ends, const std::optional<End>& end) {
    if (end) ends.push_back(*end);
}

Ends onlyIf(bool isFound, const End& end) { return isFound ? Ends{end} : Ends{}; }

Pairs joined(const Ends& left, const Ends& right, const PairTest& test) {
    Pairs pairs;
    for (const End& one : left) {
        for (const End& other : right) {
            if (test(one, other)) pairs.emplace_back(one, other);
        }
    }
    return pairs;
}

Pairs joined(const World& world, const char* left, const char* right, const PairTest& test) {
    return joined(world.all(left), world.all(right), test);
}

Pairs everyPair(const Ends& left, const Ends& right) {
    return joined(left, right, [](const End&, const End&) { return true; });
}

bool namesSystem(const World& world, const Path& source) {
    return same(source["SystemName"], world.systemName()) && same(source["SystemCreationClassName"], host);
}

bool isSystem(const World& world, const Path& source) {
    return same(source["Name"], world.systemName()) && same(source["CreationClassName"], host);
}

bool isInstaller(const Path& source) { return same(source["Name"], installer); }

/// The host with every object of a class, or with those that pass; the host is found from one that names it.
Rules hostWith(
    const char* className, const Test& belongs = [](const Path&) { return true; },
    const std::function<bool(const World&, const Path&)>& leadsToHost = namesSystem) {
    return {
        [=](const World& world) { return everyPair(world.all(host), where(world, className, belongs)); },
        [=](const World& world, const Path& source) { return onlyIf(leadsToHost(world, source), world.only(host)); },
        [=](const World& world, const Path&) { return where(world, className, belongs); }};
}

/// Pairs by one test on paths that holds from both sides.
Rules byTest(const char* left, const char* right, const std::function<bool(const Path&, const Path&)>& belongs) {
    return {[=](const World& world) {
                return joined(world, left, right,
                              [&](const End& one, const End& other) { return belongs(one.path, other.path); });
            },
            [=](const World& world, const Path& source) {
                return where(world, left, [&](const Path& path) { return belongs(path, source); });
            },
            [=](const World& world, const Path& source) {
                return where(world, right, [&](const Path& path) { return belongs(source, path); });
            }};
}

// Storage side.

Rules softwareOfHost() {
    const Test isDriver = [](const Path& path) { return contains(path["InstanceID"], "_Driver"); };
    return hostWith(fcSoftware, isDriver, [=](const World& world, const Path& source) {
        return same(prefix(source["InstanceID"]), world.systemName()) && isDriver(source);
    });
}

/// A group whose InstanceID has no underscore counts as the one before it.
Ends groupsOfSuffix(const World& world, const Text& wanted) {
    Ends found;
    Text kept;
    for (const End& group : world.all(fcGroup)) {
        const Text key = group.path["InstanceID"];
        if (contains(key, "_")) kept = suffix(key);
        if (same(kept, wanted)) found.push_back(group);
    }
    return found;
}

Pairs groupsWithPorts(const World& world) {
    Pairs pairs;
    Text kept;
    const Ends& groups = world.all(fcGroup);
    const Ends& ports = world.all(fcPort);
    for (std::size_t index = 0; index < groups.size(); ++index) {
        const Text key = groups[index].path["InstanceID"];
        if (contains(key, "_")) kept = suffix(key);
        for (const End& port : ports) {
            const bool isPair = same(suffix(port.path["DeviceID"]), kept);
            if (isPair && index < ports.size()) pairs.emplace_back(groups[index], ports[index]);
        }
    }
    return pairs;
}

Rules groupRules() {
    return {groupsWithPorts,
            [](const World& world, const Path& source) { return groupsOfSuffix(world, suffix(source["DeviceID"])); },
            [](const World& world, const Path& source) {
                return where(world, fcPort, [&](const Path& path) {
                    return same(suffix(path["DeviceID"]), suffix(source["InstanceID"]));
                });
            }};
}

Rules mechanismOfManager() {
    const auto namesIt = [](const World& world, const Path& source) {
        return same(source["SystemName"], world.systemName());
    };
    return {
        [](const World& world) { return everyPair(world.all(objectManager), world.all(mechanism)); },
        [=](const World& world, const Path& source) {
            return onlyIf(namesIt(world, source), world.only(objectManager));
        },
        [=](const World& world, const Path& source) { return onlyIf(namesIt(world, source), world.only(mechanism)); }};
}

/// Pairs by the package's serial number; searches from a package by its tag.
Rules byPackage(const char* left, const char* right, const std::function<Text(const Path&)>& serialInOther) {
    const bool packageIsLeft = Text(left) == package;
    const auto packagesOf = [=](const World& world, const Path& source) {
        Ends found;
        for (const End& end : world.all(package)) {
            if (same(serialOf(end), serialInOther(source))) found.push_back(end);
        }
        return found;
    };
    const auto othersOf = [=](const World& world, const Path& source) {
        return where(world, packageIsLeft ? right : left,
                     [&](const Path& path) { return same(serialInOther(path), source["Tag"]); });
    };
    const auto pairs = [=](const World& world) {
        return joined(world, left, right, [&](const End& one, const End& other) {
            const End& itsPackage = packageIsLeft ? one : other;
            return same(serialOf(itsPackage), serialInOther(packageIsLeft ? other.path : one.path));
        });
    };
    if (packageIsLeft) return {pairs, packagesOf, othersOf};
    return {pairs, othersOf, packagesOf};
}

/// Towards the product a package's tag counts, towards the package its serial number.
Rules productRules() {
    return {[](const World& world) {
                return joined(world, product, package, [](const End& one, const End& other) {
                    return same(one.path["IdentifyingNumber"], serialOf(other));
                });
            },
            [](const World& world, const Path& source) {
                return where(world, product,
                             [&](const Path& path) { return same(path["IdentifyingNumber"], source["Tag"]); });
            },
            [](const World& world, const Path& source) {
                Ends found;
                for (const End& end : world.all(package)) {
                    if (same(serialOf(end), source["IdentifyingNumber"])) found.push_back(end);
                }
                return found;
            }};
}

std::function<Text(const Path&)> key(const char* name) {
    return [name](const Path& path) { return path[name]; };
}

const StorageFact* factOf(const World& world, const Path& port) {
    const std::vector<Text> cut = pieces(port["DeviceID"]);
    for (const StorageFact& fact : world.storage) {
        const bool isIts = cut.size() >= 3 && cut[cut.size() - 2] == fact.nodeName && cut.back() == fact.portName;
        if (isIts) return &fact;
    }
    return nullptr;
}

Text connectorTag(const Text& moduleSerial, const Text& cardSerial, unsigned portNumber) {
    return moduleSerial + '_' + cardSerial + '_' + std::to_string(portNumber);
}

Text jackTag(const Text& cardSerial, unsigned portNumber) { return cardSerial + '_' + std::to_string(portNumber); }

/// Whether the port runs over that connector or jack, by the tree.
bool runsOver(const World& world, const End& physical, const Path& port) {
    const StorageFact* fact = factOf(world, port);
    if (!fact) return false;
    const bool isJack = physical.path.className == jack;
    return same(physical.path["Tag"], isJack ? jackTag(fact->cardSerial, fact->portNumber)
                                             : connectorTag(serialOf(physical), fact->cardSerial, fact->portNumber));
}

/// The ports whose names stand in front of a record of the tree that belongs to the jack.
Ends portsByHeader(const World& world, const Text& cardSerial, const Text& portNumber) {
    Ends found;
    for (const StorageFact& fact : world.storage) {
        const unsigned number = static_cast<unsigned>(std::atoi(portNumber.c_str()));
        if (!same(fact.cardSerial, cardSerial) || fact.portNumber != number) continue;
        for (const End& port : world.all(fcPort)) {
            const StorageFact* own = factOf(world, port.path);
            const bool isIts = own && own->nodeName == fact.headerNodeName && own->portName == fact.headerPortName;
            if (isIts) found.push_back(port);
        }
    }
    return found;
}

Rules throughTree(const char* physicalClass) {
    const auto firstOf = [=](const World& world, const Path& source) {
        for (const End& physical : world.all(physicalClass)) {
            for (const End& port : world.all(fcPort)) {
                const bool isPair = same(port.path["DeviceID"], source["DeviceID"]);
                if (isPair && runsOver(world, physical, port.path)) return Ends{physical};
            }
        }
        return Ends{};
    };
    const auto portsOf = [=](const World& world, const Path& source) {
        const std::vector<Text> cut = pieces(source["Tag"]);
        const std::size_t wanted = Text(physicalClass) == jack ? 2 : 3;
        if (cut.size() < wanted) return Ends{};
        return portsByHeader(world, cut[wanted - 2], cut[wanted - 1]);
    };
    return {[=](const World& world) {
                return joined(world, physicalClass, fcPort, [&](const End& physical, const End& port) {
                    return runsOver(world, physical, port.path);
                });
            },
            firstOf, portsOf};
}

bool isFlashImage(const Path& path) { return contains(path["InstanceID"], "_FlashImage"); }

Rules imagesOfService() {
    return {[](const World& world) { return everyPair(where(world, fcSoftware, isFlashImage), world.all(fcService)); },
            [](const World& world, const Path& source) {
                return isInstaller(source) ? where(world, fcSoftware, isFlashImage) : Ends{};
            },
            [](const World& world, const Path& source) {
                const Text wanted = source["InstanceID"];
                return onlyIf(firstWith(world, fcSoftware, "InstanceID", wanted).has_value(), world.only(fcService));
            }};
}

/// An object of the storage service under the Ethernet side's class name.
End as(const End& end, const char* className) {
    End renamed = end;
    renamed.path.className = className;
    renamed.instance.className = className;
    return renamed;
}

Rules capabilitiesOfService(const char* serviceClass, const char* capabilitiesClass) {
    const auto service = [=](const World& world) { return as(world.only(fcService), serviceClass); };
    const auto capabilities = [=](const World& world) { return as(world.only(fcCapabilities), capabilitiesClass); };
    return {[=](const World& world) {
                return Pairs{{service(world), capabilities(world)}};
            },
            [=](const World& world, const Path& source) {
                return onlyIf(same(source["InstanceID"], installer), service(world));
            },
            [=](const World& world, const Path& source) { return onlyIf(isInstaller(source), capabilities(world)); }};
}

Rules serviceOfHost(const char* serviceClass) {
    const auto service = [=](const World& world) { return as(world.only(fcService), serviceClass); };
    return {[=](const World& world) {
                return Pairs{{world.only(host), service(world)}};
            },
            [=](const World& world, const Path& source) {
                return onlyIf(namesSystem(world, source) && isInstaller(source), world.only(host));
            },
            [=](const World& world, const Path& source) {
                return onlyIf(same(source["Name"], world.systemName()), service(world));
            }};
}

Rules serviceOfControllers(const char* controllerClass, const char* serviceClass) {
    return {[=](const World& world) { return everyPair(world.all(controllerClass), world.all(serviceClass)); },
            [=](const World& world, const Path& source) {
                return isInstaller(source) ? world.all(controllerClass) : Ends{};
            },
            [=](const World& world, const Path& source) {
                const bool isThere = firstWith(world, controllerClass, "DeviceID", source["DeviceID"]).has_value();
                return onlyIf(isThere, world.only(serviceClass));
            }};
}

// Ethernet side. Ports, endpoints and capabilities are listed in the order of the functions, controllers by card.

Text cardOfController(const Path& path) {
    const Text deviceId = path["DeviceID"];
    return deviceId.substr(0, deviceId.size() - Text("_NIC").size());
}

std::optional<End> connectorOf(const World& world, const NicFact& nic) {
    if (!nic.moduleSerial) return std::nullopt;
    return firstWith(world, connector, "Tag", connectorTag(*nic.moduleSerial, nic.cardSerial, nic.portNumber));
}

std::optional<End> jackOf(const World& world, const NicFact& nic) {
    return firstWith(world, jack, "Tag", jackTag(nic.cardSerial, nic.portNumber));
}

std::optional<End> packageOf(const World& world, const Text& cardSerial) {
    for (const End& end : world.all(package)) {
        if (same(serialOf(end), cardSerial)) return end;
    }
    return std::nullopt;
}

/// The physical object of each function with the function's port.
Rules physicalOfPort(const char* keyName, const std::function<std::optional<End>(const World&, const NicFact&)>& find,
                     const std::function<std::optional<Text>(const NicFact&)>& tagOf) {
    return {[=](const World& world) {
                Pairs pairs;
                for (std::size_t index = 0; index < world.nics.size(); ++index) {
                    if (const std::optional<End> found = find(world, world.nics[index]))
                        pairs.emplace_back(*found, world.all(ethernetPort)[index]);
                }
                return pairs;
            },
            [=](const World& world, const Path& source) {
                Ends found;
                for (const NicFact& nic : world.nics) {
                    if (same(nic.macAddress, source[keyName])) add(found, find(world, nic));
                }
                return found;
            },
            [=](const World& world, const Path& source) {
                Ends found;
                for (std::size_t index = 0; index < world.nics.size(); ++index) {
                    const std::optional<Text> tag = tagOf(world.nics[index]);
                    if (tag && same(*tag, source["Tag"])) found.push_back(world.all(ethernetPort)[index]);
                }
                return found;
            }};
}

Rules packageOfController() {
    return {[](const World& world) {
                Pairs pairs;
                for (const End& controller : world.all(nicController)) {
                    if (const auto found = packageOf(world, cardOfController(controller.path)))
                        pairs.emplace_back(*found, controller);
                }
                return pairs;
            },
            [](const World& world, const Path& source) {
                Ends found;
                for (const End& controller : where(world, nicController, [&](const Path& path) {
                         return same(path["DeviceID"], source["DeviceID"]);
                     }))
                    add(found, packageOf(world, cardOfController(controller.path)));
                return found;
            },
            [](const World& world, const Path& source) {
                // The tag is that of the card's first function.
                const auto isTagged = [&](const Path& path) {
                    for (const NicFact& nic : world.nics) {
                        if (nic.cardSerial == cardOfController(path)) return same(nic.packageTag, source["Tag"]);
                    }
                    return false;
                };
                return where(world, nicController, isTagged);
            }};
}

/// Two classes that both have one object for each port; each is found by the other's key.
Rules portByPort(const char* left, const char* leftKey, const char* right, const char* rightKey) {
    const auto aligned = [](const World& world, const char* from, const char* fromKey, const Path& source,
                            const char* to) {
        Ends found;
        for (std::size_t index = 0; index < world.all(from).size(); ++index) {
            if (same(world.all(from)[index].path[fromKey], source[fromKey])) found.push_back(world.all(to)[index]);
        }
        return found;
    };
    return {[=](const World& world) {
                Pairs pairs;
                for (std::size_t index = 0; index < world.all(left).size(); ++index)
                    pairs.emplace_back(world.all(left)[index], world.all(right)[index]);
                return pairs;
            },
            [=](const World& world, const Path& source) { return aligned(world, right, rightKey, source, left); },
            [=](const World& world, const Path& source) { return aligned(world, left, leftKey, source, right); }};
}

Rules portsOfController() {
    return {[](const World& world) {
                return joined(world, nicController, ethernetPort, [&](const End& controller, const End& port) {
                    const auto isIts = [&](const NicFact& nic) {
                        return nic.cardSerial == cardOfController(controller.path) &&
                               same(nic.macAddress, port.path["DeviceID"]);
                    };
                    return std::any_of(world.nics.begin(), world.nics.end(), isIts);
                });
            },
            [](const World& world, const Path& source) {
                for (const NicFact& nic : world.nics) {
                    if (!same(nic.macAddress, source["DeviceID"])) continue;
                    return Ends{firstWith(world, nicController, "DeviceID", nic.cardSerial + "_NIC").value()};
                }
                return Ends{};
            },
            [](const World& world, const Path& source) {
                Ends found;
                for (std::size_t index = 0; index < world.nics.size(); ++index) {
                    if (same(world.nics[index].cardSerial + "_NIC", source["DeviceID"]))
                        found.push_back(world.all(ethernetPort)[index]);
                }
                return found;
            }};
}

/// The host with each object; which sources lead to the one and to the others differs.
Rules hostOf(const char* className, const std::function<bool(const World&, const Path&)>& leadsToHost,
             const std::function<bool(const World&, const Path&)>& isSource) {
    return {
        [=](const World& world) { return everyPair(world.all(host), world.all(className)); },
        [=](const World& world, const Path& source) { return onlyIf(leadsToHost(world, source), world.only(host)); },
        [=](const World& world, const Path& source) {
            return isSource(world, source) ? world.all(className) : Ends{};
        }};
}

bool namesHostAndItself(const World& world, const Path& source, const char* className, const char* keyName) {
    return namesSystem(world, source) && firstWith(world, className, keyName, source[keyName]).has_value();
}

bool isHostByName(const World& world, const Path& source) { return same(source["Name"], world.systemName()); }

/// The card that an identity's key names; empty unless its type is one of the two there are.
Text cardOfIdentity(const Path& identity) {
    const Text key = identity["InstanceID"];
    const auto type = static_cast<unsigned char>(std::atoi(before(key, '_').c_str()));
    return type == 2 || type == 3 ? behindFirst(key, '_') : Text();
}

Ends identitiesOf(const World& world, const Text& cardSerial) {
    Ends found;
    for (const char* type : {"2_", "3_"})
        add(found, firstWith(world, nicSoftware, "InstanceID", type + cardSerial));
    return found;
}

Ends identitiesByCard(const World& world) {
    Ends found;
    for (const End& controller : world.all(nicController)) {
        for (const End& identity : identitiesOf(world, cardOfController(controller.path)))
            found.push_back(identity);
    }
    return found;
}

std::optional<End> controllerOfIdentity(const World& world, const Path& identity) {
    const Text cardSerial = cardOfIdentity(identity);
    if (cardSerial.empty()) return std::nullopt;
    return firstWith(world, nicController, "DeviceID", cardSerial + "_NIC");
}

Rules softwareOfController() {
    return {[](const World& world) {
                Pairs pairs;
                for (const End& identity : identitiesByCard(world))
                    pairs.emplace_back(identity, controllerOfIdentity(world, identity.path).value());
                return pairs;
            },
            [](const World& world, const Path& source) {
                const auto found = firstWith(world, nicController, "DeviceID", source["DeviceID"]);
                return found ? identitiesOf(world, cardOfController(found->path)) : Ends{};
            },
            [](const World& world, const Path& source) {
                Ends found;
                add(found, controllerOfIdentity(world, source));
                return found;
            }};
}

Rules softwareOfNicHost() {
    return {[](const World& world) { return everyPair(world.all(host), identitiesByCard(world)); },
            [](const World& world, const Path& source) {
                return onlyIf(controllerOfIdentity(world, source).has_value(), world.only(host));
            },
            [](const World& world, const Path& source) {
                return isHostByName(world, source) ? identitiesByCard(world) : Ends{};
            }};
}

Rules softwareOfNicService() {
    return {
        [](const World& world) { return everyPair(identitiesByCard(world), world.all(nicService)); },
        [](const World& world, const Path& source) { return isInstaller(source) ? identitiesByCard(world) : Ends{}; },
        [](const World& world, const Path& source) {
            return onlyIf(controllerOfIdentity(world, source).has_value(), world.only(nicService));
        }};
}

struct Conformance {
    const char* elementName;
    unsigned number;
    const char* className;
    const char* keyName;
};

constexpr Conformance conformances[] = {
    {"EthernetPort Profile", 1, ethernetPort, "DeviceID"},
    {"Host LAN Network Port Profile", 2, networkPort, "DeviceID"},
    {"IP Interface Profile", 3, ipEndpoint, "Name"},
};

Rules conformanceRules() {
    return {[](const World& world) {
                Pairs pairs;
                for (const End& standard : world.all(profile)) {
                    for (const Conformance& conformance : conformances) {
                        if (!same(property(standard, "ElementName"), conformance.elementName)) continue;
                        for (const End& element : world.all(conformance.className))
                            pairs.emplace_back(standard, element);
                    }
                }
                return pairs;
            },
            [](const World& world, const Path& source) {
                Ends found;
                for (const Conformance& conformance : conformances) {
                    if (!same(source.className, conformance.className)) continue;
                    for (const End& element : world.all(conformance.className)) {
                        if (!same(element.path[conformance.keyName], source[conformance.keyName])) continue;
                        add(found, firstWith(world, profile, "InstanceID", std::to_string(conformance.number)));
                    }
                }
                return found;
            },
            [](const World& world, const Path& source) {
                const unsigned long number = std::strtoul(source["InstanceID"].c_str(), nullptr, 10);
                for (const Conformance& conformance : conformances) {
                    if (conformance.number == number) return world.all(conformance.className);
                }
                return Ends{};
            }};
}

std::map<Text, Rules> storageRules() {
    const auto suffixIs = [](const char* itsKey) {
        return [itsKey](const Path& one, const Path& port) { return same(one[itsKey], suffix(port["DeviceID"])); };
    };
    return {
        {"Merolt_FCHBA_ComputerSystemCommMech", hostWith(mechanism)},
        {"Merolt_FCHBA_ComputerSystemFCPort", hostWith(fcPort)},
        {"Merolt_FCHBA_ComputerSystemLogicalPortGroup", hostWith(
                                                            fcGroup, [](const Path&) { return true; },
                                                            [](const World& world, const Path& source) {
                                                                return same(prefix(source["InstanceID"]),
                                                                            world.systemName());
                                                            })},
        {"Merolt_FCHBA_ComputerSystemObjectManager",
         hostWith(
             objectManager, [](const Path&) { return true; },
             [](const World&, const Path& source) { return same(source["SystemCreationClassName"], host); })},
        {"Merolt_FCHBA_ComputerSystemPortController", hostWith(fcController)},
        {"Merolt_FCHBA_ComputerSystemSCSIProtocolController", hostWith("Merolt_FCHBA_SCSIProtocolController")},
        {"Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointHBA", hostWith("Merolt_FCHBA_SCSIProtocolEndpointHBA")},
        {"Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointTarget", hostWith("Merolt_FCHBA_SCSIProtocolEndpointTarget")},
        {"Merolt_FCHBA_ComputerSystemSoftwareIdentity", softwareOfHost()},
        {"Merolt_FCHBA_ComputerSystemStorageExtent", hostWith("Merolt_FCHBA_StorageExtent")},
        {"Merolt_FCHBA_FCPortFCPortStatistics", byTest(fcPort, "Merolt_FCHBA_FCPortStatistics",
                                                       [](const Path& port, const Path& statistics) {
                                                           return same(suffix(port["DeviceID"]),
                                                                       suffix(statistics["InstanceID"]));
                                                       })},
        {"Merolt_FCHBA_FCPortSCSIProtocolEndpointHBA",
         byTest(fcPort, "Merolt_FCHBA_SCSIProtocolEndpointHBA",
                [=](const Path& port, const Path& endpoint) { return suffixIs("Name")(endpoint, port); })},
        {"Merolt_FCHBA_LogicalPortGroupFCPort", groupRules()},
        {"Merolt_FCHBA_ObjectManagerCommMech", mechanismOfManager()},
        {"Merolt_FCHBA_ObjectManagerNamespace", byTest(objectManager, "Merolt_FCHBA_Namespace",
                                                       [](const Path& manager, const Path& nameSpace) {
                                                           return same(manager["Name"], nameSpace["ObjectManagerName"]);
                                                       })},
        {"Merolt_FCHBA_PhysicalPackagePortController", byPackage(package, fcController, key("DeviceID"))},
        {"Merolt_FCHBA_PhysicalConnectorFCPort", throughTree(connector)},
        {"Merolt_FCHBA_PortControllerFCPort", byTest(fcController, fcPort,
                                                     [](const Path& controller, const Path& port) {
                                                         return same(controller["DeviceID"], prefix(port["DeviceID"]));
                                                     })},
        {"Merolt_Adapter_PhysicalPackagePhysicalConnector",
         byPackage(package, connector, [](const Path& path) { return cardOfConnector(path["Tag"]); })},
        {"Merolt_Adapter_ProductPhysicalPackage", productRules()},
        {"Merolt_FCHBA_SCSIProtocolControllerFCPort",
         byTest("Merolt_FCHBA_SCSIProtocolController", fcPort, suffixIs("DeviceID"))},
        {"Merolt_FCHBA_SoftwareIdentityPortController",
         byTest(fcSoftware, fcController,
                [](const Path& identity, const Path& controller) {
                    const std::optional<Text> serial = middle(identity["InstanceID"]);
                    return serial && same(*serial, controller["DeviceID"]);
                })},
        {"Merolt_FCHBA_SoftwareIdentitySoftwareInstallationService", imagesOfService()},
        {"Merolt_FCHBA_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities",
         capabilitiesOfService(fcService, fcCapabilities)},
        {"Merolt_FCHBA_ComputerSystemSoftwareInstallationService", serviceOfHost(fcService)},
        {"Merolt_FCHBA_PortControllerSoftwareInstallationService", serviceOfControllers(fcController, fcService)},
        {"Merolt_Adapter_PhysicalPackagePhysicalPort",
         byPackage(package, jack, [](const Path& path) { return cardOfJack(path["Tag"]); })},
        {"Merolt_FCHBA_PhysicalPortFCPort", throughTree(jack)},
    };
}

std::map<Text, Rules> ethernetRules() {
    const auto hostOfEach = [](const char* className, const char* keyName,
                               const std::function<bool(const World&, const Path&)>& isSource) {
        return hostOf(
            className,
            [=](const World& world, const Path& source) {
                return namesHostAndItself(world, source, className, keyName);
            },
            isSource);
    };
    return {
        {"Merolt_NIC_ComputerSystemEthernetPort", hostOf(ethernetPort, namesSystem, isSystem)},
        {"Merolt_NIC_ComputerSystemPortController", hostOfEach(nicController, "DeviceID", isSystem)},
        {"Merolt_NIC_ComputerSystemNetworkPort", hostOfEach(networkPort, "DeviceID", isSystem)},
        {"Merolt_NIC_PortControllerEthernetPort", portsOfController()},
        {"Merolt_NIC_PhysicalConnectorEthernetPort",
         physicalOfPort("DeviceID", connectorOf,
                        [](const NicFact& nic) -> std::optional<Text> {
                            if (!nic.moduleSerial) return std::nullopt;
                            return connectorTag(*nic.moduleSerial, nic.cardSerial, nic.portNumber);
                        })},
        {"Merolt_NIC_PhysicalPackagePortController", packageOfController()},
        {"Merolt_NIC_EthernetPortLANEndpoint", portByPort(ethernetPort, "DeviceID", lanEndpoint, "Name")},
        {"Merolt_NIC_NetworkPortLANEndpoint", portByPort(networkPort, "DeviceID", lanEndpoint, "Name")},
        {"Merolt_NIC_ComputerSystemLANEndpoint", hostOfEach(lanEndpoint, "Name", isSystem)},
        {"Merolt_NIC_ComputerSystemIPProtocolEndpoint", hostOf(ipEndpoint, namesSystem, isHostByName)},
        {"Merolt_NIC_SoftwareIdentityPortController", softwareOfController()},
        {"Merolt_NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint",
         portByPort(ipCapabilities, "InstanceID", ipEndpoint, "Name")},
        {"Merolt_NIC_LANEndpointIPProtocolEndpoint", portByPort(lanEndpoint, "Name", ipEndpoint, "Name")},
        {"Merolt_NIC_ComputerSystemSoftwareIdentity", softwareOfNicHost()},
        {"Merolt_NIC_ComputerSystemSoftwareInstallationService", serviceOfHost(nicService)},
        {"Merolt_NIC_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities",
         capabilitiesOfService(nicService, nicCapabilities)},
        {"Merolt_NIC_SoftwareIdentitySoftwareInstallationService", softwareOfNicService()},
        {"Merolt_NIC_PortControllerSoftwareInstallationService", serviceOfControllers(nicController, nicService)},
        {"Merolt_NIC_PhysicalPortEthernetPort", physicalOfPort("DeviceID", jackOf,
                                                               [](const NicFact& nic) -> std::optional<Text> {
                                                                   return jackTag(nic.cardSerial, nic.portNumber);
                                                               })},
        {"Merolt_NIC_ElementConformsToRegisteredProfile", conformanceRules()},
    };
}

const Rules& rulesOf(const Family& family) {
    static const std::map<Text, Rules> rules = [] {
        std::map<Text, Rules> all = storageRules();
        all.merge(ethernetRules());
        return all;
    }();
    return rules.at(family.associationClass);
}

/// Without an Ethernet function the Ethernet side's associations are silent, also those of a single row.
bool isSilent(const Family& family, const World& world) { return family.baseClass.empty() && world.nics.empty(); }

Text hexOf(const std::uint8_t* bytes, std::size_t count) {
    static constexpr char digits[] = "0123456789ABCDEF";
    Text text;
    for (std::size_t index = 0; index < count; ++index) {
        text += digits[bytes[index] >> 4];
        text += digits[bytes[index] & 15];
    }
    return text;
}

Text hexOf(const tavik::WorldWideName& name) { return hexOf(name.data(), name.size()); }

StorageFact factOf(const tavik::Card& card, const tavik::Port& port, const tavik::StorageFunction& function) {
    return {card.serialNumber,
            port.number,
            hexOf(function.nodeName),
            hexOf(function.property.portName),
            hexOf(function.headerNodeName.value_or(function.nodeName)),
            hexOf(function.headerPortName.value_or(function.property.portName))};
}

NicFact factOf(const tavik::Card& card, const tavik::Port& port, const tavik::NicFunction& function) {
    NicFact fact{card.serialNumber,
                 port.number,
                 hexOf(function.macAddress.data(), function.macAddress.size()),
                 {},
                 card.serialNumber};
    if (function.transceiver) {
        const tavik::Bytes& page = function.transceiver->pageA0;
        Text serial(page.begin() + 68, page.begin() + 84);
        serial.erase(serial.find_last_not_of(' ') + 1);
        fact.moduleSerial = serial;
    }
    for (const tavik::VpdItem& item : function.vpdItems) {
        if (item.keyword == "YU") fact.packageTag = item.value;
    }
    return fact;
}

void learn(World& world, const tavik::Card& card, const tavik::Port& port, const tavik::Function& function) {
    if (const auto* storage = std::get_if<tavik::StorageFunction>(&function)) {
        world.storage.push_back(factOf(card, port, *storage));
    } else {
        world.nics.push_back(factOf(card, port, std::get<tavik::NicFunction>(function)));
    }
}

/// What referenceNames puts for an object that was found; two associations put something else than references do.
Path namedInstead(const Family& family, bool sourceIsLeft, const Ends& found, std::size_t index) {
    const bool isCapabilitiesFamily = family.role2 == "Capabilities";
    if (isCapabilitiesFamily && !sourceIsLeft) {
        // The service's class with the key of its capabilities.
        return Path{found[index].path.nameSpace, family.leftClass, {{"InstanceID", Text(installer)}}};
    }
    const bool isNicSoftware = family.associationClass == "Merolt_NIC_SoftwareIdentityPortController";
    if (isNicSoftware && !sourceIsLeft) return found[index - index % 2].path;
    return found[index].path;
}

} // namespace

void World::learn(const tavik::Fleet& fleet) {
    for (const tavik::Card& card : *fleet.cards) {
        for (const tavik::Port& port : *card.ports) {
            for (const tavik::Function& function : *port.functions)
                ::learn(*this, card, port, function);
        }
    }
}

Pairs pairsOf(const Family& family, const World& world) {
    return isSilent(family, world) ? Pairs{} : rulesOf(family).pairs(world);
}

Ends leftEndsOf(const Family& family, const World& world, const Path& source) {
    return isSilent(family, world) ? Ends{} : rulesOf(family).left(world, source);
}

Ends rightEndsOf(const Family& family, const World& world, const Path& source) {
    return isSilent(family, world) ? Ends{} : rulesOf(family).right(world, source);
}

Path associationPath(const Family& family, const Path& left, const Path& right, const std::string& nameSpace) {
    return {nameSpace,
            family.associationClass,
            {{family.role1, std::vector<Path>{left}}, {family.role2, std::vector<Path>{right}}}};
}

Row associationInstance(const Family& family, const Path& left, const Path& right, const std::string& nameSpace) {
    Row row = rowOf(associationPath(family, left, right, nameSpace));
    std::sort(row.values.begin(), row.values.end());
    return row;
}

void setFurtherProperty(const Family& family, Row& row) {
    if (family.further.name.empty()) return;
    row.values.emplace_back(family.further.name, std::to_string(family.further.value));
    std::sort(row.values.begin(), row.values.end());
}

std::vector<Row> expectedRows(Operation operation, const Family& family, const Path& source, bool sourceIsLeft,
                              const Ends& found) {
    std::vector<Row> rows;
    for (std::size_t index = 0; index < found.size(); ++index) {
        const Path& far = found[index].path;
        if (operation == Operation::associators) {
            rows.push_back(found[index].instance);
        } else if (operation == Operation::associatorNames) {
            rows.push_back(rowOf(far));
        } else if (operation == Operation::references) {
            rows.push_back(associationInstance(family, sourceIsLeft ? source : far, sourceIsLeft ? far : source,
                                               source.nameSpace));
            setFurtherProperty(family, rows.back());
        } else {
            const Path named = namedInstead(family, sourceIsLeft, found, index);
            Path path =
                associationPath(family, sourceIsLeft ? source : named, sourceIsLeft ? named : source, source.nameSpace);
            path.keys[0].name = family.nameRole1;
            path.keys[1].name = family.nameRole2;
            rows.push_back(rowOf(path));
        }
    }
    return rows;
}
