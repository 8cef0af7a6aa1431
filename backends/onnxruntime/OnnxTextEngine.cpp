#include "backends/onnxruntime/OnnxTextEngine.h"

#include <algorithm>
#include <opencv2/core.hpp>
#include <thread>
#include <utility>

#include "backends/onnxruntime/Cropping.h"
#include "backends/onnxruntime/DirectionClassifier.h"
#include "backends/onnxruntime/Languages.h"
#include "backends/onnxruntime/LineReader.h"
#include "backends/onnxruntime/ModelFiles.h"
#include "backends/onnxruntime/Pixels.h"
#include "backends/onnxruntime/ReadingOrder.h"
#include "backends/onnxruntime/SecondLook.h"
#include "backends/onnxruntime/TextDetector.h"

namespace pravik {
namespace {

using ppocr::TextBox;

/// A line is turned only when the classifier is this sure: a needless turn loses the line.
constexpr float turnThreshold = 0.9F;

int threads(const OnnxTextEngineOptions& options) {
  return options.threadCount > 0 ? options.threadCount
                                 : std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
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
        reader(modelPath(options.modelDirectory, recognitionModelFile), modelPath(options.modelDirectory, keyListFile),
               threads(options)) {}

  ppocr::TextDetector detector;
  ppocr::DirectionClassifier classifier;
  ppocr::LineReader reader;
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
  const auto models = this->models();
  const cv::Mat picture = ppocr::view(bitmap);
  auto boxes = models->detector.detect(picture, request.recognitionLevel);
  const auto minimumHeight = request.minimumTextHeight * static_cast<float>(picture.rows);
  std::erase_if(boxes, [&](const TextBox& box) { return std::min(box.width(), box.height()) < minimumHeight; });
  ppocr::sortInReadingOrder(boxes);

  std::vector<cv::Mat> lines;
  for (const auto& box : boxes) lines.push_back(ppocr::cropOf(picture, box));
  if (request.recognitionLevel == RecognitionLevel::accurate) {
    const auto upsideDown = models->classifier.upsideDown(lines);
    for (std::size_t i = 0; i < lines.size(); ++i)
      if (upsideDown[i] > turnThreshold) cv::rotate(lines[i], lines[i], cv::ROTATE_180);
  }
  auto readings = models->reader.read(lines);
  std::vector<RecognizedText> texts;
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    auto& text = texts.emplace_back(std::nullopt, normalised(boxes[i], picture.size()));
    if (!readings[i].text.empty()) text.topCandidate = std::move(readings[i]);
  }
  return texts;
}

}  // namespace pravik
