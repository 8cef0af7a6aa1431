#include "UI/ScannerOverlayView.h"

#include <gtest/gtest.h>

#include "Platform/ManualDispatch.h"
#include "support/FakeStage.h"

namespace pravik {
namespace {

using namespace std::chrono_literals;
using ScanState = ScannerOverlayView::ScanState;
using Kind = ScanState::Kind;

constexpr Color systemGreen{0.204, 0.78, 0.349};

struct Overlay {
  std::shared_ptr<ManualDispatch> dispatch = std::make_shared<ManualDispatch>();
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

TEST(ScannerOverlayView, ShowsWhereToHoldWhat) {
  constexpr Rect card{30, 240, 340, 340 / 1.586};
  const std::vector<std::tuple<OCRScanMode, const char*, Rect>> modes{
      {OCRScanMode::bankCard, "将银行卡正面对准此区域", card},
      {OCRScanMode::idCardFront, "将身份证人像面对准此区域", card},
      {OCRScanMode::idCardBack, "将身份证国徽面对准此区域", card},
      {OCRScanMode::qrCode, "将二维码/条形码对准此区域", {56, 240, 288, 288}}};
  for (const auto& [mode, hint, cutout] : modes) {
    const Overlay o(mode);
    EXPECT_EQ(o.view->hintLabel()->text, hint);
    EXPECT_EQ(o.view->cutoutRect(), cutout) << hint;
    EXPECT_EQ(o.view->maskLayer()->path, (Path{RoundedRect{{0, 0, 400, 800}, 0}, RoundedRect{cutout, 12}}));
  }
}

TEST(ScannerOverlayView, TakesTouchesOnItsButtonsOnly) {
  const Overlay o;
  EXPECT_EQ(o.view->hitTest({200, 400}), nullptr) << "what is no button is left to the views below";
  o.view->albumButton()->frame = o.view->closeButton()->frame;
  EXPECT_EQ(o.view->hitTest({20, 60}), o.view->closeButton().get()) << "the first of those that share a place";
}

TEST(ScannerOverlayView, ShowsEachStateInItsColourAndWords) {
  const std::vector<std::tuple<ScanState, Color, const char*, bool>> cases{
      {{Kind::searching}, {0, 0.478, 1}, "", false},
      {{Kind::detected}, systemGreen, "请保持不动...", false},
      {{Kind::capturing}, systemGreen, "正在拍照...", true},
      {{Kind::recognizing}, {1, 0.584, 0}, "正在识别...", true},
      {{Kind::success}, systemGreen, "识别成功", true},
      {ScanState::failed("再试一次"), {1, 0.231, 0.188}, "再试一次", false},
  };
  for (const auto& [state, color, status, hidesScanLine] : cases) {
    const Overlay o;
    o.view->startScanLineAnimation();
    o.view->setState(state);
    SCOPED_TRACE(status);
    EXPECT_EQ(o.view->cornerLayers()[0]->strokeColor, color);
    EXPECT_EQ(o.view->statusLabel()->text, status);
    EXPECT_EQ(o.view->statusLabel()->backgroundColor, color.withAlpha(0.6));
    EXPECT_EQ(o.view->statusLabel()->isHidden, state.kind == Kind::searching);
    EXPECT_EQ(o.view->scanLineView()->isHidden, hidesScanLine);
  }
}

TEST(ScannerOverlayView, SearchesAgainTwoSecondsAfterAFailureWhateverCameBetween) {
  const Overlay o;
  o.view->setState(ScanState::failed("再试一次"));
  o.dispatch->advance(1s);
  o.view->setState({Kind::recognizing});
  o.dispatch->advance(999ms);
  EXPECT_EQ(o.view->state(), (ScanState{Kind::recognizing}));
  o.dispatch->advance(1ms);
  EXPECT_EQ(o.view->state(), ScanState{});
}

TEST(ScannerOverlayView, MovesTheScanLineUntilItIsHidden) {
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

TEST(ScannerOverlayView, DrawsTheOutlineInThePointsOfTheScreen) {
  const Overlay o;
  o.view->highlightDetectedRect(Rect{0.25, 0.5, 0.5, 0.25}, {10, 20, 400, 800});
  EXPECT_EQ(o.view->detectedRectLayer()->path, (Path{RoundedRect{{110, 220, 200, 200}, 6}}));
  EXPECT_FALSE(o.view->detectedRectLayer()->isHidden);
  o.view->highlightDetectedRect(std::nullopt, {});
  EXPECT_TRUE(o.view->detectedRectLayer()->isHidden);
}

TEST(ScannerOverlayView, OffersManualCaptureAndTakesItBack) {
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
}

}  // namespace
}  // namespace pravik
