#include "classes/ethernet/ip_address.h"

#include "text/fixed_text.h"

#include <cstdio>

namespace merolt::ethernet {

namespace {

constexpr int groupCount = 8;
constexpr std::uint8_t familyIPv4 = 1;
constexpr std::uint8_t familyIPv6 = 2;

using AddressText = FixedText<128>;

struct Run {
    int start = groupCount;
    int length = 0;
    bool contains(int group) const { return group >= start && group < start + length; }
};

bool isZero(const unsigned char* bytes, int group) { return bytes[2 * group] == 0 && bytes[2 * group + 1] == 0; }

Run longestZeroRun(const unsigned char* bytes) {
    Run longest;
    for (int start = 0; start < groupCount; ++start) {
        int length = 0;
        while (start + length < groupCount && isZero(bytes, start + length))
            ++length;
        if (length > longest.length) longest = {start, length};
    }
    return longest;
}

void appendGroup(const unsigned char* group, bool fixedWidth, AddressText& text) {
    FixedText<8> digits;
    if (fixedWidth) {
        digits.format("%02x%02x", group[0], group[1]);
    } else if (group[0] != 0) {
        digits.format("%x%02x", group[0], group[1]);
    } else {
        digits.format("%x", group[1]);
    }
    text.append(digits.view());
}

} // namespace

void formatIPv6Address(const unsigned char* bytes, bool fixedWidth, char* output) {
    const Run zeros = longestZeroRun(bytes);
    AddressText text;
    for (int group = 0; group < groupCount; ++group) {
        if (zeros.contains(group)) {
            if (group == zeros.start) text.append("::");
            continue;
        }
        appendGroup(bytes + 2 * group, fixedWidth, text);
        if (group + 1 != zeros.start && group + 1 != groupCount) text.append(":");
    }
    std::snprintf(output, 40, "%s", text.text());
}

const char* formatIPAddress(const TAVIK_IPAddress* address) {
    static AddressText text;
    text.clear();
    if (!address) return text.text();
    const std::uint8_t* bytes = address->address;
    if (address->family == familyIPv4) {
        text.format("%d.%d.%d.%d", bytes[0], bytes[1], bytes[2], bytes[3]);
    } else if (address->family == familyIPv6) {
        formatIPv6Address(bytes, false, text.data());
    }
    return text.text();
}

} // namespace merolt::ethernet
