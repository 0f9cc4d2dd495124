#include "provider/list_builders.h"

#include "classes/server/namespace.h"
#include "classes/server/object_manager.h"
#include "classes/storage/fc_port.h"
#include "inventory/cna_list.h"

namespace merolt {

namespace {

enum class When { always, atStart, inRefresh };

/// Either function may be missing: some lists are built in one place and cleared in another, some are never cleared.
struct ListBuilder {
    void (*build)();
    void (*clear)();
    When when;
};

constexpr ListBuilder listBuilders[] = {
    {Initialize_CNA_List, nullptr, When::atStart},
    {nullptr, Clear_CNA_List, When::always},
    {server::buildNamespaceList, nullptr, When::always},
    {server::buildObjectManagerList, nullptr, When::always},
    {storage::buildFCPortList, storage::clearFCPortList, When::always},
    {Initialize_CNA_List, nullptr, When::inRefresh},
};

void buildLists(When occasion) {
    for (const ListBuilder& builder : listBuilders) {
        if (builder.build && (builder.when == When::always || builder.when == occasion)) builder.build();
    }
}

} // namespace

void buildListsAtStart() { buildLists(When::atStart); }

void buildListsInRefresh() { buildLists(When::inRefresh); }

void clearLists() {
    for (const ListBuilder& builder : listBuilders) {
        if (builder.clear) builder.clear();
    }
}

} // namespace merolt
