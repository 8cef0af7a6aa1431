#include "apps/pravik/AnswerWriter.h"

#include <ostream>

#include "apps/pravik/Csv.h"
#include "apps/pravik/Table.h"

namespace pravik::cli {
namespace {

/// An element of an array, indented as its place asks.
std::string arrayElement(const Answer& answer) {
  std::string element = "  ";
  for (const char c : jsonText(answer, true)) {
    element += c;
    if (c == '\n') element += "  ";
  }
  return element;
}

}  // namespace

AnswerWriter::AnswerWriter(std::ostream& out, const Settings& settings, const DocumentKind* document)
    : out_(out),
      format_(settings.format),
      language_(settings.language),
      document_(document),
      isStrict_(settings.isStrict) {
  if (format_ == Format::csv) out << csvHeader(document);
}

void AnswerWriter::write(const Answer& answer) {
  switch (format_) {
    case Format::table:
      writeForPeople(answer);
      break;
    case Format::json:
      out_ << (first_ ? "[\n" : ",\n") << arrayElement(answer);
      break;
    case Format::jsonl:
      out_ << jsonText(answer) << '\n';
      break;
    case Format::csv:
      out_ << csvRow(document_, answer);
      break;
  }
  out_.flush();
  first_ = false;
  allRecognized_ =
      allRecognized_ && isRecognized(answer) && !answer.contains("problems") && !(isStrict_ && isQuestionable(answer));
}

void AnswerWriter::writeForPeople(const Answer& answer) {
  if (!answer.contains("event")) {
    out_ << (first_ ? "" : "\n") << asTable(answer, language_);
    return;
  }
  out_ << asEventLine(answer);
  if (answer["event"] == "result") out_ << '\n' << asTable(answer, language_);
}

ExitStatus AnswerWriter::finish() {
  if (format_ == Format::json) out_ << (first_ ? "[]\n" : "\n]\n") << std::flush;
  return allRecognized_ ? ExitStatus::allRecognized : someNotRecognized;
}

bool AnswerWriter::works() const {
  return out_.good();
}

}  // namespace pravik::cli
