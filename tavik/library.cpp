#include "tavik/library.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "tavik/log.h"
#include "tavik/source_choice.h"

namespace tavik {

Status Library::initialize() {
    const std::lock_guard updateLock(updateMutex_);
    if (source()) return statusAlreadyInitialized;

    const auto choice = chosenSource(std::getenv("TAVIK_SOURCE"), sourceFile);
    auto made = makeSource(choice);
    if (const auto* error = std::get_if<FleetError>(&made)) {
        report(error->message);
        return statusSourceFailed;
    }
    log("source of adapters: " + choice);
    const std::shared_ptr<Source> source = std::move(std::get<std::unique_ptr<Source>>(made));
    const auto alarms = std::make_shared<AlarmDispatcher>();
    source->watch([alarms](Alarm alarm) { alarms->push(std::move(alarm)); });
    auto tree = buildTree(*source);
    const Status status = tree ? statusOk : statusSourceFailed;

    const std::lock_guard lock(mutex_);
    source_.set(source);
    alarms_ = alarms;
    setMain(std::move(tree));
    return status;
}

Status Library::uninitialize() {
    std::unique_lock updateLock(updateMutex_);
    std::unique_lock lock(mutex_);
    if (!source_.get()) return statusNotInitialized;
    if (alarms_->isOwnThread()) return statusWrongThread;
    lastLoadError_.reset();
    auto source = source_.set(nullptr);
    const auto alarms = std::exchange(alarms_, nullptr);
    const auto main = setMain(nullptr);
    const auto backup = std::exchange(backup_, nullptr);
    lock.unlock();
    updateLock.unlock();

    // Without a lock: both wait for threads that may be inside a call of the library.
    source.reset();
    alarms->stop();
    if (const auto left = handOuts_.count()) log(std::to_string(left) + " blocks have not been given back");
    return statusOk;
}

std::unique_ptr<Tree> Library::setMain(std::unique_ptr<Tree> tree) {
    list_.store(tree ? tree->list() : nullptr, std::memory_order_release);
    std::swap(main_, tree);
    return tree;
}

Status Library::updateBackup() {
    const std::lock_guard updateLock(updateMutex_);
    const auto current = source();
    if (!current) return statusNotInitialized;
    auto tree = buildTree(*current);
    if (!tree) return statusSourceFailed;
    const std::lock_guard lock(mutex_);
    std::swap(backup_, tree);
    return statusOk;
}

Status Library::swapBackup() {
    std::unique_ptr<Tree> old;
    const std::lock_guard lock(mutex_);
    if (!source_.get()) return statusNotInitialized;
    if (!backup_) return statusNoBackup;
    old = setMain(std::move(backup_));
    return statusOk;
}

std::optional<std::string> Library::serialNumberOfStorage(std::uint32_t handle) {
    const std::lock_guard lock(mutex_);
    return main_ ? main_->serialNumberOfStorage(handle) : std::nullopt;
}

std::optional<std::string> Library::serialNumberOfAdapter(std::uint32_t adapterId) {
    const std::lock_guard lock(mutex_);
    return main_ ? main_->serialNumberOfAdapter(adapterId) : std::nullopt;
}

void Library::showVersions(std::uint32_t handle) {
    // A second tree that is being filled meanwhile may be of a reading before the update.
    const std::lock_guard updateLock(updateMutex_);
    const auto current = source();
    if (!current) return;
    const auto loaded = current->load();
    const auto* fleet = std::get_if<Fleet>(&loaded);
    if (!fleet || !fleet->cards) return;
    const auto card = std::find_if(fleet->cards->begin(), fleet->cards->end(),
                                   [handle](const Card& candidate) { return hasStorage(candidate, handle); });
    if (card == fleet->cards->end()) return;
    const std::lock_guard lock(mutex_);
    for (Tree* tree : {main_.get(), backup_.get()})
        for (const StorageFunction* function : storageFunctions(*card))
            if (tree && tree->serialNumberOfStorage(function->handle) == card->serialNumber)
                storeOptionRom(function->optionRom, *tree->device(function->handle));
}

std::shared_ptr<AlarmDispatcher> Library::alarms() {
    const std::lock_guard lock(mutex_);
    return alarms_;
}

/** Null if the source has nothing to give; tells why, unless it was the same the last time. */
std::unique_ptr<Tree> Library::buildTree(Source& source) {
    const auto loaded = source.load();
    const auto* error = std::get_if<FleetError>(&loaded);
    if (!error) {
        lastLoadError_.reset();
        return std::make_unique<Tree>(std::get<Fleet>(loaded));
    }
    if (lastLoadError_ != *error) report(error->message);
    lastLoadError_ = *error;
    return nullptr;
}

} // namespace tavik
