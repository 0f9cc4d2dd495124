// The settings of meroltcna.properties, as read once when the provider is constructed.
#pragma once

#include <cstdint>

namespace merolt {

/// The management library's own log is wanted.
extern bool gTAVIKLog;
/// The second namespace that the object manager publishes.
extern char gInteropNamespace[256];
/// Name and version of the CIM server, shown by the object manager.
extern char gCIMOMNameVersion[256];
extern char gCIMSchemaVersion[272];

/// One build-time switch: SCSI endpoints and storage extents are published.
constexpr std::uint32_t gTargetDiscoveryEnabled = 1;

/// Sets the defaults and reads "meroltcna.properties" in the install location, or in the working directory where
/// there is none. Sets gDebugLog and gErrorLog too. A line may hold a key anywhere; its value stands behind the last
/// "=". Lines of 256 characters and more, and a last line without a line end, have no effect.
void readConfiguration();

} // namespace merolt
