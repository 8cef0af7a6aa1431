#include "apps/pravik/StatsCommand.h"

#include "Core/ImagePreprocessor.h"
#include "apps/pravik/AnswerWriter.h"
#include "apps/pravik/PictureInput.h"
#include "backends/json/Answer.h"

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

Answer statistics(const Image& image, const Platform& platform) {
  const ImagePreprocessor preprocessor(platform.imageRenderer, platform.rectangleDetector);
  const auto stats = preprocessor.analyzeImage(*image.bitmap);
  return {{"result",
           {{"width", image.bitmap->width()},
            {"height", image.bitmap->height()},
            {"mean", stats.mean},
            {"std", stats.std},
            {"darkRatio", stats.darkRatio},
            {"brightRatio", stats.brightRatio},
            {"idCard", enhancement(stats, ImagePreprocessor::Scene::idCard)},
            {"bankCard", enhancement(stats, ImagePreprocessor::Scene::bankCard)}}}};
}

}  // namespace

ExitStatus showStatistics(const std::string& file, const Settings& settings, const Host& host) {
  const Platform platform = host.makePlatform({.modelDirectory = settings.models, .threads = 1});
  Answer answer{{"file", file}, {"kind", "stats"}};
  const auto image = readPicture(file, *platform.imageCodec, host.in);
  answer.update(image ? statistics(*image, platform) : answerOf(OCRError::invalidImage(), image.error()));
  AnswerWriter writer(host.out, settings.format);
  writer.write(answer);
  return writer.finish();
}

}  // namespace pravik::cli
