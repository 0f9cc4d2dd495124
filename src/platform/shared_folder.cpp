#include "platform/shared_folder.h"

#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace merolt::platform {

bool othersMayMakeFilesBeside(const char* path) {
    const std::string name = path;
    const std::size_t end = name.rfind('/');
    const std::string folder = end == std::string::npos ? "." : end == 0 ? "/" : name.substr(0, end);
    struct stat status {};
    if (stat(folder.c_str(), &status) != 0) return true;
    if (status.st_mode & (S_IWGRP | S_IWOTH)) return true;
    return status.st_uid != 0 && status.st_uid != geteuid();
}

} // namespace merolt::platform
