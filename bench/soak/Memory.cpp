#include "bench/soak/Memory.h"

#include <unistd.h>

#include <fstream>

namespace pravik::bench {

double residentMegabytes() {
  std::ifstream file("/proc/self/statm");
  double total = 0;
  double resident = 0;
  file >> total >> resident;
  return resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1e6;
}

}  // namespace pravik::bench
