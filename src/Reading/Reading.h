#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Geometry.h"
#include "Records/DocumentKind.h"
#include "Records/OCRError.h"

namespace pravik {

/// The stage of reading a bank card that gave the number: the reading of the whole card, that of the card enhanced
/// once more, that of the band around the number, or the fusion of what all of them read in pieces.
enum class BankCardStage : std::uint8_t { firstReading, enhancedRetry, numberBand, fusion };

/// Why a picture gave no record, in words that a person can act on.
enum class UnreadReason : std::uint8_t {
  invalidPicture,  ///< the picture has no pixels, or too many
  tooSmall,        ///< too few pixels to make out print
  tooDark,
  noCardFound,    ///< neither the outline of a card nor any text
  noTextFound,    ///< a card, but no text on it
  noNumberFound,  ///< text, but not what the kind cannot do without: its number, or its office and validity
  wrongDocument,  ///< the text is that of another kind of document
  noCodeFound,
  timeSpent,  ///< the time limit came before a record
  cancelled,
  engineFailed  ///< a part of the installation cannot work; the error tells which
};

/// A stable name in snake case, such as "no_text_found".
std::string_view codeOf(UnreadReason reason);
/// What is wrong and what to do about it, in Chinese.
std::string_view chineseText(UnreadReason reason);
/// The same in English.
std::string_view englishText(UnreadReason reason);

/// What makes a record less certain than it looks, or what its card tells about itself.
enum class ReadingWarning : std::uint8_t {
  blurred,      ///< out of focus, or moved
  glare,        ///< light is reflected so that print is gone
  dark,         ///< print is near the noise of the camera
  overexposed,  ///< the brightest parts have lost their print
  tooSmall,     ///< too few dots a millimetre of card
  cutOff,       ///< the card goes on beyond the picture
  greyCopy,     ///< a copy without colour
  screen,       ///< a photo of a display
  expired,
  notYetValid,
  checkFailed,  ///< a check of the record failed
};

/// A stable name in snake case, such as "cut_off".
std::string_view codeOf(ReadingWarning warning);
/// What it means for people, in Chinese.
std::string_view chineseText(ReadingWarning warning);
/// The same in English.
std::string_view englishText(ReadingWarning warning);

/// How a field of a record was read.
struct FieldReport {
  /// As in the record, such as "idNumber".
  std::string_view name;
  /// The field's text; empty for an absent one.
  std::string text;
  /// How likely it is right, 0 to 1; 0 for an absent field.
  double confidence = 0;
  /// Where it stands on the upright picture that was handed in, in pixels from the top left, named as the text is read;
  /// absent when no block of text gave it by itself.
  std::optional<Quadrilateral> corners;
  /// The field cannot be as it is: a card of the kind always has it, or never so.
  bool isDoubtful = false;
  /// Light is reflected from it.
  bool hasGlare = false;
};

/// What is known of a reading beside its record.
struct ReadingReport {
  /// Absent when there is a record.
  std::optional<UnreadReason> unreadReason;
  /// Absent for what is no bank card, and when there is no record.
  std::optional<BankCardStage> stage;
  /// By how many degrees clockwise, 1 to 359, the picture was turned so that its text is upright. 0 when it was read as
  /// it lay, but for what the straightening of the card evens out.
  int turned = 0;
  /// In the order of the record, without those that only say what another does; empty without a record, and for codes.
  std::vector<FieldReport> fields = {};
  /// In the order of the enumeration, each once.
  std::vector<ReadingWarning> warnings = {};
  /// The card on the upright picture that was handed in, in pixels from the top left, named as the card is upright;
  /// absent when no outline was found, and without a record.
  std::optional<Quadrilateral> outline = {};
  /// The picture's resolution on the card; 0 when it is not known.
  double dotsPerMillimetre = 0;
};

/// What a picture gave.
struct Reading {
  Result<Record> record;
  ReadingReport report;
};

/// How long a reading may take, and how it is called off.
struct ReadingLimits {
  /// When it is over, what was read so far decides.
  std::chrono::milliseconds time{10'000};
  /// Ends the reading with `cancelled` before its next stage, and the stage under way as soon as its engine can.
  std::stop_token stop = {};
  /// The day by which a card has expired or not, or is not yet valid; absent for today (UTC).
  std::optional<std::chrono::year_month_day> date = {};
};

}  // namespace pravik
