// Lets memory run out for one thread. Replaces the program's new.
#pragma once

#include <cstddef>

/// Every new of the calling thread asks from now on, and fails where the answer is true. Null: none fails.
void refuseAllocations(bool (*isRefused)(std::size_t bytes));

/// The n-th allocation of the calling thread from now on fails, once. 0 for none.
void failAllocation(unsigned n);

/// Whether the allocation of the calling thread's last call of failAllocation was reached. Ends its effect.
bool allocationFailed();
