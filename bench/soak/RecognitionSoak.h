#pragma once

namespace pravik::bench {

/// How a soak of recognitions is run.
struct RecognitionLoad {
  int count = 5000;
  /// Threads that call the one SDK at the same time.
  int callers = 8;
  /// Threads that one model run may use; 0 means one for each core.
  int engineThreads = 1;
};

/// Reads the pictures of samples/ over and over in this process, through one SDK that all callers share, and shows
/// memory, latency and throughput for each tenth. Whether every answer was that of a reading on its own before, and
/// the memory stayed flat.
bool soakRecognitions(const RecognitionLoad& load);

}  // namespace pravik::bench
