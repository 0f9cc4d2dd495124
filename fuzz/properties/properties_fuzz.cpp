// Any bytes as meroltcna.properties, through both readers of the file: each comes to an end, and no setting runs out of
// its field.
#include "configuration/configuration.h"
#include "configuration/nic_properties.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

using namespace merolt;

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

template <std::size_t N>
void requireTerminated(const char (&text)[N]) {
    require(std::memchr(text, 0, N) != nullptr);
}

/// A folder of this program's own, its working directory while the readers look for the file there.
class Folder {
public:
    Folder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "merolt-properties-XXXXXX").string();
        require(mkdtemp(pattern.data()) != nullptr);
        path = pattern;
    }
    ~Folder() { std::filesystem::remove_all(path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::filesystem::path path;
};

/// The fuzzer itself keeps files relative to the directory that it was started in.
class Visit {
public:
    explicit Visit(const Folder& folder) : origin(std::filesystem::current_path()) {
        std::filesystem::current_path(folder.path);
    }
    ~Visit() { std::filesystem::current_path(origin); }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

private:
    const std::filesystem::path origin;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // One of the readers says on standard error that it reads.
    std::cerr.setstate(std::ios::failbit);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Folder folder;
    const Visit visit(folder);
    std::ofstream("meroltcna.properties", std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));

    readConfiguration();
    requireTerminated(gInteropNamespace);
    requireTerminated(gCIMOMNameVersion);
    requireTerminated(gCIMSchemaVersion);

    Merolt_NIC_Properties properties;
    properties.reload();
    requireTerminated(properties.interopNamespace);
    requireTerminated(properties.implementationNamespace);
    return 0;
}
