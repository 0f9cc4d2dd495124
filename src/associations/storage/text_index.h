// Records of a list by a text of theirs, so that an enumeration of pairs need not compare each text with each other.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace merolt::association {

/// The text in lower case: where these are equal, the texts are equal in any letter case.
std::string lowered(std::string_view text);

class TextIndex {
public:
    void add(int record, std::string_view text) { records[lowered(text)].push_back(record); }

    /// Calls the visitor with each record of that text in any letter case, in the order in which they were added.
    /// @return false if the visitor did, which ends the walk.
    template <class Visitor>
    bool forEach(std::string_view text, Visitor&& visitor) const {
        const auto found = records.find(lowered(text));
        if (found == records.end()) return true;
        for (const int record : found->second) {
            if (!visitor(record)) return false;
        }
        return true;
    }

private:
    std::unordered_map<std::string, std::vector<int>> records;
};

} // namespace merolt::association
