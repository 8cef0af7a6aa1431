#pragma once

namespace pravik::bench {

/// What the process holds in memory, in MB (proc(5), /proc/self/statm).
double residentMegabytes();

}  // namespace pravik::bench
