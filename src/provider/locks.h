// The provider's global mutexes, made by its constructor and closed by its destructor.
// Order: provider_lock first, then adapter_update_lock or enable_indications_mutex.
#pragma once

#include "platform/mutex.h"

#include <memory>

namespace merolt {

/// All lists and the use of the management library by requests: held by every request for its whole duration (but
/// createInstance and deleteInstance), and by the polling thread while it builds or updates lists.
extern std::unique_ptr<platform::Mutex>& provider_lock;
/// Held by the polling thread for the first build.
extern std::unique_ptr<platform::Mutex>& enable_indications_mutex;
/// Nobody takes it.
extern std::unique_ptr<platform::Mutex>& properties_file_lock;
/// Keeps the slow update of the library's second tree apart from methods and setInstance.
extern std::unique_ptr<platform::Mutex>& adapter_update_lock;

/// Makes the four. A mutex that cannot be made ends the process with status 1 after a line in the error log.
void makeLocks();
void closeLocks();

} // namespace merolt
