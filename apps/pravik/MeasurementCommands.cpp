#include "apps/pravik/MeasurementCommands.h"

#include <array>

#include "Core/ImagePreprocessor.h"
#include "UI/FrameQuality.h"
#include "apps/pravik/AnswerWriter.h"
#include "apps/pravik/Input.h"

namespace pravik::cli {
namespace {

Json enhancement(const ImagePreprocessor::Stats& stats, ImagePreprocessor::Scene scene) {
  const auto params = ImagePreprocessor::computeParams(stats, scene);
  return {{"mode", params.mode},
          {"contrast", params.contrast},
          {"brightness", params.brightness},
          {"sharpness", params.sharpness},
          {"saturation", params.saturation}};
}

Json statistics(const Bitmap& picture, const Platform& platform) {
  const ImagePreprocessor preprocessor(platform.imageRenderer, platform.rectangleDetector);
  const auto stats = preprocessor.analyzeImage(picture);
  return {{"width", picture.width()},
          {"height", picture.height()},
          {"mean", stats.mean},
          {"std", stats.std},
          {"darkRatio", stats.darkRatio},
          {"brightRatio", stats.brightRatio},
          {"idCard", enhancement(stats, ImagePreprocessor::Scene::idCard)},
          {"bankCard", enhancement(stats, ImagePreprocessor::Scene::bankCard)}};
}

Json frameQuality(const Bitmap& picture, const Platform& /*platform*/) {
  const FrameQuality quality = FrameQuality::analyze({picture});
  const auto hint = quality.qualityHint();
  return {{"specularRatio", quality.specularRatio},
          {"darkRatio", quality.darkRatio},
          {"peakRowRatio", quality.peakRowRatio},
          {"isGoodForCapture", quality.isGoodForCapture},
          {"qualityHint", hint ? Json(*hint) : Json(nullptr)}};
}

constexpr std::array<MeasurementCommand, 2> table{
    {{"stats", "Measure a picture and show how it would be enhanced", statistics},
     {"quality", "Measure glare and darkness as the live scanner does", frameQuality}}};

}  // namespace

std::span<const MeasurementCommand> measurementCommands() {
  return table;
}

ExitStatus answerMeasurement(const MeasurementCommand& command, const std::string& file, const Settings& settings,
                             const Host& host) {
  const Platform platform = host.makePlatform({.modelDirectory = settings.models, .threads = 1});
  Answer answer{{"file", file}, {"kind", command.kind}};
  const auto image = readPicture(file, *platform.imageCodec, host.in);
  answer.update(image && image->bitmap ? Answer{{"result", command.measure(*image->bitmap, platform)}}
                                       : answerOf(OCRError::invalidImage(), image ? "" : image.error()));
  AnswerWriter writer(host.out, settings);
  writer.write(answer);
  return writer.finish();
}

}  // namespace pravik::cli
