#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Records/IDCardBackInfo.h"
#include "Records/Observation.h"

namespace pravik {

/// Reads the emblem side of an identity card from its blocks of text.
struct IDCardBackParser {
  /// A period of validity; all empty when none was found.
  struct Validity {
    /// "20150301-20350301", "20150301-长期" or "长期".
    std::string period;
    /// Eight digits: year, month, day.
    std::optional<std::string> start;
    std::optional<std::string> end;
    bool isLongTerm = false;

    bool operator==(const Validity&) const = default;
  };

  /// The record; absent when neither the issuing office nor the validity is found. One of the two alone is enough.
  std::optional<IDCardBackInfo> parse(const Observations& observations) const;

  /// The police office that issued the card; empty when it is not found.
  static std::string extractIssuingAuthority(std::span<const std::string> lineTexts);
  /// `fullText` is the line texts joined with line feeds.
  static Validity extractValidity(std::string_view fullText, std::span<const std::string> lineTexts);
  /// The period in a short text that holds one or two dates of eight digits, with dots, slashes and spaces in
  /// any place, or the mark of a card without an end date. The dates are not checked.
  static Validity parseValidityString(std::string_view text);
  /// Whether the text is a date of eight digits of the years 1900 to 2100. The day is not checked against the
  /// length of the month.
  static bool isValidDate(std::string_view text);
};

}  // namespace pravik
