#include "apps/scanner/ScannedRecord.h"

#include <string>
#include <utility>

#include "Reading/RecordChecks.h"
#include "backends/qt/QtValues.h"

namespace pravik::scanner {
namespace {

constexpr qsizetype shownCharacters = 4;
constexpr QChar maskCharacter(u'*');

/// Absent when there is nothing to show.
std::optional<Field> shown(const RecordField& field, const Record& record) {
  const FieldValue value = field.value(record);
  const auto* text = std::get_if<std::string>(&value);
  if (field.display == FieldDisplay::hidden || text == nullptr || text->empty()) return std::nullopt;
  return Field{inUserLanguage(field.chineseLabel, field.englishLabel), QString::fromStdString(*text),
               field.display == FieldDisplay::masked};
}

}  // namespace

ScannedRecord describe(const Record& record, const std::optional<Image>& picture) {
  const DocumentKind& kind = documentKind(record);
  ScannedRecord described{.fields = {},
                          .picture = picture,
                          .failsCheck = false,
                          .answer = withKind(kind.commandName, recordAnswer(record))};
  for (const RecordField& field : kind.fields)
    if (auto line = shown(field, record)) described.fields.push_back(*std::move(line));
  for (const RecordCheck& check : checksOf(record))
    described.failsCheck = described.failsCheck || (check.kind.isOfNumber && check.passed == false);
  return described;
}

QString masked(const QString& value) {
  QString result = value;
  for (qsizetype i = 0; i + shownCharacters < result.size(); ++i)
    if (!result[i].isSpace()) result[i] = maskCharacter;
  return result;
}

}  // namespace pravik::scanner
