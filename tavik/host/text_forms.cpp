#include "tavik/host/text_forms.h"

#include <algorithm>

#include <arpa/inet.h>

namespace tavik::host {

namespace {

constexpr std::string_view hexadecimalDigits = "0123456789abcdef";

int digitValue(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    return -1;
}

template <std::size_t size>
Attribute<std::array<std::uint8_t, size>> parseExactly(std::string_view digits, const char* what) {
    const auto bytes = parseHex(digits);
    if (!bytes || bytes->size() != size) return Absence{what};
    std::array<std::uint8_t, size> value{};
    std::copy(bytes->begin(), bytes->end(), value.begin());
    return value;
}

} // namespace

std::string formatHex(const std::uint8_t* bytes, std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += hexadecimalDigits[bytes[i] >> 4];
        text += hexadecimalDigits[bytes[i] & 15];
    }
    return text;
}

Attribute<Bytes> parseHex(std::string_view digits) {
    if (digits.empty() || digits.size() % 2 != 0) return Absence{"no pairs of hexadecimal digits"};
    Bytes bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const int high = digitValue(digits[i]);
        const int low = digitValue(digits[i + 1]);
        if (high < 0 || low < 0) return Absence{"no pairs of hexadecimal digits"};
        bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
    }
    return bytes;
}

std::string formatMac(const MacAddress& address) {
    std::string text;
    for (const auto byte : address)
        text += (text.empty() ? "" : ":") + formatHex(&byte, 1);
    return text;
}

Attribute<MacAddress> parseMac(std::string_view text) {
    const Absence absence{"no Ethernet address"};
    if (text.size() != 17) return absence;
    std::string digits;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i % 3 != 2)
            digits += text[i];
        else if (text[i] != ':')
            return absence;
    }
    return parseExactly<6>(digits, "no Ethernet address");
}

std::string formatWorldWideName(const WorldWideName& name) { return formatHex(name.data(), name.size()); }

Attribute<WorldWideName> parseWorldWideName(std::string_view text) {
    if (text.starts_with("0x")) text.remove_prefix(2);
    return parseExactly<8>(text, "no world wide name");
}

std::string formatIPAddress(const IPAddress& address) {
    char text[INET6_ADDRSTRLEN] = {};
    if (address.family == AddressNone) return {};
    const int family = address.family == AddressIPv4 ? AF_INET : AF_INET6;
    return ::inet_ntop(family, address.bytes.data(), text, sizeof text);
}

Attribute<IPAddress> parseIPAddress(const std::string& text) {
    IPAddress address;
    if (::inet_pton(AF_INET, text.c_str(), address.bytes.data()) == 1)
        address.family = AddressIPv4;
    else if (::inet_pton(AF_INET6, text.c_str(), address.bytes.data()) == 1)
        address.family = AddressIPv6;
    if (address.family == AddressNone) return Absence{"no IP address: " + text.substr(0, 50)};
    return address;
}

std::size_t splitWords(std::string_view line, std::string_view* words, std::size_t room) {
    std::size_t count = 0;
    for (std::size_t at = 0; at <= line.size(); ++count) {
        const auto end = std::min(line.find(' ', at), line.size());
        if (count < room) words[count] = line.substr(at, end - at);
        at = end + 1;
    }
    return count;
}

std::string formatId(std::uint16_t id) {
    const std::uint8_t bytes[] = {static_cast<std::uint8_t>(id >> 8), static_cast<std::uint8_t>(id)};
    return "0x" + formatHex(bytes, 2);
}

} // namespace tavik::host
