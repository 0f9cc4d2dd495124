// What a client may expect of each of the 48 associations: ends, roles, and where one differs from the others.
#pragma once

#include <string>
#include <vector>

/// A property that some associations carry beside their two roles.
struct FurtherProperty {
    std::string name = {};
    unsigned value = 0;
    bool isEnumerated = false; ///< references always set it
};

struct Family {
    std::string associationClass;
    std::string token;     ///< the name in function names and log lines
    std::string baseClass; ///< by which references find it as well; empty: by none
    std::string role1;
    std::string leftClass;
    std::string role2;
    std::string rightClass;
    bool isFiltered = false; ///< role, result role and result class narrow what it answers
    FurtherProperty further = {};
    /// The names of the keys in what referenceNames gives; empty: the roles.
    std::string nameRole1 = {};
    std::string nameRole2 = {};
    /// Class of an object that getInstance takes as its right end without looking for it; empty: none.
    bool rightEndIsTakenOnTrust = false;
    /// Keys that are read of a source when the objects at its other end are looked for, in order.
    std::vector<std::string> keysTowardsLeft = {};
    std::vector<std::string> keysTowardsRight = {};

    /// The association's class without its vendor, for test names.
    std::string shortName() const { return associationClass.substr(associationClass.find('_') + 1); }
};

/// Storage and adapter side first, then the Ethernet side.
const std::vector<Family>& families();
const Family& familyOf(const std::string& associationClass);

/// The keys that are read of that source; in one association they depend on its class.
std::vector<std::string> keysReadOf(const Family& family, const std::string& sourceClass, bool sourceIsLeft);

/// The key by which an object of that class is looked for.
std::string lookedUpKey(const std::string& className);
