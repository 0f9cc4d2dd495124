// What of a recording tells one machine from another.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tavik/host/anonymise.h"
#include "tavik/host/pseudonyms.h"
#include "tavik/host/replacer.h"
#include "tavik/model.h"

namespace tavik::host {

class Identities {
public:
    /** @param hostNames known beside those that the recording tells; with or without their domain. */
    explicit Identities(const std::vector<std::string>& hostNames);

    /** Takes what a file of the recording tells: by its name, and MAC addresses in any text and in the name of its
     *  folders. @param path relative to the recording. */
    void collect(const std::string& path, const Bytes& content);

    /** Pseudonyms for everything that was collected, none of which is an original. Needs random numbers that differ.
     *  @return sorted; nothing if none can be found. */
    std::optional<std::vector<Replacement>> choose(const Pseudonyms::Random& random) const;

    /** A replacer for them. */
    static Replacer makeReplacer(const std::vector<Replacement>& replacements);

private:
    void addMacsIn(std::string_view text);
    void addSerialNumber(const std::string& text);
    void addHostName(const std::string& anyCase);
    void addNeighbours(const std::string& lines);

    std::set<MacAddress> macs_;
    std::set<Bytes> wideNames_;
    std::set<Bytes> euis_;
    std::set<std::string> addresses_;
    std::set<std::string> serialNumbers_;
    std::set<std::string> hostNames_;
    std::set<std::string> neighbourTexts_;
};

} // namespace tavik::host
