#include "Records/OCRError.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include "Records/PravikVersion.h"

namespace pravik {

namespace {

/// What an error is made of; its texts stand in the description and, under these names, in the report.
struct CaseWording {
  std::string_view code;
  std::string_view beforeFirst;
  std::string_view beforeSecond = {};
  std::string_view firstName = {};
  std::string_view secondName = {};
};

/// In the order of OCRError::Case.
constexpr std::array<CaseWording, 8> wordings{{
    {"recognition_failed", "文字识别失败：", "", "failure_reason"},
    {"parse_failure", "字段解析失败：", "", "failed_field"},
    {"scene_mismatch", "场景不匹配：期望", "，检测到", "expected_scene", "detected_scene"},
    {"invalid_image", "无效的图像，请提供有效的 UIImage"},
    {"insufficient_text", "未能从图像中提取到足够的文字信息"},
    {"camera_permission_denied", "未获取相机权限，请在设置中允许访问相机"},
    {"photo_library_permission_denied", "未获取相册权限，请在设置中允许访问相册"},
    {"cancelled", "用户已取消扫描"},
}};

const CaseWording& wordingOf(OCRError::Case kind) {
  return wordings[static_cast<std::size_t>(kind)];
}

std::string describe(const CaseWording& wording, const std::string& first, const std::string& second) {
  return std::string(wording.beforeFirst) + first + std::string(wording.beforeSecond) + second;
}

}  // namespace

OCRError::OCRError(Case kind, std::string first, std::string second)
    : kind_(kind),
      first_(std::move(first)),
      second_(std::move(second)),
      description_(describe(wordingOf(kind_), first_, second_)) {}

std::string OCRError::errorCode() const {
  return std::string(wordingOf(kind_).code);
}

std::string OCRError::errorDescription() const {
  return description_;
}

std::map<std::string, std::string> OCRError::reportContext() const {
  std::map<std::string, std::string> context{{"ocr_sdk_version", PravikVersion::string()},
                                             {"ocr_sdk_build", std::string(PravikVersion::buildNumber)},
                                             {"error_code", errorCode()}};
  const CaseWording& wording = wordingOf(kind_);
  if (!wording.firstName.empty()) context.emplace(wording.firstName, first_);
  if (!wording.secondName.empty()) context.emplace(wording.secondName, second_);
  return context;
}

}  // namespace pravik
