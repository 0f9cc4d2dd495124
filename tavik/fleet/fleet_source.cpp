#include "tavik/fleet/fleet_source.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <utility>

#include "tavik/fleet/fleet_file.h"
#include "tavik/fleet/whole_file.h"
#include "tavik/log.h"

namespace tavik::fleet {

namespace {

std::string nameText(const WorldWideName& name) {
    std::array<char, 3 * std::tuple_size_v<WorldWideName> + 1> text{};
    for (std::size_t i = 0; i < name.size(); ++i)
        std::snprintf(text.data() + 3 * i, 4, "%02x:", name[i]);
    return std::string(text.data(), 3 * name.size() - 1);
}

/** The state as callers see it: the failure of the call that reads it is a state too. */
std::string stateText(const StorageFunction& function) {
    if (function.failures.portProperty != statusOk) return "unreadable";
    switch (function.property.state) {
    case PortOperational:
        return "operational";
    case PortSuspended:
        return "suspended";
    case PortLoopDown:
        return "loop down";
    default:
        return "state " + std::to_string(function.property.state);
    }
}

/** The counters after so many refreshes, wrapping round as 32-bit counters do. */
Statistics advanced(Statistics counters, const Statistics& step, std::uint32_t refreshes) {
    for (const auto counter : statisticsCounters)
        counters.*counter += step.*counter * refreshes;
    return counters;
}

Status refuse(const FlashFault& fault) {
    report("flash update refused: " + fault.reason);
    return fault.status;
}

} // namespace

/** One good reading of the file, with its functions by what calls find them by. */
class FleetSource::Reading {
public:
    explicit Reading(Fleet fleet) : fleet_(std::move(fleet)) {
        if (!fleet_.cards) return;
        for (const auto& card : *fleet_.cards)
            forEachFunction(card, [this](const auto& function) { add(function); });
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    const Fleet& fleet() const { return fleet_; }
    const std::map<std::uint32_t, const StorageFunction*>& storage() const { return storage_; }

    const StorageFunction* storage(std::uint32_t handle) const {
        const auto found = storage_.find(handle);
        return found == storage_.end() ? nullptr : found->second;
    }

    const NicFunction* nic(std::string_view deviceName) const {
        const auto found = nics_.find(deviceName);
        return found == nics_.end() ? nullptr : found->second;
    }

    bool has(const CardTest& isWanted) const {
        return fleet_.cards && std::any_of(fleet_.cards->begin(), fleet_.cards->end(), isWanted);
    }

    /** Any function of the card. */
    const NicFunction* adapter(std::uint32_t adapterId) const {
        const auto found = adapters_.find(adapterId);
        return found == adapters_.end() ? nullptr : found->second;
    }

private:
    void add(const StorageFunction& function) { storage_.emplace(function.handle, &function); }
    void add(const NicFunction& function) {
        nics_.emplace(function.deviceName, &function);
        adapters_.emplace(function.adapterId, &function);
    }

    Fleet fleet_;
    std::map<std::uint32_t, const StorageFunction*> storage_;
    std::map<std::string_view, const NicFunction*> nics_;
    std::map<std::uint32_t, const NicFunction*> adapters_; ///< any function of the adapter
};

FleetSource::FleetSource(std::string path) : path_(std::move(path)) { removeUnfinished(path_); }

FleetOrError FleetSource::load() {
    const auto error = readAgain();
    std::unique_lock lock(mutex_);
    loaded_ = true;
    if (const auto reading = newest()) {
        lock.unlock();
        if (error) report(error->message);
        return reading->fleet();
    }
    lock.unlock();
    const std::lock_guard readLock(readMutex_);
    return *lastError_;
}

bool FleetSource::changed() {
    const std::lock_guard lock(mutex_);
    changes_.tell(generation_);
    return changes_.isOther(generation_);
}

void FleetSource::resetChanged() {
    const std::lock_guard lock(mutex_);
    if (!changes_.reset()) changes_.resetTo(generation_);
}

void FleetSource::watch(AlarmSink sink) {
    sink_ = std::move(sink);
    const auto read = [this] {
        if (const auto error = readAgain()) report(error->message);
    };
    const auto isUnread = [this] {
        const std::lock_guard lock(readMutex_);
        return !lastText_;
    };
    watcher_ = std::make_unique<FileWatcher>(path_, read, isUnread);
}

/** Reads the file if it has changed. @return what is wrong with it, the first time that it is. */
std::optional<FleetError> FleetSource::readAgain() {
    const std::lock_guard lock(readMutex_);
    auto text = readFleetText(path_);
    if (auto* error = std::get_if<FleetError>(&text)) {
        lastText_.reset();
        if (lastError_ == *error) return std::nullopt;
        return lastError_ = std::move(*error);
    }
    auto& newText = std::get<std::string>(text);
    if (lastText_ == newText) return std::nullopt;
    // A text counts as read when everything is done, so that one which memory was short for is read again.
    lastText_.reset();
    auto fleet = parseFleet(newText, path_);
    if (auto* error = std::get_if<FleetError>(&fleet)) {
        lastText_ = std::move(newText);
        return lastError_ = std::move(*error);
    }
    adopt(std::move(std::get<Fleet>(fleet)));
    lastText_ = std::move(newText);
    lastError_.reset();
    return std::nullopt;
}

// States come and go: polls and alarms tell of them. A refresh for their sake would rebuild the lists that a poll
// compares with, and swallow the change. Facts stand in no list.
Fleet withoutStates(Fleet fleet) {
    struct Forget {
        void operator()(StorageFunction& function) const {
            function.property.state = {};
            function.facts.clear();
        }
        void operator()(NicFunction& function) const {
            function.link.state = {};
            function.facts.clear();
        }
    };
    if (!fleet.cards) return fleet;
    for (Card& card : *fleet.cards)
        forEachFunction(card, Forget());
    return fleet;
}

void FleetSource::adopt(Fleet fleet) {
    auto reading = std::make_shared<const Reading>(std::move(fleet));
    const auto before = newest();
    if (before && before->fleet() == reading->fleet()) return;
    {
        const std::lock_guard lock(mutex_);
        newest_.set(reading);
        const bool hasSameShape = before && withoutStates(before->fleet()) == withoutStates(reading->fleet());
        if (loaded_ && !hasSameShape) ++generation_;
    }
    log(path_ + ": read");
    if (!before || !sink_) return;
    for (const auto& [handle, function] : reading->storage()) {
        const auto* old = before->storage(handle);
        if (!old || stateText(*old) == stateText(*function)) continue;
        sink_({function->deviceNumber, "port " + nameText(function->property.portName) + " went from " +
                                           stateText(*old) + " to " + stateText(*function)});
    }
}

/** @param pick gives what the function has, as an optional or a pointer. */
template <typename Value, typename Pick>
Answer<Value> FleetSource::ofStorage(std::uint32_t handle, Status StorageFailures::*failure, Pick pick) {
    const auto reading = newest();
    const auto* function = reading ? reading->storage(handle) : nullptr;
    if (!function) return Answer<Value>::failure(statusNoSuchDevice);
    if (const Status status = function->failures.*failure) return Answer<Value>::failure(status);
    const auto& picked = pick(*function);
    return picked ? Answer<Value>(*picked) : Answer<Value>::failure(statusNoData);
}

template <typename Value, typename Pick>
Answer<Value> FleetSource::ofNic(std::string_view deviceName, Status NicFailures::*failure, Pick pick) {
    const auto reading = newest();
    const auto* function = reading ? reading->nic(deviceName) : nullptr;
    if (!function) return Answer<Value>::failure(statusNoSuchDevice);
    if (const Status status = function->failures.*failure) return Answer<Value>::failure(status);
    const auto& picked = pick(*function);
    return picked ? Answer<Value>(*picked) : Answer<Value>::failure(statusNoData);
}

Answer<PortProperty> FleetSource::portProperty(std::uint32_t handle) {
    return ofStorage<PortProperty>(handle, &StorageFailures::portProperty,
                                   [](const StorageFunction& function) { return &function.property; });
}

Answer<Bytes> FleetSource::vpd(std::uint32_t handle) {
    return ofStorage<Bytes>(handle, &StorageFailures::vpd, std::mem_fn(&StorageFunction::vpd));
}

Answer<std::string> FleetSource::uuid(std::uint32_t handle) {
    return ofStorage<std::string>(handle, &StorageFailures::uuid, std::mem_fn(&StorageFunction::uuid));
}

Answer<Transceiver> FleetSource::storageTransceiver(std::uint32_t handle) {
    return ofStorage<Transceiver>(handle, &StorageFailures::transceiver, std::mem_fn(&StorageFunction::transceiver));
}

Answer<std::string> FleetSource::multiBootVersion(std::uint32_t handle) {
    return ofStorage<std::string>(handle, &StorageFailures::multiBootVersion,
                                  std::mem_fn(&StorageFunction::multiBootVersion));
}

Answer<Facts> FleetSource::storageFacts(std::uint32_t handle, std::uint32_t) {
    return ofStorage<Facts>(handle, &StorageFailures::facts,
                            [](const StorageFunction& function) { return &function.facts; });
}

Answer<Statistics> FleetSource::refreshStatistics(std::uint32_t handle) {
    return ofStorage<Statistics>(
        handle, &StorageFailures::statistics, [&](const StorageFunction& function) -> std::optional<Statistics> {
            const std::lock_guard lock(mutex_);
            return advanced(function.statistics, function.statisticsPerRefresh, refreshes_[handle]++);
        });
}

Answer<Link> FleetSource::link(std::string_view deviceName) {
    return ofNic<Link>(deviceName, &NicFailures::link, [](const NicFunction& function) { return &function.link; });
}

Answer<IPConfiguration> FleetSource::ipConfiguration(std::string_view deviceName) {
    return ofNic<IPConfiguration>(deviceName, &NicFailures::ip, std::mem_fn(&NicFunction::ip));
}

Answer<std::vector<FCoELinkage>> FleetSource::fcoeLinkage(std::string_view deviceName) {
    return ofNic<std::vector<FCoELinkage>>(deviceName, &NicFailures::fcoeLinkage,
                                           [](const NicFunction& function) { return &function.fcoeLinkage; });
}

Answer<Transceiver> FleetSource::nicTransceiver(std::string_view deviceName) {
    return ofNic<Transceiver>(deviceName, &NicFailures::transceiver, std::mem_fn(&NicFunction::transceiver));
}

Answer<Facts> FleetSource::nicFacts(std::string_view deviceName, std::uint32_t) {
    return ofNic<Facts>(deviceName, &NicFailures::facts, [](const NicFunction& function) { return &function.facts; });
}

Status FleetSource::updateFlash(std::uint32_t adapterId, const std::optional<std::string>& serialNumber,
                                const void* image) {
    const CardTest isWanted = [&](const Card& card) {
        return card.serialNumber == serialNumber && hasAdapter(card, adapterId);
    };
    const auto reading = newest();
    if (!reading || !reading->has(isWanted)) return refuse(noSuchCard());
    if (const Status status = reading->adapter(adapterId)->failures.flashUpdate) return status;
    return flash(readFlashImage(image), isWanted);
}

Status FleetSource::updateOptionRom(std::uint32_t handle, const std::optional<std::string>& serialNumber,
                                    std::string_view fileName) {
    const CardTest isWanted = [&](const Card& card) {
        return card.serialNumber == serialNumber && hasStorage(card, handle);
    };
    const auto reading = newest();
    if (!reading || !reading->has(isWanted)) return refuse(noSuchCard());
    if (const Status status = reading->storage(handle)->failures.flashUpdate) return status;
    return flash(readFlashImageFile(std::string(fileName)), isWanted);
}

Status FleetSource::flash(const std::variant<FlashImage, FlashFault>& image, const CardTest& isWanted) {
    if (const auto* fault = std::get_if<FlashFault>(&image)) return refuse(*fault);
    const auto written = flashFleetFile(path_, isWanted, std::get<FlashImage>(image));
    if (const auto* fault = std::get_if<FlashFault>(&written)) return refuse(*fault);
    if (const auto error = readAgain()) report(error->message);
    return statusOk;
}

} // namespace tavik::fleet
