#include "backends/qt/ViewPainter.h"

#include <gtest/gtest.h>

#include "Platform/Controls.h"
#include "support/FakeCamera.h"
#include "support/Pictures.h"

namespace pravik {
namespace {

/// Draws a view over white and tells a pixel as "rrggbb".
struct Canvas {
  ViewAnimator animator;
  ViewPainter viewPainter{animator};
  QImage picture{100, 60, QImage::Format_RGB32};

  void draw(const View& view) {
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    viewPainter.paint(painter, view);
  }
  std::string at(int x, int y) const { return picture.pixelColor(x, y).name().mid(1).toStdString(); }
};

TEST(ViewPainter, LeavesTheCutOutOfAMaskClear) {
  ShapeLayer mask;
  mask.frame = {0, 0, 100, 60};
  mask.path = {RoundedRect{mask.bounds(), 0}, RoundedRect{{20, 10, 60, 40}, 12}};
  mask.fillColor = colors::black.withAlpha(0.4);
  Canvas canvas;
  canvas.draw(mask);
  EXPECT_EQ(canvas.at(5, 5), "999999");
  EXPECT_EQ(canvas.at(50, 30), "ffffff");
  EXPECT_EQ(canvas.at(21, 11), "999999") << "its corners are round";
  EXPECT_EQ(canvas.at(50, 11), "ffffff");
}

TEST(ViewPainter, MultipliesAlphaDownTheTreeAndSkipsWhatIsHidden) {
  View root;
  root.frame = {10, 10, 80, 40};
  root.alpha = 0.5;
  const auto addBlack = [&](double x) {
    const auto view = std::make_shared<View>();
    view->frame = {x, 0, 20, 20};
    view->backgroundColor = colors::black;
    root.addSubview(view);
    return view;
  };
  addBlack(0)->alpha = 0.4;
  addBlack(40)->isHidden = true;
  Canvas canvas;
  canvas.draw(root);
  EXPECT_EQ(canvas.at(15, 15), "cccccc");
  EXPECT_EQ(canvas.at(5, 5), "ffffff") << "subviews lie in their superview's points";
  EXPECT_EQ(canvas.at(55, 15), "ffffff");
}

TEST(ViewPainter, FillsThePreviewWithTheMiddleOfThePicture) {
  // The thirds of the picture are dark, grey and bright; a frame of the same height shows the middle one.
  const Bitmap thirds = test::greyPicture(300, 60, [](int x, int) { return 50 + x / 100 * 78; });
  const auto session = std::make_shared<test::FakeCaptureSession>();
  PreviewView preview;
  preview.frame = {0, 0, 100, 60};
  preview.session = session;
  Canvas canvas;
  canvas.draw(preview);
  EXPECT_EQ(canvas.at(50, 30), "ffffff") << "no picture yet";
  session->preview = thirds;
  canvas.draw(preview);
  for (const int x : {3, 50, 96}) EXPECT_EQ(canvas.at(x, 30), "808080");
  session->preview = test::plainPicture(10, 10, 0, 0, 255);
  canvas.draw(preview);
  EXPECT_EQ(canvas.at(50, 30), "ff0000") << "the next picture";
}

TEST(ViewPainter, CutsTextOffAtItsFrame) {
  Label label;
  label.frame = {10, 10, 80, 20};
  label.text = "将银行卡正面对准此区域，这一行太长了";
  label.textColor = colors::black;
  Canvas blank, canvas;
  blank.draw(View());
  canvas.draw(label);
  const auto isBlank = [&](const QRect& part) { return canvas.picture.copy(part) == blank.picture.copy(part); };
  EXPECT_FALSE(isBlank({12, 10, 76, 20}));
  EXPECT_TRUE(isBlank({0, 0, 8, 60}) && isBlank({92, 0, 8, 60}));
}

}  // namespace
}  // namespace pravik
