#include "cimhost/cli/labels.h"

#include "cimhost/cli/values_text.h"
#include "cimhost/model/names.h"
#include "cimhost/model/printable.h"

#include <string_view>
#include <vector>

namespace cimhost::cli {

namespace {

struct Part {
    std::string_view property;
    std::string_view prefix = {};
};

struct Label {
    std::string_view className;
    std::string_view word;
    std::vector<Part> parts;
};

const std::vector<Label>& labels() {
    // clang-format off
    static const std::vector<Label> rows = {
        {"Merolt_Adapter_ComputerSystem",    "host",                {{"Name"}, {"OSName"}}},
        {"Merolt_Adapter_PhysicalPackage",   "card",                {{"Model"}, {"SerialNumber", "serial number "}, {"Manufacturer"}}},
        {"Merolt_Adapter_Product",           "product",             {{"Name"}, {"Version", "version "}, {"Vendor"}}},
        {"Merolt_Adapter_PhysicalPort",      "jack",                {{"PortNumber"}}},
        {"Merolt_Adapter_PhysicalConnector", "transceiver",         {{"Manufacturer"}, {"PartNumber"}, {"SerialNumber", "serial number "}}},

        {"Merolt_FCHBA_PortController",      "storage controller",  {{"DeviceID"}}},
        {"Merolt_FCHBA_FCPort",              "storage port",        {{"PermanentAddress"}, {"Speed"}, {"OperationalStatus"}}},
        {"Merolt_FCHBA_FCPortStatistics",    "statistics",          {{"IOCount", "I/O "}, {"MegabyteCount", "megabytes "}, {"LinkFailures", "link failures "}}},
        {"Merolt_FCHBA_LogicalPortGroup",    "Fibre Channel node",  {{"Name"}}},
        {"Merolt_FCHBA_SCSIProtocolController",     "SCSI controller", {{"DeviceID"}}},
        {"Merolt_FCHBA_SCSIProtocolEndpointHBA",    "SCSI initiator",  {{"Name"}}},
        {"Merolt_FCHBA_SCSIProtocolEndpointTarget", "SCSI target",     {{"Name"}}},
        {"Merolt_FCHBA_StorageExtent",       "logical unit",        {{"LunID"}, {"VendorID"}, {"ProductID"}, {"Name"}}},
        {"Merolt_FCHBA_SoftwareIdentity",    "software",            {{"Name"}, {"VersionString", "version "}}},
        {"Merolt_FCHBA_SoftwareInstallationService",             "installation service", {{"Caption"}}},
        {"Merolt_FCHBA_SoftwareInstallationServiceCapabilities", "capabilities",         {{"InstanceID"}}},

        {"Merolt_NIC_PortController",        "Ethernet controller", {{"DeviceID"}, {"OperationalStatus"}}},
        {"Merolt_NIC_EthernetPort2",         "Ethernet port",       {{"PermanentAddress"}, {"Speed"}, {"StatusDescriptions"}}},
        {"Merolt_NIC_NetworkPort",           "network port",        {{"DeviceID"}, {"StatusDescriptions"}}},
        {"Merolt_NIC_LANEndpoint",           "LAN endpoint",        {{"MACAddress"}, {"MaxDataSize", "MTU "}}},
        {"Merolt_NIC_IPProtocolEndpoint",    "IP endpoint",         {{"Name"}, {"IPv4Address"}, {"SubnetMask", "mask "}, {"IPv6Address"}}},
        {"Merolt_NIC_IPProtocolEndpointCapabilities", "capabilities", {{"InstanceID"}}},
        {"Merolt_NIC_SoftwareIdentity",      "software",            {{"Name"}, {"VersionString", "version "}}},
        {"Merolt_NIC_SoftwareInstallationService",             "installation service", {{"Caption"}}},
        {"Merolt_NIC_SoftwareInstallationServiceCapabilities", "capabilities",         {{"InstanceID"}}},
        {"Merolt_NIC_RegisteredProfile",     "profile",             {{"RegisteredName"}, {"RegisteredVersion", "version "}}},

        {"Merolt_FCHBA_ObjectManager",       "CIM server",          {{"ElementName"}, {"Name"}}},
        {"Merolt_FCHBA_CIMXMLCommMech",      "protocol",            {{"Name"}}},
        {"Merolt_FCHBA_Namespace",           "namespace",           {{"Name"}}},
    };
    // clang-format on
    return rows;
}

std::string lastKey(const InstanceObject& instance) {
    Arena arena;
    const ObjectPathObject& path = *instance.path(arena);
    return path.keys().empty() ? std::string() : plainText(path.keys().back().data);
}

std::string chosenLabel(const Label& row, const InstanceObject& instance) {
    std::string text(row.word);
    std::string_view separator = " ";
    for (const Part& part : row.parts) {
        const CMPIData* data = instance.value(part.property);
        const std::string value = data ? shortText(part.property, *data) : std::string();
        if (value.empty()) continue;
        text.append(separator).append(part.prefix).append(value);
        separator = ", ";
    }
    return text;
}

} // namespace

std::string labelOf(const InstanceObject& instance) {
    for (const Label& row : labels()) {
        if (equalNames(row.className, instance.className())) return chosenLabel(row, instance);
    }
    return printable(std::string(instance.className()).append(" ").append(lastKey(instance)));
}

} // namespace cimhost::cli
