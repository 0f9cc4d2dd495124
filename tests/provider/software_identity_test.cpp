// What a client sees of Merolt_FCHBA_SoftwareIdentity: the software behind each storage function.
#include "broker_hooks.h"
#include "class_support.h"

#include "software/software_identity.h"

#include <cstdlib>
#include <ctime>

using namespace adapters;
using namespace merolt;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* identity = "Merolt_FCHBA_SoftwareIdentity";
constexpr const char* host = "192.0.2.10";

class SoftwareIdentityTest : public ClassTest {
protected:
    SoftwareIdentityTest() {
        setenv("TZ", "UTC", 1);
        tzset();
    }

    /// The suffixes of the instance IDs, in list order.
    Lines suffixes() {
        Lines found;
        for (const std::string& text : valuesOf(identity, "InstanceID"))
            found.push_back(text.substr(text.rfind('_'), text.size() - text.rfind('_') - 1));
        return found;
    }

    std::string versionOf(const std::string& suffix) { return propertyOf(suffix, "VersionString"); }

    std::string propertyOf(const std::string& suffix, const std::string& property) {
        for (const TestObject& object : enumerateInstances(identity).objects) {
            const std::string id = object["InstanceID"];
            if (id.size() > suffix.size() && id.compare(id.size() - suffix.size() - 1, suffix.size(), suffix) == 0)
                return object[property];
        }
        return "no such identity";
    }
};

tavik::StorageFunction functionWithSoftware(std::uint32_t number, std::uint16_t pciDeviceId) {
    tavik::StorageFunction function = functionWithVpd(number, {{"SN", "AB1234"}}, pciDeviceId);
    function.modelName = "MLT-8100";
    function.driverVersion = " 9.4.0 ";
    function.driverFirmwareVersion = "7.2.4\t";
    function.optionRom.biosVersion = "3.31";
    function.optionRom.firmware = {7, 2, 4};
    return function;
}

TEST_F(SoftwareIdentityTest, FunctionOfAnOlderChipHasFiveKindsInTheirOrder) {
    tavik::StorageFunction function = storageFunction(1, chips::chip7);
    function.serialNumber = tavik::binarySerialNumber(12345);
    startWith({card("S1", {function})});
    EXPECT_EQ(suffixes(), (Lines{"_CIMProvider", "_Driver", "_DriverFirmware", "_FlashFirmware", "_BIOS"}));
    EXPECT_EQ(valuesOf(identity, "InstanceID").front(),
              inQuotes(std::string(host) + "_A12345_20000002C9000001__CIMProvider"));
}

TEST_F(SoftwareIdentityTest, ProviderIdentityHasEveryPropertyInTheOrderOfTheClass) {
    startWith({card("S1", {functionWithSoftware(1, chips::chip8)})});
    EXPECT_EQ(asSet(identity, 0), R"(
InstanceID: string "192.0.2.10_AB1234_20000002C9000001__CIMProvider"
Manufacturer: string "Merolt Corporation"
VersionString: string "1.5.1"
Classifications: uint16[] {32775}
IdentityInfoType: string[] {"SoftwareID", "SoftwareStatus"}
IdentityInfoValue: string[] {"MLT-8100", "2"}
Name: string "Merolt CNA AB1234 CIM Provider"
Description: string "The CNA CIM Provider version."
)");
}

TEST_F(SoftwareIdentityTest, VersionsComeTrimmedFromTheRecordAndFromItsFirmwareBytes) {
    startWith({card("S1", {functionWithSoftware(1, chips::chip8)})});
    EXPECT_EQ(valuesOf(identity, "VersionString"), allInQuotes({"1.5.1", "9.4.0", "7.2.4", "7.02.04", "3.31"}));
    EXPECT_EQ(valuesOf(identity, "Classifications"),
              (Lines{"uint16[] {32775}", "uint16[] {2}", "uint16[] {32768}", "uint16[] {10}", "uint16[] {32770}"}));
}

TEST_F(SoftwareIdentityTest, FlashFirmwareIsNotAvailableOnOlderChipsAndWithoutItsValidBit) {
    tavik::StorageFunction old = functionWithSoftware(1, chips::chip7);
    tavik::StorageFunction without = functionWithSoftware(2, chips::chip8);
    without.optionRom.firmware.reset();
    startWith({card("S1", {old}), card("S2", {without})});
    const Lines versions = valuesOf(identity, "VersionString");
    ASSERT_EQ(versions.size(), 10U);
    EXPECT_EQ(versions[3], inQuotes("N/A"));
    EXPECT_EQ(versions[8], inQuotes("N/A"));
}

struct KindName {
    int place;
    std::string ofConverged;
    std::string ofFibreChannel;
};

TEST_F(SoftwareIdentityTest, NamesFollowTheKindAndWhetherTheFunctionIsConverged) {
    startWith(
        {card("S1", {functionWithSoftware(1, chips::chip15)}), card("S2", {functionWithSoftware(2, chips::chip8)})});
    const Lines names = valuesOf(identity, "Name");
    const KindName kinds[] = {
        {0, "Merolt CNA AB1234 CIM Provider", "Merolt CNA AB1234 CIM Provider"},
        {1, "Merolt CNA Adapter AB1234 Driver", "Merolt Fibre Channel Adapter AB1234 Driver"},
        {2, "Merolt CNA Adapter AB1234 Driver Firmware", "Merolt Fibre Channel Adapter AB1234 Driver Firmware"},
        {3, "Merolt CNA Adapter AB1234 Flash Firmware", "Merolt Fibre Channel Adapter AB1234 Flash Firmware"},
        {4, "Merolt CNA Adapter AB1234 BIOS", "Merolt Fibre Channel Adapter AB1234 BIOS"},
    };
    ASSERT_EQ(names.size(), 11U);
    for (const KindName& kind : kinds) {
        EXPECT_EQ(names[static_cast<std::size_t>(kind.place)], inQuotes(kind.ofConverged));
        EXPECT_EQ(names[static_cast<std::size_t>(kind.place) + 6], inQuotes(kind.ofFibreChannel));
    }
}

TEST_F(SoftwareIdentityTest, TwoFunctionsOfAConvergedCardShareOneFlashImage) {
    startWith({card("S1", {functionWithSoftware(1, chips::chip15), functionWithSoftware(2, chips::chip15)})});
    EXPECT_EQ(suffixes(), (Lines{"_CIMProvider", "_Driver", "_DriverFirmware", "_FlashFirmware", "_BIOS", "_FlashImage",
                                 "_CIMProvider", "_Driver", "_DriverFirmware", "_FlashFirmware", "_BIOS"}));
    EXPECT_EQ(valuesOf(identity, "InstanceID")[5], inQuotes(std::string(host) + "_AB1234__FlashImage"));
}

TEST_F(SoftwareIdentityTest, MultiBootVersionGivesNumbersAndADateAMonthLater) {
    tavik::StorageFunction function = functionWithSoftware(1, chips::chip15);
    function.multiBootVersion = "V:1.02.03,D:05172011,A:Y,T:M";
    startWith({card("S1", {function})});
    EXPECT_EQ(versionOf("_FlashImage"), inQuotes("1.2.3"));
    for (const char* suffix : {"_FlashFirmware", "_BIOS", "_FlashImage"})
        EXPECT_EQ(propertyOf(suffix, "ReleaseDate"), "datetime 20110617000000.000000+000") << suffix;
    for (const char* suffix : {"_CIMProvider", "_Driver", "_DriverFirmware"})
        EXPECT_EQ(propertyOf(suffix, "ReleaseDate"), "absent") << suffix;
}

TEST_F(SoftwareIdentityTest, DecemberIsPublishedAsJanuaryOfTheNextYear) {
    tavik::StorageFunction function = functionWithSoftware(1, chips::chip8);
    function.multiBootVersion = "V:1.02.03,D:12312011,A:Y,T:M";
    startWith({card("S1", {function})});
    EXPECT_EQ(propertyOf("_BIOS", "ReleaseDate"), "datetime 20120131000000.000000+000");
}

/// Servers refuse what they cannot make with codes of their own.
TEST_F(SoftwareIdentityTest, DateThatTheServerDoesNotMakeIsLeftOutAndTheListGoesOn) {
    tavik::StorageFunction function = functionWithSoftware(1, chips::chip15);
    function.multiBootVersion = "V:1.02.03,D:05172011,A:Y,T:M";
    startWith({card("S1", {function})});
    const std::string bios = valuesOf(identity, "InstanceID")[4];
    const std::string key = bios.substr(bios.find('"') + 1, bios.size() - bios.find('"') - 2);
    for (const CMPIrc code : {CMPI_RC_ERR_FAILED, CMPI_RC_ERR_INVALID_PARAMETER, CMPI_RC_ERR_NOT_SUPPORTED,
                              CMPI_RC_ERR_INVALID_DATA_TYPE, CMPI_RC_ERR_NOT_FOUND}) {
        SCOPED_TRACE(code);
        BrokerHooks hooks(*broker);
        hooks.beforeNewDateTime = [&] { return code; };
        const Answer all = enumerateInstances(identity);
        EXPECT_EQ(all.rc, CMPI_RC_OK);
        EXPECT_EQ(all.all("ReleaseDate"), Lines(6, "absent"));
        const Answer one = getInstance(identity, {{"InstanceID", key}});
        EXPECT_EQ(one.rc, CMPI_RC_OK);
        EXPECT_EQ(one.all("ReleaseDate"), Lines{"absent"});
    }
}

/// A server that makes dates only when they are read has a null to show.
TEST_F(SoftwareIdentityTest, DateBeyondTheYear9999IsNotShownAndTheListGoesOn) {
    tavik::StorageFunction function = functionWithSoftware(1, chips::chip15);
    function.multiBootVersion = "V:1.02.03,D:12319999,A:Y,T:M";
    startWith({card("S1", {function})});
    const Answer all = enumerateInstances(identity);
    EXPECT_EQ(all.rc, CMPI_RC_OK);
    EXPECT_EQ(all.objects.size(), 6U);
    for (const std::string& date : all.all("ReleaseDate"))
        EXPECT_TRUE(date == "absent" || date == "datetime null") << date;
}

TEST_F(SoftwareIdentityTest, MultiBootTextThatDoesNotParseLeavesTheDateOutAndKeepsMinusOne) {
    tavik::StorageFunction function = functionWithSoftware(1, chips::chip15);
    function.multiBootVersion = "V:1.x";
    startWith({card("S1", {function})});
    EXPECT_EQ(versionOf("_FlashImage"), inQuotes("1.-1.-1"));
    EXPECT_EQ(propertyOf("_BIOS", "ReleaseDate"), "absent");
}

TEST_F(SoftwareIdentityTest, FlashImageVersionOfTheVpdStandsWithoutAMultiBootImage) {
    tavik::StorageFunction function = functionWithSoftware(1, chips::chip15);
    function.vpd = tavik::encodeVpd("Adapter", {{"SN", "AB1234"}, {"RM", "1.2"}});
    startWith({card("S1", {function})});
    EXPECT_EQ(versionOf("_FlashImage"), inQuotes("1.2"));
    EXPECT_EQ(propertyOf("_FlashImage", "ReleaseDate"), "absent");
}

TEST_F(SoftwareIdentityTest, FlashImageWithoutAnyVersionIsUnknownAndNamesNoSerialNumber) {
    storage::clearVpdStores();
    switchLogsOn();
    startWith({card("S1", {functionWithSoftware(1, chips::chip15)})});
    EXPECT_EQ(versionOf("_FlashImage"), inQuotes("Unknown"));
    EXPECT_EQ(propertyOf("_FlashImage", "IdentityInfoValue"), "string[] {\"Unknown\", \"2\"}");
    EXPECT_EQ(propertyOf("_FlashImage", "Name"), inQuotes("Merolt CNA Adapter  Flash Image"));
    EXPECT_TRUE(logHas("ERROR: Cannot get flash image version from VPD!"));
}

// Only the serial number's store is cleared between cards.
TEST_F(SoftwareIdentityTest, FlashImageVersionOfACardBeforeIsPublishedForACardWithoutOne) {
    tavik::StorageFunction first = functionWithSoftware(1, chips::chip15);
    first.vpd = tavik::encodeVpd("Adapter", {{"SN", "FIRST"}, {"RM", "4.5"}});
    tavik::StorageFunction second = functionWithSoftware(2, chips::chip15);
    second.vpd = tavik::encodeVpd("Adapter", {{"SN", "SECOND"}});
    startWith({card("S1", {first}), card("S2", {second})});
    EXPECT_EQ(valuesOf(identity, "VersionString")[11], inQuotes("4.5"));
}

TEST_F(SoftwareIdentityTest, OemSerialNumberShowsItsMakerAndItsShortForm) {
    tavik::StorageFunction function = functionWithSoftware(1, chips::chip8);
    function.vpd = tavik::encodeVpd("Adapter", {{"SN", "11S1234567ABCDEFGHIJKL"}});
    startWith({card("S1", {function})});
    EXPECT_EQ(propertyOf("_Driver", "Manufacturer"), inQuotes("IBM"));
    EXPECT_EQ(propertyOf("_Driver", "Name"), inQuotes("IBM Fibre Channel Adapter ABCDEFGHIJKL Driver"));
}

TEST_F(SoftwareIdentityTest, KeyIsFoundInAnyLetterCaseAndAnUnknownOneIsNot) {
    startWith({card("S1", {functionWithSoftware(1, chips::chip8)})});
    EXPECT_EQ(getInstance(identity, {{"InstanceID", "192.0.2.10_ab1234_20000002c9000001__driver"}}).objects.size(), 1U);
    const Answer missing = getInstance(identity, {{"InstanceID", "x"}});
    EXPECT_EQ(missing.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(missing.message, "x");
}

TEST_F(SoftwareIdentityTest, HostIsLookedUpOnceForEachBuild) {
    startWith({card("S1", {storageFunction(1, chips::chip7), storageFunction(2, chips::chip7)}),
               card("S2", {storageFunction(3, chips::chip7)})});
    services.lookedUpNames.clear();
    services.address = std::vector<std::uint8_t>{198, 51, 100, 7};
    software::clearSoftwareIdentityList();
    software::buildSoftwareIdentityList();
    EXPECT_EQ(services.lookedUpNames, Lines{"testhost"});
    const Lines found = valuesOf(identity, "InstanceID");
    ASSERT_EQ(found.size(), 15U);
    EXPECT_EQ(found[1], inQuotes("198.51.100.7_A00000_20000002C9000001__Driver"));
    EXPECT_EQ(found[11], inQuotes("198.51.100.7_A00000_20000002C9000003__Driver"));
    EXPECT_EQ(found[10], inQuotes("192.0.2.10_A00000_20000002C9000003__CIMProvider"));
}

TEST_F(SoftwareIdentityTest, BuildOfAConvergedFunctionIsLoggedStepByStep) {
    switchLogsOn();
    tavik::StorageFunction function = functionWithSoftware(1, chips::chip15);
    function.multiBootVersion = "V:1.02.03,D:05172011,A:Y,T:M";
    startWith({card("S1", {function})});
    EXPECT_EQ(linesBetween(logLines(), "Entering createSoftwareIdentity, current_index= 0",
                           "Exiting  createSoftwareIdentity, current_index= 6"),
              (Lines{"Entering createSoftwareIdentity, current_index= 0",
                     "Getting I2C TAVIK_GetMBIVersionString is successful", "",
                     "I2C TAVIK_GetMBIVersionString Buffer = V:1.02.03,D:05172011,A:Y,T:M", "", "MBI Version = 1.2.3",
                     "", "MBI Version Release Date = 5/17/2011", "",
                     "Merolt_FC_SoftwareIdentity: createSoftwareIdentity: VPD data retrieved successfully.",
                     "createSoftwareIdentity: g_flashImageVersion=", "createSoftwareIdentity: flashimageversion=1.2.3",
                     "Exiting  createSoftwareIdentity, current_index= 6"}));
    EXPECT_EQ(tavikLibrary.outstandingBlocks(), 0U);
}

TEST_F(SoftwareIdentityTest, CardThatFailsEveryCallStillShowsItsFiveKinds) {
    tavik::StorageFunction function = functionWithSoftware(1, chips::chip8);
    function.failures = {1, 1, 1, 1, 1, 1, 1};
    startWith({card("S1", {function})});
    EXPECT_EQ(countOf(identity), 5U);
}

} // namespace
