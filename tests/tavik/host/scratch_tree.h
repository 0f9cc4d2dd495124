// A folder of attribute files that a test makes and that is gone behind it.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "tavik/host/kernel_queries.h"
#include "tavik/host/sys_tree.h"

namespace tavik::host::test {

class ScratchTree {
public:
    ScratchTree() {
        auto pattern = (std::filesystem::temp_directory_path() / "tavik_host_test.XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make " + pattern);
        root_ = pattern;
        std::filesystem::create_directories(root_ / "sys/class/net");
    }
    ~ScratchTree() {
        std::error_code error;
        std::filesystem::remove_all(root_, error);
    }
    ScratchTree(const ScratchTree&) = delete;
    ScratchTree& operator=(const ScratchTree&) = delete;

    /** Starts as a copy of a recorded tree. */
    static std::filesystem::path recorded(const std::string& name) {
        return std::filesystem::path(TAVIK_HOST_TREES) / name;
    }
    void copy(const std::string& name) {
        std::filesystem::copy(recorded(name), root_,
                              std::filesystem::copy_options::recursive | std::filesystem::copy_options::copy_symlinks |
                                  std::filesystem::copy_options::overwrite_existing);
    }

    void file(const std::string& path, const std::string& content) {
        std::filesystem::create_directories((root_ / path).parent_path());
        std::ofstream(root_ / path, std::ios::binary) << content;
    }

    void link(const std::string& path, const std::string& target) {
        std::filesystem::create_directories((root_ / path).parent_path());
        std::filesystem::create_symlink(target, root_ / path);
    }

    /** A virtual interface that is up. */
    void interface(const std::string& name, const std::string& index, const std::string& address) {
        const auto folder = "sys/class/net/" + name + "/";
        file(folder + "type", "1\n");
        file(folder + "flags", "0x1003\n");
        file(folder + "ifindex", index + "\n");
        file(folder + "address", address + "\n");
        file(folder + "operstate", "up\n");
    }

    void remove(const std::string& path) { std::filesystem::remove_all(root_ / path); }

    const std::filesystem::path& root() const { return root_; }
    SysTree tree() const { return SysTree(root_); }
    std::unique_ptr<KernelQueries> queries() const { return makeRecordedQueries(tree()); }

private:
    std::filesystem::path root_;
};

} // namespace tavik::host::test
