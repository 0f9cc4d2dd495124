// A file that a test makes and that goes with it.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>

namespace cimhost::testing_support {

class TemporaryFile {
public:
    /// Readable and writable by the owner alone.
    explicit TemporaryFile(std::string_view content = "") {
        std::string name = (std::filesystem::temp_directory_path() / "cimhost_test_XXXXXX").string();
        ::close(::mkstemp(name.data()));
        path = name;
        std::ofstream(path) << content;
    }
    ~TemporaryFile() { std::filesystem::remove(path); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::filesystem::path path;
};

} // namespace cimhost::testing_support
