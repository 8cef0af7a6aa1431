#pragma once

#include <chrono>
#include <stop_token>

namespace pravik {

/// How long a port may work on one picture. A port asks between pieces of its work, and when the limit is spent it
/// answers with what it has found so far.
struct WorkLimit {
  /// The moment at which the work must end.
  std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::time_point::max();
  /// Lets the caller end it at any moment.
  std::stop_token stop;

  bool isSpent() const { return stop.stop_requested() || std::chrono::steady_clock::now() >= deadline; }

  bool operator==(const WorkLimit&) const = default;
};

}  // namespace pravik
