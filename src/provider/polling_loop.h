// The thread that owns the adapter inventory: first build, then refreshes and link polls in a one-second rhythm.
#pragma once

#include "cmpios.h"

namespace merolt {

/// The thread's function. @param record the provider's PollThreadContext. @return null
CMPI_THREAD_RETURN CMPI_THREAD_CDECL AdapterPollingLoop(void* record);

} // namespace merolt
