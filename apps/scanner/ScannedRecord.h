#pragma once

#include <QString>
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

  bool operator==(const Field&) const = default;
};

/// What a scan brought, ready to be shown and written.
struct ScannedRecord {
  /// Those that were found.
  std::vector<Field> fields;
  /// Absent when there is no picture.
  std::optional<Image> picture;
  /// Whether a number does not fit its own check digit.
  bool failsCheck = false;
  /// {"kind":…,"result":…} with "checks" for a card, as the command-line tool answers.
  Answer answer;
};

ScannedRecord describe(const Record& record, const std::optional<Image>& picture);

/// A secret value with a star for every character but the last four; spaces stay.
QString masked(const QString& value);

}  // namespace pravik::scanner
