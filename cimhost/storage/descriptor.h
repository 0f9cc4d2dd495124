// A file descriptor that is closed with its owner.
#pragma once

#include <unistd.h>
#include <utility>

namespace cimhost {

class Descriptor {
public:
    /// Negative: nothing is open.
    explicit Descriptor(int opened) : number(opened) {}
    ~Descriptor() {
        if (number >= 0) ::close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int get() const { return number; }
    int release() { return std::exchange(number, -1); }

private:
    int number;
};

} // namespace cimhost
