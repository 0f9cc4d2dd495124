// The thread that owns the adapter inventory: first build, then refreshes and link polls in a one-second rhythm.
#pragma once

#include "cmpios.h"

namespace merolt {

/// Clears all lists and ends the management library. Called with provider_lock held.
void endInventory();

/// The thread's function. Nothing is thrown: what fails is logged and tried again. @param record the provider's
/// PollThreadContext. @return null
CMPI_THREAD_RETURN CMPI_THREAD_CDECL AdapterPollingLoop(void* record);

} // namespace merolt
