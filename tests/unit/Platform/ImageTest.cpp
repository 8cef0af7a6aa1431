#include "Platform/Image.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/Pictures.h"

namespace pravik {
namespace {

/// Rows of a picture of letters, from the top.
std::string rowsOf(const Bitmap& bitmap) {
  std::string rows;
  for (int y = 0; y < bitmap.height(); ++y) {
    if (y > 0) rows += '/';
    for (int x = 0; x < bitmap.width(); ++x) rows += static_cast<char>(bitmap.row(y)[x]);
  }
  return rows;
}

Bitmap letters() {
  return test::greyPicture(3, 2, [](int x, int y) { return "abcdef"[y * 3 + x]; });
}

TEST(UprightBitmap, TurnsEveryOrientationAsTheExifTagSays) {
  // Stored as abc/def; what stands upright for each value of the tag.
  const std::pair<ImageOrientation, const char*> cases[] = {
      {ImageOrientation::up, "abc/def"},
      {ImageOrientation::upMirrored, "cba/fed"},
      {ImageOrientation::down, "fed/cba"},
      {ImageOrientation::downMirrored, "def/abc"},
      {ImageOrientation::leftMirrored, "ad/be/cf"},
      {ImageOrientation::right, "da/eb/fc"},
      {ImageOrientation::rightMirrored, "fc/eb/da"},
      {ImageOrientation::left, "cf/be/ad"},
  };
  for (const auto& [orientation, expected] : cases)
    EXPECT_EQ(rowsOf(uprightBitmap(letters(), orientation)), expected) << static_cast<int>(orientation);
}

TEST(BitmapTest, CropsShareThePixelsAndMustLieInside) {
  const Bitmap picture = letters();
  const Bitmap crop = picture.crop({1, 0, 2, 2});
  EXPECT_EQ(rowsOf(crop), "bc/ef");
  EXPECT_EQ(crop.row(0), picture.row(0) + 1);
  EXPECT_EQ(rowsOf(crop.crop({1, 1, 1, 1})), "f");
  for (const PixelRect area : {PixelRect{-1, 0, 2, 2}, {0, 0, 4, 2}, {2, 1, 1, 2}, {0, 0, 0, 1}, {1, 1, 2147483647, 1}})
    EXPECT_THROW((void)picture.crop(area), std::invalid_argument);
}

}  // namespace
}  // namespace pravik
