#pragma once

#include <string>

#include "Records/DocumentKind.h"
#include "backends/json/Answer.h"

namespace pravik::cli {

// Answers as comma-separated values (RFC 4180), a row each. The columns of a kind are always the same: file, page,
// kind, the fields of its record, its checks, error, message, reason, warnings. What is absent is empty; in a value
// that a spreadsheet would take for a formula an apostrophe stands first.

/// The names of the columns, for a kind of document, or for text when it is null.
std::string csvHeader(const DocumentKind* document);
std::string csvRow(const DocumentKind* document, const Answer& answer);

}  // namespace pravik::cli
