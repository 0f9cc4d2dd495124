#include <ostream>

#include <gtest/gtest.h>

#include "parsed_fleet.h"

namespace tavik {

namespace {

using test::errorFrom;
using test::onePort;

struct BadFleet {
    const char* name;
    std::string text;
    const char* message; ///< behind "fleet.json: "
};

std::ostream& operator<<(std::ostream& stream, const BadFleet& bad) { return stream << bad.name; }

std::string storage(const std::string& members) { return onePort("\"storage\": {" + members + "}"); }
std::string ethernet(const std::string& members) { return onePort("\"ethernet\": {" + members + "}"); }
std::string lun(const std::string& members) { return storage(R"("targets": [{"luns": [{)" + members + "}]}]"); }

// clang-format off
const BadFleet badFleets[] = {
    // What is not JSON.
    {"empty",            "",                          "line 1, column 1: syntax error while parsing value - unexpected end of input; expected '[', '{', or a literal"},
    {"cutShort",         "{\n  \"cards\": [",         "line 2, column 13: syntax error while parsing value - unexpected end of input; expected '[', '{', or a literal"},
    {"comma",            "{\n\"cards\": [],\n}",      "line 3, column 1: syntax error while parsing object key - unexpected '}'; expected string literal"},
    {"trailing",         "{} x",                      "line 1, column 4: syntax error while parsing value - invalid literal; last read: '{} x'; expected end of input"},
    {"twice",            R"({"cards": [{"kind": 1, "kind": 2}]})", "/cards/0/kind: the same key stands twice in one object"},
    // What is JSON of another kind.
    {"array",            "[]",                        "/: expected an object, found an array"},
    {"unknownTop",       R"({"card": []})",           "/card: unknown key, expected one of \"cards\""},
    {"cardsText",        R"({"cards": "none"})",      "/cards: expected an array of cards or null, found \"none\""},
    {"cardNumber",       R"({"cards": [7]})",         "/cards/0: expected an object, found 7"},
    {"unknownCardKey",   R"({"cards": [{"a/b~c": 1}]})", "/cards/0/a~1b~0c: unknown key, expected one of \"count\", \"serialNumber\", \"version\", \"modelName\", \"adapterId\", \"storageDefaults\", \"ethernetDefaults\", \"ports\", \"kind\""},
    {"portsObject",      R"({"cards": [{"ports": {}}]})", "/cards/0/ports: expected an array, found an object"},
    {"longSerial",       R"({"cards": [{"serialNumber": "12345678901234567890123456789012"}]})", "/cards/0/serialNumber: expected a text of at most 31 bytes, found \"12345678901234567890123456789012\""},
    {"zeroCharacter",    R"({"cards": [{"serialNumber": "a\u0000b"}]})", "/cards/0/serialNumber: expected a text without a zero character, found \"a\\u0000b\""},
    {"serialNumber",     R"({"cards": [{"serialNumber": 12345}]})", "/cards/0/serialNumber: expected a text of at most 31 bytes, found 12345"},
    {"kindWord",         R"({"cards": [{"kind": "iscsi"}]})", "/cards/0/kind: expected one of \"converged\", \"fibreChannel\" or a number from 0 to 4294967295, found \"iscsi\""},
    {"countZero",        R"({"cards": [{"count": 0}]})", "/cards/0/count: expected a whole number from 1 to 4096, found 0"},
    {"countText",        R"({"cards": [{"count": "2"}]})", "/cards/0/count: expected a whole number from 1 to 4096, found \"2\""},
    {"unknownDefault",   R"({"cards": [{"storageDefaults": {"spede": 8}}]})", "/cards/0/storageDefaults/spede: unknown key, expected one of \"handle\", \"deviceNumber\", \"protocol\", \"pciDeviceId\", \"subsystemVendorId\", \"subsystemDeviceId\", \"nodeName\", \"headerNodeName\", \"headerPortName\", \"modelName\", \"serialBytes\", \"eNodeMac\", \"transceiver\", \"portName\", \"portType\", \"state\", \"speed\", \"speedCode\", \"transceiverKind\", \"transceiverReadable\", \"treeProperty\", \"driverVersion\", \"driverFirmwareVersion\", \"optionRom\", \"vpd\", \"uuid\", \"multiBootVersion\", \"targets\", \"targetCount\", \"statistics\", \"statisticsPerRefresh\", \"facts\", \"failures\""},
    {"badDefault",       R"({"cards": [{"ethernetDefaults": {"mtuBytes": -1}, "ports": [{"ethernet": {}}]}]})", "/cards/0/ethernetDefaults/mtuBytes: expected a whole number from 0 to 4294967295, found -1"},
    // Ports.
    {"portNumber",       onePort(R"("number": 256)"), "/cards/0/ports/0/number: expected a whole number from 0 to 255, found 256"},
    {"bothForms",        onePort(R"("functions": [], "storage": {})"), "/cards/0/ports/0/functions: expected no list of functions beside \"storage\" or \"ethernet\", found an array"},
    {"twoInOne",         onePort(R"("functions": [{"storage": {}, "ethernet": {}}])"), "/cards/0/ports/0/functions/0: expected an object with either \"storage\" or \"ethernet\", found an object"},
    {"neither",          onePort(R"("functions": [{}])"), "/cards/0/ports/0/functions/0: expected an object with either \"storage\" or \"ethernet\", found an object"},
    {"wrongFunctionKey", onePort(R"("functions": [{"fc": {}}])"), "/cards/0/ports/0/functions/0/fc: unknown key, expected one of \"storage\", \"ethernet\""},
    {"portModule",       onePort(R"("transceiver": {"vendr": "V"})"), "/cards/0/ports/0/transceiver/vendr: unknown key, expected one of \"a0\", \"vendor\", \"partNumber\", \"revision\", \"serialNumber\", \"dateCode\", \"vendorOui\", \"identifier\", \"connector\", \"compliance\", \"bitRateMegabits\", \"wavelengthNanometres\", \"diagnostics\""},
    {"storageNull",      onePort(R"("storage": null)"), "/cards/0/ports/0/storage: expected an object, found null"},
    // Storage functions.
    {"speed",            storage(R"("speed": 5)"),    "/cards/0/ports/0/storage/speed: expected one of 1, 2, 4, 8, 10, 16 or \"auto\", found 5"},
    {"speedWord",        storage(R"("speed": "fast")"), "/cards/0/ports/0/storage/speed: expected one of 1, 2, 4, 8, 10, 16 or \"auto\", found \"fast\""},
    {"state",            storage(R"("state": "up")"), "/cards/0/ports/0/storage/state: expected one of \"operational\", \"suspended\", \"loopDown\" or a number from 0 to 255, found \"up\""},
    {"stateNumber",      storage(R"("state": 256)"),  "/cards/0/ports/0/storage/state: expected one of \"operational\", \"suspended\", \"loopDown\" or a number from 0 to 255, found 256"},
    {"portType",         storage(R"("portType": "L")"), "/cards/0/ports/0/storage/portType: expected one of \"N\", \"NL\", \"F/NL\", \"Nx\", \"F\", \"FL\", \"B\", \"other\", \"E\" or a number from 0 to 255, found \"L\""},
    {"protocolWord",     storage(R"("protocol": "ethernet")"), "/cards/0/ports/0/storage/protocol: expected one of \"fibreChannel\", \"fcoe\" or a number from 0 to 4294967295, found \"ethernet\""},
    {"protocolNumber",   storage(R"("protocol": 2)"), "/cards/0/ports/0/storage/protocol: expected a protocol of this kind of function or a number above 2, found 2"},
    {"wwnShort",         storage(R"("portName": "21:00:02")"), "/cards/0/ports/0/storage/portName: expected a world wide name like \"20:00:02:00:00:00:01:00\", found \"21:00:02\""},
    {"wwnNoColons",      storage(R"("nodeName": "2000020000000100")"), "/cards/0/ports/0/storage/nodeName: expected a world wide name like \"20:00:02:00:00:00:01:00\", found \"2000020000000100\""},
    {"wwnDigits",        storage(R"("nodeName": "20:00:02:00:00:00:01:0g")"), "/cards/0/ports/0/storage/nodeName: expected a world wide name like \"20:00:02:00:00:00:01:00\", found \"20:00:02:00:00:00:01:0g\""},
    {"wwnColonAtEnd",    storage(R"("nodeName": "20:00:02:00:00:00:01:00:")"), "/cards/0/ports/0/storage/nodeName: expected a world wide name like \"20:00:02:00:00:00:01:00\", found \"20:00:02:00:00:00:01:00:\""},
    {"eNodeMac",         storage(R"("eNodeMac": 5)"), "/cards/0/ports/0/storage/eNodeMac: expected an address like \"02:00:00:00:01:00\", found 5"},
    {"pciId",            storage(R"("pciDeviceId": "A127")"), "/cards/0/ports/0/storage/pciDeviceId: expected a number from 0 to 65535 or a text like \"0xA127\", found \"A127\""},
    {"pciIdLarge",       storage(R"("pciDeviceId": 65536)"), "/cards/0/ports/0/storage/pciDeviceId: expected a number from 0 to 65535 or a text like \"0xA127\", found 65536"},
    {"handleFraction",   storage(R"("handle": 1.5)"), "/cards/0/ports/0/storage/handle: expected a whole number from 0 to 4294967295, found 1.5"},
    {"deviceNumber",     storage(R"("deviceNumber": 65536)"), "/cards/0/ports/0/storage/deviceNumber: expected a whole number from 0 to 65535, found 65536"},
    {"serialBytes",      storage(R"("serialBytes": "0")"), "/cards/0/ports/0/storage/serialBytes: expected hexadecimal digits for 0 to 32 bytes, found \"0\""},
    {"version",          storage(R"("optionRom": {"firmware": "5.3"})"), "/cards/0/ports/0/storage/optionRom/firmware: expected 3 numbers from 0 to 255 like \"5.3.1\", found \"5.3\""},
    {"versionLong",      storage(R"("optionRom": {"efi": "5.3.1"})"), "/cards/0/ports/0/storage/optionRom/efi: expected 2 numbers from 0 to 255 like \"2.27\", found \"5.3.1\""},
    {"versionByte",      storage(R"("optionRom": {"efi": "5.256"})"), "/cards/0/ports/0/storage/optionRom/efi: expected 2 numbers from 0 to 255 like \"2.27\", found \"5.256\""},
    {"versionEmpty",     storage(R"("optionRom": {"efi": "5."})"), "/cards/0/ports/0/storage/optionRom/efi: expected 2 numbers from 0 to 255 like \"2.27\", found \"5.\""},
    {"treeProperty",     storage(R"("treeProperty": {"vpd": {}})"), "/cards/0/ports/0/storage/treeProperty/vpd: unknown key, expected one of \"portName\", \"portType\", \"state\", \"speed\", \"speedCode\", \"transceiverKind\""},
    {"failureText",      storage(R"("failures": {"vpd": true})"), "/cards/0/ports/0/storage/failures/vpd: expected a whole number from 0 to 4294967295, found true"},
    {"failureName",      storage(R"("failures": {"link": 1})"), "/cards/0/ports/0/storage/failures/link: unknown key, expected one of \"portProperty\", \"vpd\", \"uuid\", \"statistics\", \"transceiver\", \"multiBootVersion\", \"flashUpdate\", \"facts\""},
    {"keyword",          storage(R"("vpd": {"readOnly": {"SNX": "1"}})"), "/cards/0/ports/0/storage/vpd/readOnly/SNX: expected a keyword of two characters"},
    {"vpdHexAndMore",    storage(R"("vpd": {"hex": "78", "readOnly": {}})"), "/cards/0/ports/0/storage/vpd/readOnly: unknown key, expected one of \"hex\""},
    {"vpdList",          storage(R"("vpd": {"readOnly": ["SN"]})"), "/cards/0/ports/0/storage/vpd/readOnly: expected an object of at most 64 keywords and texts, found an array"},
    {"a0",               storage(R"("transceiver": {"a0": "03:4"})"), "/cards/0/ports/0/storage/transceiver/a0: expected hexadecimal digits for 0 to 256 bytes, found \"03:4\""},
    {"sfpVendor",        storage(R"("transceiver": {"vendor": "seventeen letters"})"), "/cards/0/ports/0/storage/transceiver/vendor: expected a text of at most 16 bytes, found \"seventeen letters\""},
    {"reading",          storage(R"("transceiver": {"diagnostics": {"supplyVolts": "3"}})"), "/cards/0/ports/0/storage/transceiver/diagnostics/supplyVolts: expected a number, found \"3\""},
    {"targetsNull",      storage(R"("targets": null)"), "/cards/0/ports/0/storage/targets: expected an array, found null"},
    {"lunIdentifier",    lun(R"("identifier": "600102030405060708")"), "/cards/0/ports/0/storage/targets/0/luns/0/identifier: expected hexadecimal digits for 8 or 16 bytes, found \"600102030405060708\""},
    {"lunVendor",        lun(R"("vendorId": "NINE CHAR")"), "/cards/0/ports/0/storage/targets/0/luns/0/vendorId: expected a text of at most 8 bytes, found \"NINE CHAR\""},
    {"lunRevision",      lun(R"("productRevision": "12345")"), "/cards/0/ports/0/storage/targets/0/luns/0/productRevision: expected a text of at most 4 bytes, found \"12345\""},
    {"lunNumber",        lun(R"("number": 65536)"), "/cards/0/ports/0/storage/targets/0/luns/0/number: expected a whole number from 0 to 65535, found 65536"},
    // Ethernet functions.
    {"linkState",        ethernet(R"("linkState": "broken")"), "/cards/0/ports/0/ethernet/linkState: expected one of \"up\", \"down\", \"testing\" or a number from 0 to 4294967295, found \"broken\""},
    {"nicProtocol",      ethernet(R"("protocol": 1)"), "/cards/0/ports/0/ethernet/protocol: expected a protocol of this kind of function or a number above 2, found 1"},
    {"ipv4",             ethernet(R"("ip": {"ipv4": "192.0.2.1"})"), "/cards/0/ports/0/ethernet/ip/ipv4: expected an address with the length of its network's prefix, like \"192.0.2.10/24\", found \"192.0.2.1\""},
    {"ipv4Prefix",       ethernet(R"("ip": {"ipv4": "192.0.2.1/33"})"), "/cards/0/ports/0/ethernet/ip/ipv4: expected an address with the length of its network's prefix, like \"192.0.2.10/24\", found \"192.0.2.1/33\""},
    {"ipv4Is6",          ethernet(R"("ip": {"ipv4": "2001:db8::1/24"})"), "/cards/0/ports/0/ethernet/ip/ipv4: expected an address with the length of its network's prefix, like \"192.0.2.10/24\", found \"2001:db8::1/24\""},
    {"ipv6",             ethernet(R"("ip": {"ipv6": ["2001:db8::1", "x"]})"), "/cards/0/ports/0/ethernet/ip/ipv6/1: expected an address like \"192.0.2.10\" or \"2001:db8::10\", found \"x\""},
    {"fcPortId",         ethernet(R"("fcoeLinkage": [{"fcPortId": "01:0a"}])"), "/cards/0/ports/0/ethernet/fcoeLinkage/0/fcPortId: expected a Fibre Channel port ID like \"01:0A:00\", found \"01:0a\""},
    {"longValue",        ethernet("\"manufacturer\": \"" + std::string(64, 'm') + "\""), "/cards/0/ports/0/ethernet/manufacturer: expected a text of at most 63 bytes, found \"mmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmm..."},
    // Facts.
    {"factText",         ethernet(R"("facts": {"interfaceName": 5})"), "/cards/0/ports/0/ethernet/facts/interfaceName: expected a text of at most 1024 bytes, found 5"},
    {"factEmpty",        ethernet(R"("facts": {"interfaceName": ""})"), "/cards/0/ports/0/ethernet/facts/interfaceName: expected a text of printable ASCII characters, found \"\""},
    {"factUmlaut",       ethernet(R"("facts": {"pciSlot": "T\u00fcr"})"), "/cards/0/ports/0/ethernet/facts/pciSlot: expected a text of printable ASCII characters, found \"T\\u00fcr\""},
    {"factNumber",       storage(R"("facts": {"linkSpeed": "16 Gbit"})"), "/cards/0/ports/0/storage/facts/linkSpeed: expected a whole number from 0 to 18446744073709551615, found \"16 Gbit\""},
    {"factNegative",     storage(R"("facts": {"numaNode": -1})"), "/cards/0/ports/0/storage/facts/numaNode: expected a whole number from 0 to 18446744073709551615, found -1"},
    {"factList",         storage(R"("facts": {"supportedLinkSpeeds": 8})"), "/cards/0/ports/0/storage/facts/supportedLinkSpeeds: expected an array, found 8"},
    {"factInList",       storage(R"("facts": {"supportedLinkSpeeds": [8, "16"]})"), "/cards/0/ports/0/storage/facts/supportedLinkSpeeds/1: expected a whole number from 0 to 18446744073709551615, found \"16\""},
    {"factsList",        storage(R"("facts": [])"), "/cards/0/ports/0/storage/facts: expected an object, found an array"},
    // What must differ.
    {"sameSerial",       R"({"cards": [{"serialNumber": "S"}, {"serialNumber": "S"}]})", "/cards/1/serialNumber: expected a serial number of its own, found \"S\" as in /cards/0/serialNumber"},
    {"sameHandle",       R"({"cards": [{"ports": [{"storage": {"handle": 7}}, {"storage": {"handle": 7}}]}]})", "/cards/0/ports/1/storage/handle: expected a handle of its own, found 7 as in /cards/0/ports/0/storage/handle"},
    {"sameDeviceNumber", R"({"cards": [{"ports": [{"storage": {"deviceNumber": 0}}]}, {"ports": [{"storage": {"deviceNumber": 0}}]}]})", "/cards/1/ports/0/storage/deviceNumber: expected a device number of its own, found 0 as in /cards/0/ports/0/storage/deviceNumber"},
    {"sameDeviceName",   R"({"cards": [{"ports": [{"ethernet": {"deviceName": "eth7"}}, {"ethernet": {"deviceName": "eth7"}}]}]})", "/cards/0/ports/1/ethernet/deviceName: expected a device name of its own, found \"eth7\" as in /cards/0/ports/0/ethernet/deviceName"},
    {"sameAdapterId",    R"({"cards": [{"adapterId": 5}, {"adapterId": 5}]})", "/cards/1/adapterId: expected an adapter ID of its own, found 5 as in /cards/0/adapterId"},
};
// clang-format on

class FleetErrors : public ::testing::TestWithParam<BadFleet> {};

TEST_P(FleetErrors, NameThePlaceAndWhatWasExpected) {
    EXPECT_EQ(errorFrom(GetParam().text), std::string("fleet.json: ") + GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(, FleetErrors, ::testing::ValuesIn(badFleets),
                         [](const auto& test) { return test.param.name; });

// The list of keys is that of the kind of function: nobody shows a fabric's name of an Ethernet port.
TEST(FleetErrorTexts, AFactOfTheOtherKindOfFunctionIsRefused) {
    const std::string start = "fleet.json: /cards/0/ports/0/";
    const auto atEthernet = errorFrom(ethernet(R"("facts": {"fabricName": "A"})"));
    EXPECT_EQ(atEthernet.find(start + "ethernet/facts/fabricName: unknown key, expected one of \"interfaceName\""), 0U)
        << atEthernet;
    EXPECT_EQ(atEthernet.find("\"fabricName\""), std::string::npos) << atEthernet;
    const auto atStorage = errorFrom(storage(R"("facts": {"totalReceivedBytes": 1})"));
    EXPECT_EQ(atStorage.find(start + "storage/facts/totalReceivedBytes: unknown key, expected one of"), 0U)
        << atStorage;
    EXPECT_NE(atStorage.find("\"fabricName\""), std::string::npos) << atStorage;
}

TEST(FleetErrorTexts, InvalidBytesAreNotRepeated) {
    const auto message = errorFrom("{\"cards\": \"\xFF\xFE\"}");
    EXPECT_NE(message.find("fleet.json: line 1, column"), std::string::npos) << message;
    for (const char c : message)
        EXPECT_TRUE(c >= 0x20 && c < 0x7F) << message;
}

TEST(FleetErrorTexts, OddCharactersInKeysAreNotRepeated) {
    EXPECT_EQ(errorFrom(R"({"a\nb\u007f\u00fc": 1})"), "fleet.json: /a?b???: unknown key, expected one of \"cards\"");
}

TEST(FleetErrorTexts, LongTokensAreCut) {
    EXPECT_LT(errorFrom("{\"cards\": \"" + std::string(100000, 'x')).size(), 300U);
}

TEST(FleetErrorTexts, LongKeysAreCut) {
    EXPECT_EQ(errorFrom("{\"" + std::string(100, 'k') + "\": 1}"),
              "fleet.json: /" + std::string(64, 'k') + "...: unknown key, expected one of \"cards\"");
}

TEST(FleetErrorTexts, OddCharactersInTextsAreEscaped) {
    EXPECT_EQ(errorFrom("{\"cards\": [{\"serialNumber\": \"\u00fc\u007f\"}, {\"serialNumber\": \"\u00fc\u007f\"}]}"),
              "fleet.json: /cards/1/serialNumber: expected a serial number of its own, found \"\\u00fc\\u007f\" as in "
              "/cards/0/serialNumber");
}

} // namespace

} // namespace tavik
