#include "apps/pravik/ProgramMemory.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace pravik::cli {

void returnLargeBlocks() {
#ifdef __GLIBC__
  // Fixed thresholds: the library would raise them to the size of the largest block that was ever freed.
  constexpr int largeBlock = 2 << 20;
  mallopt(M_MMAP_THRESHOLD, largeBlock);
  mallopt(M_TRIM_THRESHOLD, 2 * largeBlock);
#endif
}

}  // namespace pravik::cli
