#include "backends/DefaultPlatform.h"

#include <memory>
#include <system_error>

#include "Platform/AsioDispatch.h"
#include "backends/FolderPhotoLibrary.h"
#include "backends/onnxruntime/OnnxTextEngine.h"
#include "backends/opencv/OpenCvImageCodec.h"
#include "backends/opencv/OpenCvImageRenderer.h"
#include "backends/opencv/OpenCvRectangleDetector.h"
#include "backends/zxing/ZXingBarcodeDetector.h"

namespace pravik {
namespace {

/// The folder of the models beside an installed program, PREFIX/bin/... and PREFIX/share/pravik/models.
std::filesystem::path installedModelDirectory() {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return {};
  return program.parent_path().parent_path() / "share" / "pravik" / "models";
}

}  // namespace

std::filesystem::path defaultModelDirectory() {
  const std::filesystem::path installed = installedModelDirectory();
  std::error_code error;
  if (!installed.empty() && std::filesystem::is_directory(installed, error)) return installed;
  return PRAVIK_DEFAULT_MODEL_DIRECTORY;
}

Platform makeDefaultPlatform(const DefaultPlatformOptions& options) {
  const std::filesystem::path models =
      options.modelDirectory.empty() ? defaultModelDirectory() : options.modelDirectory;
  Platform platform;
  platform.imageCodec = std::make_shared<OpenCvImageCodec>();
  platform.imageRenderer = std::make_shared<OpenCvImageRenderer>();
  platform.rectangleDetector = std::make_shared<OpenCvRectangleDetector>();
  platform.textEngine = std::make_shared<OnnxTextEngine>(
      OnnxTextEngineOptions{.modelDirectory = models.string(), .threadCount = options.threads});
  platform.barcodeDetector = std::make_shared<ZXingBarcodeDetector>(platform.rectangleDetector, platform.imageRenderer);
  if (!options.photoFolder.empty())
    platform.photoLibrary = std::make_shared<FolderPhotoLibrary>(options.photoFolder, platform.imageCodec);
  platform.dispatch = std::make_shared<AsioDispatch>();
  return platform;
}

}  // namespace pravik
