#include <gmock/gmock.h>

#include <map>

#include "Records/BankCardInfo.h"
#include "Records/CodeScanResult.h"
#include "Records/OCRError.h"
#include "Records/OCRScanMode.h"
#include "Records/PravikVersion.h"

namespace pravik {
namespace {

using testing::IsEmpty;

TEST(OCRError, CarriesItsCodeTextAndContext) {
  for (const auto& [error, code, description, ownContext] :
       std::vector<std::tuple<OCRError, std::string, std::string, std::map<std::string, std::string>>>{
           {OCRError::recognitionFailed("a"), "recognition_failed", "文字识别失败：a", {{"failure_reason", "a"}}},
           {OCRError::parseFailure("卡号"), "parse_failure", "字段解析失败：卡号", {{"failed_field", "卡号"}}},
           {OCRError::sceneMismatch("身份证正面", "银行卡"),
            "scene_mismatch",
            "场景不匹配：期望身份证正面，检测到银行卡",
            {{"expected_scene", "身份证正面"}, {"detected_scene", "银行卡"}}},
           {OCRError::invalidImage(), "invalid_image", "无效的图像，请提供有效的 UIImage", {}},
           {OCRError::insufficientText(), "insufficient_text", "未能从图像中提取到足够的文字信息", {}},
           {OCRError::cameraPermissionDenied(),
            "camera_permission_denied",
            "未获取相机权限，请在设置中允许访问相机",
            {}},
           {OCRError::photoLibraryPermissionDenied(),
            "photo_library_permission_denied",
            "未获取相册权限，请在设置中允许访问相册",
            {}},
           {OCRError::cancelled(), "cancelled", "用户已取消扫描", {}},
       }) {
    auto context = ownContext;
    context.insert({{"ocr_sdk_version", "1.1.1"}, {"ocr_sdk_build", "dev"}, {"error_code", code}});
    EXPECT_EQ(error.errorCode(), code);
    EXPECT_EQ(error.errorDescription(), description);
    EXPECT_EQ(error.what(), description);
    EXPECT_EQ(error.reportContext(), context);
  }
  EXPECT_FALSE(OCRError::sceneMismatch("a", "b") == OCRError::sceneMismatch("a", "c"));
  EXPECT_FALSE(OCRError::recognitionFailed("a") == OCRError::recognitionFailed("b"));
}

TEST(PravikVersion, IsPutTogetherFromItsParts) {
  EXPECT_EQ(pravikBinaryVersion(), "Pravik_VERSION=1.1.1 BUILD=dev");
}

TEST(CardType, IsFoundByItsExactText) {
  for (const auto type : BankCardInfo::allCardTypes)
    EXPECT_EQ(BankCardInfo::cardTypeFromRawValue(rawValue(type)), type);
  for (const std::string text : {"", "debit", "借记", "借记卡 "})
    EXPECT_EQ(BankCardInfo::cardTypeFromRawValue(text), std::nullopt);
}

TEST(OCRScanMode, AsksForCodesOnlyInTheCodeMode) {
  for (const auto mode : {OCRScanMode::bankCard, OCRScanMode::idCardFront, OCRScanMode::idCardBack}) {
    EXPECT_THAT(visionSymbologies(mode), IsEmpty());
    EXPECT_THAT(metadataObjectTypes(mode), IsEmpty());
  }
  const std::vector<std::string> names{"QR Code",  "Aztec",   "DataMatrix", "EAN-13", "EAN-8", "UPC-E",
                                       "Code 128", "Code 39", "Code 93",    "ITF-14", "PDF417"};
  const auto namesOf = [](const auto& types) {
    std::vector<std::string> all;
    for (const auto& type : types) all.push_back(pravikDisplayName(type));
    return all;
  };
  EXPECT_EQ(namesOf(visionSymbologies(OCRScanMode::qrCode)), names);
  EXPECT_EQ(namesOf(metadataObjectTypes(OCRScanMode::qrCode)), names);

  EXPECT_EQ(pravikDisplayName(BarcodeSymbology{"VNBarcodeSymbologyCodabar"}), "VNBarcodeSymbologyCodabar");
  EXPECT_EQ(pravikDisplayName(MetadataObjectType{""}), "");
}

}  // namespace
}  // namespace pravik
