#include <gtest/gtest.h>

#include <set>

#include "Pravik.h"
#include "support/Fakes.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

/// A card's worth of pixels of one grey level.
Image photo(std::uint8_t grey, int width = 600) {
  return {.bitmap = test::plainPicture(width, 400, grey, grey, grey)};
}

/// An SDK on fakes that measure the picture's real brightness.
struct Fixture : test::FakeParts {
  std::optional<UnreadReason> reasonFor(const Image& image, OCRScanMode mode) {
    if (image.bitmap) {
      const std::uint8_t grey = *image.bitmap->row(0);
      renderer->thumbnail = test::greyPicture(64, 64, [grey](int, int) { return grey; });
    }
    return syncWait(PravikSDK(makePlatform()).read(image, mode)).value().report.unreadReason;
  }
};

TEST(UnreadReason, TellsWhatIsWrongWithThePicture) {
  constexpr auto front = OCRScanMode::idCardFront, bank = OCRScanMode::bankCard, code = OCRScanMode::qrCode;
  Fixture f;
  EXPECT_EQ(f.reasonFor({}, front), UnreadReason::invalidPicture);
  EXPECT_EQ(f.reasonFor({}, bank), UnreadReason::invalidPicture);
  EXPECT_EQ(f.reasonFor(photo(200, 300), front), UnreadReason::tooSmall);
  EXPECT_EQ(f.reasonFor(photo(30), front), UnreadReason::tooDark);
  EXPECT_EQ(f.reasonFor(photo(200), front), UnreadReason::noCardFound);
  EXPECT_EQ(f.reasonFor(photo(200), code), UnreadReason::noCodeFound);
  f.rectangles->rectangles = {{{{0, 1}, {1, 1}, {0, 0}, {1, 0}}, {0, 0, 1, 1}, 0.9F}};
  EXPECT_EQ(f.reasonFor(photo(200), bank), UnreadReason::noTextFound);
  f.engine->blocks = {test::textBlock("hello", 0.5, 0.5)};
  for (const auto mode : {front, OCRScanMode::idCardBack, bank})
    EXPECT_EQ(f.reasonFor(photo(200), mode), UnreadReason::noNumberFound);
  f.engine->blocks = test::portraitSide();
  EXPECT_EQ(f.reasonFor(photo(200), bank), UnreadReason::wrongDocument);
  EXPECT_EQ(f.reasonFor(photo(200), front), std::nullopt) << "it was read";
  f.engine->failure = "the model is missing";
  EXPECT_EQ(f.reasonFor(photo(200), front), UnreadReason::engineFailed);
}

TEST(UnreadReason, HasTextsOfItsOwn) {
  std::set<std::string_view> codes;
  constexpr auto last = static_cast<int>(UnreadReason::engineFailed);
  for (int i = 0; i <= last; ++i) {
    const auto reason = static_cast<UnreadReason>(i);
    codes.insert(codeOf(reason));
    EXPECT_FALSE(chineseText(reason).empty() || englishText(reason).empty()) << codeOf(reason);
  }
  EXPECT_EQ(codes.size(), last + 1U);
}

}  // namespace
}  // namespace pravik
