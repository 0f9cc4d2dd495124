// Associations whose ends belong together when their keys, or parts of them, are equal.
#pragma once

#include "associations/storage/walks.h"

namespace merolt::association {

enum class Cut { whole, prefix, suffix };

/// A list and the text of its records that is compared.
struct KeyedList {
    const std::int32_t* count;
    const char* (*text)(int index);
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

/// Each record of the far list whose text equals the source's first key.
void findEqual(const Source& source, Cut sourceCut, const KeyedList& far, const ObjectVisitor& visit);
/// Each pair of records with equal texts, left outer, right inner.
void pairEqual(const KeyedList& left, const KeyedList& right, const PairVisitor& visit);

template <Cut sourceCut, const KeyedList& far>
void equalTo(const Source& source, const ObjectVisitor& visit) {
    findEqual(source, sourceCut, far, visit);
}

template <const KeyedList& left, const KeyedList& right>
void equalPairs(Enumeration, const PairVisitor& visit) {
    pairEqual(left, right, visit);
}

} // namespace merolt::association
