// What the tests of single classes share: a start with given cards, a refresh, and texts in the form that tests
// compare.
#pragma once

#include "adapters.h"
#include "provider_call.h"
#include "provider_host.h"
#include "test_support.h"

#include "classes/storage/vital_product_data.h"
#include "tavik/transceiver.h"
#include "tavik/vpd.h"

#include "CmpiInstance.h"
#include "CmpiObjectPath.h"

#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// PCI device IDs by chip index.
namespace chips {

constexpr std::uint16_t chip5 = 0xA105;
constexpr std::uint16_t chip7 = 0xA107;
constexpr std::uint16_t chip8 = 0xA110;
constexpr std::uint16_t chip12 = 0xA114;
constexpr std::uint16_t chip15 = 0xA121;
constexpr std::uint16_t unknownChip = 0xA1FF;

} // namespace chips

inline std::string inQuotes(const std::string& text) { return "string \"" + text + '"'; }

inline std::vector<std::string> allInQuotes(std::vector<std::string> texts) {
    for (std::string& text : texts)
        text = inQuotes(text);
    return texts;
}

/// A storage function of a chip that has vital product data, with these items.
inline tavik::StorageFunction functionWithVpd(std::uint32_t number, const std::vector<tavik::VpdItem>& items,
                                              std::uint16_t pciDeviceId = chips::chip8) {
    tavik::StorageFunction function = adapters::storageFunction(number, pciDeviceId);
    function.vpd = tavik::encodeVpd("Adapter", items);
    return function;
}

inline tavik::Transceiver transceiver(const std::string& serialNumber) {
    return tavik::makeTransceiver({"Merolt Optics", "MO-10G-SR", "A", serialNumber, "240229"});
}

class ClassTest : public ProviderTest {
protected:
    // A UUID is kept as long as the process lives; each test begins as a fresh process does.
    ClassTest() { merolt::storage::g_UUID.clear(); }

    /// The cards that the first build will find; their records can be bent before start().
    void prepare(std::vector<tavik::Card> cards) { tavikLibrary.setFleet(adapters::fleet(std::move(cards))); }

    /// As start() of every test, but the first build waits until the factory is done: the two write into one log.
    void start() {
        Gate factory;
        tavikLibrary.onInitialize = [&] { factory.pass(); };
        instanceMI = createInstanceMI();
        ASSERT_NE(instanceMI, nullptr);
        factory.open();
        services.waitUntilIdle();
        tavikLibrary.onInitialize = nullptr;
    }

    void startWith(std::vector<tavik::Card> cards) {
        prepare(std::move(cards));
        start();
    }

    /// Lets the polling thread find these cards.
    void refreshTo(std::vector<tavik::Card> cards) {
        tavikLibrary.setNextFleet(adapters::fleet(std::move(cards)));
        services.pass(181);
    }

    TAVIK_DeviceRecord& record(std::uint32_t handle) { return *tavikLibrary.tree().device(handle); }

    /// The instance at that place as a table of its properties in the order in which they were set, which a namespace
    /// without the class keeps. Starts with a newline, as raw texts in tests do.
    std::string asSet(const std::string& className, std::size_t place = 0) {
        const Answer loose = enumerateInstances(className, std::nullopt, "root/elsewhere");
        const Answer strict = enumerateInstances(className);
        if (place >= loose.objects.size() || loose.objects.size() != strict.objects.size()) return "no such instance";
        expectSameValues(strict.objects[place], loose.objects[place]);
        return '\n' + loose.objects[place].table();
    }

    std::string pathAsSet(const std::string& className, std::size_t place = 0) {
        const Answer answer = enumerateInstanceNames(className);
        if (place >= answer.objects.size()) return "no such path";
        return '\n' + answer.objects[place].table();
    }

    std::size_t countOf(const std::string& className) {
        const Answer answer = enumerateInstances(className);
        EXPECT_TRUE(answer.isOk()) << answer.message;
        EXPECT_EQ(enumerateInstanceNames(className).objects.size(), answer.objects.size());
        return answer.objects.size();
    }

    /// One property of every instance, in list order.
    std::vector<std::string> valuesOf(const std::string& className, const std::string& property) {
        return enumerateInstances(className).all(property);
    }
};

/// The Tag of a path or an instance that a lookup may not have found; "nothing" then. Call within a request's scope.
template <class Object>
std::string tagOf(const std::optional<Object>& object) {
    if (!object) return "nothing";
    if constexpr (std::is_same_v<Object, CmpiObjectPath>) {
        return object->getKey("Tag").getString().charPtr();
    } else {
        return object->getProperty("Tag").getString().charPtr();
    }
}

/// The last lines of a log.
inline std::vector<std::string> lastLines(const std::vector<std::string>& lines, std::size_t count) {
    if (lines.size() < count) return lines;
    return {lines.end() - static_cast<std::ptrdiff_t>(count), lines.end()};
}

/// How many lines begin with that text.
inline std::size_t linesThatBegin(const std::vector<std::string>& lines, const std::string& beginning) {
    std::size_t count = 0;
    for (const std::string& line : lines) {
        if (line.compare(0, beginning.size(), beginning) == 0) ++count;
    }
    return count;
}

/// The lines from the first to the last one given, both included.
inline std::vector<std::string> linesBetween(const std::vector<std::string>& lines, const std::string& first,
                                             const std::string& last) {
    std::vector<std::string> part;
    for (const std::string& line : lines) {
        if (part.empty() && line != first) continue;
        part.push_back(line);
        if (line == last) break;
    }
    return part;
}
