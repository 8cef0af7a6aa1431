#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

#include "Pravik.h"
#include "backends/json/Answer.h"

namespace pravik::scanner {

/// One line of a record, as it is shown.
struct Field {
  QString label;
  QString value;
  /// Whether it is shown only on request.
  bool isSecret = false;
  /// What is wrong with it, or may be; empty for nothing.
  QString note = {};

  bool operator==(const Field&) const = default;
};

/// What a scan brought, ready to be shown and written.
struct ScannedRecord {
  /// Those that were found.
  std::vector<Field> fields;
  /// Absent when there is no picture.
  std::optional<Image> picture;
  /// What makes the record less certain than it looks, for people.
  QStringList warnings;
  /// {"kind":…,"result":…} with "checks" and more for a card, as the command-line tool answers.
  Answer answer;
};

ScannedRecord describe(const Record& record, const ReadingReport& report, const std::optional<Image>& picture);

/// A secret value with a star for every character but the last four; spaces stay.
QString masked(const QString& value);

}  // namespace pravik::scanner
