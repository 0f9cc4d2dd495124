#include "associations/storage/key_match.h"

#include "text/text.h"

namespace merolt::association {

const char* CutText::of(const char* key) {
    switch (cut) {
    case Cut::prefix:
        return part.prefixOf(key);
    case Cut::suffix:
        return part.suffixOf(key);
    default:
        return key;
    }
}

void findEqual(const Source& source, Cut sourceCut, const KeyedList& far, const ObjectVisitor& visit) {
    CutText sourceText(sourceCut);
    const char* wanted = sourceText.of(source.text(0));
    CutText farText(far.cut);
    matchingRecords(*far.count, visit,
                    [&](int index) { return equalsIgnoringCase(wanted, farText.of(far.text(index))); });
}

void pairEqual(const KeyedList& left, const KeyedList& right, const PairVisitor& visit) {
    CutText leftText(left.cut);
    CutText rightText(right.cut);
    matchingRecords(*left.count, *right.count, visit, [&](int leftIndex, int rightIndex) {
        return equalsIgnoringCase(leftText.of(left.text(leftIndex)), rightText.of(right.text(rightIndex)));
    });
}

} // namespace merolt::association
