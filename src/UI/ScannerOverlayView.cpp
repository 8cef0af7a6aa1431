#include "UI/ScannerOverlayView.h"

#include <algorithm>
#include <utility>

namespace pravik {
namespace {

using std::chrono::milliseconds;
using Kind = ScannerOverlayView::ScanState::Kind;

constexpr Color systemBlue{0, 0.478, 1};
constexpr Color systemGreen{0.204, 0.78, 0.349};
constexpr Color systemOrange{1, 0.584, 0};
constexpr Color systemRed{1, 0.231, 0.188};
constexpr Color amber{1, 0.85, 0.2};
constexpr double maskAlpha = 0.55;
constexpr double statusBackgroundAlpha = 0.6;
constexpr double flashAlpha = 0.3;

/// Width over height of a card by ISO/IEC 7810, ID-1.
constexpr double cardAspectRatio = 1.586;
constexpr double cardWidthShare = 0.85;
constexpr double codeWidthShare = 0.72;
constexpr double cutoutTopShare = 0.3;
/// Of a wide window, wider than high by this ratio: how much of the height the cut-out takes, and what is left above
/// and below it at least, in points.
constexpr double wideRatio = 1.5;
constexpr double wideHeightShare = 0.78;
constexpr double wideMargin = 66;
constexpr double wideSpacing = 6;
constexpr double sideMargin = 20;
constexpr double cutoutRadius = 12;
constexpr double cornerLength = 24;
constexpr double cornerLineWidth = 4;
constexpr double scanLineInset = 8;
constexpr double scanLineHeight = 2;
constexpr double outlineRadius = 6;
constexpr double outlineWidth = 2;
constexpr Size manualCaptureSize{148, 40};
constexpr double statusRadius = 8;
constexpr double buttonIconWidth = 24;

constexpr Font hintFont{16, false};
constexpr Font statusFont{14, true};
constexpr Font buttonFont{15, false};

constexpr milliseconds scanLineDuration{2500};
constexpr milliseconds flashDuration{150};
constexpr milliseconds flashFadeDuration{300};
constexpr milliseconds failureDuration{2000};
constexpr milliseconds hintDissolveDuration{200};
constexpr milliseconds manualCaptureShowDuration{400};
constexpr milliseconds manualCaptureHideDuration{200};

/// How a state looks; a state without a text hides the status.
struct StateLook {
  Color color;
  const char* text = nullptr;
  bool stopsScanLine = false;
};

/// In the order of the states. The text of `failed` is its own message.
constexpr std::array<StateLook, 6> stateLooks{{
    {systemBlue, nullptr, false},
    {systemGreen, "请保持不动...", false},
    {systemGreen, "正在拍照...", true},
    {systemOrange, "正在识别...", true},
    {systemGreen, "识别成功", true},
    {systemRed, nullptr, false},
}};

/// In the middle, as high as leaves two lines below it.
Rect wideCutoutFor(OCRScanMode mode, double width, double height) {
  const double cutoutHeight = std::min(height * wideHeightShare, height - 2 * wideMargin);
  const double cutoutWidth = documentKind(mode).isCard() ? cutoutHeight * cardAspectRatio : cutoutHeight;
  return {(width - cutoutWidth) / 2, (height - cutoutHeight) / 2, cutoutWidth, cutoutHeight};
}

Rect cutoutFor(OCRScanMode mode, double width, double height) {
  const bool isCode = !documentKind(mode).isCard();
  const double cutoutWidth = width * (isCode ? codeWidthShare : cardWidthShare);
  const double cutoutHeight = isCode ? cutoutWidth : cutoutWidth / cardAspectRatio;
  return {(width - cutoutWidth) / 2, height * cutoutTopShare, cutoutWidth, cutoutHeight};
}

/// An L around a corner; the directions, 1 or -1, point into the rectangle.
Path cornerMark(Point corner, double directionX, double directionY) {
  return {MoveTo{{corner.x, corner.y + directionY * cornerLength}}, LineTo{corner},
          LineTo{{corner.x + directionX * cornerLength, corner.y}}};
}

Rect centred(double viewWidth, double top, Size size) {
  return {(viewWidth - size.width) / 2, top, size.width, size.height};
}

}  // namespace

ScannerOverlayView::ScannerOverlayView(std::weak_ptr<Stage> stage, std::shared_ptr<Dispatch> dispatch)
    : stage_(std::move(stage)), dispatch_(std::move(dispatch)) {
  buildShapes();
  buildLabels();
  buildButtons();
  setCornerColor(systemBlue);
}

void ScannerOverlayView::buildShapes() {
  maskLayer_->fillColor = colors::black.withAlpha(maskAlpha);
  addSubview(maskLayer_);
  for (std::shared_ptr<ShapeLayer>& corner : cornerLayers_) {
    corner = std::make_shared<ShapeLayer>();
    corner->lineWidth = cornerLineWidth;
    addSubview(corner);
  }
  scanLineView_->backgroundColor = systemBlue;
  scanLineView_->isHidden = true;
  addSubview(scanLineView_);
  detectedRectLayer_->strokeColor = systemGreen;
  detectedRectLayer_->lineWidth = outlineWidth;
  detectedRectLayer_->isHidden = true;
  addSubview(detectedRectLayer_);
}

void ScannerOverlayView::buildLabels() {
  hintLabel_->font = hintFont;
  hintLabel_->text = std::string(documentKind(scanMode_).hint);
  addSubview(hintLabel_);
  statusLabel_->font = statusFont;
  statusLabel_->cornerRadius = statusRadius;
  hideStatus();
  addSubview(statusLabel_);
}

void ScannerOverlayView::buildButtons() {
  closeButton_ = makeButton(&ScannerOverlayView::onCloseTapped);
  closeButton_->icon = "xmark";
  albumButton_ = makeButton(&ScannerOverlayView::onAlbumTapped);
  albumButton_->icon = "photo";
  torchButton_ = makeButton(&ScannerOverlayView::onTorchTapped);
  updateTorchButtonUI(false);
  manualCaptureButton_ = makeButton(&ScannerOverlayView::onManualCaptureTapped);
  manualCaptureButton_->icon = "camera.fill";
  manualCaptureButton_->title = "手动拍照";
  manualCaptureButton_->borderColor = colors::white.withAlpha(0.6);
  manualCaptureButton_->borderWidth = 1;
  manualCaptureButton_->backgroundColor = colors::white.withAlpha(0.15);
  manualCaptureButton_->cornerRadius = manualCaptureSize.height / 2;
  manualCaptureButton_->alpha = 0;
  manualCaptureButton_->isHidden = true;
}

std::shared_ptr<Button> ScannerOverlayView::makeButton(std::function<void()> ScannerOverlayView::* callback) {
  auto button = std::make_shared<Button>();
  button->font = buttonFont;
  // The button is part of this view and does not outlive it while the tree is shown.
  button->onTap = [this, callback] {
    if (const auto& tapped = this->*callback) tapped();
  };
  addSubview(button);
  return button;
}

void ScannerOverlayView::setState(ScanState state) {
  state_ = std::move(state);
  updateStateUI();
}

void ScannerOverlayView::updateStateUI() {
  const StateLook& look = stateLooks[static_cast<std::size_t>(state_.kind)];
  setCornerColor(look.color);
  if (look.stopsScanLine) stopScanLineAnimation();
  if (state_.kind == Kind::searching) {
    hideStatus();
    startScanLineAnimation();
  } else {
    showStatus(state_.kind == Kind::failed ? state_.message : look.text);
  }
  statusLabel_->backgroundColor = look.color.withAlpha(statusBackgroundAlpha);
  if (state_.kind == Kind::success) flashSuccess();
  if (state_.kind == Kind::failed) returnToSearchingLater();
}

void ScannerOverlayView::showStatus(const std::string& text) {
  statusLabel_->text = text;
  statusLabel_->isHidden = false;
  statusLabel_->alpha = 1;
  layoutBelowCutout();
}

void ScannerOverlayView::hideStatus() {
  statusLabel_->text.clear();
  statusLabel_->isHidden = true;
  statusLabel_->alpha = 0;
}

void ScannerOverlayView::flashSuccess() {
  animateThen(&ScannerOverlayView::fadeFlash, flashDuration,
              [this] { backgroundColor = colors::white.withAlpha(flashAlpha); });
}

void ScannerOverlayView::fadeFlash() {
  animate({.duration = flashFadeDuration, .changes = [this] { backgroundColor = colors::clear; }});
}

void ScannerOverlayView::returnToSearchingLater() {
  dispatch_->asyncAfter(failureDuration, [weak = weak_from_this()] {
    if (const auto view = weak.lock()) view->setState({});
  });
}

void ScannerOverlayView::setCornerColor(const Color& color) {
  for (const auto& corner : cornerLayers_) corner->strokeColor = color;
}

void ScannerOverlayView::updateHintText() {
  hintLabel_->text = std::string(documentKind(scanMode_).hint);
  hintLabel_->textColor = colors::white;
  layoutBelowCutout();
}

void ScannerOverlayView::showQualityWarning(const std::string& text) {
  auto warn = [this, text] {
    hintLabel_->text = text;
    hintLabel_->textColor = amber;
    layoutBelowCutout();
  };
  animate({.duration = hintDissolveDuration, .changes = std::move(warn), .crossDissolvedView = hintLabel_});
}

void ScannerOverlayView::hideQualityWarning() {
  if (hintLabel_->textColor == colors::white) return;
  animate(
      {.duration = hintDissolveDuration, .changes = [this] { updateHintText(); }, .crossDissolvedView = hintLabel_});
}

bool ScannerOverlayView::isWide() const {
  const auto stage = stage_.lock();
  return stage && stage->hasWideWindows() && frame.width >= wideRatio * frame.height;
}

void ScannerOverlayView::layoutSubviews() {
  if (frame.width <= 0 || frame.height <= 0) return;
  cutoutRect_ =
      isWide() ? wideCutoutFor(scanMode_, frame.width, frame.height) : cutoutFor(scanMode_, frame.width, frame.height);
  layoutMask();
  updateCorners();
  scanLineView_->frame = {cutoutRect_.x + scanLineInset, cutoutRect_.y, cutoutRect_.width - 2 * scanLineInset,
                          scanLineHeight};
  detectedRectLayer_->frame = bounds();
  layoutTopButtons();
  layoutBelowCutout();
}

void ScannerOverlayView::layoutMask() {
  maskLayer_->frame = bounds();
  maskLayer_->path = {RoundedRect{bounds(), 0}, RoundedRect{cutoutRect_, cutoutRadius}};
}

void ScannerOverlayView::updateCorners() {
  for (const auto& corner : cornerLayers_) corner->frame = bounds();
  const Rect& cutout = cutoutRect_;
  cornerLayers_[0]->path = cornerMark({cutout.x, cutout.y}, 1, 1);
  cornerLayers_[1]->path = cornerMark({cutout.maxX(), cutout.y}, -1, 1);
  cornerLayers_[2]->path = cornerMark({cutout.x, cutout.maxY()}, 1, -1);
  cornerLayers_[3]->path = cornerMark({cutout.maxX(), cutout.maxY()}, -1, -1);
}

void ScannerOverlayView::layoutTopButtons() {
  const double top = safeAreaTop + 8;
  closeButton_->frame = {12, top, 44, 44};
  albumButton_->frame = {frame.width - 52 - 12, top, 52, 44};
}

void ScannerOverlayView::layoutBelowCutout() {
  const bool wide = isWide();
  const Size limit{frame.width - 40, 30};
  hintLabel_->frame = centred(frame.width, cutoutRect_.maxY() + (wide ? wideSpacing : 20),
                              fittedSize(hintLabel_->text, hintLabel_->font, limit));
  Size status = fittedSize(statusLabel_->text, statusLabel_->font, limit);
  status = {std::max(status.width, 200.0), std::max(status.height, 20.0)};
  statusLabel_->frame = centred(frame.width, hintLabel_->frame.maxY() + (wide ? wideSpacing : 12), status);
  const double torchTitle = fittedSize(torchButton_->title, torchButton_->font, {200 - buttonIconWidth, 44}).width;
  const Size torch{torchTitle + buttonIconWidth, 44};
  if (wide) {
    const double middle = (cutoutRect_.maxY() + frame.height) / 2;
    torchButton_->frame = {sideMargin, middle - torch.height / 2, torch.width, torch.height};
    manualCaptureButton_->frame = {frame.width - sideMargin - manualCaptureSize.width,
                                   middle - manualCaptureSize.height / 2, manualCaptureSize.width,
                                   manualCaptureSize.height};
    return;
  }
  torchButton_->frame = centred(frame.width, statusLabel_->frame.maxY() + 28, torch);
  manualCaptureButton_->frame = centred(frame.width, torchButton_->frame.maxY() + 20, manualCaptureSize);
}

Size ScannerOverlayView::fittedSize(const std::string& text, const Font& font, Size limit) const {
  const auto stage = stage_.lock();
  const Size size = stage ? stage->textSize(text, font) : Size{};
  return {std::min(size.width, limit.width), std::min(size.height, limit.height)};
}

void ScannerOverlayView::startScanLineAnimation() {
  if (cutoutRect_.height <= 0) return;
  scanLineView_->isHidden = false;
  scanLineView_->frame.y = cutoutRect_.y;
  scanLineAnimator_.cancel();
  scanLineAnimator_ = animateThen(&ScannerOverlayView::continueScanLine, scanLineDuration,
                                  [this] { scanLineView_->frame.y = cutoutRect_.maxY() - scanLineHeight; });
}

void ScannerOverlayView::continueScanLine() {
  if (scanLineView_->isHidden) return;
  startScanLineAnimation();
}

void ScannerOverlayView::stopScanLineAnimation() {
  scanLineAnimator_.cancel();
  scanLineAnimator_ = {};
  scanLineView_->isHidden = true;
}

void ScannerOverlayView::highlightDetectedRect(const std::optional<Rect>& rect, const Rect& bounds) {
  detectedRectLayer_->isHidden = !rect;
  if (!rect) return;
  Rect drawn = inPixels(flipped(*rect), {bounds.width, bounds.height});
  drawn.x += bounds.x;
  drawn.y += bounds.y;
  detectedRectLayer_->path = {RoundedRect{drawn, outlineRadius}};
}

void ScannerOverlayView::showManualCaptureHint() {
  manualCaptureButton_->isHidden = false;
  animate({.duration = manualCaptureShowDuration, .changes = [this] { manualCaptureButton_->alpha = 1; }});
}

void ScannerOverlayView::hideManualCaptureHint(bool animated) {
  if (!animated) {
    manualCaptureButton_->alpha = 0;
    manualCaptureButton_->isHidden = true;
    return;
  }
  animateThen(&ScannerOverlayView::finishHidingManualCapture, manualCaptureHideDuration,
              [this] { manualCaptureButton_->alpha = 0; });
}

void ScannerOverlayView::finishHidingManualCapture() {
  // It may have been shown again meanwhile.
  if (manualCaptureButton_->alpha == 0) manualCaptureButton_->isHidden = true;
}

void ScannerOverlayView::updateTorchButtonUI(bool isOn) {
  torchButton_->icon = isOn ? "flashlight.on.fill" : "flashlight.off.fill";
  torchButton_->title = isOn ? "关闭手电筒" : "打开手电筒";
}

View* ScannerOverlayView::hitTest(Point point) {
  for (const auto& button : {closeButton_, albumButton_, torchButton_, manualCaptureButton_})
    if (button->frame.contains(point)) return button.get();
  return nullptr;
}

WorkItem ScannerOverlayView::animate(Animation animation) const {
  if (const auto stage = stage_.lock()) return stage->animate(std::move(animation));
  animation.changes();
  return {};
}

WorkItem ScannerOverlayView::animateThen(void (ScannerOverlayView::*completion)(), milliseconds duration,
                                         std::function<void()> changes) {
  Animation animation{.duration = duration, .changes = std::move(changes)};
  animation.completion = [weak = weak_from_this(), completion] {
    if (const auto view = weak.lock()) (view.get()->*completion)();
  };
  return animate(std::move(animation));
}

}  // namespace pravik
