#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace pravik {

/// What a program may take before it is ended.
struct ProcessLimits {
  std::chrono::milliseconds time;
  /// Of addresses, in bytes.
  std::size_t memory;
  /// Bytes that it may write.
  std::size_t output;
};

/// How a program ended: well; it is not installed; with an error of its own; or it went beyond a limit.
enum class ProcessEnd : std::uint8_t { well, notFound, failed, tookTooLong, wroteTooMuch };

struct ProcessOutput {
  ProcessEnd end = ProcessEnd::failed;
  /// What it wrote to its standard output.
  std::vector<std::uint8_t> bytes;
};

/// Runs a program, looked for on PATH, with the words after it as its arguments, and waits for it. Its standard input
/// is the file that `input` stands for, at whatever place that is; what it writes as errors is dropped. It is gone with
/// all that it started in its process group when this returns, and is ended when this process or the calling thread is.
/// Throws std::runtime_error when no process can be started.
ProcessOutput runProcess(const std::vector<std::string>& command, int input, const ProcessLimits& limits);

}  // namespace pravik
