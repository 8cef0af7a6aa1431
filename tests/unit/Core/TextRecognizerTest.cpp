#include "Core/TextRecognizer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Platform/ManualDispatch.h"
#include "support/Fakes.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

TextRecognizer::Observation block(std::string text, double centreX, double centreY) {
  return {std::move(text), 1, Rect{centreX - 0.0625, 1 - centreY - 0.0625, 0.125, 0.125}};
}

TEST(LineGrouping, RebuildsReadingOrder) {
  const std::vector<std::tuple<const char*, Observations, double, const char*>> cases{
      {"no block", {}, 0.025, ""},
      {"close rows are one line, left to right", {block("b", 0.6, 0.5), block("a", 0.2, 0.52)}, 0.025, "a b"},
      {"rows apart are two lines, the upper first", {block("b", 0.6, 0.53), block("a", 0.2, 0.5)}, 0.025, "a\nb"},
      // Powers of two are met exactly.
      {"exactly the threshold starts a line", {block("a", 0.5, 0.25), block("b", 0.5, 0.5)}, 0.25, "a\nb"},
      {"the reference is the line's mean",
       {block("a", 0.2, 0.100), block("b", 0.5, 0.120), block("c", 0.8, 0.140)},
       0.025,
       "a b\nc"},
      {"equal centres keep their order", {block("a", 0.5, 0.5), block("b", 0.5, 0.5)}, 0.025, "a b"},
      {"an empty text stays", {block("a", 0.2, 0.5), block("", 0.5, 0.5), block("c", 0.8, 0.5)}, 0.025, "a  c"},
  };
  for (const auto& [what, blocks, threshold, expected] : cases)
    EXPECT_EQ(joinedText(blocks, threshold), expected) << what;
}

TEST(LineGrouping, KeepsEveryBlockWhateverItsBox) {
  const double nan = std::nan("");
  const double infinity = std::numeric_limits<double>::infinity();
  Observations blocks;
  for (const double y : {nan, 0.5, infinity, -infinity, nan, 7.0, -3.0, 0.5}) blocks.push_back(block("x", y, y));
  std::size_t count = 0;
  for (const Observations& line : groupedByLine(blocks, 0.025)) count += line.size();
  EXPECT_EQ(count, blocks.size());
}

TEST(TextRecognizerTest, RecognisesOnThePoolWithThePresetAndSkipsUnreadBlocks) {
  const Bitmap picture = test::plainPicture(4, 4, 0, 0, 0);
  const auto engine = std::make_shared<test::FakeTextEngine>();
  const auto dispatch = std::make_shared<ManualDispatch>();
  engine->blocks = {test::textBlock(" 姓名 ", 0.2, 0.2), {std::nullopt, Rect{}}, test::textBlock("", 0.5, 0.5)};
  std::vector<Result<Observations>> results;
  TextRecognizer(engine, dispatch).recognize(picture, TextRecognizer::Options::bankCard, [&](auto result) {
    results.push_back(std::move(result));
  });
  EXPECT_TRUE(engine->requests.empty()) << "the work must not run on the caller's thread";
  dispatch->runGlobal();

  ASSERT_EQ(results.size(), 1U);
  ASSERT_EQ(results[0].value().size(), 2U);
  EXPECT_EQ(results[0].value()[0].text, " 姓名 ");
  EXPECT_EQ(engine->requests.at(0), (TextRequest{RecognitionLevel::accurate, {"en-US", "zh-Hans"}, true, 0.015F}));

  const auto withoutEngine =
      syncWait(TextRecognizer(nullptr, nullptr).recognize(picture, TextRecognizer::Options::idCard));
  EXPECT_EQ(withoutEngine.error().errorCode(), "recognition_failed");
}

}  // namespace
}  // namespace pravik
