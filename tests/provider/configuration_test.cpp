// The settings file, and how differently its two readers take the same text.
#include "provider_host.h"
#include "test_support.h"

#include "configuration/configuration.h"
#include "configuration/nic_properties.h"
#include "log/log.h"

#include <random>
#include <sys/stat.h>

namespace {

constexpr const char* settingsFile = "meroltcna.properties";

/// What the provider's constructor makes of a text.
struct Settings {
    bool errorLog = false;
    bool debugLog = false;
    bool tavikLog = false;
    std::string interopNamespace = "root/PG_InterOp";
    std::string nameVersion = "Pegasus CIM Server";
    std::string schemaVersion = "Unknown Version";

    bool operator==(const Settings&) const = default;
};

/// What the Ethernet side makes of it.
struct NicSettings {
    bool errorLog = false;
    bool debugLog = false;
    int interval = 180;
    std::string interopNamespace = "root/PG_InterOp";

    bool operator==(const NicSettings&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Settings& value) {
    return out << "ErrorLog " << value.errorLog << ", DebugLog " << value.debugLog << ", TAVIKLog " << value.tavikLog
               << ", \"" << value.interopNamespace << "\", \"" << value.nameVersion << "\", \"" << value.schemaVersion
               << '"';
}

std::ostream& operator<<(std::ostream& out, const NicSettings& value) {
    return out << "ErrorLog " << value.errorLog << ", DebugLog " << value.debugLog << ", interval " << value.interval
               << ", \"" << value.interopNamespace << '"';
}

class ConfigurationTest : public ProviderTest {
protected:
    void SetUp() override {
        merolt::initializeLogging();
        testing::internal::CaptureStderr();
    }
    void TearDown() override { testing::internal::GetCapturedStderr(); }

    Settings readByConstructor() {
        merolt::readConfiguration();
        return {merolt::gErrorLog,         merolt::gDebugLog,         merolt::gTAVIKLog,
                merolt::gInteropNamespace, merolt::gCIMOMNameVersion, merolt::gCIMSchemaVersion};
    }

    NicSettings readByNicProperties() {
        merolt::Merolt_NIC_Properties properties;
        properties.reload();
        EXPECT_STREQ(properties.implementationNamespace, "root/merolt_cmpi");
        return {properties.errorLogEnabled != 0, properties.debugLogEnabled != 0,
                properties.linkStatusPollIntervalSeconds, properties.interopNamespace};
    }
};

struct Case {
    const char* name;
    std::string text;
    Settings settings;
    NicSettings nic;
};

void PrintTo(const Case& row, std::ostream* out) { *out << row.name; }

class SettingsTextTest : public ConfigurationTest, public testing::WithParamInterface<Case> {};

TEST_P(SettingsTextTest, IsReadByBothReaders) {
    writeFile(settingsFile, GetParam().text);
    EXPECT_EQ(readByConstructor(), GetParam().settings);
    EXPECT_EQ(readByNicProperties(), GetParam().nic);
}

const Settings errorLogOn = {.errorLog = true};
const Settings debugLogOn = {.debugLog = true};
const NicSettings nicErrorLogOn = {.errorLog = true};
const NicSettings nicDebugLogOn = {.debugLog = true};

Settings withInterop(std::string text) { return {.interopNamespace = std::move(text)}; }
Settings withNameVersion(std::string text) { return {.nameVersion = std::move(text)}; }
Settings withSchemaVersion(std::string text) { return {.schemaVersion = std::move(text)}; }
NicSettings withInterval(int seconds) { return {.interval = seconds}; }
NicSettings nicWithInterop(std::string text) { return {.interopNamespace = std::move(text)}; }

/// A line of that length, line end not counted.
std::string errorLogLine(std::size_t length) { return "ErrorLog=1" + std::string(length - 10, ' ') + "\n"; }

std::string longText(std::size_t length) { return std::string(length, 'n'); }

// clang-format off
const Case cases[] = {
    {"Empty", "", {}, {}},
    {"ErrorLogOn", "ErrorLog=1\n", errorLogOn, nicErrorLogOn},
    {"DebugLogOn", "DebugLog=1\n", debugLogOn, nicDebugLogOn},
    {"AnyPositiveNumberIsOn", "ErrorLog=2\n", errorLogOn, nicErrorLogOn},
    {"ANegativeNumberIsOnForTheEthernetSideAlone", "ErrorLog=-1\n", {}, nicErrorLogOn},
    {"ZeroIsOff", "ErrorLog=1\nErrorLog=0\n", {}, {}},
    {"TheLastLineOfAKeyWins", "ErrorLog=0\nErrorLog=1\n", errorLogOn, nicErrorLogOn},
    {"TheWordTrueIsOnForTheEthernetSideAlone", "DebugLog=true\n", {}, nicDebugLogOn},
    {"TheWordTrueInCapitalsToo", "DebugLog=TRUE\n", {}, nicDebugLogOn},
    {"AnotherWordIsOff", "DebugLog=yes\n", {}, {}},
    {"ALastLineWithoutLineEndHasNoEffect", "ErrorLog=1\nDebugLog=1", errorLogOn, nicErrorLogOn},
    {"AnOnlyLineWithoutLineEndHasNoEffect", "DebugLog=1", {}, {}},
    {"AKeyWithinAWordCountsForTheConstructorAlone", "NotErrorLog=1\n", errorLogOn, {}},
    {"AKeyBehindOtherText", "x ErrorLog=1\n", errorLogOn, nicErrorLogOn},
    {"AKeyThatGoesOnCountsForTheConstructorAlone", "ErrorLogFile=1\n", errorLogOn, {}},
    {"LetterCaseCountsForTheConstructorAlone", "errorlog=1\n", {}, nicErrorLogOn},
    {"TheValueStandsBehindTheLastEqualsSign", "ErrorLog=1=0\n", {}, nicErrorLogOn},
    {"SeveralEqualsSigns", "ErrorLog==1\n", errorLogOn, nicErrorLogOn},
    {"NoEqualsSign", "ErrorLog 1\n", {}, {}},
    {"NoEqualsSignAndNoBlank", "ErrorLog1\n", {}, nicErrorLogOn},
    {"NoValue", "ErrorLog=1\nErrorLog=\n", {}, {}},
    {"BlanksAroundTheEqualsSign", "ErrorLog = 1\n", errorLogOn, {}},
    {"BlanksAroundTheLine", " \t ErrorLog=1 \t \n", errorLogOn, nicErrorLogOn},
    {"AComment", "#ErrorLog=1\n", {}, {}},
    {"AnIndentedComment", "  \t#ErrorLog=1\n", {}, {}},
    {"ABlankEndsACommentOfTheEthernetSide", "# ErrorLog=1\n", {}, nicErrorLogOn},
    {"AHashWithinALineIsNoComment", "ErrorLog=1 # why\n", errorLogOn, nicErrorLogOn},
    {"TheFirstKeyOfTheOrderTakesTheLine", "DebugLogErrorLog=1\n", errorLogOn, {}},
    {"TheOrderOfKeysIsNotThatOfTheLine", "ErrorLog=1\nTAVIKLog=5 ErrorLog=0\n", {}, {}},
    {"OneLineSetsOneKey", "DebugLog=1 TAVIKLog=1\n", debugLogOn, nicDebugLogOn},
    {"TwoItemsOfOneLine", "DebugLog=1 ErrorLog=1\n", errorLogOn, {.errorLog = true, .debugLog = true}},
    {"TavikLog", "TAVIKLog=1\n", {.tavikLog = true}, {}},
    {"InteropNamespace", "InteropNamespace=root/interop\n", withInterop("root/interop"), nicWithInterop("root/interop")},
    {"InteropNamespaceWithBlanks", "InteropNamespace = x\n", withInterop("x"), nicWithInterop("")},
    {"InteropNamespaceWithBlankWithin", "InteropNamespace=a b\n", withInterop("a b"), nicWithInterop("a")},
    {"InteropNamespaceWithoutValue", "InteropNamespace=\n", withInterop(""), nicWithInterop("")},
    {"InteropNamespaceWithEqualsSignWithin", "InteropNamespace=a=b\n", withInterop("b"), nicWithInterop("a=b")},
    {"NameVersion", "CIMOMNameVersion=X 1.0\n", withNameVersion("X 1.0"), {}},
    {"NameVersionKeepsALeadingBlank", "CIMOMNameVersion = X\n", withNameVersion(" X"), {}},
    {"NameVersionLosesATrailingBlankWithItsLine", "CIMOMNameVersion=X \n", withNameVersion("X"), {}},
    {"NameVersionWithPercentSigns", "CIMOMNameVersion=100%s %d%%\n", withNameVersion("100%s %d%%"), {}},
    {"SchemaVersion", "CIMSchemaVersion=2.28\n", withSchemaVersion("2.28"), {}},
    {"Interval", "LinkStatusPollIntervalSeconds=60\n", {}, withInterval(60)},
    {"IntervalInAnotherCase", "linkstatuspollintervalseconds=60\n", {}, withInterval(60)},
    {"IntervalWithBlanksIsZero", "LinkStatusPollIntervalSeconds = 60\n", {}, withInterval(0)},
    {"IntervalOfNoNumberIsZero", "LinkStatusPollIntervalSeconds=soon\n", {}, withInterval(0)},
    {"NegativeInterval", "LinkStatusPollIntervalSeconds=-5\n", {}, withInterval(-5)},
    {"IntervalWithoutLineEnd", "LinkStatusPollIntervalSeconds=60", {}, withInterval(180)},
    {"IntervalBeforeAnotherItemOfTheLastLine", "LinkStatusPollIntervalSeconds=60 x", {}, withInterval(60)},
    {"UnknownKeys", "Colour=red\n=\n==1\n\n   \n", {}, {}},
    {"ALineOf255Characters", errorLogLine(255), errorLogOn, nicErrorLogOn},
    {"ALineOf256CharactersIsPassedOver", errorLogLine(256), {}, nicErrorLogOn},
    {"ALineAfterAnOverLongOneCounts", errorLogLine(70000) + "DebugLog=1\n", debugLogOn, {.errorLog = true, .debugLog = true}},
    {"AnOverLongLineIsPassedOverToItsEnd", longText(255) + "ErrorLog=1\nDebugLog=1\n", debugLogOn, {.errorLog = true, .debugLog = true}},
    {"AnOverLongLastLineWithoutLineEnd", "DebugLog=1\n" + longText(70000), debugLogOn, nicDebugLogOn},
    {"ALastLineOf255CharactersWithoutLineEnd", "DebugLog=1\nErrorLog=1" + std::string(245, ' '), debugLogOn, {.errorLog = true, .debugLog = true}},
    {"ATokenOf255Characters", "InteropNamespace=" + longText(238) + "\n", withInterop(longText(238)), nicWithInterop(longText(238))},
    {"ATokenOf256CharactersIsCutInTwo", "InteropNamespace=" + longText(239) + "\n", {}, nicWithInterop(longText(238))},
    {"ANulEndsALine", std::string("ErrorLog=1\0DebugLog=1\n", 22), errorLogOn, nicErrorLogOn},
    {"BytesThatAreNoText", "\xFF\xFE\x80 \x01\x02\nErrorLog=1\n", errorLogOn, nicErrorLogOn},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Texts, SettingsTextTest, testing::ValuesIn(cases),
                         [](const auto& test) { return test.param.name; });

TEST_F(ConfigurationTest, AMissingFileGivesTheDefaults) {
    EXPECT_EQ(readByConstructor(), Settings());
    EXPECT_EQ(readByNicProperties(), NicSettings());
    EXPECT_FALSE(std::filesystem::exists("Merolt_CNA_Provider.log")) << "it is reported nowhere";
}

TEST_F(ConfigurationTest, AFolderOfThatNameCountsAsMissing) {
    std::filesystem::create_directory(settingsFile);
    EXPECT_EQ(readByConstructor(), Settings());
    EXPECT_EQ(readByNicProperties(), NicSettings());
}

TEST_F(ConfigurationTest, AFifoOfThatNameCountsAsMissing) {
    ASSERT_EQ(mkfifo(settingsFile, 0600), 0);
    EXPECT_EQ(readByConstructor(), Settings());
    EXPECT_EQ(readByNicProperties(), NicSettings());
}

TEST_F(ConfigurationTest, ADeviceOfThatNameCountsAsMissing) {
    std::filesystem::create_symlink("/dev/zero", settingsFile);
    EXPECT_EQ(readByConstructor(), Settings());
    EXPECT_EQ(readByNicProperties(), NicSettings());
}

TEST_F(ConfigurationTest, AMissingFileSwitchesOffWhatAnEarlierOneSwitchedOn) {
    writeFile(settingsFile, "ErrorLog=1\nDebugLog=1\nTAVIKLog=1\nInteropNamespace=x\nCIMOMNameVersion=y\n");
    EXPECT_NE(readByConstructor(), Settings());
    std::filesystem::remove(settingsFile);
    EXPECT_EQ(readByConstructor(), Settings());
}

TEST_F(ConfigurationTest, TheConstructorReadsTheInstallLocationAndTheEthernetSideTheWorkingDirectory) {
    std::filesystem::create_directory("installed");
    writeFile("installed/meroltcna.properties", "TAVIKLog=1\nLinkStatusPollIntervalSeconds=1\n");
    writeFile(settingsFile, "LinkStatusPollIntervalSeconds=2\n");
    services.location = "installed";
    merolt::initializeLogging();
    EXPECT_EQ(readByConstructor(), Settings{.tavikLog = true});
    EXPECT_EQ(readByNicProperties(), withInterval(2));
}

TEST_F(ConfigurationTest, RandomBytesGiveSettingsOfTheirSizes) {
    std::mt19937 random(1);
    const std::string pieces[] = {
        "ErrorLog", "InteropNamespace", "LinkStatusPollIntervalSeconds", "=", " ", "\t", "\n", "#", "1",
        "",         longText(300)};
    for (int round = 0; round < 500; ++round) {
        std::string text;
        for (int piece = 0; piece < 40; ++piece) {
            const std::size_t choice = random() % (std::size(pieces) + 1);
            text += choice < std::size(pieces) ? pieces[choice] : std::string(1, static_cast<char>(random()));
        }
        writeFile(settingsFile, text);
        const Settings settings = readByConstructor();
        EXPECT_LT(settings.interopNamespace.size(), 256U);
        EXPECT_LT(readByNicProperties().interopNamespace.size(), 256U);
    }
}

TEST_F(ConfigurationTest, WithTheDebugLogOnTheConstructorTellsItsSettings) {
    writeFile(settingsFile, "DebugLog=1\nInteropNamespace=root/interop\nCIMSchemaVersion=2.28\n");
    readByConstructor();
    const std::vector<std::string> wanted = {
        "***** Merolt_CNA_Provider constructor was called *****",
        "PropertiesFileName=meroltcna.properties",
        "Config: DebugLog=1",
        "Config: ErrorLog=0",
        "Config: InteropNamespace=root/interop",
        "Config: CIMOMNameVersion=Pegasus CIM Server",
        "Config: CIMSchemaVersion=2.28",
    };
    EXPECT_EQ(logLines(), wanted);
}

TEST_F(ConfigurationTest, TheLibrarysOwnLogIsToldOnlyWhenItIsOn) {
    writeFile(settingsFile, "DebugLog=1\nErrorLog=1\nTAVIKLog=1\n");
    readByConstructor();
    EXPECT_TRUE(
        inOrder(logLines(), {"Config: ErrorLog=1", "Config: TAVIKLog=1", "Config: InteropNamespace=root/PG_InterOp"}));
}

TEST_F(ConfigurationTest, WithTheDebugLogOffTheConstructorTellsNothing) {
    writeFile(settingsFile, "ErrorLog=1\nTAVIKLog=1\n");
    readByConstructor();
    EXPECT_EQ(logLines(), std::vector<std::string>());
}

TEST_F(ConfigurationTest, TheEthernetSideNamesItsFileOnStandardError) {
    testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
    merolt::Merolt_NIC_Properties().reload();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Merolt_NIC_Properties::reload, properties file name: meroltcna.properties\n");
    testing::internal::CaptureStderr();
}

TEST_F(ConfigurationTest, TheLibrarysOwnLogSettingReachesTheLibrary) {
    writeFile(settingsFile, "TAVIKLog=1\n");
    start();
    EXPECT_EQ(tavikLibrary.calls().front(), "TAVIK_Initialize(31)");
}

TEST_F(ConfigurationTest, TheLibrarysOwnLogIsOffByDefault) {
    start();
    EXPECT_EQ(tavikLibrary.calls().front(), "TAVIK_Initialize(0)");
}

} // namespace
