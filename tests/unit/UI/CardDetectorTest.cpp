#include "UI/CardDetector.h"

#include <gtest/gtest.h>

#include <thread>

#include "Platform/AsioDispatch.h"
#include "Platform/ManualDispatch.h"
#include "UI/FrameMonitor.h"
#include "support/Fakes.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

constexpr Rect card{0.1, 0.2, 0.5, 0.4};

struct Watch {
  std::shared_ptr<test::FakeRectangleDetector> rectangles = std::make_shared<test::FakeRectangleDetector>();
  std::shared_ptr<ManualDispatch> dispatch = std::make_shared<ManualDispatch>();
  std::shared_ptr<CardDetector> detector = std::make_shared<CardDetector>(rectangles, dispatch);
  VideoFrame frame{test::plainPicture(4, 4, 0, 0, 0)};
  std::vector<std::optional<Rect>> outlines;
  int stable = 0;

  Watch() {
    detector->onRectangleDetected = [this](std::optional<Rect> rect) { outlines.push_back(rect); };
    detector->onCardStable = [this] { ++stable; };
  }

  /// So many analysed frames that show these outlines.
  void see(int frames, const std::vector<Rect>& rects) {
    rectangles->rectangles.clear();
    for (const Rect& rect : rects) rectangles->rectangles.push_back({{}, rect, 0.9F});
    for (int i = 0; i < 3 * frames; ++i) detector->processFrame(frame);
    dispatch->runAll();
  }
};

TEST(CardDetector, LooksAtEveryThirdFrameForTheLargestOutline) {
  Watch w;
  w.rectangles->rectangles = {{{}, {0, 0, 0.2, 0.4}, 0.9F}, {{}, card, 0.3F}, {{}, {0.4, 0.1, 0.4, 0.5}, 0.9F}};
  for (int i = 0; i < 8; ++i) w.detector->processFrame(w.frame);
  ASSERT_EQ(w.rectangles->requests.size(), 2U);
  EXPECT_EQ(w.rectangles->requests[0], (RectangleRequest{5, 0.5F, 4.0F, 40, 0.1F, 0.1F}));
  EXPECT_TRUE(w.outlines.empty()) << "only the main queue may be told";
  w.dispatch->runAll();
  EXPECT_EQ(w.outlines, (std::vector<std::optional<Rect>>{card, card})) << "of equal areas, the first";
}

TEST(CardDetector, TellsOnceThatACardLiesStill) {
  Watch w;
  w.see(7, {card});
  EXPECT_EQ(w.stable, 0);
  w.see(1, {card});
  EXPECT_EQ(w.stable, 1);
  w.see(5, {card});
  w.see(1, {});
  w.see(20, {card});
  EXPECT_EQ(w.stable, 1) << "taking the card away and showing it again is no new run";

  w.outlines.clear();
  w.detector->reset();
  EXPECT_EQ(w.outlines, (std::vector<std::optional<Rect>>{std::nullopt})) << "at once, without the queue";
  w.see(8, {card});
  EXPECT_EQ(w.stable, 2);
}

TEST(CardDetector, StartsToCountAnewWhenTheCardMovesOrIsGone) {
  // These share 4/5 of what they cover together: not more than the threshold.
  constexpr Rect larger{0, 0, 0.625, 1};
  constexpr Rect smaller{0, 0, 0.5, 1};
  Watch w;
  w.see(7, {smaller});
  w.see(1, {larger});
  w.see(6, {larger});
  EXPECT_EQ(w.stable, 0);
  w.see(1, {larger});
  EXPECT_EQ(w.stable, 1);

  w.detector->reset();
  w.see(5, {card});
  w.see(1, {});
  EXPECT_EQ(w.outlines.back(), std::nullopt);
  w.see(7, {card});
  EXPECT_EQ(w.stable, 1);
  w.see(1, {card});
  EXPECT_EQ(w.stable, 2);
}

TEST(CardDetector, ComparesOutlinesByWhatTheyShare) {
  EXPECT_EQ(iou({0, 0, 0.25, 0.25}, {0.5, 0.5, 0.25, 0.25}), 0) << "apart";
  EXPECT_EQ(iou({0, 0, 0.5, 1}, {0.25, 0, 0.5, 1}), 1.0 / 3);
  EXPECT_EQ(iou({}, {}), 0);
}

TEST(CardDetector, DropsAFrameThatCannotBeSearched) {
  const test::LogCapture log(OCRLogger::Level::debug);
  Watch w;
  w.see(7, {card});
  w.rectangles->fails = true;
  for (int i = 0; i < 3; ++i) w.detector->processFrame(w.frame);
  for (int i = 0; i < 3; ++i) w.detector->processFrame({});
  w.rectangles->fails = false;
  EXPECT_EQ(log.count("矩形检测失败: the detector is broken"), 1);
  w.see(1, {card});
  EXPECT_EQ(w.stable, 1) << "the run goes on over dropped frames";

  const auto blind = std::make_shared<CardDetector>(nullptr, w.dispatch);
  std::vector<std::optional<Rect>> seen;
  blind->onRectangleDetected = [&](std::optional<Rect> rect) { seen.push_back(rect); };
  for (int i = 0; i < 3; ++i) blind->processFrame(w.frame);
  w.dispatch->runAll();
  EXPECT_EQ(seen, (std::vector<std::optional<Rect>>{std::nullopt}));
}

TEST(FrameMonitor, MayBeResetWhileFramesArrive) {
  Watch w;
  w.rectangles->rectangles = {{{}, card, 0.9F}};
  const auto detector = std::make_shared<CardDetector>(w.rectangles, std::make_shared<AsioDispatch>(1));
  std::atomic<int> reports = 0;
  detector->onRectangleDetected = [&](std::optional<Rect>) { ++reports; };
  detector->onCardStable = [&] { ++reports; };
  FrameMonitor monitor(detector);
  std::thread camera([&] {
    for (int i = 0; i < 600; ++i) monitor.process(w.frame);
  });
  for (int i = 0; i < 50; ++i) {
    monitor.isRecognizing = i % 2 == 0;
    monitor.resetQuality();
    detector->reset();
    EXPECT_TRUE(monitor.recentFrameQuality().isGoodForCapture);
  }
  camera.join();
  EXPECT_GE(reports, 50);
}

}  // namespace
}  // namespace pravik
