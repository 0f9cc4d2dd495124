#include "associations/storage/key_match.h"

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

RightTexts::RightTexts(const KeyedList& list) {
    CutText text(list.cut);
    for (int record = 0; record < *list.count; ++record) {
        const char* key = list.text(record);
        lastCut = text.of(key);
        const bool hasCut = list.cut == Cut::whole || hasUnderscore(key);
        if (!hasCut && record == withoutCut) {
            ++withoutCut;
        } else {
            others.add(record, lastCut);
        }
    }
}

void pairEqual(const KeyedList& left, const KeyedList& right, const PairVisitor& visit) {
    CutText leftText(left.cut);
    RightTexts rightTexts(right);
    for (int record = 0; record < *left.count; ++record) {
        const auto visitPair = [&](int other) { return visit({{.index = record}, {.index = other}}); };
        if (!rightTexts.walk(leftText.of(left.text(record)), visitPair)) return;
    }
}

} // namespace merolt::association
