// What storage families share: walks over lists, the host at one end, and cuts of keys.
#pragma once

#include "associations/storage_classes.h"
#include "text/fixed_text.h"

#include <cstdint>

namespace merolt::association {

/// Every record of a list, valid or not.
template <std::int32_t* count>
void everyRecord(const Source&, const ObjectVisitor& visit) {
    for (int index = 0; index < *count; ++index) {
        if (!visit({.index = index})) return;
    }
}

/// Pairs of the one left object with each right object.
template <void (*find)(const Source&, const ObjectVisitor&)>
void oneWithEach(Enumeration, const PairVisitor& visit) {
    find({}, [&](const Object& right) { return visit({{}, right}); });
}

/// The host, at the left of an association.
constexpr Role hostAs(const char* role) { return {role, computerSystem, computerSystemAliases}; }

/// From an object that the host scopes to the host.
inline constexpr Search findHost = {.keys = {{{"SystemName"}, {"SystemCreationClassName"}}},
                                    .find = onlyIf<namesHostAndClass, theObject>};

/// The host with every object of a class that it scopes.
template <void (*find)(const Source&, const ObjectVisitor&)>
inline constexpr Matching hostWithEach = {oneWithEach<find>, findHost, {.find = find}};

/// Calls the visitor with each pair of a left and a right record that belong together; the left list is the outer one.
template <class Match>
void matchingRecords(std::int32_t leftCount, std::int32_t rightCount, const PairVisitor& visit, Match&& match) {
    for (int left = 0; left < leftCount; ++left) {
        for (int right = 0; right < rightCount; ++right) {
            if (match(left, right) && !visit({{.index = left}, {.index = right}})) return;
        }
    }
}

/// Each record of a list that a source matches.
template <class Match>
void matchingRecords(std::int32_t count, const ObjectVisitor& visit, Match&& match) {
    for (int index = 0; index < count; ++index) {
        if (match(index) && !visit({.index = index})) return;
    }
}

constexpr std::size_t cutSize = 256;

/// A cut of a key. A text without an underscore leaves the cut of the text before it: a walk over a list shows such a
/// record as if it had the key of the one before.
class KeyCut {
public:
    /// The text before the first underscore.
    const char* prefixOf(const char* key);
    /// The text behind the last underscore.
    const char* suffixOf(const char* key);
    const char* text() const { return cut.text(); }

private:
    FixedText<cutSize> cut;
};

bool hasUnderscore(const char* key);

} // namespace merolt::association
