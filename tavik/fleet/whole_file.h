// Replacing a file so that it is whole at every moment.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tavik::fleet {

/** Keeps the other writers of a folder's files away while it lives; the end of the process frees it too. */
class FolderLock {
public:
    /** Waits for the others. */
    explicit FolderLock(const std::filesystem::path& folder);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    bool isHeld() const { return reason_.empty(); }
    /** Why it is not held. */
    const std::string& reason() const { return reason_; }

private:
    int folder_;
    std::string reason_;
};

/** Writes the text beside the file and moves it into its place, with the file's owner and rights. A process that is
 *  killed leaves the old file or the new one, and at worst an unused file of that name with ".new" behind it, which the
 *  next write takes over. To be called under the folder's lock.
 *  @return why it failed; the file is then as it was. */
std::optional<std::string> replaceWholeFile(const std::filesystem::path& file, std::string_view text);

} // namespace tavik::fleet
