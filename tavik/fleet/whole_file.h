// Replacing a file so that it is whole at every moment.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tavik::fleet {

/** Writes the text beside the file and moves it into its place, with the file's owner and rights. A process that is
 *  killed leaves the old file or the new one, and at worst a part of the new one under the file's name with
 *  ".unfinished" behind it. The next write takes that away. To be called under the file's WriterLock.
 *  @return why it failed; the file is then as it was. */
std::optional<std::string> replaceWholeFile(const std::filesystem::path& file, std::string_view text);

/** Removes what a writer that was killed has left beside the file. Leaves it alone while another writer is at work, and
 *  where this process may not. */
void removeUnfinished(const std::filesystem::path& file);

} // namespace tavik::fleet
