#include "inventory/fact_reader.h"

#include "inventory/fact_table.h"
#include "log/log.h"
#include "platform/library_functions.h"
#include "platform/platform.h"
#include "text/text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <optional>
#include <string_view>

namespace merolt {

namespace {

struct FactCalls {
    TavikFactsOfStoragePort ofStoragePort = nullptr;
    TavikFactsOfEthernetPort ofEthernetPort = nullptr;
};

FactCalls found;

constexpr std::size_t roomAtFirst = 8192;
constexpr std::size_t largestAnswer = 1U << 20;

/// A fact of an answer; it points into the answer.
struct Fact {
    std::uint16_t type;
    std::string_view name;
    std::string_view value;
};

/// Takes the first fact off the bytes; nothing if they do not begin with a whole one.
std::optional<Fact> takeFact(std::string_view& bytes) {
    TavikFactHeader header;
    if (bytes.size() < sizeof header) return std::nullopt;
    std::memcpy(&header, bytes.data(), sizeof header);
    if (header.size > bytes.size() || header.size < sizeof header + header.nameLength) return std::nullopt;
    const std::string_view content = bytes.substr(sizeof header, header.size - sizeof header);
    bytes.remove_prefix(header.size);
    return Fact{header.type, content.substr(0, header.nameLength), content.substr(header.nameLength)};
}

bool isPrintable(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char character) { return character >= ' ' && character <= '~'; });
}

void takeText(std::string_view value, FactValues& values) {
    if (value.empty() || value.size() > longestFact || !isPrintable(value)) return;
    values.texts.emplace_back(value);
}

void takeNumber(std::string_view value, FactValues& values) {
    std::uint64_t number = 0;
    if (value.size() != sizeof number) return;
    std::memcpy(&number, value.data(), sizeof number);
    values.numbers.push_back(number);
}

void takeTruth(std::string_view value, FactValues& values) {
    if (value == std::string_view("\0", 1)) values.numbers.push_back(0);
    if (value == std::string_view("\1", 1)) values.numbers.push_back(1);
}

std::size_t countOf(const FactValues& values) { return values.texts.size() + values.numbers.size(); }

void takeValue(const Fact& fact, FactValues& values) {
    const std::size_t most = values.row->count == FactCount::list ? mostFactValues : 1;
    if (fact.type != values.row->type || countOf(values) >= most) return;
    switch (values.row->type) {
    case TavikFactText:
        return takeText(fact.value, values);
    case TavikFactNumber:
        return takeNumber(fact.value, values);
    case TavikFactTruth:
        return takeTruth(fact.value, values);
    }
}

/// Those of the row, which are added in the order of the table if it has none yet. Libraries tell facts in that order.
FactValues& valuesOf(const FactRow& row, std::vector<FactValues>& facts) {
    auto place = facts.end();
    while (place != facts.begin() && std::prev(place)->row > &row)
        --place;
    if (place != facts.begin() && std::prev(place)->row == &row) return *std::prev(place);
    return *facts.insert(place, {.row = &row, .texts = {}, .numbers = {}});
}

/// Asks once more where the library says that it needs more room.
template <class Ask>
std::vector<FactValues> readFacts(FactClass cls, Ask ask) {
    std::array<std::uint8_t, roomAtFirst> room{};
    std::vector<std::uint8_t> larger;
    std::span<std::uint8_t> answer(room);
    auto size = static_cast<std::uint32_t>(answer.size());
    std::uint32_t status = ask(answer.data(), &size);
    if (status != 0 && size > answer.size() && size <= largestAnswer) {
        larger.resize(size);
        answer = larger;
        status = ask(answer.data(), &size);
    }
    if (status != 0 || size > answer.size()) return {};
    std::vector<FactValues> facts = decodeFacts(answer.first(size));
    std::erase_if(facts, [cls](const FactValues& values) { return (values.row->classes & cls) == 0; });
    return facts;
}

bool isSwitchedOff() {
    const std::string setting = platform::services().setting("Facts");
    const std::string_view value = trimmed(setting);
    if (value == "off") return true;
    if (!value.empty() && value != "on") {
        ERROR_LOG("%s: Facts=%s is not known; on and off are. Facts are on.", platform::settingsFile, setting.c_str());
    }
    return false;
}

template <class Call>
Call findCall(const char* name) {
    return reinterpret_cast<Call>(gFindLibraryFunction(name));
}

} // namespace

void* (*gFindLibraryFunction)(const char* name) = [](const char* name) {
    return platform::functionBeside(reinterpret_cast<const void*>(TAVIK_GetAdapterList), name);
};

std::vector<FactValues> decodeFacts(std::span<const std::uint8_t> answer) {
    std::string_view bytes(reinterpret_cast<const char*>(answer.data()), answer.size());
    std::vector<FactValues> facts; // of the rows that are told, since each object of an answer asks for its own
    while (!bytes.empty()) {
        const std::optional<Fact> fact = takeFact(bytes);
        if (!fact) return {};
        if (const FactRow* row = findFact(fact->name)) takeValue(*fact, valuesOf(*row, facts));
    }
    std::erase_if(facts, [](const FactValues& values) { return countOf(values) == 0; });
    return facts;
}

void findFactCalls() {
    found = {};
    if (isSwitchedOff()) return;
    found.ofStoragePort = findCall<TavikFactsOfStoragePort>("tavik_facts_of_storage_port");
    found.ofEthernetPort = findCall<TavikFactsOfEthernetPort>("tavik_facts_of_ethernet_port");
}

bool offersFactsOfStoragePorts() { return found.ofStoragePort != nullptr; }

bool offersFactsOfEthernetPorts() { return found.ofEthernetPort != nullptr; }

std::vector<FactValues> factsOfStoragePort(std::uint32_t handle, FactClass cls, std::uint32_t groups) {
    if (!found.ofStoragePort) return {};
    return readFacts(
        cls, [&](void* buffer, std::uint32_t* size) { return found.ofStoragePort(handle, groups, buffer, size); });
}

std::vector<FactValues> factsOfEthernetPort(const char* deviceName, FactClass cls, std::uint32_t groups) {
    if (!found.ofEthernetPort) return {};
    return readFacts(
        cls, [&](void* buffer, std::uint32_t* size) { return found.ofEthernetPort(deviceName, groups, buffer, size); });
}

} // namespace merolt
