#include "indications/link_indication.h"

#include "classes/ethernet/network_port.h"
#include "classes/instance.h"
#include "classes/system_name.h"
#include "indications/subscriptions.h"
#include "log/log.h"
#include "text/fixed_text.h"

#include <cxxabi.h>

namespace merolt {

namespace {

/// What distinguishes the two alerts.
struct LinkAlertTexts {
    const char* className;
    const char* logLine;
    const char* description;
    const char* probableCauseDescription;
    CMPIUint16 perceivedSeverity;
    const char* recommendedAction;
    const char* eventID;
    const char* messageID;
    const char* state; ///< in the message
};

constexpr LinkAlertTexts linkUp = {
    .className = "Merolt_NIC_IndicationEthernetPortLinkUp",
    .logLine = "Indication for link status change UP\n",
    .description = "Link Status Up",
    .probableCauseDescription = "This alarm is generated when the ethernet port link status changes to Up",
    .perceivedSeverity = 2,
    .recommendedAction = "No action required",
    .eventID = "1",
    .messageID = "PLAT0260",
    .state = "enabled",
};

constexpr LinkAlertTexts linkDown = {
    .className = "Merolt_NIC_IndicationEthernetPortLinkDown",
    .logLine = "Indication for link status change Down\n",
    .description = "Link Status Down",
    .probableCauseDescription = "This alarm is generated when the ethernet port link status changes to Down",
    .perceivedSeverity = 3,
    .recommendedAction = "Make sure that a cable was not accidentally removed from the CNA or switch",
    .eventID = "2",
    .messageID = "PLAT0261",
    .state = "disabled",
};

using PathText = FixedText<1024>;

PathText systemPath() {
    PathText path;
    path.format("%s:%s.CreationClassName=\"%s\",Name=\"%s\"", alertNamespace, computerSystemClass, computerSystemClass,
                gSystemName);
    return path;
}

PathText portPath(const CNACard* card, const CNAPort* port) {
    constexpr const char* portClass = "Merolt_NIC_NetworkPort";
    PathText path;
    path.format("%s:%s.SystemCreationClassName=\"%s\",SystemName=\"%s\",CreationClassName=\"%s\",DeviceID=\"%s\"",
                alertNamespace, portClass, computerSystemClass, gSystemName, portClass,
                ethernet::calcDeviceID_NetworkPort(card, port, nullptr));
    return path;
}

CmpiInstance makeAlert(const LinkAlertTexts& texts, const CNACard* card, const CNAPort* port) {
    CmpiInstance alert = beginAlert(texts.className);
    const char* mac = ethernet::calcMACAddress_NetworkPort(card, port, nullptr);
    FixedText<128> message;
    message.format("The network port %s has been %s", mac, texts.state);
    alert.setProperty("AlertingManagedElement", CmpiData(portPath(card, port).text()));
    alert.setProperty("AlertingElementFormat", CmpiData(CMPIUint16{2})); // a path
    DEBUG_LOG("%s", texts.logLine);
    alert.setProperty("Description", CmpiData(texts.description));
    alert.setProperty("ProbableCause", CmpiData(CMPIUint16{66}));
    alert.setProperty("ProbableCauseDescription", CmpiData(texts.probableCauseDescription));
    alert.setProperty("AlertType", CmpiData(CMPIUint16{2}));
    alert.setProperty("PerceivedSeverity", CmpiData(texts.perceivedSeverity));
    alert.setProperty("RecommendedActions", CmpiData(stringArray({texts.recommendedAction})));
    alert.setProperty("EventID", CmpiData(texts.eventID));
    alert.setProperty("OwningEntity", CmpiData("DMTF"));
    alert.setProperty("MessageID", CmpiData(texts.messageID));
    alert.setProperty("MessageArguments", CmpiData(stringArray({mac, systemPath().text()})));
    alert.setProperty("Message", CmpiData(message.text()));
    endAlert(alert);
    return alert;
}

/// @return false if the alert could not be made or the server did not take it.
bool makeAndDeliver(const PollThreadContext& thread, const LinkAlertTexts& texts, const CNACard* card,
                    const CNAPort* port) try {
    const CmpiInstance alert = makeAlert(texts, card, port);
    DEBUG_LOG("Merolt_CNA_HBAProvider::generatePortAlertIndication: Delivering...\n");
    deliverAlert(thread, alert);
    DEBUG_LOG("Merolt_CNA_HBAProvider::generatePortAlertIndication: Delivered\n");
    return true;
} catch (const abi::__forced_unwind&) {
    throw; // the server ends its thread
} catch (...) {
    return false;
}

} // namespace

void generatePortAlertIndication(const PollThreadContext& thread, int alarmType, CNACard* card, CNAPort* port) {
    DEBUG_LOG("Entering Merolt_NIC_Provider generatePortAlertIndication\n");
    if (alarmType != alarmLinkUp && alarmType != alarmLinkDown) {
        DEBUG_LOG("Alarm type not recognized.\n");
        return;
    }
    if (!gIndicationsEnabled) {
        DEBUG_LOG("Indication generation is currently DISABLED...\n");
        return;
    }
    DEBUG_LOG("Indication generation is currently ENABLED...\n");
    if (!makeAndDeliver(thread, alarmType == alarmLinkUp ? linkUp : linkDown, card, port))
        DEBUG_LOG("Merolt_NIC_Provider::generatePortAlertIndication: Error delivering indication\n");
    DEBUG_LOG("Returning from generatePortAlertIndication...\n");
}

} // namespace merolt
