#include "platform/shared_folder.h"

#include <climits>
#include <cstring>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace merolt::platform {

bool othersMayMakeFilesBeside(const char* path) {
    // Asked for lines of the log, which are written when memory is short, too.
    char folder[PATH_MAX];
    const char* slash = std::strrchr(path, '/');
    const std::string_view name = !slash ? "." : slash == path ? "/" : std::string_view(path, slash);
    if (name.size() >= sizeof(folder)) return true;
    folder[name.copy(folder, sizeof(folder) - 1)] = '\0';
    struct stat status {};
    if (stat(folder, &status) != 0) return true;
    if (status.st_mode & (S_IWGRP | S_IWOTH)) return true;
    return status.st_uid != 0 && status.st_uid != geteuid();
}

} // namespace merolt::platform
