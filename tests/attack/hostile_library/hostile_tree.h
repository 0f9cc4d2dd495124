// A small real tree of adapters and the tricks that break it. What it holds may be circular, countless, endless or
// missing; every pointer in it leads to a record of its own, since nothing can be done about one that does not.
#pragma once

#include "choices.h"

#include "inventory/tavik.h"
#include "tavik/tree.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <vector>

/// How the calls answer beside the tree.
struct Answers {
    std::set<std::string> failing; ///< names of calls that answer with a failure; "all" stands for each
    bool hasTextsWithoutEnd = false;
    bool hasWildCounts = false;
    bool hasNoLists = false; ///< counts, and null where the list should be
    bool isNullOnSuccess = false;
    bool hasNoList = false;       ///< TAVIK_GetAdapterList gives null, and a tree, in turns
    bool growsAndShrinks = false; ///< chains are longer or shorter at each call
    /// So often between two questions for the list; then each chain ends where it is, until the next question. A walk
    /// whose chains change under it can go round as far as its own limit, which is thousands of functions.
    unsigned mostChanges = std::numeric_limits<unsigned>::max();
    bool raisesAlarms = false;
    unsigned delayMilliseconds = 0;
};

class HostileTree {
public:
    HostileTree();

    /// All records, found while the tree was whole.
    std::vector<TAVIK_AdapterEntry*> adapters;
    std::vector<TAVIK_PhyPortEntry*> ports;
    std::vector<TAVIK_ProtocolEntry*> functions;
    std::vector<TAVIK_ProtocolEntry*> storageFunctions;
    std::vector<TAVIK_ProtocolEntry*> nicFunctions;
    std::vector<TAVIK_TargetEntry*> targets;
    std::vector<TAVIK_LunEntry*> units;

    Answers answers;

    TAVIK_AdapterList* list() { return tree.list(); }
    /// Makes some chains longer or shorter.
    void breathe();
    /// The list is asked for: from here on it may breathe as often as the answers say.
    void beginReading();

private:
    /// Calls with the records of each kind and with where their links are kept while the chains are cut.
    template <class Visitor>
    void forEachKind(Visitor&& visit);
    void cutChains();

    tavik::Tree tree;
    unsigned breaths = 0;
    unsigned changes = 0; ///< since the list was asked for
    std::vector<TAVIK_AdapterEntry*> adapterLinks;
    std::vector<TAVIK_PhyPortEntry*> portLinks;
    std::vector<TAVIK_ProtocolEntry*> functionLinks;
    std::vector<TAVIK_TargetEntry*> targetLinks;
    std::vector<TAVIK_LunEntry*> unitLinks;
};

/// One way to misbehave. Choices that are over play it in its plainest form.
struct Trick {
    const char* name;
    void (*play)(HostileTree& tree, Choices& choices);
};

const std::vector<Trick>& allTricks();

/// A tree with the named trick; with those that a seed draws, "seed:17"; an honest one for the empty name.
/// Throws std::invalid_argument for another name.
std::unique_ptr<HostileTree> hostileTree(const std::string& scenario);
/// A tree with tricks as long as there are choices.
std::unique_ptr<HostileTree> hostileTree(Choices choices);

/// The tree that the calls answer from. From the calling thread on; the provider must not be reading the one before.
void serve(std::unique_ptr<HostileTree> tree);
/// Blocks that were handed out and not given back, and gifts that were no such block.
long outstandingBlocks();
long strangeReturns();
