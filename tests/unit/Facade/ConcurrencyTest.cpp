#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/AsioDispatch.h"
#include "Pravik.h"
#include "support/Fakes.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

/// Each picture shows a card whose number tells the picture's width, so that a mix-up shows.
std::string numberOn(int width) {
  return "11010119900307" + std::to_string(1000 + width);
}

Image photo(int width) {
  return {.bitmap = test::plainPicture(width, 30, 200, 200, 200)};
}

/// Waits with every answer until it may begin.
class NumberEngine final : public TextEngine {
 public:
  explicit NumberEngine(std::shared_future<void> begin) : begin_(std::move(begin)) {}

  std::vector<RecognizedText> recognize(const Bitmap& bitmap, const TextRequest& /*request*/) const override {
    begin_.wait();
    std::vector<RecognizedText> blocks = test::portraitSide();
    blocks.back() = test::textBlock("公民身份号码 " + numberOn(bitmap.width()), 0.5, 0.88);
    return blocks;
  }

 private:
  std::shared_future<void> begin_;
};

class PlainRenderer final : public ImageRenderer {
 public:
  std::optional<Bitmap> render(const Bitmap& bitmap, std::span<const ImageFilter> /*filters*/) const override {
    return bitmap;
  }
  std::optional<Bitmap> greyThumbnail(const Bitmap& /*bitmap*/, int /*width*/, int /*height*/) const override {
    return std::nullopt;
  }
};

Platform platform(std::promise<void>& begin, int poolThreads) {
  Platform parts;
  parts.textEngine = std::make_shared<NumberEngine>(begin.get_future().share());
  parts.imageRenderer = std::make_shared<PlainRenderer>();
  parts.dispatch = std::make_shared<AsioDispatch>(poolThreads);
  return parts;
}

TEST(Concurrency, EveryThreadGetsTheAnswersToItsOwnPictures) {
  std::promise<void> begin;
  begin.set_value();
  const PravikSDK sdk(platform(begin, 3));
  std::vector<std::jthread> threads;
  for (int width = 40; width < 48; ++width) {
    threads.emplace_back([&sdk, width] {
      for (int round = 0; round < 40; ++round) {
        const auto card = syncWait(sdk.recognizeIDCardFront(photo(width)));
        EXPECT_TRUE(card && card->idNumber == numberOn(width));
        const auto text = syncWait(sdk.recognizeRawText(photo(width), PravikSDK::SceneType::idCard));
        EXPECT_TRUE(text && text->find(numberOn(width)) != std::string::npos);
        const auto bankCard = syncWait(sdk.recognizeBankCard(photo(width)));
        EXPECT_TRUE(!bankCard && bankCard.error() == OCRError::sceneMismatch("银行卡", "身份证正面"));
      }
    });
  }
}

TEST(Concurrency, CallsUnderWayEndThoughTheirSdkIsGone) {
  constexpr int calls = 50;
  std::promise<void> begin, done;
  const Platform parts = platform(begin, 2);
  std::atomic<int> left = calls;
  {
    const PravikSDK sdk(parts);
    for (int width = 1; width <= calls; ++width) {
      sdk.recognizeIDCardFront(photo(width), [&, width](const Result<IDCardFrontInfo>& card) {
        EXPECT_TRUE(card && card->idNumber == numberOn(width));
        if (--left == 0) done.set_value();
      });
    }
  }
  begin.set_value();
  done.get_future().wait();
}

}  // namespace
}  // namespace pravik
