// How an association request finds its families: which associations a source class has, and the tests that select a
// family. Both follow from the families, each row at its place.
#pragma once

#include "associations/families.h"

#include <vector>

namespace merolt {

/// For which classes a request is answered, and in which order their associations are tried if it names none. Four
/// classes in it have no family.
struct AssocLookupRow {
    const char* sourceClass;
    const char* associationClass;
};
const std::vector<AssocLookupRow>& assocLookupTable();

/// A class from which an association is followed.
struct AssociationSource {
    const char* className;
    association::SourcePlaces places;
    bool takesSubclasses = false; ///< an object of a subclass will do
    bool isInLastChain = false;   ///< in the chain that is walked whatever the first one found
    const char* referenceNamesBaseClass = nullptr;
};
/// A family and a class from which it is asked for.
struct AssociationTest {
    AssociationSource source;
    const association::Family* family;
};

/// On the storage side the request's class is the association class or the base class. The first source class of a
/// chain that matches owns all its tests.
const std::vector<AssociationTest>& storageTests();

/// On the Ethernet side it is the association class alone, and the first match ends the walk.
const std::vector<AssociationTest>& ethernetTests();

} // namespace merolt
