// Which associations are tried for an object of a class, and in which order.
#pragma once

#include <string>
#include <vector>

struct DispatchRow {
    std::string source;
    std::string association;
    std::string base; ///< what references may name in place of the association; empty: nothing
};

/// What a request is answered from that names no association, in order. Some rows have nothing behind them.
const std::vector<DispatchRow>& lookUpTable();

/// What references and referenceNames try for a named association or base class, in order.
const std::vector<DispatchRow>& referenceTests();
