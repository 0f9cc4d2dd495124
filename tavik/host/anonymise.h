// Copies a recording with other addresses, names and serial numbers, so that it can be given away.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tavik/host/pseudonyms.h"

namespace tavik::host {

struct Replacement {
    std::string_view kind; ///< "MAC address", "IP address", "world wide name", "serial number", "host name", ...
    std::string original;
    std::string other;

    bool operator==(const Replacement&) const = default;
};

/** What was done, or what was wrong and where. */
using AnonymisedOrError = std::variant<std::vector<Replacement>, std::string>;

/** Copies the recording. Wherever one of its MAC and IP addresses, world wide names, serial numbers (of cards, modules,
 *  ports, USB devices) or host names stands, in files, in names of files and in links, in text or in bytes, the copy
 * has another one of the same form and maker; checksums of vital product data and modules are as right or wrong as
 * before. Only folders, regular files and links that name no absolute path are copied.
 *  @param to a folder that is not there or empty. @param hostNames names that are replaced beside those that the
 *  recording's Fibre Channel ports tell. @return the replacements, sorted. */
AnonymisedOrError anonymise(const std::filesystem::path& from, const std::filesystem::path& to,
                            const std::vector<std::string>& hostNames, const Pseudonyms::Random& random);

/** Writes a line a replacement into a new file that only its owner can read: kind, original and other, with tabs
 *  between. @return an error that names the file, or an empty text. */
std::string writeReplacements(const std::vector<Replacement>& replacements, const std::filesystem::path& file);

} // namespace tavik::host
