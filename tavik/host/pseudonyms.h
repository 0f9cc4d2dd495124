// Other names of the same form for what tells one machine from another.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "tavik/model.h"

namespace tavik::host {

/** Gives the same pseudonym for the same original, and never two originals of one kind the same one. What is near stays
 *  near: ports whose addresses differ in the last digit, ports of one storage array, addresses of one network. That a
 *  pseudonym is the original of something else is not excluded, only unlikely. */
class Pseudonyms {
public:
    using Random = std::function<std::uint64_t()>;

    /** @param random each call gives 64 random bits. */
    explicit Pseudonyms(Random random) : random_(std::move(random)) {}

    /** The maker's three bytes and the last digit stay. Zeros and addresses of groups stay whole. */
    MacAddress mac(const MacAddress& original);

    /** A world wide name of 8 bytes (NAA 1, 2 and 5, EUI-64) or of 16 (NAA 6, and others as an EUI-64 with more behind
     *  it): form, maker and last byte stay, and a MAC address in it becomes the one that it becomes elsewhere. Other
     *  sizes, and names of zeros or ones only, stay whole. */
    Bytes wideName(const Bytes& original);

    /** An EUI-64, also one that begins like a name of another form: device serial numbers of PCI. */
    Bytes eui(const Bytes& original);

    /** An IPv4 address stays in its range (10.0.0.0/8, 192.168.0.0/16, ...), or keeps its first byte; an IPv6 address
     *  keeps its first sixteen bits and its zeros. One that is made of a MAC address follows that. Loopback, groups and
     *  zeros stay. */
    IPAddress ip(const IPAddress& original);

    /** For serial numbers and names: a digit becomes a digit, a letter a letter of the same case, and what has
     *  hexadecimal digits alone keeps to them. Other characters stay. */
    std::string text(const std::string& original);

private:
    std::uint64_t number(const std::string& scope, std::uint64_t original, unsigned bits);
    std::uint64_t suffix(std::uint64_t maker, std::uint64_t original);
    std::uint64_t arrayNumber(std::uint64_t maker, std::uint64_t original);
    std::uint64_t shortName(std::uint64_t original);
    std::uint64_t shortEui(std::uint64_t original);
    std::uint32_t ipv4(std::uint32_t original);
    void interfaceOfMac(IPAddress& address);
    void groups(IPAddress& address, std::size_t end);
    std::string drawn(const std::string& original);

    Random random_;
    std::map<std::string, std::map<std::uint64_t, std::uint64_t>> numbers_; ///< by scope
    std::map<std::string, std::set<std::uint64_t>> givenNumbers_;           ///< by scope
    std::map<std::pair<int, std::uint32_t>, bool> flips_;                   ///< by number of leading bits and those
    std::map<std::string, std::string> texts_;
    std::set<std::string> givenTexts_;
};

} // namespace tavik::host
