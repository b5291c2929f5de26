// Thread helpers shared by the server's adapters.
#pragma once

#include <cstdint>

namespace pt {

// Returns the calling thread's identifier.
unsigned long pthrself();

// Returns 1 if the identifier is the calling thread's, else 0.
int pthrequal(unsigned long thread);

// Sleeps the calling thread; returns what usleep returns. The microseconds are computed in 32 bits, so more
// than 4294967 milliseconds wrap around.
int psleep(uint32_t milliseconds);

}  // namespace pt
