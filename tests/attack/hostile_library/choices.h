// A row of bytes that decides how the hostile library misbehaves: of a seed, of a fuzzer, or none at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class Choices {
public:
    Choices() = default;
    explicit Choices(std::vector<std::uint8_t> given) : bytes(std::move(given)) {}

    /// As many bytes as a seed gives, the same for each seed.
    static Choices ofSeed(std::uint32_t seed, std::size_t count) {
        std::vector<std::uint8_t> made(count);
        std::uint32_t state = seed * 2654435761U + 1;
        for (std::uint8_t& byte : made) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            byte = static_cast<std::uint8_t>(state >> 11);
        }
        return Choices(std::move(made));
    }

    bool isOver() const { return at >= bytes.size(); }
    /// 0 when the row is over.
    std::uint8_t byte() { return isOver() ? std::uint8_t{0} : bytes[at++]; }
    /// A number below the limit; 0 for an empty range and when the row is over.
    std::size_t below(std::size_t limit) {
        if (limit == 0 || isOver()) return 0;
        const std::size_t high = byte();
        return (high << 8 | byte()) % limit;
    }

private:
    std::vector<std::uint8_t> bytes;
    std::size_t at = 0;
};
