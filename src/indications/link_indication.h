// Merolt_NIC_IndicationEthernetPortLinkUp and ...LinkDown: the link of an Ethernet port changed between two polls.
#pragma once

#include "indications/alert.h"
#include "inventory/cna_list.h"

namespace merolt {

/// Builds and delivers the alert if anybody subscribes. Nothing is thrown: a failure is logged, and the alert is lost.
/// Called with provider_lock held.
/// @param alarmType alarmLinkUp or alarmLinkDown; any other is only logged.
void generatePortAlertIndication(const PollThreadContext& thread, int alarmType, CNACard* card, CNAPort* port);

} // namespace merolt
