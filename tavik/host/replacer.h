// Finds many names in files at once, in every form in which they stand there, and puts others in their place.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tavik/model.h"

namespace tavik::host {

/** Sizes never change. Where two names begin at one place, the longer one counts. */
class Replacer {
public:
    /** Shorter ones would be found where they do not belong. */
    static constexpr std::size_t shortestText = 4;

    /** Hexadecimal digits of either case, in one run or with ':', '-' or '.' between them, and the bytes themselves in
     *  both orders. @param other of the same size, at least four. */
    void addBytes(const Bytes& original, const Bytes& other);

    /** Characters of either case. One of less than eight characters counts only as a word of its own.
     *  @param other of the same size. */
    void addText(const std::string& original, const std::string& other);

    /** An IP address as text: as a word of its own. The other one may be longer or shorter. */
    void addAddress(const std::string& original, const std::string& other);

    std::string replaced(std::string_view content) const;

private:
    enum class Form : std::uint8_t { Digits, Raw, Text, Word, Address };
    struct Needle {
        Form form;
        std::string original; ///< digits and texts in lower case
        std::string other;
    };
    struct Match {
        std::size_t size = 0;
        std::string other;
    };
    using Index = std::unordered_map<std::uint32_t, std::vector<Needle>>;

    void add(Form form, std::string original, std::string other);
    static Match matched(const Needle& needle, std::string_view content, std::size_t at);
    void longest(std::uint32_t key, std::string_view content, std::size_t at, Match& best) const;

    Index index_; ///< by the first four characters or bytes, or the first eight digits
};

} // namespace tavik::host
