#include "backends/DefaultPlatform.h"

#include <cstdlib>
#include <memory>

#include "Platform/AsioDispatch.h"
#include "backends/FolderPhotoLibrary.h"
#include "backends/onnxruntime/ModelFiles.h"
#include "backends/onnxruntime/OnnxTextEngine.h"
#include "backends/opencv/OpenCvImageRenderer.h"
#include "backends/opencv/files/OpenCvImageCodec.h"
#include "backends/opencv/finder/OpenCvRectangleDetector.h"
#include "backends/zxing/ZXingBarcodeDetector.h"

namespace pravik {

std::filesystem::path defaultModelDirectory() {
  if (const char* named = std::getenv("PRAVIK_MODELS"); named != nullptr && *named != '\0') return named;
  // PREFIX/lib/pravik/libonnxruntime.so.1 in an installation, third_party/onnxruntime/lib/... in a source tree.
  const std::filesystem::path folder = onnxRuntimeLibrary().parent_path();
  const std::filesystem::path root = folder.parent_path().parent_path();
  return folder.filename() == "pravik" ? root / "share" / "pravik" / "models" : root / "models";
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
