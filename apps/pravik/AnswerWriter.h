#pragma once

#include <iosfwd>

#include "apps/pravik/Settings.h"
#include "backends/json/Answer.h"

namespace pravik::cli {

/// Writes answers one after the other as they come, each at once: blocks of a table, elements of one JSON array, or
/// one JSON object a line, or rows of comma-separated values (a header and `csvRow`). So it does with the events of a
/// scan, {"time":…,"event":…} and what the event has to say, of which the result comes last; in a table each is a line.
class AnswerWriter {
 public:
  /// The kind of document, null for text, decides the columns of comma-separated values.
  AnswerWriter(std::ostream& out, const Settings& settings, const DocumentKind* document = nullptr);

  void write(const Answer& answer);
  /// Must be called once, at the end. Returns allRecognized, or someNotRecognized when an error or a problem was among
  /// the answers, or with strict settings something questionable.
  ExitStatus finish();

  /// False as soon as the output can take no more.
  bool works() const;

 private:
  void writeForPeople(const Answer& answer);

  std::ostream& out_;
  Format format_;
  Language language_;
  const DocumentKind* document_;
  bool isStrict_;
  bool first_ = true;
  bool allRecognized_ = true;
};

}  // namespace pravik::cli
