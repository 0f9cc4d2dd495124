#include "classes/storage/vital_product_data.h"

#include "classes/record_list.h"
#include "inventory/chain.h"
#include "inventory/chip.h"
#include "inventory/library_text.h"
#include "text/text.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace merolt::storage {

VpdStore g_productIdentifier;
VpdStore g_vpdRTag;
VpdStore g_vpdEndTag;
VpdStore g_partNumber;
VpdStore g_serialNumber;
VpdStore g_miscInformation;
VpdStore g_manufacturingId;
VpdStore g_efiDriverVersion;
VpdStore g_firmwareVersion;
VpdStore g_biosVersion;
VpdStore g_fcodeVersion;
VpdStore g_flashImageVersion;
VpdStore g_fcCode;
VpdStore g_fruNumberVersion;
VpdStore g_assetTag;
VpdStore g_UUID;
VpdStore g_i2cUUID;

namespace {

/// What is cleared before a card is read: all that its block is read into, but g_UUID.
constexpr VpdStore* clearedStores[] = {
    &g_productIdentifier, &g_vpdRTag,           &g_vpdEndTag,        &g_partNumber,       &g_serialNumber,
    &g_miscInformation,   &g_manufacturingId,   &g_efiDriverVersion, &g_firmwareVersion,  &g_biosVersion,
    &g_fcodeVersion,      &g_flashImageVersion, &g_fcCode,           &g_fruNumberVersion, &g_assetTag,
};

constexpr std::size_t blockSize = 1024;

constexpr std::uint8_t tagProductIdentifier = 0x82;
constexpr std::uint8_t tagReadOnlySection = 0x90;
constexpr std::uint8_t tagWritableSection = 0x91;
constexpr std::uint8_t tagEnd = 0x78;

enum class Form { asItStands, trimmed, packedVersion };

/// A keyword and where its value goes; keywords without a store are known and dropped.
struct Keyword {
    char name[3];
    std::string_view label; ///< with its colon
    VpdStore* store;
    Form form;
};

constexpr Keyword keywords[] = {
    {"RV", "", nullptr, Form::asItStands},
    {"RW", "", nullptr, Form::asItStands},
    {"PN", "Part Number:", &g_partNumber, Form::asItStands},
    {"EC", "", nullptr, Form::asItStands},
    {"SN", "Serial Number:", &g_serialNumber, Form::asItStands},
    {"V0", "Miscellaneous Information:", &g_miscInformation, Form::asItStands},
    {"V2", "", nullptr, Form::asItStands},
    {"MN", "Manufacturing Id:", &g_manufacturingId, Form::asItStands},
    {"V1", "EFI Driver Version:", &g_efiDriverVersion, Form::trimmed},
    {"V3", "Firmware Version:", &g_firmwareVersion, Form::trimmed},
    {"V4", "BIOS Version:", &g_biosVersion, Form::trimmed},
    {"V5", "FCode Version:", &g_fcodeVersion, Form::trimmed},
    {"RM", "Flash Image Version:", &g_flashImageVersion, Form::trimmed},
    {"V9", "Flash Image Version:", &g_flashImageVersion, Form::packedVersion},
    {"FC", "FC Code:", &g_fcCode, Form::asItStands},
    {"FN", "Fru Number:", &g_fruNumberVersion, Form::asItStands},
    {"YA", "Asset Tag:", &g_assetTag, Form::asItStands},
    {"YU", "UUID:", &g_UUID, Form::asItStands},
};

/// A value ends at its length or at a zero byte.
std::string_view valueOf(const char* value, std::size_t length) { return {value, strnlen(value, length)}; }

/// Reads a number of at most two characters, a sign among them, behind white space. @return false if there is none.
bool readTwoDigits(const char*& text, int& number) {
    while (*text == ' ' || (*text >= '\t' && *text <= '\r'))
        ++text;
    const char* const end = text + 2;
    const bool isNegative = *text == '-';
    if (isNegative || *text == '+') ++text;
    const char* const digits = text;
    int value = 0;
    for (; text < end && *text >= '0' && *text <= '9'; ++text)
        value = value * 10 + (*text - '0');
    if (text == digits) return false;
    number = isNegative ? -value : value;
    return true;
}

/// A version of three two-digit numbers, such as 010203 for 1.2.3; numbers that are not there read as 0.
FixedText<64> unpackVersion(const char* packed) {
    int numbers[3] = {0, 0, 0};
    for (int& number : numbers)
        if (!readTwoDigits(packed, number)) break;
    FixedText<64> version;
    version.join(
        {formatNumber(numbers[0]).view(), ".", formatNumber(numbers[1]).view(), ".", formatNumber(numbers[2]).view()});
    return version;
}

/// Calls take with a keyword's store and the parts of its text.
template <class Take>
void takeKeyword(const Keyword& keyword, std::string_view value, Take&& take) {
    if (keyword.form == Form::asItStands) {
        take(*keyword.store, {keyword.label, value});
    } else if (keyword.form == Form::trimmed) {
        take(*keyword.store, {keyword.label, trimmed(value)});
    } else {
        FixedText<256> packed;
        packed.assign(trimmed(value));
        take(*keyword.store, {keyword.label, unpackVersion(packed.text()).view()});
    }
}

/// The same for one entry of a block, if a store is for it.
template <class Take>
void takeTag(const std::uint8_t* tag, const std::uint8_t* value, std::size_t length, Take&& take) {
    const std::string_view text = value ? valueOf(reinterpret_cast<const char*>(value), length) : "";
    switch (tag[0]) {
    case tagProductIdentifier:
        take(g_productIdentifier, {"Product Identifier:", text});
        return;
    case tagReadOnlySection:
        take(g_vpdRTag, {"VPD-R Tag:"});
        return;
    case tagWritableSection:
        return;
    case tagEnd:
        take(g_vpdEndTag, {"End Tag:"});
        return;
    default:
        break;
    }
    for (const Keyword& keyword : keywords) {
        if (std::memcmp(tag, keyword.name, 2) != 0) continue;
        if (keyword.store) takeKeyword(keyword, text, take);
        return;
    }
}

/// The same for each entry of a block. @return how many of its bytes that depends on; what lies behind them is not
/// looked at.
template <class Take>
std::size_t takeTags(const std::uint8_t* buffer, std::size_t size, Take&& take) {
    constexpr std::size_t headerSize = 3;
    std::size_t position = 0;
    // A block without end tag ends where the buffer does, and so does a value that claims to be longer.
    while (position + headerSize <= size && buffer[position] != tagEnd) {
        const std::uint8_t* tag = buffer + position;
        std::size_t length = 0;
        if (tag[0] == tagProductIdentifier) {
            length = static_cast<std::size_t>(tag[1] | tag[2] << 8);
        } else if (tag[0] != 0 && tag[0] != tagReadOnlySection && tag[0] != tagWritableSection) {
            length = tag[2];
        }
        const std::size_t room = size - position - headerSize;
        if (tag[0] != 0) takeTag(tag, tag + headerSize, std::min(length, room), take);
        position += headerSize + length;
    }
    if (position < size && buffer[position] == tagEnd) takeTag(buffer + position, nullptr, 0, take);
    return std::min(position + 1, size);
}

using TextParts = std::initializer_list<std::string_view>;

constexpr auto toStore = [](VpdStore& store, TextParts parts) { store.join(parts); };

/// The block of one card as it was last read, and what it says.
class Reading {
public:
    bool isOf(const std::uint8_t* block) const {
        return !bytes.empty() && std::memcmp(block, bytes.data(), bytes.size()) == 0;
    }
    bool isEmpty() const { return bytes.empty(); }

    /// Takes a block apart. No store may show its texts.
    void take(const std::uint8_t* block) {
        static std::uint64_t readings = 0;
        bytes.clear();
        texts.clear();
        entries.clear();
        const std::size_t length =
            takeTags(block, blockSize, [&](VpdStore& store, TextParts parts) { add(store, parts); });
        bytes.assign(block, block + length);
        stamp = ++readings;
    }

    /// Writes what the block says into the stores.
    void show() const {
        for (const Entry& entry : entries)
            entry.store->show({texts.data() + entry.begin, entry.length});
    }

    std::uint64_t number() const { return stamp; }

    std::uint32_t handle = 0;
    Reading* next = nullptr; ///< what was read behind it the last time

private:
    struct Entry {
        VpdStore* store;
        std::size_t begin;
        std::size_t length;
    };

    void add(VpdStore& store, TextParts parts) {
        static MeasuredText<VpdStore::capacity + 1> text;
        text.join(parts);
        entries.push_back({&store, texts.size(), text.view().size()});
        texts.append(text.view());
        texts.push_back('\0');
    }

    std::vector<std::uint8_t> bytes; ///< as many as decide what it says
    std::string texts;
    std::vector<Entry> entries;
    std::uint64_t stamp = 0;
};

/// What was read of each card. Lists are built before single requests, several for some, and each asks for the block
/// of each card; the library is asked every time, but a block that is as it was is not taken apart again.
class Readings final : KeptMemory {
public:
    /// The reading of a card; the cards come in the order of the tree, so it mostly follows the one before.
    Reading& of(std::uint32_t handle) {
        if (last && last->next && last->next->handle == handle) return *(last = last->next);
        if (all.size() > mostEntries(ChainKind::functions)) forget();
        Reading& found = all[handle];
        found.handle = handle;
        if (last) last->next = &found;
        return *(last = &found);
    }

    void forget() {
        keepStores();
        last = nullptr;
        all.clear();
    }

    /// Before a text goes that they may show.
    static void keepStores() {
        for (VpdStore* store : clearedStores)
            store->keepOwn();
        g_UUID.keepOwn();
    }

private:
    void release() override { forget(); }

    std::unordered_map<std::uint32_t, Reading> all;
    Reading* last = nullptr;
};

Readings readings;
std::uint64_t lastReading = 0;

void readBlock(std::uint32_t handle, const std::uint8_t* block) {
    try {
        Reading& reading = readings.of(handle);
        if (!reading.isOf(block)) {
            if (!reading.isEmpty()) Readings::keepStores();
            reading.take(block);
        }
        reading.show();
        lastReading = reading.number();
    } catch (const std::bad_alloc&) {
        readings.forget();
        parseVpdBuffer(block, blockSize);
    }
}

void fetchUUID(TAVIK_DeviceRecord* device) {
    g_i2cUUID.clear();
    char* text = nullptr;
    std::uint32_t size = 0;
    if (TAVIK_GetUUIDFromI2CVPD(device, &text, &size) != 0 || !text) return;
    g_i2cUUID.assign(libraryText(text, size));
    TAVIK_FreeMem(text);
}

} // namespace

void clearVpdStores() {
    for (VpdStore* store : clearedStores)
        store->clear();
}

int fetchAdapterVpd(TAVIK_DeviceRecord* device) {
    lastReading = 0;
    if (!device) return -1;
    fetchUUID(device);
    if (!chipHasVpdSerial(device)) return -1;
    // One block for all cards, under provider_lock as the stores are: every record of every list reads one.
    static std::uint8_t block[blockSize];
    std::memset(block, 0, blockSize);
    std::uint32_t size = blockSize;
    const int status = static_cast<int>(TAVIK_GetVpd(device->handle, 0, block, &size));
    if (status == 0) readBlock(device->handle, block);
    return status;
}

std::uint64_t lastVpdReading() { return lastReading; }

void forgetVpdReadings() { readings.forget(); }

void parseVpdBuffer(const std::uint8_t* buffer, std::size_t size) { takeTags(buffer, size, toStore); }

void parseVpdTag(const std::uint8_t* tag, const std::uint8_t* value, std::size_t length) {
    takeTag(tag, value, length, toStore);
}

const char* vpdValue(const VpdStore& store) {
    const char* colon = std::strchr(store.text(), ':');
    return colon ? colon + 1 : "";
}

} // namespace merolt::storage
