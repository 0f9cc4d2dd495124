// The three alerts as the server receives them: what raises them, what they hold, and when none is sent.
#include "adapters.h"
#include "provider_host.h"
#include "test_support.h"

#include "classes/storage/fc_port.h"
#include "indications/alarm_intake.h"
#include "indications/alert.h"
#include "indications/link_indication.h"
#include "indications/port_status_indication.h"
#include "provider/locks.h"
#include "provider/merolt_cna_provider.h"

#include <thread>

namespace {

using adapters::card;
using adapters::fleet;
using adapters::nicFunction;
using adapters::storageFunction;

constexpr const char* statusClass = "MeroltCNA_AlertIndication_AdapterStatusChange";
constexpr const char* upClass = "Merolt_NIC_IndicationEthernetPortLinkUp";
constexpr const char* downClass = "Merolt_NIC_IndicationEthernetPortLinkDown";

constexpr std::uint16_t chipWithTextSerial = 0x2532;
constexpr std::uint32_t statusChanged = 0;

class IndicationTest : public ProviderTest {
protected:
    void SetUp() override {
        writeFile("meroltcna.properties", "DebugLog=1\nErrorLog=1\nLinkStatusPollIntervalSeconds=0\n");
    }

    void begin(std::vector<tavik::Card> cards) {
        tavikLibrary.setFleet(fleet(std::move(cards)));
        start();
    }
    void beginListening(std::vector<tavik::Card> cards) {
        begin(std::move(cards));
        activateFilter();
        takeLogLines();
    }
    /// An alarm of a state change, and one pass of the polling thread.
    void alarm(std::uint32_t deviceNumber, std::uint32_t type = statusChanged) {
        tavikLibrary.raiseAlarm(deviceNumber, type, 3, "port");
        services.pass(0);
    }
    void setState(std::uint32_t handle, std::uint8_t state) { tavikLibrary.storage(handle).property.state = state; }
    void setLink(const std::string& device, std::uint32_t state) { tavikLibrary.nic(device).link.state = state; }

    std::vector<std::string> classesOfAlerts() const {
        std::vector<std::string> names;
        for (const Indication& indication : indications)
            names.push_back(indication.alert.className);
        return names;
    }
};

tavik::Card fibreCard() {
    tavik::StorageFunction function = storageFunction(1, chipWithTextSerial);
    function.property.state = 1;
    return card("SN1", {function});
}

tavik::Card ethernetCard(std::uint32_t state) {
    tavik::NicFunction function = nicFunction(1, 2);
    function.card.serialNumber = "SN2";
    function.link.state = state;
    return card("SN2", {function});
}

using StatusIndication = IndicationTest;

TEST_F(StatusIndication, APortThatLosesItsLoopIsAnErrorWithEveryPropertyOfTheAlert) {
    beginListening({fibreCard()});
    setState(1, 3);
    alarm(1);
    ASSERT_EQ(indications.size(), 1U);
    EXPECT_EQ(indications[0].deliveredTo, "root/PG_InterOp");
    const TestObject& alert = indications[0].alert;
    EXPECT_EQ(alert.className, statusClass);
    EXPECT_EQ(alert.nameSpace, "root/merolt_cmpi");
    const std::string deviceID = merolt::storage::g_fcPortList[0].deviceID.text();
    const std::string serialNumber = merolt::storage::g_fcPortList[0].serialNumber.text();
    const std::string element = "root/merolt_cmpi:Merolt_FCHBA_FCPort.SystemCreationClassName=\"Merolt_Adapter_"
                                "ComputerSystem\",SystemName=\"192.0.2.10\",CreationClassName=\"Merolt_FCHBA_FCPort\","
                                "DeviceID=\"" +
                                deviceID + "\"";
    EXPECT_EQ(alert["IndicationIdentifier"], "string \"1\"");
    EXPECT_EQ(alert["CorrelatedIndications"], "string[] {\"\"}");
    EXPECT_EQ(alert["AlertingManagedElement"], "string \"" + element + "\"");
    EXPECT_EQ(alert["AlertingElementFormat"], "uint16 2");
    EXPECT_EQ(alert["AlertType"], "uint16 5");
    EXPECT_EQ(alert["OwningEntity"], "string \"Merolt\"");
    EXPECT_EQ(alert["MessageID"], "string \"Core9\"");
    EXPECT_EQ(alert["Message"],
              "string \"FC Port 20000002C9000001 in HBA " + serialNumber + " status changed to Error\"");
    EXPECT_EQ(alert["MessageArguments"],
              "string[] {\"20000002C9000001\", \"HBA\", \"" + serialNumber + "\", \"Error\"}");
    EXPECT_EQ(alert["EventID"], "string \"" + element + ";1\"");
    EXPECT_EQ(alert["PerceivedSeverity"], "uint16 6");
    EXPECT_EQ(alert["ProbableCause"], "uint16 66");
    EXPECT_EQ(alert["SystemCreationClassName"], "string \"Merolt_Adapter_ComputerSystem\"");
    EXPECT_EQ(alert["SystemName"], "string \"192.0.2.10\"");
    EXPECT_EQ(alert["ProviderName"], "string \"Merolt CNA Provider\"");
    EXPECT_EQ(alert["IndicationTime"].substr(0, 8), "datetime");
}

TEST_F(StatusIndication, IsLoggedStepByStep) {
    beginListening({fibreCard()});
    setState(1, 3);
    alarm(1);
    EXPECT_TRUE(
        inOrder(takeLogLines(),
                {"Alarm generated: Device Number: 1; coreAlarmType: 0, stringParameter: port",
                 "OSSGenerateHostNotificationAlarm: Calling m_generateIndication: Device Number: 1; coreAlarmType: 0, "
                 "stringParameter: port",
                 "m_generateIndication: deviceNum=1, alarmType=0, rsltParam=3, strParam=port...",
                 "m_generateIndication: Detected Port Status changed. Reinitializing devices...",
                 "Calling Try to deliver indication", "Merolt_CNA_Provider::m_generateIndication: Delivering...",
                 "Merolt_CNA_Provider::m_generateIndication: Delivered", "Returning from m_generateIndication..."}));
}

TEST_F(StatusIndication, TheSameStateIsReportedOnceAndSoIsItsRecovery) {
    beginListening({fibreCard()});
    setState(1, 3);
    alarm(1);
    alarm(1);
    setState(1, 1);
    alarm(1);
    ASSERT_EQ(indications.size(), 2U);
    EXPECT_EQ(indications[1].alert["PerceivedSeverity"], "uint16 2");
    EXPECT_EQ(indications[1].alert["IndicationIdentifier"], "string \"2\"");
    EXPECT_NE(indications[1].alert["Message"].find("status changed to OK"), std::string::npos);
}

// The list knows the state as 1, alerts as 0: such a port is told anew with each alarm.
TEST_F(StatusIndication, AStateWithoutANameIsReportedWithEachAlarm) {
    beginListening({fibreCard()});
    setState(1, 2);
    alarm(1);
    alarm(1);
    ASSERT_EQ(indications.size(), 2U);
    EXPECT_EQ(indications[0].alert["PerceivedSeverity"], "uint16 4");
    EXPECT_NE(indications[0].alert["Message"].find("status changed to Unknown"), std::string::npos);
}

TEST_F(StatusIndication, APortWhoseStateCannotBeReadIsUnknown) {
    beginListening({fibreCard()});
    tavikLibrary.storage(1).failures.portProperty = 0x1F;
    alarm(1);
    ASSERT_EQ(indications.size(), 1U);
    EXPECT_EQ(indications[0].alert["PerceivedSeverity"], "uint16 4");
    EXPECT_TRUE(inOrder(takeLogLines(), {"Port Status: Could not detect!",
                                         "m_generateIndication: error calling ZVGetHbaDevicePortProperty return 1f"}));
}

TEST_F(StatusIndication, AnUnknownDeviceRaisesNoAlert) {
    beginListening({fibreCard()});
    alarm(99);
    EXPECT_TRUE(indications.empty());
    EXPECT_EQ(merolt::gIndicationIdentifier, 0U);
}

TEST_F(StatusIndication, APortInTheTreeAloneIsReportedWithoutItsNames) {
    beginListening({fibreCard()});
    merolt::storage::clearFCPortList();
    alarm(1);
    ASSERT_EQ(indications.size(), 1U);
    const TestObject& alert = indications[0].alert;
    EXPECT_EQ(alert["AlertingManagedElement"], "string \"NOT FOUND\"");
    EXPECT_EQ(alert["AlertingElementFormat"], "uint16 1");
    EXPECT_EQ(alert["EventID"], "string \"NOT FOUND;1\"");
    EXPECT_EQ(alert["Message"], "string \"FC Port  in HBA  status changed to OK\"");
    EXPECT_EQ(alert["MessageArguments"], "string[] {\"\", \"HBA\", \"\", \"OK\"}");
}

TEST_F(StatusIndication, APortInTheListAloneRaisesNoAlert) {
    beginListening({fibreCard()});
    setState(1, 3);
    TAVIK_ProtocolEntry* entry = TAVIK_GetAdapterList()->first->phyPorts->first->protocols->first;
    entry->storage.device.deviceNumber = 77;
    alarm(1);
    EXPECT_TRUE(indications.empty());
}

TEST_F(StatusIndication, OtherAlarmsAreOnlyLogged) {
    beginListening({fibreCard()});
    setState(1, 3);
    alarm(1, 2);
    EXPECT_TRUE(indications.empty());
    EXPECT_TRUE(
        inOrder(takeLogLines(), {"Alarm generated: Device Number: 1; coreAlarmType: 2, stringParameter: port"}));
}

TEST_F(StatusIndication, WithoutASubscriptionTheListIsLeftAlone) {
    begin({fibreCard()});
    setState(1, 3);
    alarm(1);
    EXPECT_TRUE(indications.empty());
    EXPECT_EQ(merolt::storage::g_fcPortList[0].operationalStatus, 2);
}

TEST_F(StatusIndication, AFailedDeliveryIsLoggedAndTheListIsFreshAllTheSame) {
    beginListening({fibreCard()});
    deliveryAnswer = CMPI_RC_ERR_FAILED;
    setState(1, 3);
    alarm(1);
    EXPECT_EQ(merolt::storage::g_fcPortList[0].operationalStatus, 6);
    EXPECT_TRUE(inOrder(takeLogLines(), {"Merolt_CNA_Provider::m_generateIndication: Error delivering indication",
                                         "Returning from m_generateIndication..."}));
}

TEST_F(StatusIndication, AlarmsOfManyThreadsAreAllHandledEachOnce) {
    beginListening({fibreCard()});
    setState(1, 2);
    constexpr int threadCount = 4;
    constexpr int alarmsOfEach = 250;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread)
        threads.emplace_back([this] {
            for (int count = 0; count < alarmsOfEach; ++count)
                tavikLibrary.raiseAlarm(1, statusChanged, 0, nullptr);
        });
    for (std::thread& thread : threads)
        thread.join();
    services.pass(0);
    EXPECT_EQ(indications.size(), static_cast<std::size_t>(threadCount * alarmsOfEach));
}

// The library's thread may hold what the polling thread waits for.
TEST_F(StatusIndication, TheLibrarysThreadNeverWaitsForARequest) {
    beginListening({fibreCard()});
    const std::lock_guard lock(*merolt::provider_lock);
    std::thread library([this] { tavikLibrary.raiseAlarm(1, statusChanged, 0, "port"); });
    library.join();
    SUCCEED();
}

using LinkIndication = IndicationTest;

TEST_F(LinkIndication, ALinkThatComesUpRaisesAnAlertWithEveryProperty) {
    beginListening({ethernetCard(2)});
    setLink("eth2", 1);
    services.pass(1);
    ASSERT_EQ(indications.size(), 1U);
    EXPECT_EQ(indications[0].deliveredTo, "root/PG_InterOp");
    const TestObject& alert = indications[0].alert;
    EXPECT_EQ(alert.className, upClass);
    EXPECT_EQ(alert.nameSpace, "root/merolt_cmpi");
    EXPECT_EQ(alert["IndicationIdentifier"], "string \"1\"");
    EXPECT_EQ(alert["IndicationTime"].substr(0, 8), "datetime");
    EXPECT_EQ(alert["CorrelatedIndications"], "string[] {\"\"}");
    EXPECT_EQ(
        alert["AlertingManagedElement"],
        "string \"root/merolt_cmpi:Merolt_NIC_NetworkPort.SystemCreationClassName=\"Merolt_Adapter_"
        "ComputerSystem\",SystemName=\"192.0.2.10\",CreationClassName=\"Merolt_NIC_NetworkPort\",DeviceID=\"SN2_2\"\"");
    EXPECT_EQ(alert["AlertingElementFormat"], "uint16 2");
    EXPECT_EQ(alert["Description"], "string \"Link Status Up\"");
    EXPECT_EQ(alert["ProbableCause"], "uint16 66");
    EXPECT_EQ(alert["ProbableCauseDescription"],
              "string \"This alarm is generated when the ethernet port link status changes to Up\"");
    EXPECT_EQ(alert["AlertType"], "uint16 2");
    EXPECT_EQ(alert["PerceivedSeverity"], "uint16 2");
    EXPECT_EQ(alert["RecommendedActions"], "string[] {\"No action required\"}");
    EXPECT_EQ(alert["EventID"], "string \"1\"");
    EXPECT_EQ(alert["OwningEntity"], "string \"DMTF\"");
    EXPECT_EQ(alert["MessageID"], "string \"PLAT0260\"");
    EXPECT_EQ(alert["MessageArguments"],
              "string[] {\"020000000002\", \"root/merolt_cmpi:Merolt_Adapter_ComputerSystem.CreationClassName="
              "\"Merolt_Adapter_ComputerSystem\",Name=\"192.0.2.10\"\"}");
    EXPECT_EQ(alert["Message"], "string \"The network port 020000000002 has been enabled\"");
    EXPECT_EQ(alert["SystemCreationClassName"], "string \"Merolt_Adapter_ComputerSystem\"");
    EXPECT_EQ(alert["SystemName"], "string \"192.0.2.10\"");
    EXPECT_EQ(alert["ProviderName"], "string \"Merolt CNA Provider\"");
    EXPECT_TRUE(inOrder(takeLogLines(),
                        {"Entering Merolt_NIC_Provider generatePortAlertIndication",
                         "Indication generation is currently ENABLED...", "Indication for link status change UP",
                         "Merolt_CNA_HBAProvider::generatePortAlertIndication: Delivering...",
                         "Merolt_CNA_HBAProvider::generatePortAlertIndication: Delivered",
                         "Returning from generatePortAlertIndication..."}));
}

TEST_F(LinkIndication, ALinkThatGoesDownDiffersInTheseProperties) {
    beginListening({ethernetCard(1)});
    setLink("eth2", 2);
    services.pass(1);
    ASSERT_EQ(indications.size(), 1U);
    const TestObject& alert = indications[0].alert;
    EXPECT_EQ(alert.className, downClass);
    EXPECT_EQ(alert["Description"], "string \"Link Status Down\"");
    EXPECT_EQ(alert["ProbableCauseDescription"],
              "string \"This alarm is generated when the ethernet port link status changes to Down\"");
    EXPECT_EQ(alert["PerceivedSeverity"], "uint16 3");
    EXPECT_EQ(alert["RecommendedActions"],
              "string[] {\"Make sure that a cable was not accidentally removed from the CNA or switch\"}");
    EXPECT_EQ(alert["EventID"], "string \"2\"");
    EXPECT_EQ(alert["MessageID"], "string \"PLAT0261\"");
    EXPECT_EQ(alert["Message"], "string \"The network port 020000000002 has been disabled\"");
    EXPECT_TRUE(logHas("Indication for link status change Down"));
}

TEST_F(LinkIndication, EveryStateButUpIsALinkThatWentDown) {
    beginListening({ethernetCard(1)});
    for (const std::uint32_t state : {3U, 9U, 1U}) {
        setLink("eth2", state);
        services.pass(1);
    }
    EXPECT_EQ(classesOfAlerts(), (std::vector<std::string>{downClass, downClass, upClass}));
}

TEST_F(LinkIndication, AChangeWithoutSubscriptionIsNotReportedLater) {
    begin({ethernetCard(1)});
    setLink("eth2", 2);
    services.pass(1);
    EXPECT_TRUE(logHas("Indication generation is currently DISABLED..."));
    activateFilter();
    services.pass(1);
    EXPECT_TRUE(indications.empty());
}

TEST_F(LinkIndication, AFailedDeliveryIsLoggedAndLost) {
    beginListening({ethernetCard(1)});
    deliveryAnswer = CMPI_RC_ERR_FAILED;
    setLink("eth2", 2);
    services.pass(1);
    EXPECT_TRUE(
        inOrder(takeLogLines(), {"Merolt_NIC_Provider::generatePortAlertIndication: Error delivering indication",
                                 "Returning from generatePortAlertIndication..."}));
    deliveryAnswer = CMPI_RC_OK;
    services.pass(1);
    EXPECT_EQ(indications.size(), 1U);
}

TEST_F(LinkIndication, AnUnknownAlarmTypeIsOnlyLogged) {
    beginListening({ethernetCard(1)});
    merolt::generatePortAlertIndication(g_Merolt_CNA_Provider->pollThreadContext(), 7, nullptr, nullptr);
    EXPECT_TRUE(inOrder(takeLogLines(),
                        {"Entering Merolt_NIC_Provider generatePortAlertIndication", "Alarm type not recognized."}));
    EXPECT_TRUE(indications.empty());
}

TEST(StatusText, NamesEveryOperationalStatusOfTheSchema) {
    EXPECT_STREQ(merolt::getStatusText(0), "Unknown");
    EXPECT_STREQ(merolt::getStatusText(1), "Other");
    EXPECT_STREQ(merolt::getStatusText(5), "Predicted Failure");
    EXPECT_STREQ(merolt::getStatusText(7), "Non-Recoverable Error");
    EXPECT_STREQ(merolt::getStatusText(16), "Supporting Entity in Error");
    EXPECT_STREQ(merolt::getStatusText(18), "Power Mode");
    EXPECT_STREQ(merolt::getStatusText(19), "Unknown");
}

} // namespace
