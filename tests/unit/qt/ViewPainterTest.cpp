#include "backends/qt/ViewPainter.h"

#include <gtest/gtest.h>

#include "Platform/Button.h"
#include "Platform/Label.h"
#include "Platform/ShapeLayer.h"
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

TEST(ViewPainter, leavesTheCutOutOfAMaskClear) {
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

TEST(ViewPainter, multipliesAlphaDownTheTreeAndSkipsWhatIsHidden) {
  View root;
  root.frame = {10, 10, 80, 40};
  root.alpha = 0.5;
  const auto half = std::make_shared<View>();
  half->frame = {0, 0, 20, 20};
  half->backgroundColor = colors::black;
  half->alpha = 0.4;
  root.addSubview(half);
  const auto hidden = std::make_shared<View>();
  hidden->frame = {40, 0, 20, 20};
  hidden->backgroundColor = colors::black;
  hidden->isHidden = true;
  root.addSubview(hidden);
  Canvas canvas;
  canvas.draw(root);
  EXPECT_EQ(canvas.at(15, 15), "cccccc");
  EXPECT_EQ(canvas.at(5, 5), "ffffff") << "subviews lie in their superview's points";
  EXPECT_EQ(canvas.at(55, 15), "ffffff");
}

TEST(ViewPainter, fillsThePreviewWithTheMiddleOfThePicture) {
  // 300 x 60: red in the left third, green in the middle, blue at the right. A frame of 100 x 60 shows the middle.
  auto pixels = allocatePixels(PixelFormat::bgra8, 300, 60);
  for (int i = 0; i < 300 * 60; ++i) {
    pixels.get()[4 * i + 2 - (i % 300) / 100] = 255;
    pixels.get()[4 * i + 3] = 255;
  }
  const auto session = std::make_shared<test::FakeCaptureSession>();
  PreviewView preview;
  preview.frame = {0, 0, 100, 60};
  preview.session = session;
  Canvas canvas;
  canvas.draw(preview);
  EXPECT_EQ(canvas.at(50, 30), "ffffff") << "no picture yet";
  session->preview = Bitmap(PixelFormat::bgra8, 300, 60, 1200, pixels);
  canvas.draw(preview);
  for (const int x : {3, 50, 96}) EXPECT_EQ(canvas.at(x, 30), "00ff00");
  session->preview = test::plainPicture(10, 10, 0, 0, 255);
  canvas.draw(preview);
  EXPECT_EQ(canvas.at(50, 30), "ff0000") << "the next picture";
}

TEST(ViewPainter, drawsTextAndSymbolsInsideTheirFrames) {
  const auto isDrawn = [](const Canvas& canvas, const QRect& area) {
    for (int y = area.top(); y <= area.bottom(); ++y)
      for (int x = area.left(); x <= area.right(); ++x)
        if (canvas.at(x, y) != "ffffff") return true;
    return false;
  };
  Label label;
  label.frame = {10, 10, 80, 20};
  label.text = "将银行卡正面对准此区域，这一行太长了";
  label.textColor = colors::black;
  Canvas canvas;
  canvas.draw(label);
  EXPECT_TRUE(isDrawn(canvas, {12, 10, 76, 20}));
  EXPECT_FALSE(isDrawn(canvas, {0, 0, 8, 60}) || isDrawn(canvas, {92, 0, 8, 60})) << "too long a text is cut off";

  for (const char* icon : {"xmark", "photo", "camera.fill", "flashlight.off.fill", "flashlight.on.fill"}) {
    Button button;
    button.frame = {28, 8, 44, 44};
    button.icon = icon;
    button.tintColor = colors::black;
    canvas.draw(button);
    EXPECT_TRUE(isDrawn(canvas, {38, 18, 24, 24})) << icon;
    EXPECT_FALSE(isDrawn(canvas, {0, 0, 36, 60})) << icon;
  }
}

}  // namespace
}  // namespace pravik
