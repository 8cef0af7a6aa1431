// Takes pictures of the scanner's window in every state: pravik-screenshots CLIPS FOLDER. The folders CLIPS/wide and
// CLIPS/upright hold the clips that tools/screenshots/screenshots draws.
#include <QApplication>
#include <exception>
#include <filesystem>
#include <iostream>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>
#include <stdexcept>
#include <string>

#include "apps/scanner/ScannerWindow.h"
#include "apps/scanner/Texts.h"
#include "backends/qt/QtPlatform.h"
#include "backends/qt/QtValues.h"
#include "support/StillCamera.h"
#include "tests/unit/qt/ShownScanner.h"

namespace pravik {
namespace {

using namespace std::chrono_literals;
using Kind = ScannerOverlayView::ScanState::Kind;
using test::ShownScanner;
using test::wait;
using test::waitUntil;

constexpr QSize landscape(896, 504);
constexpr QSize portrait(360, 640);
/// Long enough for the animations that a state begins with.
constexpr std::chrono::milliseconds settling = 500ms;

/// A frame of a clip, counted from its beginning or, when negative, from its end.
Bitmap frameOfClip(const std::filesystem::path& clip, int index) {
  cv::VideoCapture video(clip.string());
  if (index < 0) index += static_cast<int>(video.get(cv::CAP_PROP_FRAME_COUNT));
  cv::Mat frame;
  for (int i = 0; i <= index; ++i)
    if (!video.read(frame)) throw std::runtime_error("no frame " + std::to_string(index) + " in " + clip.string());
  auto pixels = allocatePixels(PixelFormat::bgra8, frame.cols, frame.rows);
  cv::Mat target(frame.rows, frame.cols, CV_8UC4, pixels.get());
  cv::cvtColor(frame, target, cv::COLOR_BGR2BGRA);
  return {PixelFormat::bgra8, frame.cols, frame.rows, std::ptrdiff_t{4} * frame.cols, pixels};
}

/// What lies before the camera: nothing, or one of the things that are scanned.
struct Subjects {
  Bitmap desk;
  Bitmap bankCard;
  Bitmap idFront;
  Bitmap idBack;
  Bitmap code;

  explicit Subjects(const std::filesystem::path& clips)
      : desk(frameOfClip(clips / "bank-card-flat-easy-0000.avi", 0)),
        bankCard(frameOfClip(clips / "bank-card-flat-easy-0000.avi", -1)),
        idFront(frameOfClip(clips / "id-front-easy-0000.avi", -1)),
        idBack(frameOfClip(clips / "id-back-easy-0000.avi", -1)),
        code(frameOfClip(clips / "code-easy-0000.avi", -1)) {}
};

struct Tour {
  std::filesystem::path folder;
  /// As a webcam sees them, and as the camera of a phone held upright.
  Subjects wide;
  Subjects upright;

  const Subjects& inShapeOf(QSize window) const { return window.width() > window.height() ? wide : upright; }

  void save(QWidget& window, const std::string& name) const {
    const std::filesystem::path path = folder / ("scanner-" + name + ".png");
    if (!window.grab().save(QString::fromStdString(path.string())))
      throw std::runtime_error("cannot write " + path.string());
  }
};

void require(bool reached, const char* what) {
  if (!reached) throw std::runtime_error(std::string("the scanner never came to ") + what);
}

/// A scanner before a still picture.
struct Scene : ShownScanner {
  std::shared_ptr<test::StillCamera> camera;

  Scene(const Platform& parts, QSize size, const Bitmap& picture)
      : Scene(parts, size, std::make_shared<test::StillCamera>(parts.dispatch, picture)) {}
  Scene(const Platform& parts, QSize size, std::shared_ptr<test::StillCamera> still)
      : ShownScanner(withCamera(parts, still), size), camera(std::move(still)) {
    camera->photoDelay = settling;
  }

  static Platform withCamera(Platform parts, std::shared_ptr<CaptureSystem> camera) {
    parts.captureSystem = std::move(camera);
    return parts;
  }
};

/// All the way to the record.
void takeSuccess(const Tour& tour, const Platform& parts) {
  Scene scene(parts, landscape, tour.wide.desk);
  scene.present(OCRScanMode::bankCard);
  require(scene.reaches(Kind::searching), "search");
  wait(1200ms);
  tour.save(scene.window, "searching");
  scene.camera->setPicture(tour.wide.bankCard);
  require(scene.reaches(Kind::detected), "see the card");
  wait(50ms);
  tour.save(scene.window, "detected");
  require(scene.reaches(Kind::capturing), "take the photo");
  wait(250ms);
  tour.save(scene.window, "capturing");
  require(scene.reaches(Kind::recognizing), "recognise");
  wait(100ms);
  tour.save(scene.window, "recognizing");
  require(scene.reaches(Kind::success), "success");
  wait(100ms);
  tour.save(scene.window, "success");
}

/// Both failures: the engine finds nothing.
void takeFailures(const Tour& tour, Platform parts) {
  parts.textEngine = std::make_shared<test::FakeTextEngine>();
  Scene scene(parts, landscape, tour.wide.idFront);
  scene.present(OCRScanMode::idCardFront);
  require(scene.reaches(Kind::recognizing), "recognise");
  scene.camera->setPicture(tour.wide.desk);
  require(scene.reaches(Kind::failed), "the first failure");
  wait(settling);
  tour.save(scene.window, "failed-once");
  scene.camera->setPicture(tour.wide.idFront);
  require(scene.reaches(Kind::capturing), "the second photo");
  require(scene.reaches(Kind::failed), "the second failure");
  tour.save(scene.window, "failed-finally");
}

Bitmap glaring(const Bitmap& picture) {
  auto pixels = allocatePixels(PixelFormat::bgra8, picture.width(), picture.height());
  for (int y = 0; y < picture.height(); ++y)
    for (int x = 0; x < 4 * picture.width(); ++x) {
      const double dx = x / 4.0 - 0.55 * picture.width();
      const double dy = 1.7 * (y - 0.5 * picture.height());
      const double light = 900 * std::exp(-(dx * dx + dy * dy) / (0.02 * picture.width() * picture.width()));
      pixels.get()[y * 4 * picture.width() + x] = static_cast<std::uint8_t>(std::min(255.0, picture.row(y)[x] + light));
    }
  return {PixelFormat::bgra8, picture.width(), picture.height(), std::ptrdiff_t{4} * picture.width(), pixels};
}

void takeHints(const Tour& tour, const Platform& parts) {
  Scene glare(parts, landscape, glaring(tour.wide.idFront));
  glare.present(OCRScanMode::idCardFront);
  const std::string hint = glare.overlay().hintLabel()->text;
  require(waitUntil([&] { return glare.overlay().hintLabel()->text != hint; }), "warn of glare");
  wait(settling);
  tour.save(glare.window, "glare");

  for (const auto& [size, name] : {std::pair(landscape, "manual"), std::pair(portrait, "portrait-manual")}) {
    Scene manual(parts, size, tour.inShapeOf(size).desk);
    manual.present(OCRScanMode::bankCard);
    require(waitUntil([&] { return !manual.overlay().manualCaptureButton()->isHidden; }), "offer the button");
    wait(settling);
    tour.save(manual.window, name);
  }
}

void takeModes(const Tour& tour, const Platform& parts) {
  struct View {
    OCRScanMode mode;
    Bitmap Subjects::* subject;
    const char* name;
  };
  for (const View& view : {View{OCRScanMode::bankCard, &Subjects::bankCard, "bank-card"},
                           View{OCRScanMode::idCardFront, &Subjects::idFront, "id-front"},
                           View{OCRScanMode::idCardBack, &Subjects::idBack, "id-back"},
                           View{OCRScanMode::qrCode, &Subjects::code, "code"}}) {
    for (const auto& [size, prefix] : {std::pair(landscape, ""), std::pair(portrait, "portrait-")}) {
      Scene scene(parts, size, tour.inShapeOf(size).*view.subject);
      scene.present(view.mode);
      wait(settling);
      tour.save(scene.window, std::string(prefix) + view.name);
    }
  }
  for (const auto& [size, name] : {std::pair(landscape, "mode-switch"), std::pair(portrait, "portrait-mode-switch")}) {
    Scene scene(parts, size, tour.inShapeOf(size).idBack);
    scene.present(OCRScanMode::idCardBack, true);
    wait(settling);
    tour.save(scene.window, name);
  }
}

void takePermission(const Tour& tour, const Platform& parts) {
  Scene scene(parts, landscape, tour.wide.desk);
  scene.camera->status = CameraAuthorizationStatus::denied;
  scene.present(OCRScanMode::bankCard);
  wait(settling);
  QWidget* alert = QApplication::activeModalWidget();
  require(alert != nullptr, "ask for the camera");
  tour.save(*alert, "permission");
}

void takeApplication(const Tour& tour, Platform parts) {
  const auto camera = std::make_shared<test::StillCamera>(parts.dispatch, tour.wide.idFront);
  parts.captureSystem = camera;
  for (const auto& [name, used] : languagesByName()) {
    scanner::useLanguage(used);
    const std::string language = "-" + name;
    scanner::ScannerWindow window({.mode = OCRScanMode::idCardFront}, parts, true);
    window.resize(landscape);
    window.show();
    wait(settling);
    tour.save(window, "start" + language);
    bool isDone = false;
    window.onRecord = [&](const scanner::ScannedRecord&) { isDone = true; };
    window.begin();
    require(waitUntil([&] { return isDone; }), "the record");
    wait(settling);
    tour.save(window, "result" + language);
    window.resize(portrait);
    wait(settling);
    tour.save(window, "portrait-result" + language);
  }
}

void run(const std::filesystem::path& clips, const std::filesystem::path& folder) {
  const Tour tour{.folder = folder, .wide = Subjects(clips / "wide"), .upright = Subjects(clips / "upright")};
  scanner::useLanguage(Language::chinese);
  const Platform parts = makeQtPlatform();
  takeSuccess(tour, parts);
  takeFailures(tour, parts);
  takeHints(tour, parts);
  takeModes(tour, parts);
  takePermission(tour, parts);
  takeApplication(tour, parts);
}

}  // namespace
}  // namespace pravik

int main(int argumentCount, char** arguments) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argumentCount, arguments);
  QApplication::setFont(pravik::interfaceFont());
  if (argumentCount != 3) {
    std::cerr << "usage: pravik-screenshots CLIPS FOLDER\n";
    return 2;
  }
  try {
    pravik::run(arguments[1], arguments[2]);
  } catch (const std::exception& error) {
    std::cerr << "pravik-screenshots: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
