#include "backends/onnxruntime/OnnxTextEngine.h"

#include <algorithm>
#include <new>
#include <opencv2/core.hpp>
#include <thread>
#include <utility>

#include "backends/onnxruntime/Cropping.h"
#include "backends/onnxruntime/DigitRowReader.h"
#include "backends/onnxruntime/DirectionClassifier.h"
#include "backends/onnxruntime/Languages.h"
#include "backends/onnxruntime/LineReader.h"
#include "backends/onnxruntime/ModelFiles.h"
#include "backends/onnxruntime/Pixels.h"
#include "backends/onnxruntime/ReadingOrder.h"
#include "backends/onnxruntime/SecondLook.h"
#include "backends/onnxruntime/TextDetector.h"
#include "backends/opencv/Mat.h"

namespace pravik {
namespace {

using ppocr::TextBox;

/// What is read with less confidence than this is a pattern that the detector took for text.
constexpr float noiseConfidence = 0.5F;

int threads(const OnnxTextEngineOptions& options) {
  return options.threadCount > 0 ? options.threadCount
                                 : std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

/// What `work` gives; running out of memory in OpenCV is told as everywhere else.
auto withOwnErrors(const auto& work) {
  try {
    return work();
  } catch (const cv::Exception& error) {
    if (error.code == cv::Error::StsNoMem) throw std::bad_alloc();
    throw;
  }
}

Rect normalised(const TextBox& box, cv::Size picture) {
  const cv::Rect2d bounds = box.bounds();
  const double left = std::clamp(bounds.x / picture.width, 0.0, 1.0);
  const double right = std::clamp(bounds.br().x / picture.width, 0.0, 1.0);
  const double top = std::clamp(bounds.y / picture.height, 0.0, 1.0);
  const double bottom = std::clamp(bounds.br().y / picture.height, 0.0, 1.0);
  return {left, 1 - bottom, right - left, bottom - top};
}

}  // namespace

class OnnxTextEngine::Models {
 public:
  explicit Models(const OnnxTextEngineOptions& options)
      : detector(modelPath(options.modelDirectory, detectionModelFile), threads(options)),
        classifier(modelPath(options.modelDirectory, directionModelFile), threads(options)),
        reader(modelPath(options.modelDirectory, recognitionModelFile), threads(options)),
        digitRows(modelPath(options.modelDirectory, digitRowModelFile), threads(options)) {}

  ppocr::TextDetector detector;
  ppocr::DirectionClassifier classifier;
  ppocr::LineReader reader;
  ppocr::DigitRowReader digitRows;
};

OnnxTextEngine::OnnxTextEngine(OnnxTextEngineOptions options) : options_(std::move(options)) {}
OnnxTextEngine::~OnnxTextEngine() = default;

void OnnxTextEngine::load() const {
  models();
}

std::shared_ptr<const OnnxTextEngine::Models> OnnxTextEngine::models() const {
  const std::lock_guard lock(loading_);
  if (!models_) models_ = std::make_shared<const Models>(options_);
  return models_;
}

std::vector<RecognizedText> OnnxTextEngine::recognize(const Bitmap& bitmap, const TextRequest& request) const {
  ppocr::requireLanguages(request.recognitionLanguages);
  if (request.limit.isSpent()) return {};
  return withOwnErrors([&] { return textsOn(bitmap, request, *models()); });
}

std::vector<SeenDigits> OnnxTextEngine::readDigits(const std::vector<Bitmap>& rows, DigitReader reader,
                                                   const WorkLimit& limit) const {
  return withOwnErrors([&] {
    std::vector<cv::Mat> pictures;
    pictures.reserve(rows.size());
    for (const Bitmap& row : rows) pictures.push_back(ppocr::toBgr(asMat(row)));
    const auto loaded = models();
    return reader == DigitReader::quick ? loaded->digitRows.read(pictures, limit)
                                        : loaded->reader.readDigits(pictures, limit);
  });
}

std::vector<RecognizedText> OnnxTextEngine::textsOn(const Bitmap& bitmap, const TextRequest& request,
                                                    const Models& models) {
  const bool isAccurate = request.recognitionLevel == RecognitionLevel::accurate;
  const cv::Mat picture = asMat(bitmap);
  auto boxes = models.detector.detect(picture, request.recognitionLevel);
  const auto minimumHeight = request.minimumTextHeight * static_cast<float>(picture.rows);
  std::erase_if(boxes, [&](const TextBox& box) { return std::min(box.width(), box.height()) < minimumHeight; });
  ppocr::sortInReadingOrder(boxes);
  ppocr::layAlike(boxes);

  std::vector<cv::Mat> lines;
  lines.reserve(boxes.size());
  for (const auto& box : boxes) lines.push_back(ppocr::cropOf(picture, box));
  if (isAccurate) {
    if (models.classifier.areUpsideDown(lines)) {
      std::ranges::reverse(boxes);
      std::ranges::reverse(lines);
      for (std::size_t i = 0; i < boxes.size(); ++i) {
        boxes[i] = ppocr::turned(boxes[i]);
        cv::rotate(lines[i], lines[i], cv::ROTATE_180);
      }
    }
  }
  auto readings = models.reader.read(lines, request.limit);
  if (isAccurate) ppocr::lookAgain(models.reader, picture, boxes, readings, request.limit);

  std::vector<RecognizedText> texts;
  for (std::size_t i = 0; i < boxes.size(); ++i)
    if (readings[i].confidence >= noiseConfidence)
      texts.push_back({std::move(readings[i]), normalised(boxes[i], picture.size()), boxes[i].direction()});
  return texts;
}

}  // namespace pravik
