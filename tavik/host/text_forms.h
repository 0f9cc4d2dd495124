// Binary facts as text and back: hardware addresses, IP addresses, bytes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tavik/host/attribute.h"
#include "tavik/model.h"

namespace tavik::host {

/** "02:fc:00:00:00:01" */
std::string formatMac(const MacAddress& address);
/** Takes what formatMac writes. */
Attribute<MacAddress> parseMac(std::string_view text);

/** Sixteen digits: "21000024ff123456" */
std::string formatWorldWideName(const WorldWideName& name);
/** Takes sixteen hexadecimal digits, with or without 0x in front. */
Attribute<WorldWideName> parseWorldWideName(std::string_view text);

/** Lower-case digits, two a byte. */
std::string formatHex(const std::uint8_t* bytes, std::size_t size);
/** Takes an even number of hexadecimal digits, and nothing else. */
Attribute<Bytes> parseHex(std::string_view digits);

/** "192.0.2.2" or "fd00::2"; empty without a family. */
std::string formatIPAddress(const IPAddress& address);
Attribute<IPAddress> parseIPAddress(const std::string& text);

/** "0x1af4" */
std::string formatId(std::uint16_t id);

/** The words of a line between single blanks, the first room ones of them kept. @return how many there are. */
std::size_t splitWords(std::string_view line, std::string_view* words, std::size_t room);

} // namespace tavik::host
