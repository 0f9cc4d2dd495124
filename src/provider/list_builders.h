// The order in which all lists are built and cleared: one table, walked by the first build, the refresh and the
// clean-up. Callers hold provider_lock.
#pragma once

namespace merolt {

/// Everything, when the provider starts.
void buildListsAtStart();

/// Everything, after clearLists. The CNA list comes late here: lists that take the Ethernet functions of a card from
/// it find it empty in a refresh, and lack them until the provider is loaded again.
void buildListsInRefresh();

void clearLists();

/// The same when the provider ends: no list keeps the memory for its next build.
void endLists();

/// What is known of the host and the server without looking at adapters.
void buildListsWithoutAdapters();

} // namespace merolt
