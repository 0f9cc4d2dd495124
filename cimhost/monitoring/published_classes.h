// The classes of the provider that monitoring reads. No other part of cimhost knows a class of the provider by its
// name.
#pragma once

namespace cimhost::monitoring::published {

inline constexpr const char* computerSystem = "Merolt_Adapter_ComputerSystem";
inline constexpr const char* product = "Merolt_Adapter_Product";
inline constexpr const char* physicalPort = "Merolt_Adapter_PhysicalPort";
inline constexpr const char* physicalConnector = "Merolt_Adapter_PhysicalConnector";

inline constexpr const char* fcPort = "Merolt_FCHBA_FCPort";
inline constexpr const char* fcPortStatistics = "Merolt_FCHBA_FCPortStatistics";
inline constexpr const char* physicalPortFCPort = "Merolt_FCHBA_PhysicalPortFCPort";
inline constexpr const char* targetEndpoint = "Merolt_FCHBA_SCSIProtocolEndpointTarget";
inline constexpr const char* storageSoftware = "Merolt_FCHBA_SoftwareIdentity";
inline constexpr const char* storageSoftwareController = "Merolt_FCHBA_SoftwareIdentityPortController";

inline constexpr const char* ethernetPort = "Merolt_NIC_EthernetPort2";
inline constexpr const char* networkPort = "Merolt_NIC_NetworkPort";
inline constexpr const char* physicalPortEthernetPort = "Merolt_NIC_PhysicalPortEthernetPort";
inline constexpr const char* ethernetSoftware = "Merolt_NIC_SoftwareIdentity";
inline constexpr const char* ethernetSoftwareController = "Merolt_NIC_SoftwareIdentityPortController";

} // namespace cimhost::monitoring::published
