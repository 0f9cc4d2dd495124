#include "provider/association_tables.h"

#include "provider/places.h"

namespace merolt {

namespace {

using association::ethernetFamilies;
using association::Family;
using association::storageFamilies;

struct RowWithoutFamily {
    int place;
    AssocLookupRow row;
};

// They pass the look-up, and nothing answers.
constexpr RowWithoutFamily rowsWithoutFamily[] = {
    {24, {"Merolt_FCHBA_RegisteredProfile", "Merolt_FCHBA_RegisteredProfileObjectManager"}},
    {50, {"Merolt_FCHBA_ObjectManager", "Merolt_FCHBA_RegisteredProfileObjectManager"}},
    {65, {"Merolt_Adapter_ComputerSystem", "Merolt_NIC_ComputerSystemRemoteServiceAccessPoint"}},
    {94, {"Merolt_NIC_RemoteServiceAccessPoint", "Merolt_NIC_ComputerSystemRemoteServiceAccessPoint"}},
};

AssociationSource sourceOf(const association::Role& role, const association::SourcePlaces& places) {
    return {.className = role.objects.name,
            .places = places,
            .takesSubclasses = role.takesSubclasses,
            .referenceNamesBaseClass = role.referenceNamesBaseClass};
}

/// The right end first: where both ends take subclasses, it is asked first.
std::vector<AssociationSource> sourcesOf(const Family& family) {
    std::vector<AssociationSource> sources = {sourceOf(family.right, family.places.right),
                                              sourceOf(family.left, family.places.left)};
    sources.front().isInLastChain = family.needsTargets;
    for (const association::FurtherSource& further : family.furtherSources)
        sources.push_back({.className = further.className, .places = further.places});
    return sources;
}

std::vector<AssocLookupRow> makeLookupTable() {
    PlacedRows<AssocLookupRow> rows;
    for (const RowWithoutFamily& each : rowsWithoutFamily)
        rows.add(each.place, each.row);
    for (const association::Families& families : {storageFamilies(), ethernetFamilies()}) {
        for (const Family* family : families) {
            for (const AssociationSource& source : sourcesOf(*family))
                rows.add(source.places.lookUp, {source.className, family->className});
        }
    }
    return rows.inOrder();
}

std::vector<AssociationTest> makeTests(const association::Families& families) {
    PlacedRows<AssociationTest> tests;
    for (const Family* family : families) {
        for (const AssociationSource& source : sourcesOf(*family))
            tests.add(source.places.test, {source, family});
    }
    return tests.inOrder();
}

} // namespace

const std::vector<AssocLookupRow>& assocLookupTable() {
    static const std::vector<AssocLookupRow> table = makeLookupTable();
    return table;
}

const std::vector<AssociationTest>& storageTests() {
    static const std::vector<AssociationTest> tests = makeTests(storageFamilies());
    return tests;
}

const std::vector<AssociationTest>& ethernetTests() {
    static const std::vector<AssociationTest> tests = makeTests(ethernetFamilies());
    return tests;
}

} // namespace merolt
