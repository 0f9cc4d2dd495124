// The source of adapters that is the machine itself, read from its Linux kernel. It never writes.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <variant>

#include "tavik/host/kernel_queries.h"
#include "tavik/host/sys_tree.h"
#include "tavik/source.h"

namespace tavik {

/** Reads /sys and asks the kernel, both in the network namespace of the process. Interfaces and Fibre Channel hosts
 *  can be queried once they have been loaded; flash calls answer statusReadOnly. What is shown and how it is read
 *  stands in docs/host-source.md. */
std::unique_ptr<Source> makeHostSource();

/** Another machine, as record-host.sh recorded it into the folder. The same is read of it as of the machine itself.
 *  @return the error for what is no recording or cannot be read. */
std::variant<std::unique_ptr<Source>, FleetError> makeRecordingSource(const std::filesystem::path& folder);

namespace host {

inline constexpr std::chrono::milliseconds defaultWatchInterval{2000};

/** The same over other roots and answers. @param watchInterval how often states of Fibre Channel ports are looked at,
 *  which the kernel does not tell on its own. @param place of the root, named by errors; empty for the machine
 *  itself. */
std::unique_ptr<Source> makeHostSource(const SysTree& tree, std::unique_ptr<KernelQueries> queries,
                                       std::chrono::milliseconds watchInterval = defaultWatchInterval,
                                       const std::string& place = {});

} // namespace host

} // namespace tavik
