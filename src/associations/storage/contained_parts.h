// What is contained in a card: parts whose tag holds the card's serial number.
#pragma once

#include "associations/association.h"
#include "text/fixed_text.h"

#include <cstdint>

namespace merolt::association {

/// The serial number in a part's tag; empty for a tag that cannot be taken apart.
using CardToken = FixedText<256>;

struct PartList {
    const char* logName; ///< stands before _Tag in log lines
    const std::int32_t* count;
    const char* (*tag)(int index);
    CardToken (*cardOf)(const char* tag);
};

/// Each card with each part that has the card's serial number in its tag.
void pairContained(const PartList& parts, Enumeration enumeration, const PairVisitor& visit);
/// From a part, by its Tag.
void findCardOfPart(const PartList& parts, const Source& source, const ObjectVisitor& visit);
/// From a card, by its Tag, which stands here in the place of its serial number: where the Tag is a UUID, a card finds
/// no part.
void findPartsOfCard(const PartList& parts, const Source& source, const ObjectVisitor& visit);

/// A card and the parts in it.
template <const PartList& parts>
inline constexpr Matching containedIn = {
    .forEachPair = [](Enumeration enumeration, const PairVisitor& visit) { pairContained(parts, enumeration, visit); },
    .findLeft = {.keys = {{{"Tag"}}},
                 .find = [](const Source& source,
                            const ObjectVisitor& visit) { findCardOfPart(parts, source, visit); }},
    .findRight = {.keys = {{{"Tag"}}},
                  .find = [](const Source& source,
                             const ObjectVisitor& visit) { findPartsOfCard(parts, source, visit); }},
};

extern const PartList connectorsInCards;
extern const PartList jacksInCards;

} // namespace merolt::association
