// A fleet file as a source of adapters: follows its changes and answers every call from the newest good reading.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "tavik/fleet/file_watcher.h"
#include "tavik/fleet/flash_writer.h"
#include "tavik/published.h"
#include "tavik/source.h"
#include "tavik/told_changes.h"

namespace tavik::fleet {

class FleetSource : public Source {
public:
    explicit FleetSource(std::string path);

    /** A file that has turned bad yields the fleet of its last good reading. */
    FleetOrError load() override;
    bool changed() override;
    void resetChanged() override;
    void watch(AlarmSink sink) override;

    Answer<PortProperty> portProperty(std::uint32_t handle) override;
    Answer<Bytes> vpd(std::uint32_t handle) override;
    Answer<std::string> uuid(std::uint32_t handle) override;
    Answer<Statistics> refreshStatistics(std::uint32_t handle) override;
    Answer<Transceiver> storageTransceiver(std::uint32_t handle) override;
    Answer<std::string> multiBootVersion(std::uint32_t handle) override;
    Answer<Facts> storageFacts(std::uint32_t handle, std::uint32_t groups) override;

    Answer<Link> link(std::string_view deviceName) override;
    Answer<IPConfiguration> ipConfiguration(std::string_view deviceName) override;
    Answer<std::vector<FCoELinkage>> fcoeLinkage(std::string_view deviceName) override;
    Answer<Transceiver> nicTransceiver(std::string_view deviceName) override;
    Answer<Facts> nicFacts(std::string_view deviceName, std::uint32_t groups) override;

    Status updateFlash(std::uint32_t adapterId, const std::optional<std::string>& serialNumber,
                       const void* image) override;
    Status updateOptionRom(std::uint32_t handle, const std::optional<std::string>& serialNumber,
                           std::string_view fileName) override;

private:
    class Reading;

    Status flash(const std::variant<FlashImage, FlashFault>& image, const CardTest& isWanted);
    std::optional<FleetError> readAgain();
    void adopt(Fleet fleet);
    std::shared_ptr<const Reading> newest() { return newest_.get(); }

    template <typename Value, typename Pick>
    Answer<Value> ofStorage(std::uint32_t handle, Status StorageFailures::*failure, Pick pick);
    template <typename Value, typename Pick>
    Answer<Value> ofNic(std::string_view deviceName, Status NicFailures::*failure, Pick pick);

    const std::string path_;
    AlarmSink sink_;

    std::mutex readMutex_;                ///< one reading at a time; taken before mutex_
    std::optional<std::string> lastText_; ///< of the last reading, good or bad; none: it failed
    std::optional<FleetError> lastError_; ///< of the last reading, if it was bad

    Published<const Reading> newest_; ///< looked at without a lock, changed under mutex_

    std::mutex mutex_;             ///< guards what follows
    bool loaded_ = false;          ///< somebody has a fleet, or an error, that a new reading changes
    std::uint64_t generation_ = 0; ///< counts the readings that brought something to fetch
    ToldChanges<std::uint64_t> changes_{0};
    std::map<std::uint32_t, std::uint32_t> refreshes_; ///< of the statistics, by handle

    std::unique_ptr<FileWatcher> watcher_; // last: its thread uses all of the above
};

} // namespace tavik::fleet
