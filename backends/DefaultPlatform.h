#pragma once

#include <filesystem>

#include "Platform/Platform.h"

namespace pravik {

/// How the default platform is set up.
struct DefaultPlatformOptions {
  /// Where the text models are; empty means defaultModelDirectory().
  std::filesystem::path modelDirectory;
  /// Threads that one text recognition may use; 0 means one for each core.
  int threads = 0;
  /// Where the photo library keeps its pictures; empty for none.
  std::filesystem::path photoFolder = {};
};

/// The folder of the text models: what the environment variable PRAVIK_MODELS names, else the one that belongs to the
/// ONNX Runtime in use, wherever the program itself is: PREFIX/share/pravik/models for PREFIX/lib/pravik, and
/// third_party/models for third_party/onnxruntime in a source tree. Nobody looks whether it is there.
std::filesystem::path defaultModelDirectory();

/// Real parts for every port that a still picture needs: OpenCV for pixels and rectangles, ONNX Runtime for text,
/// ZXing-C++ for codes, Asio for the queues. The models are loaded with the first recognition, so that a missing one
/// is that recognition's error.
Platform makeDefaultPlatform(const DefaultPlatformOptions& options = {});

}  // namespace pravik
