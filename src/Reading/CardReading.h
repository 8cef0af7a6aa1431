#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/Geometry.h"
#include "Reading/Reading.h"

namespace pravik {

/// One of the cards on a picture.
struct CardReading {
  /// Absent for a card of no kind that can be read.
  std::optional<OCRScanMode> kind;
  /// Its corners on the upright picture, in pixels from the top left, named as they look when the card is upright.
  Quadrilateral corners;
  /// What its kind gave; for a card without a kind the error and the reason. `report.turned` is by how many degrees
  /// clockwise the card had to be turned.
  Reading reading;
  /// What stands on a card without a kind, line by line.
  std::string text;
  /// The one portrait and the one emblem side of a picture belong together.
  bool isOneOfAPair = false;
};

/// The cards on a picture.
struct CardsReading {
  /// From top to bottom, those of a row from left to right.
  std::vector<CardReading> cards;
  /// Why there are none; absent when there are some.
  std::optional<UnreadReason> unreadReason = {};
};

}  // namespace pravik
