// An open file or folder.
#pragma once

#include <utility>

#include <unistd.h>

namespace tavik::host {

/** Owns a descriptor, or none (-1). */
class Descriptor {
public:
    explicit Descriptor(int descriptor = -1) : descriptor_(descriptor) {}
    ~Descriptor() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool opened() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }

private:
    int descriptor_;
};

} // namespace tavik::host
