// A client that asks for everything: each class and association, each object again by its name, what is associated with
// it, and both flash updates.
#pragma once

#include "cimhost/broker/broker.h"
#include "cimhost/model/class_repository.h"

#include "cmpift.h"

#include <string>

struct Interfaces {
    CMPIInstanceMI* instance = nullptr;
    CMPIAssociationMI* association = nullptr;
    CMPIMethodMI* method = nullptr;
};

struct Tally {
    std::size_t requests = 0;
    std::size_t objects = 0;
    std::size_t unfinished = 0; ///< requests that did not end with exactly one returnDone
    /// The largest answer of a class without ends; the pairs of an association are its square.
    std::size_t largestClass = 0;
};

/// @param classes the repository of the broker; classes of ours are asked for.
/// @param imageFile a file for the flash updates; empty for none.
/// @param eachClass how many objects of a class are asked for one by one.
Tally askForEverything(cimhost::Broker& broker, const cimhost::ClassRepository& classes, const Interfaces& interfaces,
                       const std::string& imageFile, std::size_t eachClass);
