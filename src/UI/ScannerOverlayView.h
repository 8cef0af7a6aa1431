#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Controls.h"
#include "Platform/Dispatch.h"
#include "Platform/Stage.h"
#include "Platform/View.h"
#include "Records/DocumentKind.h"

namespace pravik {

/// What lies over the camera's picture: a dimmed mask with a clear cut-out for the card or code, corner marks, a scan
/// line, the detected outline, a hint, a status, and four buttons. Main queue only.
class ScannerOverlayView : public View, public std::enable_shared_from_this<ScannerOverlayView> {
 public:
  /// How far the scan is; only `failed` carries a message.
  struct ScanState {
    enum class Kind : std::uint8_t { searching, detected, capturing, recognizing, success, failed };

    ScanState(Kind stateKind = Kind::searching, std::string text = {}) : kind(stateKind), message(std::move(text)) {}
    static ScanState failed(std::string text) { return {Kind::failed, std::move(text)}; }

    Kind kind;
    std::string message;

    bool operator==(const ScanState&) const = default;
  };

  /// Builds the tree of views. Animations run on the stage as long as it lives; without one, changes show at once.
  ScannerOverlayView(std::weak_ptr<Stage> stage, std::shared_ptr<Dispatch> dispatch);

  std::function<void()> onCloseTapped;
  std::function<void()> onTorchTapped;
  std::function<void()> onAlbumTapped;
  std::function<void()> onManualCaptureTapped;

  const ScanState& state() const { return state_; }
  /// Sets the state and shows it.
  void setState(ScanState state);
  OCRScanMode scanMode() const { return scanMode_; }
  /// Decides the shape of the cut-out from the next layout on, and the hint from updateHintText() on.
  void setScanMode(OCRScanMode mode) { scanMode_ = mode; }
  /// Shows the mode's hint.
  void updateHintText();
  /// Places everything in the view's bounds; nothing when they have no extent.
  void layoutSubviews();

  /// Shows what should be done about the picture in place of the hint.
  void showQualityWarning(const std::string& text);
  /// Brings the hint back.
  void hideQualityWarning();

  void startScanLineAnimation();
  /// Ends the scan line's motion, lets go of it and hides the line.
  void stopScanLineAnimation();

  /// Draws the outline of a card, or none. `rect` is normalised to 0...1 with the origin at the lower left of
  /// `bounds`, a rectangle of this view.
  void highlightDetectedRect(const std::optional<Rect>& rect, const Rect& bounds);

  void showManualCaptureHint();
  void hideManualCaptureHint(bool animated);
  void updateTorchButtonUI(bool isOn);

  /// Only the buttons take touches: the first of close, album, torch and manual capture whose frame holds the point.
  View* hitTest(Point point) override;

  /// Where the card or code belongs, in points of this view; of no extent before the first layout.
  const Rect& cutoutRect() const { return cutoutRect_; }

  const std::shared_ptr<ShapeLayer>& maskLayer() const { return maskLayer_; }
  /// Top left, top right, bottom left, bottom right.
  const std::array<std::shared_ptr<ShapeLayer>, 4>& cornerLayers() const { return cornerLayers_; }
  const std::shared_ptr<ShapeLayer>& detectedRectLayer() const { return detectedRectLayer_; }
  const std::shared_ptr<View>& scanLineView() const { return scanLineView_; }
  const std::shared_ptr<Label>& hintLabel() const { return hintLabel_; }
  const std::shared_ptr<Label>& statusLabel() const { return statusLabel_; }
  const std::shared_ptr<Button>& closeButton() const { return closeButton_; }
  const std::shared_ptr<Button>& albumButton() const { return albumButton_; }
  const std::shared_ptr<Button>& torchButton() const { return torchButton_; }
  const std::shared_ptr<Button>& manualCaptureButton() const { return manualCaptureButton_; }

 private:
  void buildShapes();
  void buildLabels();
  void buildButtons();
  std::shared_ptr<Button> makeButton(std::function<void()> ScannerOverlayView::* callback);

  void updateStateUI();
  void showStatus(const std::string& text);
  void hideStatus();
  void flashSuccess();
  void returnToSearchingLater();
  void setCornerColor(const Color& color);
  void updateCorners();
  void layoutMask();
  void layoutTopButtons();
  void layoutBelowCutout();
  /// Whether there is no room below the cut-out that a screen held upright gets, and the stage has such windows.
  bool isWide() const;
  Size fittedSize(const std::string& text, const Font& font, Size limit) const;

  WorkItem animate(Animation animation) const;
  /// An animation whose end does something, unless the view has gone by then.
  WorkItem animateThen(void (ScannerOverlayView::*completion)(), std::chrono::milliseconds duration,
                       std::function<void()> changes);
  void continueScanLine();
  void fadeFlash();
  void finishHidingManualCapture();

  std::weak_ptr<Stage> stage_;
  std::shared_ptr<Dispatch> dispatch_;
  ScanState state_;
  OCRScanMode scanMode_ = OCRScanMode::bankCard;
  Rect cutoutRect_;
  WorkItem scanLineAnimator_;

  std::shared_ptr<ShapeLayer> maskLayer_ = std::make_shared<ShapeLayer>();
  std::array<std::shared_ptr<ShapeLayer>, 4> cornerLayers_;
  std::shared_ptr<ShapeLayer> detectedRectLayer_ = std::make_shared<ShapeLayer>();
  std::shared_ptr<View> scanLineView_ = std::make_shared<View>();
  std::shared_ptr<Label> hintLabel_ = std::make_shared<Label>();
  std::shared_ptr<Label> statusLabel_ = std::make_shared<Label>();
  std::shared_ptr<Button> closeButton_;
  std::shared_ptr<Button> albumButton_;
  std::shared_ptr<Button> torchButton_;
  std::shared_ptr<Button> manualCaptureButton_;
};

}  // namespace pravik
