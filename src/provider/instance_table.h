// Which class or association answers: the rows that every instance request walks, in their order.
#pragma once

#include "associations/association.h"
#include "classes/request.h"

#include <vector>

namespace merolt {

/// Rows of one chain: the first match ends the chain, and the other chains are walked all the same.
enum Chain { storageChain, storageExtentChain, scsiEndpointChain, ethernetChain, chainCount };

/// A class's three functions.
struct ClassFunctions {
    EnumInstanceNames enumInstanceNames;
    EnumInstances enumInstances;
    GetInstance getInstance;
};

/// A class by its functions, or an association by its family. Instances of an association know no property filter.
struct InstanceRow {
    const char* className; ///< tested with classPathIsA, so subclasses match too
    Chain chain;
    ClassFunctions functions = {};
    const association::Family* association = nullptr;
    association::FreshLists fresh = {}; ///< read anew before each of the requests

    void enumInstanceNames(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop) const;
    void enumInstances(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,
                       const char** properties) const;
    void getInstance(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,
                     const char** properties) const;
};

using InstanceRows = std::vector<InstanceRow>;

/// Rows in the order of enumerations.
const InstanceRows& enumerationRows();
/// Rows in the order of getInstance, which differs in the middle of the Ethernet chain.
const InstanceRows& getInstanceRows();

} // namespace merolt
