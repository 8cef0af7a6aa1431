#include "backends/onnxruntime/ModelFiles.h"

#include <dlfcn.h>
#include <onnxruntime_cxx_api.h>

#include <exception>
#include <functional>
#include <new>
#include <system_error>

#include "backends/onnxruntime/DigitRowReader.h"
#include "backends/onnxruntime/DirectionClassifier.h"
#include "backends/onnxruntime/LineReader.h"
#include "backends/onnxruntime/TextDetector.h"

namespace pravik {
namespace {

std::string problemOf(const std::function<void()>& open) {
  try {
    open();
    return {};
  } catch (const std::bad_alloc&) {
    // No fault of the file.
    return {};
  } catch (const std::exception& error) {
    return error.what();
  }
}

}  // namespace

std::string modelPath(const std::string& modelDirectory, const char* file) {
  return (std::filesystem::path(modelDirectory) / file).string();
}

std::vector<ModelFileStatus> checkModels(const std::string& modelDirectory) {
  const auto detection = modelPath(modelDirectory, detectionModelFile);
  const auto direction = modelPath(modelDirectory, directionModelFile);
  const auto recognition = modelPath(modelDirectory, recognitionModelFile);
  const auto digitRows = modelPath(modelDirectory, digitRowModelFile);
  return {{detectionModelFile, detection, problemOf([&] { ppocr::TextDetector(detection, 1); })},
          {directionModelFile, direction, problemOf([&] { ppocr::DirectionClassifier(direction, 1); })},
          {recognitionModelFile, recognition, problemOf([&] { ppocr::LineReader(recognition, 1); })},
          {digitRowModelFile, digitRows, problemOf([&] { ppocr::DigitRowReader(digitRows, 1); })}};
}

std::filesystem::path onnxRuntimeLibrary() {
  Dl_info module{};
  if (dladdr(reinterpret_cast<const void*>(&OrtGetApiBase), &module) == 0) return {};
  std::error_code unresolved;
  return std::filesystem::canonical(module.dli_fname, unresolved);
}

std::string onnxRuntimeVersion() {
  return Ort::GetVersionString();
}

}  // namespace pravik
