#include "util/ThreadUtils.h"

#include <pthread.h>
#include <unistd.h>

namespace pt {

unsigned long pthrself() { return pthread_self(); }

int pthrequal(unsigned long thread) { return pthread_equal(thread, pthread_self()) != 0 ? 1 : 0; }

int psleep(uint32_t milliseconds) { return usleep(milliseconds * 1000U); }

}  // namespace pt
