#include "apps/pravik/ScanWatch.h"

#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include "UI/CardDetector.h"

namespace pravik::cli {
namespace {

using Kind = ScannerOverlayView::ScanState::Kind;

constexpr std::array<std::string_view, 6> stateNames{"searching",   "detected", "capturing",
                                                     "recognizing", "success",  "failed"};
constexpr std::array<std::string_view, 3> timerChangeNames{"started", "fired", "cancelled"};

/// An outline that overlaps the one told last by so much is the same one, trembling.
constexpr double sameOutline = 0.9;
/// What a person needs to see the button and to tap it.
constexpr std::chrono::milliseconds reactionTime{500};

double seconds(std::chrono::milliseconds time) {
  return static_cast<double>(time.count()) / 1000;
}

double rounded(double share) {
  return std::round(share * 1000) / 1000;
}

/// The outline on the screen as a share of it, origin at the lower left, as the detector gave it.
std::optional<Rect> outlineOn(const ScannerOverlayView& overlay) {
  const ShapeLayer& layer = *overlay.detectedRectLayer();
  if (layer.isHidden || layer.path.empty()) return std::nullopt;
  const auto* drawn = std::get_if<RoundedRect>(&layer.path.front());
  if (drawn == nullptr) return std::nullopt;
  const Rect bounds = overlay.bounds();
  return Rect{drawn->rect.x / bounds.width, 1 - drawn->rect.maxY() / bounds.height, drawn->rect.width / bounds.width,
              drawn->rect.height / bounds.height};
}

bool isSame(const std::optional<Rect>& a, const std::optional<Rect>& b) {
  return a && b ? iou(*a, *b) >= sameOutline : a.has_value() == b.has_value();
}

bool showsWarning(const ScannerOverlayView& overlay) {
  return overlay.hintLabel()->textColor != colors::white;
}

}  // namespace

ScanWatch::ScanWatch(Clock clock, Tell tell, bool tapsManualCapture)
    : clock_(std::move(clock)), tell_(std::move(tell)), tapsManualCapture_(tapsManualCapture) {}

void ScanWatch::tell(const std::string& event, const Json& members) const {
  Json whole{{"time", seconds(clock_())}, {"event", event}};
  whole.update(members);
  tell_(std::move(whole));
}

ScanWatch::Look ScanWatch::lookAt(const OCRScannerViewController& screen) {
  const ScannerOverlayView& overlay = *screen.overlayView();
  return {.state = overlay.state(),
          .hint = overlay.hintLabel()->text,
          .outline = outlineOn(overlay),
          .offersManualCapture = overlay.manualCaptureButton()->alpha > 0,
          .failedAttempts = screen.retryCount()};
}

void ScanWatch::workDone() {
  const auto screen = screen_.lock();
  if (!screen) return;
  const Look now = lookAt(*screen);
  if (now.hint != last_.hint) tell("hint", {{"text", now.hint}});
  if (now.failedAttempts != last_.failedAttempts) tell("attempt", {{"attempt", now.failedAttempts}, {"failed", true}});
  tellOutline(now);
  tellState(now);
  if (now.offersManualCapture != last_.offersManualCapture) {
    offeredAt_ = clock_();
    tell("button", {{"shown", now.offersManualCapture}});
  }
  const std::optional<Rect> toldOutline = isSame(now.outline, last_.outline) ? last_.outline : now.outline;
  last_ = now;
  last_.outline = toldOutline;
  tapIfReady(*screen);
}

void ScanWatch::tellState(const Look& now) const {
  if (now.state == last_.state) return;
  Json members{{"state", stateNames[static_cast<std::size_t>(now.state.kind)]}};
  if (!now.state.message.empty()) members["message"] = now.state.message;
  tell("state", members);
  if (now.state.kind == Kind::capturing) tell("capture", {{"attempt", now.failedAttempts + 1}});
}

void ScanWatch::tellOutline(const Look& now) const {
  if (isSame(now.outline, last_.outline)) return;
  Json box;
  if (now.outline)
    box = {{"x", rounded(now.outline->x)},
           {"y", rounded(now.outline->y)},
           {"width", rounded(now.outline->width)},
           {"height", rounded(now.outline->height)}};
  tell("outline", {{"boundingBox", box}});
}

void ScanWatch::timerChanged(std::chrono::milliseconds delay, TimerChange change) const {
  tell("timer", {{"seconds", seconds(delay)}, {"change", timerChangeNames[static_cast<std::size_t>(change)]}});
}

/// A person waits until the card is in view and nothing has to be done about the light.
void ScanWatch::tapIfReady(OCRScannerViewController& screen) {
  const ScannerOverlayView& overlay = *screen.overlayView();
  if (!tapsManualCapture_ || !last_.offersManualCapture || clock_() - offeredAt_ < reactionTime) return;
  if (last_.state.kind != Kind::detected || showsWarning(overlay)) return;
  offeredAt_ = clock_();
  tell("tap", {{"button", "manualCapture"}});
  const Rect& button = overlay.manualCaptureButton()->frame;
  screen.view().touch({button.midX(), button.midY()});
  workDone();
}

ObservedDispatch::ObservedDispatch(std::shared_ptr<Dispatch> dispatch, std::weak_ptr<ScanWatch> watch)
    : dispatch_(std::move(dispatch)), watch_(std::move(watch)) {}

void ObservedDispatch::async(std::function<void()> work) {
  dispatch_->async([watch = watch_, work = std::move(work)] {
    work();
    if (const auto watcher = watch.lock()) watcher->workDone();
  });
}

WorkItem ObservedDispatch::asyncAfter(std::chrono::milliseconds delay, std::function<void()> work) {
  auto isPending = std::make_shared<bool>(true);
  const auto tell = [watch = watch_, delay](TimerChange change) {
    if (const auto watcher = watch.lock()) watcher->timerChanged(delay, change);
  };
  tell(TimerChange::started);
  const WorkItem item = dispatch_->asyncAfter(delay, [watch = watch_, isPending, tell, work = std::move(work)] {
    *isPending = false;
    tell(TimerChange::fired);
    work();
    if (const auto watcher = watch.lock()) watcher->workDone();
  });
  return WorkItem([item, isPending, tell] {
    item.cancel();
    if (std::exchange(*isPending, false)) tell(TimerChange::cancelled);
  });
}

std::shared_ptr<SerialQueue> ObservedDispatch::makeSerialQueue(const std::string& label) {
  return serialQueues_.emplace_back(dispatch_->makeSerialQueue(label));
}

}  // namespace pravik::cli
