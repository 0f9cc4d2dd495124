#include "cimhost/cli/tree_plan.h"

namespace cimhost::cli {

namespace {

constexpr std::string_view host = "Merolt_Adapter_ComputerSystem";
constexpr std::string_view card = "Merolt_Adapter_PhysicalPackage";
constexpr std::string_view jack = "Merolt_Adapter_PhysicalPort";
constexpr std::string_view transceiver = "Merolt_Adapter_PhysicalConnector";
constexpr std::string_view storageController = "Merolt_FCHBA_PortController";
constexpr std::string_view storagePort = "Merolt_FCHBA_FCPort";
constexpr std::string_view initiator = "Merolt_FCHBA_SCSIProtocolEndpointHBA";
constexpr std::string_view target = "Merolt_FCHBA_SCSIProtocolEndpointTarget";
constexpr std::string_view logicalUnit = "Merolt_FCHBA_StorageExtent";
constexpr std::string_view storageService = "Merolt_FCHBA_SoftwareInstallationService";
constexpr std::string_view ethernetController = "Merolt_NIC_PortController";
constexpr std::string_view ethernetPort = "Merolt_NIC_EthernetPort2";
constexpr std::string_view lanEndpoint = "Merolt_NIC_LANEndpoint";
constexpr std::string_view ipEndpoint = "Merolt_NIC_IPProtocolEndpoint";
constexpr std::string_view ethernetService = "Merolt_NIC_SoftwareInstallationService";
constexpr std::string_view server = "Merolt_FCHBA_ObjectManager";

// No association ties a card to its host: it stands where its controllers do. None ties a target to a port either, or a
// logical unit to its target; their keys begin with the key of what they are reached through.
// clang-format off
constexpr Placement placements[] = {
    {card, host, {"Merolt_FCHBA_PhysicalPackagePortController", "Merolt_FCHBA_ComputerSystemPortController"}},
    {card, host, {"Merolt_NIC_PhysicalPackagePortController",   "Merolt_NIC_ComputerSystemPortController"}},

    {"Merolt_Adapter_Product", card, {"Merolt_Adapter_ProductPhysicalPackage"}},

    {storageController,  card, {"Merolt_FCHBA_PhysicalPackagePortController"}},
    {storageController,  host, {"Merolt_FCHBA_ComputerSystemPortController"}},
    {ethernetController, card, {"Merolt_NIC_PhysicalPackagePortController"}},
    {ethernetController, host, {"Merolt_NIC_ComputerSystemPortController"}},

    {storagePort,  storageController,  {"Merolt_FCHBA_PortControllerFCPort"}},
    {storagePort,  host,               {"Merolt_FCHBA_ComputerSystemFCPort"}},
    {ethernetPort, ethernetController, {"Merolt_NIC_PortControllerEthernetPort"}},
    {ethernetPort, host,               {"Merolt_NIC_ComputerSystemEthernetPort"}},

    {jack,        storagePort,  {"Merolt_FCHBA_PhysicalPortFCPort"}},
    {jack,        ethernetPort, {"Merolt_NIC_PhysicalPortEthernetPort"}},
    {jack,        card,         {"Merolt_Adapter_PhysicalPackagePhysicalPort"}},
    {transceiver, storagePort,  {"Merolt_FCHBA_PhysicalConnectorFCPort"}},
    {transceiver, ethernetPort, {"Merolt_NIC_PhysicalConnectorEthernetPort"}},
    {transceiver, card,         {"Merolt_Adapter_PhysicalPackagePhysicalConnector"}},

    {"Merolt_FCHBA_FCPortStatistics",       storagePort, {"Merolt_FCHBA_FCPortFCPortStatistics"}},
    {"Merolt_FCHBA_SCSIProtocolController", storagePort, {"Merolt_FCHBA_SCSIProtocolControllerFCPort"}},
    {"Merolt_FCHBA_SCSIProtocolController", host,        {"Merolt_FCHBA_ComputerSystemSCSIProtocolController"}},
    {initiator,   storagePort, {"Merolt_FCHBA_FCPortSCSIProtocolEndpointHBA"}},
    {initiator,   host,        {"Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointHBA"}},
    {target,      initiator,   {}, "Name", "Name"},
    {target,      host,        {"Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointTarget"}},
    {logicalUnit, target,      {}, "DeviceID", "Name"},
    {logicalUnit, host,        {"Merolt_FCHBA_ComputerSystemStorageExtent"}},

    {"Merolt_NIC_NetworkPort", ethernetPort, {"Merolt_NIC_NetworkPortLANEndpoint", "Merolt_NIC_EthernetPortLANEndpoint"}},
    {"Merolt_NIC_NetworkPort", host,         {"Merolt_NIC_ComputerSystemNetworkPort"}},
    {lanEndpoint, ethernetPort, {"Merolt_NIC_EthernetPortLANEndpoint"}},
    {lanEndpoint, host,         {"Merolt_NIC_ComputerSystemLANEndpoint"}},
    {ipEndpoint,  lanEndpoint,  {"Merolt_NIC_LANEndpointIPProtocolEndpoint"}},
    {ipEndpoint,  host,         {"Merolt_NIC_ComputerSystemIPProtocolEndpoint"}},
    {"Merolt_NIC_IPProtocolEndpointCapabilities", ipEndpoint, {"Merolt_NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint"}},

    {"Merolt_FCHBA_SoftwareIdentity", storageController,  {"Merolt_FCHBA_SoftwareIdentityPortController"}},
    {"Merolt_FCHBA_SoftwareIdentity", host,               {"Merolt_FCHBA_ComputerSystemSoftwareIdentity"}},
    {"Merolt_NIC_SoftwareIdentity",   ethernetController, {"Merolt_NIC_SoftwareIdentityPortController"}},
    {"Merolt_NIC_SoftwareIdentity",   host,               {"Merolt_NIC_ComputerSystemSoftwareIdentity"}},

    {"Merolt_FCHBA_LogicalPortGroup", host, {"Merolt_FCHBA_ComputerSystemLogicalPortGroup"}},

    {storageService,  host, {"Merolt_FCHBA_ComputerSystemSoftwareInstallationService"}},
    {ethernetService, host, {"Merolt_NIC_ComputerSystemSoftwareInstallationService"}},
    {"Merolt_FCHBA_SoftwareInstallationServiceCapabilities", storageService,
     {"Merolt_FCHBA_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"}},
    {"Merolt_NIC_SoftwareInstallationServiceCapabilities", ethernetService,
     {"Merolt_NIC_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"}},

    {server, host, {"Merolt_FCHBA_ComputerSystemObjectManager"}},
    {"Merolt_FCHBA_CIMXMLCommMech", server, {"Merolt_FCHBA_ObjectManagerCommMech"}},
    {"Merolt_FCHBA_CIMXMLCommMech", host,   {"Merolt_FCHBA_ComputerSystemCommMech"}},
    {"Merolt_FCHBA_Namespace",      server, {"Merolt_FCHBA_ObjectManagerNamespace"}},
};
// clang-format on

constexpr TreePlan plan = {host, placements};

} // namespace

const TreePlan& adapterTree() { return plan; }

} // namespace cimhost::cli
