// What the kernel tells only when asked by a system call: driver, permanent address, link settings, transceiver memory,
// IP addresses. And what a daemon beside it knows: neighbours.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tavik/host/attribute.h"
#include "tavik/host/interface_links.h"
#include "tavik/host/link_settings.h"
#include "tavik/host/neighbours.h"
#include "tavik/host/sys_tree.h"
#include "tavik/model.h"

namespace tavik::host {

/** Texts may be empty where a driver gives none. */
struct DriverInfo {
    std::string driver;
    std::string version;
    std::string firmwareVersion;
    std::string busInfo;

    bool operator==(const DriverInfo&) const = default;
};

/** The memory of a plugged transceiver module, laid out as its kind says. */
struct ModuleMemory {
    /** The kernel's numbers. It has none for CMIS, whose pages it gives one by one: ours is that of the QSFP-DD in
     *  SFF-8024, and the content is laid out as optics::decodeCmis takes it. */
    enum Kind : std::uint32_t { Sff8079 = 1, Sff8472 = 2, Sff8636 = 3, Sff8436 = 4, Cmis = 0x18 };

    std::uint32_t kind = 0; ///< a Kind or a number that has no name here
    Bytes content;          ///< at most largestModuleMemory

    bool operator==(const ModuleMemory&) const = default;
};

inline constexpr std::size_t largestModuleMemory = 1024;

/** An IP address of an interface. Scope and flags are the kernel's (RT_SCOPE_, IFA_F_). */
struct InterfaceAddress {
    std::uint32_t interfaceIndex = 0;
    IPAddress address;
    std::uint8_t prefixLength = 0;
    std::uint8_t scope = 0;
    std::uint32_t flags = 0;

    bool operator==(const InterfaceAddress&) const = default;
};

/** Callable from several threads at once. Interfaces go by their names; one that is gone gives absences. */
class KernelQueries {
public:
    virtual ~KernelQueries() = default;

    virtual Attribute<DriverInfo> driverInfo(const std::string& interface) = 0;

    /** Absent where the driver keeps none: virtual interfaces. */
    virtual Attribute<MacAddress> permanentAddress(const std::string& interface) = 0;

    /** Slow: reads over the two-wire bus of the module. */
    virtual Attribute<ModuleMemory> moduleMemory(const std::string& interface) = 0;

    /** Absent where the driver has no link modes: virtual interfaces; so below. */
    virtual Attribute<LinkSettings> linkSettings(const std::string& interface) = 0;
    virtual Attribute<PauseSettings> pauseSettings(const std::string& interface) = 0;
    virtual Attribute<FecSettings> fecSettings(const std::string& interface) = 0;

    /** Who is at the other end of the cable; absent where nobody knows. */
    virtual Attribute<std::vector<Neighbour>> neighbours(const std::string&) { return Absence{"not recorded"}; }

    /** All interfaces at once. Absent where nothing of the kind was recorded. */
    virtual Attribute<std::vector<InterfaceLink>> links() { return Absence{"not recorded"}; }

    /** For one look by one thread, which it must not outlive: it keeps open what it reads of. Null: ask this one. */
    virtual std::unique_ptr<KernelQueries> forOneLook() { return nullptr; }

    /** Of all interfaces, in the kernel's order. */
    virtual Attribute<std::vector<InterfaceAddress>> addresses() = 0;
};

/** Asks the running kernel, in the network namespace of the calling thread. */
std::unique_ptr<KernelQueries> makeLinuxQueries();

/** Gives the answers that recordQueries wrote into the folder kernel/ of the tree. */
std::unique_ptr<KernelQueries> makeRecordedQueries(const SysTree& tree);

/** Writes the answers about these interfaces below folder/kernel/, one file an answer; what is absent has no file.
 *  @return an error that names the file, or an empty text. */
std::string recordQueries(KernelQueries& queries, const std::vector<std::string>& interfaces,
                          const std::string& folder);

/** True if the name can be one of an interface, and is no path. */
bool isInterfaceName(std::string_view name);

} // namespace tavik::host
