// Associations whose ends belong together when their keys, or parts of them, are equal.
#pragma once

#include "associations/storage/text_index.h"
#include "associations/storage/walks.h"
#include "text/text.h"

#include <string>

namespace merolt::association {

enum class Cut { whole, prefix, suffix };

/// A list and the text of its records that is compared.
struct KeyedList {
    const std::int32_t* count;
    const char* (*text)(int index);
    const char* key; ///< the key by which one of them, as a source, finds the other side
    Cut cut = Cut::whole;
};

/// The part of each text that is compared, in a walk over a list.
class CutText {
public:
    explicit CutText(Cut kind) : cut(kind) {}
    const char* of(const char* key);

private:
    Cut cut;
    KeyCut part;
};

/// The right list of a join, which is walked once for each record of the left one. A text without an underscore leaves
/// the cut of the one before it: in the first walk those at the beginning have none, later they have the last one's.
class RightTexts {
public:
    explicit RightTexts(const KeyedList& list);

    /// Walks the list: calls the visitor with each record whose text equals in any letter case.
    /// @return false if the visitor did, which ends the walk.
    template <class Visitor>
    bool walk(const char* text, Visitor&& visitor) {
        const char* const atBeginning = cutBefore.c_str();
        for (int record = 0; record < withoutCut; ++record) {
            if (equalsIgnoringCase(text, atBeginning) && !visitor(record)) return false;
        }
        cutBefore = lastCut;
        return others.forEach(text, visitor);
    }

private:
    int withoutCut = 0; ///< records at the beginning
    std::string cutBefore;
    std::string lastCut;
    TextIndex others;
};

/// Each record of the far list whose text equals the source's first key.
void findEqual(const Source& source, Cut sourceCut, const KeyedList& far, const ObjectVisitor& visit);
/// Each pair of records with equal texts, left outer, right inner.
void pairEqual(const KeyedList& left, const KeyedList& right, const PairVisitor& visit);

template <const KeyedList& left, const KeyedList& right>
void equalPairs(Enumeration, const PairVisitor& visit) {
    pairEqual(left, right, visit);
}

/// From a source of the one list to the records of the other.
template <const KeyedList& source, const KeyedList& far>
inline constexpr Search findEqualOf = {
    .keys = {{{source.key}}},
    .find = [](const Source& object, const ObjectVisitor& visit) { findEqual(object, source.cut, far, visit); }};

/// Whatever has equal texts belongs together.
template <const KeyedList& left, const KeyedList& right>
inline constexpr Matching equalTexts = {equalPairs<left, right>, findEqualOf<right, left>, findEqualOf<left, right>};

} // namespace merolt::association
