// What a port is used by and what it reaches, a line of text each: interfaces above it, virtual functions, remote
// ports, logical units.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tavik/host/attribute.h"
#include "tavik/host/fibre_channel_host.h"
#include "tavik/host/sys_tree.h"

namespace tavik::host {

using Lines = std::vector<std::string>;

/** Lines of a list. Where there are more the last one says so: "and more". */
inline constexpr std::size_t mostLines = 256;

/** "bond0 (bond, active, up)", "bond0.100 (vlan of bond0)": the interfaces that use this one, the nearest
 *  first. The two words behind bond are what the bond says of this member. */
Attribute<Lines> usersOf(const SysTree& tree, const std::string& interface);

/** "0000:03:10.0 ens1f0v0" of each function that was carved out of the one in this folder, by number. The interface is
 *  missing where the function belongs to somebody else, such as a guest. */
Attribute<Lines> virtualFunctionsOf(const SysTree& tree, const std::string& pciFolder);

/** The same of the function out of which the one in this folder was carved. */
Attribute<std::string> physicalFunctionOf(const SysTree& tree, const std::string& pciFolder);

/** "2100000200000001: FCP Target, Online, 0A0200" of each remote port, initiators too: name, roles, state, address. */
Attribute<Lines> showRemotePorts(const SysTree& tree, const std::vector<RemotePort>& ports);

/** "LUN 3 of 2100000200000001: sdb, 107374182400 bytes, running, mpatha with 4 paths, 3 running" of each unit. What the
 *  kernel does not say is missing. */
Attribute<Lines> showUnits(const SysTree& tree, const std::vector<RemotePort>& ports);

/** Upper-case digits, as the library's readers show world wide names. */
std::string showName(const WorldWideName& name);
/** Six upper-case digits; absent without a login at a fabric. */
Attribute<std::string> showPortId(std::uint32_t id);

} // namespace tavik::host
