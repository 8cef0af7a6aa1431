#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>
#include <memory>
#include <vector>

#include "Platform/Platform.h"
#include "Platform/Stage.h"
#include "backends/qt/ScreenWidget.h"
#include "backends/qt/ViewAnimator.h"

namespace pravik {

/// Shows screens over the whole of a widget, usually a window, and its dialogs beside it. May outlive the widget;
/// screens that it shows go with either, without a word.
class QtStage : public Stage {
 public:
  /// The image codec and the dispatch of the platform open the photos that the user picks.
  QtStage(QWidget& host, const Platform& platform);
  ~QtStage() override;

  void present(std::shared_ptr<Screen> screen, bool animated, std::function<void()> completion) override;
  void dismiss(Screen& screen, bool animated, std::function<void()> completion) override;
  /// The screens cover the whole host, its bars included.
  void setNavigationBarHidden(bool /*hidden*/) override {}
  void presentAlert(Alert alert) override;
  void openSettings() override;
  void pickPhoto(std::function<void(std::optional<Image>)> completion) override;
  WorkItem animate(Animation animation) override;
  bool hasWideWindows() const override { return true; }
  Size textSize(const std::string& text, const Font& font) const override;

  /// Presses the button with this symbol on the screen on top; false when there is none.
  bool press(std::string_view symbol);
  /// Opens a photo on the pool and hands it over there: nothing when it cannot be opened.
  void loadPhoto(const QString& path, std::function<void(std::optional<Image>)> completion) const;
  bool showsScreen() const { return topScreen() != nullptr; }
  /// Hands a photo to the screen on top as if the user had asked for the picker and picked it there; false when the
  /// screen has no such button.
  bool pickPhoto(const QString& path);

 private:
  ScreenWidget* topScreen() const;
  QWidget* dialogParent() const;
  QPointer<QWidget> host_;
  std::shared_ptr<ImageCodec> imageCodec_;
  std::shared_ptr<Dispatch> dispatch_;
  ViewAnimator animator_;
  ViewPainter painter_{animator_};
  /// From the bottom to the top.
  std::vector<QPointer<ScreenWidget>> screens_;
  /// What the next picker gives without asking; empty for none.
  QString offeredPhoto_;
  /// Owns the timers of the animations, and stands for the stage where work is put off.
  QObject timers_;
};

}  // namespace pravik
