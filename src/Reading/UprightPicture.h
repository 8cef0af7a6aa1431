#pragma once

#include <optional>

#include "Platform/Image.h"
#include "Reading/ReadingParts.h"

namespace pravik {

/// The direction in which most of the text on a picture runs, by its length: degrees clockwise from upright text, -180
/// to 180. Absent when no block tells, or no direction has more than half of the text.
std::optional<double> prevailingDirection(const Observations& observations);

/// A picture that was turned so that its text is upright, and what to read it with.
struct TurnedPicture {
  Image image;
  ReadingParts parts;
};

/// The picture on which the blocks were read, turned so that they are upright: by a right angle as it is, by another
/// angle cut to what surrounds the text. Absent when it is upright but for a tilt that photos always have, when the
/// blocks do not tell, when it was turned before, and when there is no time left. Throws cancelled.
std::optional<TurnedPicture> turnedUpright(const ReadingParts& parts, const Image& image,
                                           const Observations& observations);

}  // namespace pravik
