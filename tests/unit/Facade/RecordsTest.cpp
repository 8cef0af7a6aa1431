#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "BankCardInfo.h"
#include "CodeScanResult.h"
#include "OCRError.h"
#include "OCRScanMode.h"
#include "PravikVersion.h"

namespace pravik {
namespace {

using testing::IsEmpty;

TEST(OCRError, CarriesItsCodeTextAndContext) {
  struct Case {
    OCRError error;
    std::string code;
    std::string description;
    std::map<std::string, std::string> context;
  };
  for (const auto& [error, code, description, ownContext] : std::vector<Case>{
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
}

TEST(OCRError, ComparesCaseAndTexts) {
  EXPECT_EQ(OCRError::invalidImage(), OCRError::invalidImage());
  EXPECT_EQ(OCRError::sceneMismatch("a", "b"), OCRError::sceneMismatch("a", "b"));
  EXPECT_FALSE(OCRError::sceneMismatch("a", "b") == OCRError::sceneMismatch("a", "c"));
  EXPECT_FALSE(OCRError::recognitionFailed("a") == OCRError::recognitionFailed("b"));
  EXPECT_FALSE(OCRError::recognitionFailed("a") == OCRError::parseFailure("a"));
}

TEST(CardType, IsFoundByItsExactText) {
  for (const auto type : BankCardInfo::allCardTypes)
    EXPECT_EQ(BankCardInfo::cardTypeFromRawValue(rawValue(type)), type);
  EXPECT_EQ(localizedName(BankCardInfo::CardType::credit), "信用卡");
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
  std::vector<std::string> stillNames;
  for (const auto& symbology : visionSymbologies(OCRScanMode::qrCode))
    stillNames.push_back(pravikDisplayName(symbology));
  EXPECT_EQ(stillNames, names);
  std::vector<std::string> liveNames;
  for (const auto& type : metadataObjectTypes(OCRScanMode::qrCode)) liveNames.push_back(pravikDisplayName(type));
  EXPECT_EQ(liveNames, names);

  EXPECT_EQ(pravikDisplayName(BarcodeSymbology{"VNBarcodeSymbologyCodabar"}), "VNBarcodeSymbologyCodabar");
  EXPECT_EQ(pravikDisplayName(MetadataObjectType{""}), "");
}

TEST(PravikVersion, IsPutTogetherFromItsParts) {
  EXPECT_EQ(PravikVersion::fullDescription(), "1.1.1 (dev)");
  EXPECT_EQ(pravikBinaryVersion(), "Pravik_VERSION=1.1.1 BUILD=dev");
}

}  // namespace
}  // namespace pravik
