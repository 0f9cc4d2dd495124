// Chains of the library's records, each walked to a certain end: the numbers and pointers in them are another's, and a
// chain that comes back to itself must not hold the provider's locks for ever.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>

namespace merolt {

/// What hangs in the library's tree, from the outside in.
enum class ChainKind : std::uint8_t { adapters, ports, functions, targets, logicalUnits };

constexpr std::size_t chainKinds = 5;

/// The most entries of a kind that one walk of the tree visits, all its chains together: more than any machine has.
constexpr std::uint32_t mostEntries(ChainKind kind) {
    constexpr std::uint32_t most[chainKinds] = {1U << 12, 1U << 16, 1U << 13, 1U << 16, 1U << 20};
    return most[static_cast<std::size_t>(kind)];
}

/// One line on the error log for each kind of chain that was not walked as the library tells it, until
/// forgetCutChains. Call under provider_lock, as everything that reads the tree.
void reportCutChain(ChainKind kind);
void reportWildCount(ChainKind kind);
/// A new tree is read: what is wrong with it is told anew.
void forgetCutChains();

/// Length of a chain; one that comes back to itself has as many entries as there are different ones in it.
struct ChainLength {
    std::uint32_t entries = 0; ///< at most one more than the limit that was asked for
    bool circles = false;
};

/// Follows a chain without memory for what it saw: one pointer waits while the other goes on, twice as far each time,
/// and a circle is there when they meet.
template <class Entry>
ChainLength lengthOfChain(const Entry* first, std::uint32_t limit) {
    std::uint32_t steps = 0;
    std::uint32_t stretch = 1;
    std::uint32_t inStretch = 0;
    const Entry* waiting = first;
    const Entry* entry = first;
    for (; entry && steps <= limit; ++steps) {
        entry = entry->next;
        if (entry && entry == waiting) break;
        if (++inStretch < stretch) continue;
        waiting = entry;
        stretch *= 2;
        inStretch = 0;
    }
    if (!entry || steps > limit) return {std::min(steps, limit + 1), false};
    const std::uint32_t around = inStretch + 1;
    const Entry* ahead = first;
    for (std::uint32_t step = 0; step < around; ++step)
        ahead = ahead->next;
    std::uint32_t before = 0;
    for (const Entry* behind = first; behind != ahead; behind = behind->next, ahead = ahead->next)
        ++before;
    return {before + around, true};
}

/// Entries that a walk may still visit.
struct ChainAllowance {
    explicit ChainAllowance(ChainKind which) : kind(which), left(mostEntries(which)) {}

    ChainKind kind;
    std::uint32_t left;
};

/// The entries of one chain in their order, each once, as far as the walk's allowance goes. Entries whose addresses
/// only rise, or only fall, cannot come back to one that was visited; the first that lies among those visited has the
/// chain measured.
template <class Entry>
class Chain {
public:
    class Iterator {
    public:
        Iterator() = default;
        Iterator(Entry* start, ChainAllowance& from)
            : first(start), entry(start), lowest(start), highest(start), allowance(&from) {
            if (entry && allowance->left == 0) cut();
        }
        Entry& operator*() const { return *entry; }
        Iterator& operator++() {
            ++visited;
            --allowance->left;
            entry = entry->next;
            if (entry && !mayVisit()) cut();
            return *this;
        }
        bool operator!=(const Iterator& other) const { return entry != other.entry; }
        bool isAtEnd() const { return !entry; }

    private:
        bool mayVisit() {
            if (allowance->left == 0) return false;
            if (!isMeasured && !liesBeyondVisited()) measure();
            return visited < differentOnes;
        }

        bool liesBeyondVisited() {
            const std::less<const Entry*> isBefore;
            if (isBefore(entry, lowest)) {
                lowest = entry;
            } else if (isBefore(highest, entry)) {
                highest = entry;
            } else {
                return false;
            }
            return true;
        }

        void measure() {
            isMeasured = true;
            const ChainLength length = lengthOfChain<Entry>(first, visited + allowance->left);
            if (length.circles) differentOnes = length.entries;
        }

        void cut() {
            reportCutChain(allowance->kind);
            entry = nullptr;
        }

        Entry* first = nullptr;
        Entry* entry = nullptr;
        const Entry* lowest = nullptr; ///< of the visited ones, as long as they are not measured
        const Entry* highest = nullptr;
        ChainAllowance* allowance = nullptr;
        std::uint32_t visited = 0;
        std::uint32_t differentOnes = std::numeric_limits<std::uint32_t>::max(); ///< unless a circle tells their number
        bool isMeasured = false;
    };

    Chain(Entry* start, ChainAllowance& from) : first(start), allowance(from) {}

    Iterator begin() const { return {first, allowance}; }
    Iterator end() const { return {}; }

private:
    Entry* first;
    ChainAllowance& allowance;
};

} // namespace merolt
