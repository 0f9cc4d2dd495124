// The device behind a network interface or a Fibre Channel host: its bus, its driver and its identity there.
#pragma once

#include <cstdint>
#include <string>

#include "tavik/host/attribute.h"
#include "tavik/host/pci_vpd.h"
#include "tavik/host/sys_tree.h"

namespace tavik::host {

/** domain:bus:slot.function; the text of a slot is all of it but the function. */
struct PciAddress {
    std::string slot; ///< "0000:03:00"
    std::uint8_t function = 0;

    std::string text() const { return slot + "." + std::to_string(function); }

    bool operator==(const PciAddress&) const = default;
};

struct PciFunction {
    PciAddress address;
    Attribute<std::uint16_t> vendor;
    Attribute<std::uint16_t> device;
    Attribute<std::uint16_t> subsystemVendor;
    Attribute<std::uint16_t> subsystemDevice;
    Attribute<std::string> deviceSerialNumber; ///< sixteen digits, from the extended configuration space
    Attribute<PciVpd> vpd;
    bool isVirtualFunction = false; ///< carved out of another function (SR-IOV)

    bool operator==(const PciFunction&) const = default;
};

struct UsbDevice {
    Attribute<std::string> manufacturer;
    Attribute<std::string> product;
    Attribute<std::string> serialNumber;

    bool operator==(const UsbDevice&) const = default;
};

struct DeviceParent {
    std::string path;           ///< sys/devices/...
    Attribute<std::string> bus; ///< "pci", "virtio", "usb", ...
    Attribute<std::string> driver;
    Attribute<PciFunction> pci; ///< of the device, or of the transport that it stands for (virtio)
    Attribute<UsbDevice> usb;

    bool operator==(const DeviceParent&) const = default;
};

/** "0000:03:00.1" as the kernel names its devices. */
Attribute<PciAddress> parsePciAddress(const std::string& name);

/** The device serial number in an extended configuration space. Takes any bytes. Absent without the capability, also
 *  because only root is shown more than the first 64 bytes. */
Attribute<std::string> parseDeviceSerialNumber(const Bytes& configuration);

/** @param devicePath resolved, as SysTree::resolve gives it. Slow: reads vital product data from the card. */
DeviceParent readDeviceParent(const SysTree& tree, const std::string& devicePath);

/** The address of the PCI function behind a device, without reading it. */
Attribute<PciAddress> findPciAddress(const SysTree& tree, const std::string& devicePath);

/** The folder of the nearest PCI function at or above a device; empty if there is none. */
std::string findPciPath(const std::string& devicePath);

} // namespace tavik::host
