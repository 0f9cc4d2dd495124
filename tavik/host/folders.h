// The folders of a tree, opened so that no path leads out of its root.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tavik/host/attribute.h"
#include "tavik/host/descriptor.h"

namespace tavik::host {

using SharedDescriptor = std::shared_ptr<const Descriptor>;

/** Opens what stands below one root. Paths are relative to it. The kernel itself keeps each lookup below the root
 *  (openat2 with RESOLVE_BENEATH); where it cannot (before Linux 5.6, or forbidden by a container's filter) the path is
 *  resolved first and then opened without links. */
class Folders {
public:
    explicit Folders(const std::filesystem::path& root);
    virtual ~Folders() = default;
    Folders& operator=(const Folders&) = delete;

    /** A folder that other calls can be made relative to. Empty: the root. */
    virtual Attribute<SharedDescriptor> folder(const std::string& path) const;

    /** What stands at the path itself, a link that is not followed too: DT_REG, DT_LNK, ... of readdir(3). */
    Attribute<std::uint8_t> kind(const std::string& path) const;
    /** The same in the folder of the path, which is open already. */
    virtual Attribute<std::uint8_t> kindIn(const Descriptor& parent, const std::string& path) const;

    /** True for the machine itself, whose attribute folders have no devices in them. */
    bool isMachine() const { return root_ == "/"; }

    /** Opens whatever the path leads to. @param flags those of open(2) beside O_CLOEXEC. */
    Attribute<SharedDescriptor> open(const std::string& path, int flags) const;

    /** The path without symbolic links, relative to the root. */
    virtual Attribute<std::string> resolve(const std::string& path) const;

    /** A root that was deleted or moved away, and made again under its name, is the new one from here on. */
    void follow() const;

protected:
    /** The same root, as it is at this moment. */
    Folders(const Folders& other);

private:
    SharedDescriptor rootFolder() const;
    Attribute<std::string> resolveByName(const std::string& path) const;
    Attribute<SharedDescriptor> openByName(const std::string& path, int flags) const;

    std::filesystem::path root_;
    bool isConfinedByKernel_ = false;
    mutable std::mutex mutex_; // guards what follows
    mutable SharedDescriptor rootFolder_;
};

/** Keeps the folders open that were asked for last, and knows what stands in those of a recording. For one thread. */
class HeldFolders : public Folders {
public:
    explicit HeldFolders(const Folders& others) : Folders(others) {}

    Attribute<SharedDescriptor> folder(const std::string& path) const override;
    Attribute<std::uint8_t> kindIn(const Descriptor& parent, const std::string& path) const override;
    Attribute<std::string> resolve(const std::string& path) const override;

private:
    using Kinds = std::unordered_map<std::string, std::uint8_t>;

    static constexpr std::size_t mostHeld = 8;
    struct Held {
        std::string path;
        Attribute<SharedDescriptor> folder;
        std::optional<Kinds> kinds; ///< once they were asked for
        bool isUsed = false;
    };

    Held& held(const std::string& path) const;

    mutable std::array<Held, mostHeld> held_;
    mutable std::size_t oldest_ = 0;
    mutable std::pair<std::string, Attribute<std::string>> lastResolved_;
};

/** The entries of a folder with their kinds, without "." and "..", at most so many. */
std::vector<std::pair<std::string, std::uint8_t>> listEntries(const Descriptor& folder, std::size_t most);

/** Why a call failed, in words; a path out of the root has its own. */
Absence fileAbsence(int error);

} // namespace tavik::host
