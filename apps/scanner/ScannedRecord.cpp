#include "apps/scanner/ScannedRecord.h"

#include <string>
#include <utility>

#include "apps/scanner/Texts.h"
#include "backends/qt/QtValues.h"

namespace pravik::scanner {
namespace {

constexpr qsizetype shownCharacters = 4;
constexpr QChar maskCharacter(u'*');

/// Absent when there is nothing to show.
std::optional<Field> shown(const RecordField& field, const Record& record, const Answer& answer) {
  const FieldValue value = field.value(record);
  const auto* text = std::get_if<std::string>(&value);
  if (field.display == FieldDisplay::hidden || text == nullptr || text->empty()) return std::nullopt;
  return Field{inUserLanguage(field.chineseLabel, field.englishLabel), QString::fromStdString(*text),
               field.display == FieldDisplay::masked,
               QString::fromStdString(fieldNote(answer, field.name, languageInUse()))};
}

}  // namespace

ScannedRecord describe(const Record& record, const ReadingReport& report, const std::optional<Image>& picture) {
  const DocumentKind& kind = documentKind(record);
  ScannedRecord described{.fields = {},
                          .picture = picture,
                          .warnings = {},
                          .answer = withKind(kind.commandName, readingAnswer({record, report}))};
  for (const RecordField& field : kind.fields)
    if (auto line = shown(field, record, described.answer)) described.fields.push_back(*std::move(line));
  for (const ReadingWarning warning : report.warnings)
    described.warnings.push_back(inUserLanguage(chineseText(warning), englishText(warning)));
  return described;
}

QString masked(const QString& value) {
  QString result = value;
  for (qsizetype i = 0; i + shownCharacters < result.size(); ++i)
    if (!result[i].isSpace()) result[i] = maskCharacter;
  return result;
}

}  // namespace pravik::scanner
