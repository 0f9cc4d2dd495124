#include "tavik/recording_folder.h"

#include <cerrno>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace tavik {

namespace {

FleetError noRecording(const std::filesystem::path& folder, const std::string& reason) {
    return {folder.string() + ": no recorded tree" + reason};
}

/** 0 if the folder's entries can be asked for, else the error number. */
int openFolder(const std::filesystem::path& folder, int more) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | more);
    if (descriptor < 0) return errno;
    ::close(descriptor);
    return 0;
}

std::string reasonOf(int error) { return std::generic_category().message(error); }

} // namespace

std::optional<FleetError> checkRecording(const std::filesystem::path& folder) {
    if (const int error = openFolder(folder, 0)) return noRecording(folder, ": " + reasonOf(error));
    const int error = openFolder(folder / "sys", O_NOFOLLOW);
    if (error == EACCES) return FleetError{(folder / "sys").string() + ": cannot be read: " + reasonOf(error)};
    if (error != 0) return noRecording(folder, ", which would have a folder \"sys\"");
    return std::nullopt;
}

} // namespace tavik
