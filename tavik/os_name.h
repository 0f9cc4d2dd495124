// The name of the operating system for people.
#pragma once

#include <string>
#include <vector>

namespace tavik {

/** @param files os-release files: the first that gives a PRETTY_NAME decides; without one the kernel's name and
 *  release are taken. */
std::string osName(const std::vector<std::string>& files = {"/etc/os-release", "/usr/lib/os-release"});

} // namespace tavik
