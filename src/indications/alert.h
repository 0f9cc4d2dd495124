// What all alerts share: the properties at their beginning and end, and the way to the server.
#pragma once

#include "inventory/poll_thread_context.h"

#include "CmpiInstance.h"

#include <cstdint>

namespace merolt {

/// The namespace of the elements that alerts tell of, and of the alerts themselves. Fixed: settings do not reach it.
constexpr const char* alertNamespace = "root/merolt_cmpi";

/// Number of the last alert that was begun; also an alert that is dropped takes one. Changed under provider_lock.
extern std::uint32_t gIndicationIdentifier;

/// An alert with IndicationIdentifier, IndicationTime and CorrelatedIndications. Throws CmpiStatus if the server does
/// not know the class.
CmpiInstance beginAlert(const char* className);

/// Sets SystemCreationClassName, SystemName and ProviderName.
void endAlert(CmpiInstance& alert);

/// Hands the alert to the server, which matches it against its subscriptions. Throws CmpiStatus.
/// @param thread of the calling thread, which is attached.
void deliverAlert(const PollThreadContext& thread, const CmpiInstance& alert);

} // namespace merolt
