// How an association request finds its families: which associations a source class has, and the tests that select a
// family, each table in the order in which it is walked.
#pragma once

#include <cstddef>
#include <iterator>

namespace merolt {

/// For which classes a request is answered, and in which order their associations are tried if it names none. Four
/// classes in it have no family.
struct AssocLookupRow {
    const char* sourceClass;
    const char* associationClass;
};
extern const AssocLookupRow m_assocLookupTable[];
extern const int m_assocLookupTableSize;

/// How a test takes its source; may be combined.
enum SourceTraits : unsigned {
    exactSource = 0,
    scsiSource = 1,   ///< in the second chain, which is walked whatever the first one found
    bySubclass = 2,   ///< an object of a subclass will do
    needsTargets = 4, ///< tested only while targets are discovered
};

/// A family on the storage side, asked for if the request's class is the association class or the base class. The first
/// source class of a chain that matches owns all its tests.
struct StorageTest {
    const char* sourceClass;
    const char* associationClass;
    const char* baseClass;
    unsigned traits = exactSource;
    const char* referenceNamesBaseClass = nullptr; ///< the base class of referenceNames, where it differs
};
constexpr std::size_t storageTestCount = 57;
extern const StorageTest storageTests[storageTestCount];

/// Association classes of the Ethernet side for associators and associatorNames: whatever the source is.
constexpr std::size_t ethernetAssociatorCount = 20;
extern const char* const ethernetChainOfAssociators[ethernetAssociatorCount];

/// For references and referenceNames both must be met.
struct EthernetPair {
    const char* sourceClass;
    const char* associationClass;
    unsigned traits = exactSource;
};
constexpr std::size_t ethernetPairCount = 42;
extern const EthernetPair ethernetPairsOfReferences[ethernetPairCount];

} // namespace merolt
