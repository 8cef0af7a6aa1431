#include "backends/json/Wording.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "Reading/RecordChecks.h"
#include "Utils/Text.h"

namespace pravik {
namespace {

struct Wording {
  std::string_view key;
  std::string_view chinese;
  std::string_view english = {};
};

/// By the code of the error.
constexpr std::array<Wording, 7> errors{{
    {"recognition_failed", "文字识别失败", "the recognition failed"},
    {"parse_failure", "字段解析失败", "a field could not be parsed"},
    {"invalid_image", "无法读取图片", "there is no picture that can be read"},
    {"insufficient_text", "未能从图像中提取到足够的文字信息", "not enough text could be read in the picture"},
    {"camera_permission_denied", "未获取相机权限", "the camera may not be used"},
    {"photo_library_permission_denied", "未获取相册权限", "the photos may not be used"},
    {"cancelled", "识别已取消", "the reading was called off"},
}};

/// By the name of the check; English stands in the table of checks.
constexpr std::array<Wording, 5> checks{{
    {"checkDigit", "校验码错误"},
    {"birthDateMatches", "与身份证号码不一致"},
    {"genderMatches", "与身份证号码不一致"},
    {"startBeforeEnd", "截止日期早于起始日期"},
    {"luhn", "校验位错误"},
}};

/// In the order of FieldDisplay.
constexpr std::array<std::string_view, 3> displayNames{"shown", "masked", "hidden"};

/// Pieces of the sentences that are made of files, pictures and cameras, the longer ones first.
constexpr std::array<Wording, 46> pieces{{
    {"no pictures in this folder (--recursive looks into those within it)",
     "文件夹中没有图片（--recursive 会查找子文件夹）"},
    {"no pictures in this folder", "文件夹中没有图片"},
    {"no such file", "没有这个文件"},
    {"is a directory", "这是一个文件夹"},
    {"not a regular file", "不是普通文件"},
    {"the file is empty", "文件是空的"},
    {"the file is truncated", "文件不完整"},
    {"the file became shorter", "文件变短了"},
    {"the picture is damaged", "图片已损坏"},
    {"not a picture (", "不是图片（"},
    {" and PDF can be read)", " 和 PDF 可以读取）"},
    {"not a picture", "不是图片"},
    {"an animated picture cannot be read", "无法读取动画图片"},
    {"pixels of this kind cannot be read", "无法读取这种像素"},
    {"the PDF is protected by a password", "PDF 有密码保护"},
    {"the PDF is damaged", "PDF 已损坏"},
    {"the PDF has no pages", "PDF 没有页面"},
    {"drawing the PDF takes too long", "绘制 PDF 用时过长"},
    {"there is no memory for the PDF", "内存不足，无法打开 PDF"},
    {"no process can be started", "无法启动进程"},
    {"PDF needs the program ", "PDF 需要程序 "},
    {": install ", "，请安装 "},
    {" more pages were left out: of a file ", " 页未读：每个文件只读前 "},
    {" are read", " 页"},
    {"too large: more than ", "太大：超过 "},
    {"too large: ", "太大："},
    {" pixels wide or high", " 像素的宽或高"},
    {" pixels, at most ", " 像素，最多 "},
    {" megapixels", "00 万像素"},
    {" MiB, at most ", " MiB，最多 "},
    {"cannot be read: ", "无法读取："},
    {"cannot write ", "无法写入 "},
    {"Permission denied", "没有权限"},
    {"No space left on device", "磁盘已满"},
    {"the camera has gone", "相机已断开"},
    {"the video has ended", "视频已结束"},
    {"the video has no pictures", "视频没有画面"},
    {"no such camera", "没有这个相机"},
    {"not a camera", "不是相机"},
    {"in use by another program, or without pictures", "正被其他程序使用，或没有画面"},
    {"not a video, or damaged", "不是视频，或已损坏"},
    {"a picture, not a video", "是图片，不是视频"},
    {"not a file", "不是文件"},
    {"the pictures are too large", "画面太大"},
    {"permission denied; the camera's group, usually \"video\", may use it",
     "没有权限；相机所属的用户组（通常是 video）可以使用"},
    {"permission denied", "没有权限"},
}};

const Wording* wordingOf(std::span<const Wording> table, std::string_view key) {
  const auto found = std::ranges::find(table, key, &Wording::key);
  return found == table.end() ? nullptr : &*found;
}

std::string textAt(const Answer& answer, const char* place) {
  const Json::json_pointer pointer(place);
  return answer.contains(pointer) ? answer[pointer].get<std::string>() : std::string();
}

/// In English, as the table of kinds has it: "身份证背面".
std::string_view englishScene(std::string_view chinese) {
  const auto found = std::ranges::find(documentKinds(), chinese, &DocumentKind::displayName);
  return found == documentKinds().end() ? "Identity card" : found->englishName;
}

/// What the report of a reading tells, found by its stable code.
std::string reportText(const Answer& answer, Language language) {
  const std::string code = textAt(answer, "/report/reason");
  if (language == Language::chinese || code.empty()) return textAt(answer, "/report/text");
  for (int i = 0; i <= static_cast<int>(UnreadReason::engineFailed); ++i)
    if (const auto reason = static_cast<UnreadReason>(i); codeOf(reason) == code)
      return std::string(englishText(reason));
  return textAt(answer, "/report/text");
}

/// The check of a field that failed; empty for none.
std::string failedCheckOf(const Answer& answer, std::string_view field) {
  const Json results = answer.value("checks", Json::object());
  for (const auto& [check, passed] : results.items())
    if (const CheckKind* known = checkNamed(check); known != nullptr && known->field == field && passed == false)
      return check;
  return {};
}

/// Whether the report says what the error does, and more.
bool reportSaysAll(const Answer& answer) {
  return textAt(answer, "/error/code") == "insufficient_text" && answer.contains("report");
}

}  // namespace

std::vector<std::pair<std::string, Language>> languagesByName() {
  return {{"zh", Language::chinese}, {"en", Language::english}};
}

Language environmentLanguage() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"})
    if (const char* value = std::getenv(name); value != nullptr && *value != '\0')
      return std::string_view(value).starts_with("zh") ? Language::chinese : Language::english;
  return Language::english;
}

std::string errorText(const Answer& answer, Language language) {
  if (reportSaysAll(answer)) return reportText(answer, language);
  const std::string code = textAt(answer, "/error/code");
  if (const Wording* known = wordingOf(errors, code))
    return std::string(language == Language::chinese ? known->chinese : known->english);
  if (code != "scene_mismatch" || language == Language::chinese) return textAt(answer, "/error/message");
  return "another document was expected: " +
         std::string(englishScene(textAt(answer, "/error/context/expected_scene"))) +
         "; found: " + std::string(englishScene(textAt(answer, "/error/context/detected_scene")));
}

std::string reasonText(const Answer& answer, Language language) {
  if (reportSaysAll(answer)) return {};
  for (const char* place : {"/error/context/reason", "/error/context/failure_reason"})
    if (const std::string reason = textAt(answer, place); !reason.empty()) return ownText(reason, language);
  return reportText(answer, language);
}

std::string errorCode(const Answer& answer) {
  return textAt(answer, reportSaysAll(answer) ? "/report/reason" : "/error/code");
}

std::string explanation(const Answer& answer, Language language) {
  const std::string error = errorText(answer, language), reason = reasonText(answer, language);
  return reason.empty() ? error : error + (language == Language::chinese ? "：" : ": ") + reason;
}

std::string checkText(std::string_view check, Language language) {
  const CheckKind* known = checkNamed(check);
  if (known == nullptr) return {};
  const Wording* chinese = wordingOf(checks, check);
  return std::string(language == Language::chinese && chinese != nullptr ? chinese->chinese : known->failure);
}

std::string fieldNote(const Answer& answer, std::string_view field, Language language) {
  if (const std::string check = failedCheckOf(answer, field); !check.empty()) return "! " + checkText(check, language);
  const Json doubtful = answer.value("doubtful", Json::array());
  if (std::ranges::find(doubtful, Json(field)) == doubtful.end()) return {};
  return language == Language::chinese ? "? 存疑" : "? doubtful";
}

std::string warningText(std::string_view code, Language language) {
  for (int i = 0; i <= static_cast<int>(ReadingWarning::checkFailed); ++i)
    if (const auto warning = static_cast<ReadingWarning>(i); codeOf(warning) == code)
      return std::string(language == Language::chinese ? chineseText(warning) : englishText(warning));
  return std::string(code);
}

Json wordings(Language language) {
  const auto told = [&](std::string_view chinese, std::string_view english) {
    return language == Language::chinese ? chinese : english;
  };
  Json all;
  for (const DocumentKind& kind : documentKinds()) {
    Json& entry = all["kinds"][std::string(kind.commandName)];
    entry["label"] = told(kind.displayName, kind.englishName);
    for (const RecordField& field : kind.fields)
      entry["fields"][std::string(field.name)] = {
          {"label", told(field.chineseLabel, field.englishLabel)},
          {"display", displayNames.at(static_cast<std::size_t>(field.display))}};
  }
  for (const Wording& error : errors) all["errors"][std::string(error.key)] = told(error.chinese, error.english);
  for (int i = 0; i <= static_cast<int>(UnreadReason::engineFailed); ++i) {
    const auto reason = static_cast<UnreadReason>(i);
    all["reasons"][std::string(codeOf(reason))] = told(chineseText(reason), englishText(reason));
  }
  for (int i = 0; i <= static_cast<int>(ReadingWarning::checkFailed); ++i) {
    const std::string code(codeOf(static_cast<ReadingWarning>(i)));
    all["warnings"][code] = warningText(code, language);
  }
  for (const Wording& check : checks) all["checks"][std::string(check.key)] = checkText(check.key, language);
  return all;
}

std::string ownText(const std::string& english, Language language) {
  std::string text = english;
  if (language == Language::chinese)
    for (const Wording& piece : pieces) text = replacingAll(text, piece.key, piece.chinese);
  return text;
}

}  // namespace pravik
