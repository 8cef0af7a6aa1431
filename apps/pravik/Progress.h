#pragma once

#include <cstddef>
#include <iosfwd>

namespace pravik::cli {

/// A bar that shows how far a batch is, redrawn on one line of a terminal; nothing when it is not shown. The line is
/// cleared when the bar goes away.
class Progress {
 public:
  Progress(std::ostream& terminal, std::size_t total, bool shown);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void show(std::size_t done);
  /// Clears the line, so that something else can be written.
  void hide();

 private:
  std::ostream& terminal_;
  std::size_t total_;
  bool shown_;
};

}  // namespace pravik::cli
