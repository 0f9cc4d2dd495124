// The state behind the exported calls: the source, the main tree and the second one, the alarms and the memory that
// callers hold.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "tavik/alarm_dispatcher.h"
#include "tavik/hand_outs.h"
#include "tavik/published.h"
#include "tavik/source.h"
#include "tavik/tree.h"

namespace tavik {

/** All members can be called from several threads at once. */
class Library {
public:
    /** Chooses the source and fills the main tree. If the source has nothing to give, the library is started all the
     *  same, without a list, and takes up the adapters by the next update.
     *  @return statusSourceFailed in that case, or if there is no such source, which starts nothing. */
    Status initialize();
    /** @return statusWrongThread from within an alarm callback. */
    Status uninitialize();

    TAVIK_AdapterList* adapterList() { return list_.load(std::memory_order_acquire); }
    Status updateBackup();
    Status swapBackup();

    /** Null unless the library is started; so below. */
    std::shared_ptr<Source> source() { return source_.get(); }
    std::shared_ptr<AlarmDispatcher> alarms();

    /** The serial number under which the main tree shows the card with this number; nothing if it has none. */
    std::optional<std::string> serialNumberOfStorage(std::uint32_t handle);
    std::optional<std::string> serialNumberOfAdapter(std::uint32_t adapterId);

    /** Writes what a flash update brought into the records of the card with this storage function, so that it shows
     *  before the next update of the trees, and stays after the swap of one that is under way. */
    void showVersions(std::uint32_t handle);

    HandOuts& handOuts() { return handOuts_; }

private:
    std::unique_ptr<Tree> buildTree(Source& source);
    /** Replaces the main tree, under mutex_. @return the one before. */
    std::unique_ptr<Tree> setMain(std::unique_ptr<Tree> tree);

    std::mutex updateMutex_; ///< one start, end, update or show of versions at a time; taken before mutex_, and by no
                             ///< other call
    std::optional<FleetError> lastLoadError_;

    std::mutex mutex_; ///< guards what follows, and is held for moments only
    std::shared_ptr<AlarmDispatcher> alarms_;
    std::unique_ptr<Tree> main_;
    std::unique_ptr<Tree> backup_;

    // Looked at by every call, without a lock; changed under mutex_.
    Published<Source> source_;
    std::atomic<TAVIK_AdapterList*> list_{nullptr}; ///< that of main_

    HandOuts handOuts_;
};

} // namespace tavik
