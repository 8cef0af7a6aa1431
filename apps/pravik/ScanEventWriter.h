#pragma once

#include <iosfwd>

#include "apps/pravik/AnswerWriter.h"

namespace pravik::cli {

/// Writes what happens in a scan, each event at once: {"time":…,"event":…} and what the event has to say, as JSON, or
/// as a line for people with the time in seconds, the event and its details. The result comes last.
class ScanEventWriter {
 public:
  ScanEventWriter(std::ostream& out, Format format);

  void write(const Json& event);
  /// Must be called once, at the end.
  void finish() { answers_.finish(); }

 private:
  std::ostream& out_;
  Format format_;
  AnswerWriter answers_;
};

}  // namespace pravik::cli
