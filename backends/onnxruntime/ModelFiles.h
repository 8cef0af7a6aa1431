#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace pravik {

/// The files that an OnnxTextEngine needs, by their names inside the model folder.
inline constexpr const char* detectionModelFile = "ch_PP-OCRv4_det_infer.onnx";
inline constexpr const char* recognitionModelFile = "PP-OCRv6_rec_small.onnx";
inline constexpr const char* directionModelFile = "ch_ppocr_mobile_v2.0_cls_infer.onnx";
inline constexpr const char* digitRowModelFile = "digit-rows.onnx";

/// Where the engine looks for one of these files.
std::string modelPath(const std::string& modelDirectory, const char* file);

/// What became of one model file.
struct ModelFileStatus {
  std::string name;
  /// Where it was looked for.
  std::string path;
  /// Why it cannot be used; empty when it can.
  std::string problem;

  bool isUsable() const { return problem.empty(); }
};

/// Opens every file of the model folder as the engine would, and says what is wrong with each. Never throws on account
/// of a file.
std::vector<ModelFileStatus> checkModels(const std::string& modelDirectory);

/// The file that the ONNX Runtime in use was loaded from, without symbolic links; empty when that cannot be told.
std::filesystem::path onnxRuntimeLibrary();
/// The version of the ONNX Runtime library in use, such as "1.21.0".
std::string onnxRuntimeVersion();

}  // namespace pravik
