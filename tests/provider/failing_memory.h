// Lets memory run out at a chosen allocation of one thread.
#pragma once

/// The n-th allocation of the calling thread from now on fails, once. 0 for none.
void failAllocation(unsigned n);

/// Whether the allocation of the calling thread's last call of failAllocation was reached. Ends its effect.
bool allocationFailed();
