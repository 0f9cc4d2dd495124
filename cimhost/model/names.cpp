#include "cimhost/model/names.h"

#include <cstring>

namespace cimhost {
namespace {

unsigned char fold(char character) noexcept {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte | 0x20) : byte;
}

bool startsName(char character) noexcept {
    const unsigned char byte = fold(character);
    return (byte >= 'a' && byte <= 'z') || byte == '_' || byte >= 0x80;
}

// Eight bytes at once; the bit that makes upper case is set in all of them. That also makes some other bytes equal,
// which a hash may do.
std::uint64_t foldedWord(const char* bytes) noexcept {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word | 0x2020202020202020U;
}

std::uint64_t mix(std::uint64_t hash, std::uint64_t word) noexcept {
    hash = (hash ^ word) * 0x9e3779b97f4a7c15U;
    return hash ^ (hash >> 32);
}

} // namespace

bool equalNames(std::string_view left, std::string_view right) noexcept {
    if (left.size() != right.size()) return false;
    if (left.empty() || std::memcmp(left.data(), right.data(), left.size()) == 0) return true;
    for (std::size_t place = 0; place < left.size(); ++place) {
        if (fold(left[place]) != fold(right[place])) return false;
    }
    return true;
}

std::uint32_t hashName(std::string_view name) noexcept {
    std::uint64_t hash = name.size();
    if (name.size() < sizeof hash) {
        std::uint64_t word = 0;
        for (const char character : name) {
            word = word << 8 | fold(character);
        }
        return static_cast<std::uint32_t>(mix(hash, word));
    }
    const char* last = name.data() + name.size() - sizeof hash;
    for (const char* place = name.data(); place < last; place += sizeof hash) {
        hash = mix(hash, foldedWord(place));
    }
    return static_cast<std::uint32_t>(mix(hash, foldedWord(last)));
}

bool isLegalName(std::string_view name) noexcept {
    if (name.empty() || !startsName(name.front())) return false;
    for (const char character : name) {
        if (!startsName(character) && (character < '0' || character > '9')) return false;
    }
    return true;
}

std::string_view trimNamespace(std::string_view nameSpace) noexcept {
    while (!nameSpace.empty() && nameSpace.front() == '/') {
        nameSpace.remove_prefix(1);
    }
    while (!nameSpace.empty() && nameSpace.back() == '/') {
        nameSpace.remove_suffix(1);
    }
    return nameSpace;
}

void NameIndex::add(std::string_view name, std::size_t position) {
    if ((count + 1) * 2 > entries.size()) {
        std::vector<Entry> larger(entries.empty() ? 8 : entries.size() * 2);
        larger.swap(entries);
        for (const Entry& entry : larger) {
            if (entry.position != notFound) insert(entry);
        }
    }
    insert({name, position, hashName(name)});
    ++count;
}

void NameIndex::insert(const Entry& entry) noexcept {
    const std::size_t mask = entries.size() - 1;
    std::size_t place = entry.hash & mask;
    while (entries[place].position != notFound) {
        place = (place + 1) & mask;
    }
    entries[place] = entry;
}

std::size_t NameIndex::find(std::string_view name) const noexcept {
    if (entries.empty()) return notFound;
    const std::size_t mask = entries.size() - 1;
    const std::uint32_t hash = hashName(name);
    for (std::size_t place = hash & mask; entries[place].position != notFound; place = (place + 1) & mask) {
        const Entry& entry = entries[place];
        if (entry.hash == hash && equalNames(entry.name, name)) return entry.position;
    }
    return notFound;
}

} // namespace cimhost
