// Functions that a library may have, looked up while the process runs.
#pragma once

namespace merolt::platform {

/// The function of that name in the library that has the known one, which is loaded already; null if there is none.
void* functionBeside(const void* known, const char* name);

} // namespace merolt::platform
