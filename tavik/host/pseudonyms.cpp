#include "tavik/host/pseudonyms.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace tavik::host {

namespace {

std::uint64_t numberOf(const std::uint8_t* bytes, std::size_t size) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < size; ++i)
        number = number << 8 | bytes[i];
    return number;
}

void store(std::uint64_t number, std::uint8_t* bytes, std::size_t size) {
    for (std::size_t i = size; i-- > 0; number >>= 8)
        bytes[i] = static_cast<std::uint8_t>(number);
}

std::uint64_t lowest(unsigned bits) { return (std::uint64_t{1} << bits) - 1; }

/** A range whose leading bits say what an address is for. */
struct Range {
    std::uint32_t start;
    int bits;
    int kept; ///< leading bits of its addresses that stay
};

constexpr std::array<Range, 8> ranges{{
    {0x00000000, 8, 32},  // this network
    {0x0A000000, 8, 8},   // private
    {0x64400000, 10, 10}, // shared by providers
    {0x7F000000, 8, 32},  // loopback
    {0xA9FE0000, 16, 16}, // link-local
    {0xAC100000, 12, 12}, // private
    {0xC0A80000, 16, 16}, // private
    {0xE0000000, 3, 32},  // groups and broadcast
}};

int keptBits(std::uint32_t address) {
    for (const auto& range : ranges)
        if ((address ^ range.start) >> (32 - range.bits) == 0) return range.kept;
    return 8;
}

/** The 64 bits of an interface that are made of its MAC address have FFFE in their middle (RFC 4291, appendix A). */
bool isMadeOfMac(const IPAddress& address) { return address.bytes[11] == 0xFF && address.bytes[12] == 0xFE; }

constexpr std::uint8_t universalBit = 0x02;

/** Zeros or ones alone stand where there is no name. */
bool isName(const Bytes& bytes) {
    return std::any_of(bytes.begin(), bytes.end(),
                       [&](std::uint8_t byte) { return byte != bytes.front() || (byte != 0 && byte != 0xFF); });
}

} // namespace

std::uint64_t Pseudonyms::number(const std::string& scope, std::uint64_t original, unsigned bits) {
    auto& known = numbers_[scope];
    if (const auto found = known.find(original); found != known.end()) return found->second;
    auto& given = givenNumbers_[scope];
    const bool isFull = given.size() + 1 >= lowest(bits);
    std::uint64_t drawn = 0;
    do
        drawn = random_() & lowest(bits);
    while (drawn == 0 || drawn == original || (given.contains(drawn) && !isFull));
    given.insert(drawn);
    return known[original] = drawn;
}

/** Three bytes behind those of the maker. */
std::uint64_t Pseudonyms::suffix(std::uint64_t maker, std::uint64_t original) {
    return number("suffix " + std::to_string(maker), original >> 4, 20) << 4 | (original & 0xF);
}

/** The 36 bits behind the maker in a name of NAA 5, which names of NAA 6 have too. */
std::uint64_t Pseudonyms::arrayNumber(std::uint64_t maker, std::uint64_t original) {
    return number("array " + std::to_string(maker), original >> 8, 28) << 8 | (original & 0xFF);
}

MacAddress Pseudonyms::mac(const MacAddress& original) {
    if (original == MacAddress{} || (original[0] & 1) != 0) return original;
    MacAddress other = original;
    store(suffix(numberOf(original.data(), 3), numberOf(original.data() + 3, 3)), other.data() + 3, 3);
    return other;
}

std::uint64_t Pseudonyms::shortEui(std::uint64_t original) {
    return (original & ~lowest(24)) | suffix(original >> 40, original & lowest(24));
}

std::uint64_t Pseudonyms::shortName(std::uint64_t original) {
    switch (original >> 60) {
    case 1:
    case 2:
        return (original & ~lowest(24)) | suffix(original >> 24 & lowest(24), original & lowest(24));
    case 5:
    case 6:
        return (original & ~lowest(36)) | arrayNumber(original >> 36 & lowest(24), original & lowest(36));
    default:
        return shortEui(original);
    }
}

Bytes Pseudonyms::eui(const Bytes& original) {
    if (original.size() != 8 || !isName(original)) return original;
    Bytes other(8);
    store(shortEui(numberOf(original.data(), 8)), other.data(), 8);
    return other;
}

Bytes Pseudonyms::wideName(const Bytes& original) {
    const bool hasForm = original.size() == 8 || original.size() == 16;
    if (!hasForm || !isName(original)) return original;
    Bytes other = original;
    store(shortName(numberOf(original.data(), 8)), other.data(), 8);
    if (original.size() == 8) return other;
    const auto behind = numberOf(original.data() + 8, 8);
    const auto scope = "behind " + std::to_string(numberOf(original.data(), 8));
    if (behind >> 16 != 0) store(number(scope, behind >> 16, 48) << 16 | (behind & 0xFFFF), other.data() + 8, 8);
    return other;
}

/** Two addresses that begin with the same bits keep doing so: each bit turns or not by those in front of it. */
std::uint32_t Pseudonyms::ipv4(std::uint32_t original) {
    std::uint32_t other = original;
    for (int bit = keptBits(original); bit < 32; ++bit) {
        const auto [flip, isNew] = flips_.try_emplace({bit, original >> (32 - bit)}, false);
        // The last bit always turns, so no address stays what it was.
        if (isNew) flip->second = bit == 31 || (random_() & 1) != 0;
        if (flip->second) other ^= std::uint32_t{1} << (31 - bit);
    }
    return other;
}

void Pseudonyms::interfaceOfMac(IPAddress& address) {
    auto& bytes = address.bytes;
    const MacAddress original{
        static_cast<std::uint8_t>(bytes[8] ^ universalBit), bytes[9], bytes[10], bytes[13], bytes[14], bytes[15]};
    const auto other = mac(original);
    std::copy(other.begin() + 3, other.end(), bytes.begin() + 13);
}

/** Groups of sixteen bits up to the byte, each by those in front of it. */
void Pseudonyms::groups(IPAddress& address, std::size_t end) {
    const auto original = address.bytes;
    for (std::size_t at = 2; at < end; at += 2) {
        const auto group = numberOf(original.data() + at, 2);
        const std::string scope(original.begin(), original.begin() + static_cast<std::ptrdiff_t>(at));
        if (group != 0) store(number("group " + scope, group, 16), address.bytes.data() + at, 2);
    }
}

IPAddress Pseudonyms::ip(const IPAddress& original) {
    IPAddress other = original;
    if (original.family == AddressIPv4)
        store(ipv4(static_cast<std::uint32_t>(numberOf(original.bytes.data(), 4))), other.bytes.data(), 4);
    const bool isSpecial = numberOf(original.bytes.data(), 8) == 0 || original.bytes[0] == 0xFF;
    if (original.family != AddressIPv6 || isSpecial) return other;
    groups(other, isMadeOfMac(original) ? 8 : 16);
    if (isMadeOfMac(original)) interfaceOfMac(other);
    return other;
}

std::string Pseudonyms::drawn(const std::string& original) {
    const auto isHexadecimal = std::all_of(original.begin(), original.end(),
                                           [](unsigned char character) { return std::isxdigit(character) != 0; });
    const std::uint64_t letters = isHexadecimal ? 6 : 26;
    std::string other = original;
    for (char& character : other) {
        const auto kind = static_cast<unsigned char>(character);
        if (std::isdigit(kind) != 0)
            character = static_cast<char>('0' + random_() % 10);
        else if (std::isalpha(kind) != 0)
            character =
                static_cast<char>((std::isupper(kind) != 0 ? 'A' : 'a') + static_cast<int>(random_() % letters));
    }
    return other;
}

std::string Pseudonyms::text(const std::string& original) {
    if (const auto known = texts_.find(original); known != texts_.end()) return known->second;
    constexpr int mostTries = 1000;
    std::string other = drawn(original);
    for (int tries = 0; tries < mostTries && (other == original || givenTexts_.contains(other)); ++tries)
        other = drawn(original);
    givenTexts_.insert(other);
    return texts_[original] = other;
}

} // namespace tavik::host
