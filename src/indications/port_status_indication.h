// MeroltCNA_AlertIndication_AdapterStatusChange: an alarm of the management library found a storage port in another
// state than the list of ports says.
#pragma once

#include "indications/alarm_intake.h"
#include "indications/alert.h"

namespace merolt {

/// The name of a CIM operational status; "Unknown" for a value without one.
const char* getStatusText(std::uint16_t status);

/// Compares the port's state with the list and, if they differ, reads the list anew and delivers the alert. Called with
/// provider_lock held, on an attached thread. A failed delivery is logged; whatever else the server refuses is thrown.
void generatePortStatusIndication(const PollThreadContext& thread, const Alarm& alarm);

} // namespace merolt
