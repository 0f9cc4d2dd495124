#include "configuration/nic_properties.h"

#include "platform/files.h"
#include "platform/lasting.h"
#include "text/text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <strings.h>

namespace merolt {

namespace {

constexpr const char* fileName = "meroltcna.properties";

/// The text behind the key if the item begins with it, whatever the case; otherwise null.
const char* behindKey(const char* item, const char* key) {
    const std::size_t length = std::strlen(key);
    return strncasecmp(item, key, length) == 0 ? item + length : nullptr;
}

const char* value(const char* text) { return text + std::strspn(text, " \t="); }

std::uint8_t flag(const char* text) { return equalsIgnoringCase(text, "true") || std::atoi(text) != 0 ? 1 : 0; }

} // namespace

Merolt_NIC_Properties& Merolt_NIC_Properties::instance() {
    static platform::Lasting<Merolt_NIC_Properties> properties;
    [[maybe_unused]] static const bool isRead = [] {
        properties.value.reload();
        return true;
    }();
    return properties.value;
}

void Merolt_NIC_Properties::reload() {
    std::cerr << "Merolt_NIC_Properties::reload, properties file name: " << fileName << '\n' << std::flush;
    platform::RegularFileStream file(fileName);
    if (!file.good()) return;
    for (;;) {
        char item[256] = "";
        file >> std::setw(sizeof(item)) >> item;
        // At the end of the file the stream is not clean any more, even if an item was read.
        if (!file.good()) return;
        parseItem(item);
    }
}

void Merolt_NIC_Properties::parseItem(const char* item) {
    item += std::strspn(item, " \t");
    if (item[0] == '#') return;
    const char* text = nullptr;
    if ((text = behindKey(item, "ErrorLog"))) {
        errorLogEnabled = flag(value(text));
    } else if ((text = behindKey(item, "DebugLog"))) {
        debugLogEnabled = flag(value(text));
    } else if ((text = behindKey(item, "LinkStatusPollIntervalSeconds"))) {
        linkStatusPollIntervalSeconds = std::atoi(value(text));
    } else if ((text = behindKey(item, "InteropNamespace"))) {
        std::snprintf(interopNamespace, sizeof(interopNamespace), "%s", value(text));
    }
}

} // namespace merolt
