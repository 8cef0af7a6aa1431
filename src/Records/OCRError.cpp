#include "Records/OCRError.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include "Records/PravikVersion.h"

namespace pravik {

namespace {

/// In the order of OCRError::Case.
constexpr std::array<std::string_view, 8> errorCodes{"recognition_failed",
                                                     "parse_failure",
                                                     "scene_mismatch",
                                                     "invalid_image",
                                                     "insufficient_text",
                                                     "camera_permission_denied",
                                                     "photo_library_permission_denied",
                                                     "cancelled"};

std::string describe(OCRError::Case kind, const std::string& first, const std::string& second) {
  switch (kind) {
    case OCRError::Case::recognitionFailed:
      return "文字识别失败：" + first;
    case OCRError::Case::parseFailure:
      return "字段解析失败：" + first;
    case OCRError::Case::sceneMismatch:
      return "场景不匹配：期望" + first + "，检测到" + second;
    case OCRError::Case::invalidImage:
      return "无效的图像，请提供有效的 UIImage";
    case OCRError::Case::insufficientText:
      return "未能从图像中提取到足够的文字信息";
    case OCRError::Case::cameraPermissionDenied:
      return "未获取相机权限，请在设置中允许访问相机";
    case OCRError::Case::photoLibraryPermissionDenied:
      return "未获取相册权限，请在设置中允许访问相册";
    case OCRError::Case::cancelled:
      return "用户已取消扫描";
  }
  return {};
}

}  // namespace

OCRError::OCRError(Case kind, std::string first, std::string second)
    : kind_(kind),
      first_(std::move(first)),
      second_(std::move(second)),
      description_(describe(kind_, first_, second_)) {}

OCRError OCRError::recognitionFailed(std::string reason) {
  return OCRError(Case::recognitionFailed, std::move(reason));
}

OCRError OCRError::parseFailure(std::string field) {
  return OCRError(Case::parseFailure, std::move(field));
}

OCRError OCRError::sceneMismatch(std::string expected, std::string detected) {
  return OCRError(Case::sceneMismatch, std::move(expected), std::move(detected));
}

OCRError OCRError::invalidImage() {
  return OCRError(Case::invalidImage);
}

OCRError OCRError::insufficientText() {
  return OCRError(Case::insufficientText);
}

OCRError OCRError::cameraPermissionDenied() {
  return OCRError(Case::cameraPermissionDenied);
}

OCRError OCRError::photoLibraryPermissionDenied() {
  return OCRError(Case::photoLibraryPermissionDenied);
}

OCRError OCRError::cancelled() {
  return OCRError(Case::cancelled);
}

std::string OCRError::errorCode() const {
  return std::string(errorCodes[static_cast<std::size_t>(kind_)]);
}

std::string OCRError::errorDescription() const {
  return description_;
}

std::map<std::string, std::string> OCRError::reportContext() const {
  std::map<std::string, std::string> context{{"ocr_sdk_version", PravikVersion::string()},
                                             {"ocr_sdk_build", std::string(PravikVersion::buildNumber)},
                                             {"error_code", errorCode()}};
  switch (kind_) {
    case Case::recognitionFailed:
      context["failure_reason"] = first_;
      break;
    case Case::parseFailure:
      context["failed_field"] = first_;
      break;
    case Case::sceneMismatch:
      context["expected_scene"] = first_;
      context["detected_scene"] = second_;
      break;
    default:
      break;
  }
  return context;
}

}  // namespace pravik
