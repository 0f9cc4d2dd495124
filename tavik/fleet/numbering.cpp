#include "tavik/fleet/numbering.h"

#include <map>
#include <set>

namespace tavik::fleet {

namespace {

/** Keeps what must differ from one another in one fleet, with the place of each. */
template <typename Key>
class Register {
public:
    explicit Register(std::string_view what) : what_(what) {}

    /** Throws Fault if the key is taken. */
    void claim(const Key& key, const std::string& pointer) {
        const auto [taken, isNew] = places_.emplace(key, pointer);
        if (!isNew)
            throw Fault(pointer,
                        "expected " + what_ + " of its own, found " + describe(key) + " as in " + taken->second);
    }

    bool taken(const Key& key) const { return places_.count(key) != 0; }

private:
    std::string what_;
    std::map<Key, std::string> places_;
};

class Numbering {
public:
    void settle(std::vector<ParsedCard>& cards) {
        for (const auto& card : cards)
            claimGiven(card);
        for (auto& card : cards)
            fillOpen(card);
    }

private:
    void claimGiven(const ParsedCard& card) {
        serialNumbers_.claim(card.card.serialNumber, card.pointer + "/serialNumber");
        std::set<std::uint32_t> adapterIds;
        if (card.adapterId) claimAdapter(adapterIds, *card.adapterId, card.pointer);
        for (const auto& wanted : card.wanted) {
            if (wanted.handle) handles_.claim(*wanted.handle, wanted.pointer + "/handle");
            if (wanted.deviceNumber) deviceNumbers_.claim(*wanted.deviceNumber, wanted.pointer + "/deviceNumber");
            if (wanted.deviceName) deviceNames_.claim(*wanted.deviceName, wanted.pointer + "/deviceName");
            if (wanted.adapterId) claimAdapter(adapterIds, *wanted.adapterId, wanted.pointer);
        }
    }

    /** The functions of one card may share an adapter ID, those of two cards may not. */
    void claimAdapter(std::set<std::uint32_t>& ofThisCard, std::uint32_t adapterId, const std::string& pointer) {
        if (ofThisCard.insert(adapterId).second) adapterIds_.claim(adapterId, pointer + "/adapterId");
    }

    void fillOpen(ParsedCard& card) {
        if (!card.adapterId) card.adapterId = nextFree(adapterIds_, nextAdapterId_);
        auto wanted = card.wanted.begin();
        forEachFunction(card.card, [&](auto& function) { fill(function, *wanted++, *card.adapterId); });
    }

    void fill(StorageFunction& function, const Wanted& wanted, std::uint32_t) {
        function.handle = wanted.handle ? *wanted.handle : nextFree(handles_, nextHandle_);
        function.deviceNumber =
            wanted.deviceNumber ? *wanted.deviceNumber : nextFree(deviceNumbers_, nextDeviceNumber_);
    }

    void fill(NicFunction& function, const Wanted& wanted, std::uint32_t adapterId) {
        function.adapterId = wanted.adapterId.value_or(adapterId);
        function.deviceName = wanted.deviceName ? *wanted.deviceName : nextFreeDeviceName();
    }

    template <typename Number>
    static Number nextFree(const Register<Number>& used, Number& next) {
        while (used.taken(next))
            ++next;
        return next++;
    }

    std::string nextFreeDeviceName() {
        std::string name;
        do
            name = "eth" + std::to_string(nextDeviceName_++);
        while (deviceNames_.taken(name));
        return name;
    }

    Register<std::string> serialNumbers_{"a serial number"};
    Register<std::uint32_t> handles_{"a handle"};
    Register<std::uint16_t> deviceNumbers_{"a device number"};
    Register<std::uint32_t> adapterIds_{"an adapter ID"};
    Register<std::string> deviceNames_{"a device name"};
    std::uint32_t nextHandle_ = 1;
    std::uint16_t nextDeviceNumber_ = 1;
    std::uint32_t nextAdapterId_ = 1;
    std::uint32_t nextDeviceName_ = 0;
};

} // namespace

void settleNumbers(std::vector<ParsedCard>& cards) { Numbering().settle(cards); }

} // namespace tavik::fleet
