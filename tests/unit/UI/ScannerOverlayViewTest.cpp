#include "UI/ScannerOverlayView.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "Platform/SegmentedControl.h"
#include "support/FakeStage.h"
#include "support/ManualDispatch.h"

namespace pravik {
namespace {

using namespace std::chrono_literals;
using ScanState = ScannerOverlayView::ScanState;
using Kind = ScanState::Kind;

constexpr Color systemBlue{0, 0.478, 1};
constexpr Color systemGreen{0.204, 0.78, 0.349};
constexpr Color systemOrange{1, 0.584, 0};
constexpr Color systemRed{1, 0.231, 0.188};

struct Overlay {
  std::shared_ptr<test::ManualDispatch> dispatch = std::make_shared<test::ManualDispatch>();
  std::shared_ptr<test::FakeStage> stage = std::make_shared<test::FakeStage>(dispatch);
  std::shared_ptr<ScannerOverlayView> view = std::make_shared<ScannerOverlayView>(stage, dispatch);

  explicit Overlay(OCRScanMode mode = OCRScanMode::bankCard) {
    view->setScanMode(mode);
    view->updateHintText();
    view->frame = {0, 0, 400, 800};
    view->safeAreaTop = 40;
    view->layoutSubviews();
  }
};

void expectNear(const Rect& actual, const Rect& expected) {
  EXPECT_NEAR(actual.x, expected.x, 1e-9);
  EXPECT_NEAR(actual.y, expected.y, 1e-9);
  EXPECT_NEAR(actual.width, expected.width, 1e-9);
  EXPECT_NEAR(actual.height, expected.height, 1e-9);
}

TEST(ScannerOverlayView, placesTheCutoutAndEverythingAroundIt) {
  const Overlay card;
  const ScannerOverlayView& view = *card.view;
  const Rect cutout = view.cutoutRect();
  expectNear(cutout, {30, 240, 340, 340 / 1.586});
  EXPECT_EQ(view.maskLayer()->path, (Path{RoundedRect{{0, 0, 400, 800}, 0}, RoundedRect{cutout, 12}}));
  EXPECT_EQ(view.maskLayer()->fillColor, (Color{0, 0, 0, 0.55}));
  EXPECT_EQ(view.cornerLayers()[3]->path,
            (Path{MoveTo{{cutout.maxX(), cutout.maxY() - 24}}, LineTo{{cutout.maxX(), cutout.maxY()}},
                  LineTo{{cutout.maxX() - 24, cutout.maxY()}}}));
  EXPECT_EQ(view.cornerLayers()[3]->lineWidth, 4);
  expectNear(view.scanLineView()->frame, {38, 240, 324, 2});
  EXPECT_EQ(view.closeButton()->frame, (Rect{12, 48, 44, 44}));
  EXPECT_EQ(view.albumButton()->frame, (Rect{336, 48, 52, 44}));
  const Rect hint = view.hintLabel()->frame;
  EXPECT_NEAR(hint.midX(), 200, 1e-9);
  EXPECT_NEAR(hint.y, cutout.maxY() + 20, 1e-9);
  expectNear(view.statusLabel()->frame, {100, hint.maxY() + 12, 200, 20});
  const Rect torch = view.torchButton()->frame;
  EXPECT_NEAR(torch.y, hint.maxY() + 12 + 20 + 28, 1e-9);
  EXPECT_NEAR(torch.midX(), 200, 1e-9);
  expectNear(view.manualCaptureButton()->frame, {126, torch.maxY() + 20, 148, 40});

  expectNear(Overlay(OCRScanMode::qrCode).view->cutoutRect(), {56, 240, 288, 288});
  card.view->frame = {};
  card.view->layoutSubviews();
  EXPECT_EQ(view.cutoutRect(), cutout) << "without an extent nothing is placed";
}

TEST(ScannerOverlayView, showsEachStateInItsColourAndWords) {
  struct Case {
    ScanState state;
    Color color;
    const char* status;
    bool hidesScanLine;
  };
  const Case cases[] = {
      {{Kind::searching}, systemBlue, "", false},
      {{Kind::detected}, systemGreen, "请保持不动...", false},
      {{Kind::capturing}, systemGreen, "正在拍照...", true},
      {{Kind::recognizing}, systemOrange, "正在识别...", true},
      {{Kind::success}, systemGreen, "识别成功", true},
      {ScanState::failed("再试一次"), systemRed, "再试一次", false},
  };
  for (const Case& c : cases) {
    const Overlay o;
    o.view->startScanLineAnimation();
    o.view->setState(c.state);
    SCOPED_TRACE(c.status);
    EXPECT_EQ(o.view->cornerLayers()[0]->strokeColor, c.color);
    EXPECT_EQ(o.view->statusLabel()->text, c.status);
    EXPECT_EQ(o.view->statusLabel()->backgroundColor, c.color.withAlpha(0.6));
    EXPECT_EQ(o.view->statusLabel()->isHidden, c.state.kind == Kind::searching);
    EXPECT_EQ(o.view->statusLabel()->alpha, c.state.kind == Kind::searching ? 0 : 1);
    EXPECT_EQ(o.view->scanLineView()->isHidden, c.hidesScanLine);
  }
}

TEST(ScannerOverlayView, searchesAgainTwoSecondsAfterAFailureWhateverCameBetween) {
  const Overlay o;
  o.view->setState(ScanState::failed("再试一次"));
  o.dispatch->advance(1s);
  o.view->setState({Kind::recognizing});
  o.dispatch->advance(999ms);
  EXPECT_EQ(o.view->state(), (ScanState{Kind::recognizing}));
  o.dispatch->advance(1ms);
  EXPECT_EQ(o.view->state(), ScanState{});
}

TEST(ScannerOverlayView, flashesWithASuccess) {
  const Overlay o;
  o.view->setState({Kind::success});
  EXPECT_EQ(o.view->backgroundColor, (Color{1, 1, 1, 0.3}));
  o.dispatch->advance(150ms);
  EXPECT_EQ(o.view->backgroundColor, colors::clear);
  EXPECT_EQ(o.stage->animations, (std::vector<std::chrono::milliseconds>{150ms, 300ms}));
}

TEST(ScannerOverlayView, movesTheScanLineUntilItIsHidden) {
  const Overlay o;
  const Rect cutout = o.view->cutoutRect();
  o.view->startScanLineAnimation();
  EXPECT_EQ(o.view->scanLineView()->frame.y, cutout.maxY() - 2);
  o.dispatch->advance(2s);
  o.view->startScanLineAnimation();
  o.dispatch->advance(5s);
  EXPECT_EQ(o.stage->animations.size(), 4U) << "a restart ends the run before it";
  o.view->setState({Kind::capturing});
  o.dispatch->advance(1min);
  EXPECT_EQ(o.stage->animations.size(), 4U);

  const auto unplaced = std::make_shared<ScannerOverlayView>(o.stage, o.dispatch);
  unplaced->startScanLineAnimation();
  EXPECT_TRUE(unplaced->scanLineView()->isHidden);
}

TEST(ScannerOverlayView, putsAWarningInPlaceOfTheHintAndBack) {
  const Overlay o(OCRScanMode::idCardFront);
  EXPECT_EQ(o.view->hintLabel()->text, "将身份证人像面对准此区域");
  o.view->hideQualityWarning();
  EXPECT_TRUE(o.stage->crossDissolves.empty()) << "there was no warning";
  o.view->showQualityWarning("暗");
  EXPECT_EQ(o.view->hintLabel()->textColor, (Color{1, 0.85, 0.2}));
  o.view->hideQualityWarning();
  EXPECT_EQ(o.view->hintLabel()->text, "将身份证人像面对准此区域");
  EXPECT_EQ(o.view->hintLabel()->textColor, colors::white);
  EXPECT_EQ(o.stage->crossDissolves.size(), 2U);

  EXPECT_EQ(Overlay(OCRScanMode::bankCard).view->hintLabel()->text, "将银行卡正面对准此区域");
  EXPECT_EQ(Overlay(OCRScanMode::idCardBack).view->hintLabel()->text, "将身份证国徽面对准此区域");
  EXPECT_EQ(Overlay(OCRScanMode::qrCode).view->hintLabel()->text, "将二维码/条形码对准此区域");
}

TEST(ScannerOverlayView, drawsTheOutlineInThePointsOfTheScreen) {
  const Overlay o;
  o.view->highlightDetectedRect(Rect{0.25, 0.5, 0.5, 0.25}, {10, 20, 400, 800});
  EXPECT_EQ(o.view->detectedRectLayer()->path, (Path{RoundedRect{{110, 220, 200, 200}, 6}}));
  EXPECT_FALSE(o.view->detectedRectLayer()->isHidden);
  o.view->highlightDetectedRect(std::nullopt, {});
  EXPECT_TRUE(o.view->detectedRectLayer()->isHidden);
}

TEST(ScannerOverlayView, offersManualCaptureAndTakesItBack) {
  const Overlay o;
  const Button& button = *o.view->manualCaptureButton();
  EXPECT_TRUE(button.isHidden);
  o.view->showManualCaptureHint();
  EXPECT_TRUE(!button.isHidden && button.alpha == 1);
  o.view->hideManualCaptureHint(true);
  EXPECT_TRUE(!button.isHidden && button.alpha == 0) << "it fades";
  o.dispatch->advance(200ms);
  EXPECT_TRUE(button.isHidden);
  o.view->showManualCaptureHint();
  o.view->hideManualCaptureHint(true);
  o.view->showManualCaptureHint();
  o.dispatch->advance(1s);
  EXPECT_TRUE(!button.isHidden && button.alpha == 1) << "shown again before it had gone";
  o.view->hideManualCaptureHint(false);
  EXPECT_TRUE(button.isHidden && button.alpha == 0);
  EXPECT_EQ(button.title, "手动拍照");
  EXPECT_EQ(button.icon, "camera.fill");
}

TEST(ScannerOverlayView, givesTouchesToItsButtonsAndLeavesTheOthersToTheViewsBelow) {
  const Overlay o;
  View root;
  root.frame = {0, 0, 400, 800};
  const auto below = std::make_shared<SegmentedControl>();
  below->frame = {0, 0, 400, 100};
  below->segments = {{"甲"}, {"乙"}, {"丙", false}};
  root.addSubview(below);
  root.addSubview(o.view);
  std::vector<std::string> heard;
  below->onChange = [&](std::size_t segment) { heard.push_back(std::to_string(segment)); };
  o.view->onCloseTapped = [&] { heard.emplace_back("close"); };
  o.view->onManualCaptureTapped = [&] { heard.emplace_back("manual"); };

  const Rect manual = o.view->manualCaptureButton()->frame;
  const Point manualCentre{manual.midX(), manual.midY()};
  root.touch({20, 60});
  root.touch({200, 60});
  root.touch({210, 60});
  root.touch({330, 20});
  root.touch({200, 400});
  root.touch(manualCentre);
  EXPECT_EQ(heard, (std::vector<std::string>{"close", "1"})) << "what is disabled, hidden or nothing hears nothing";
  o.view->showManualCaptureHint();
  root.touch(manualCentre);
  EXPECT_EQ(heard.back(), "manual");

  o.view->albumButton()->frame = o.view->closeButton()->frame;
  EXPECT_EQ(o.view->hitTest({20, 60}), o.view->closeButton().get()) << "the first of those that share a place";
  EXPECT_EQ(o.view->hitTest({200, 400}), nullptr);
}

}  // namespace
}  // namespace pravik
